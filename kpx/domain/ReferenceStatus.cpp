#include "kpx/domain/ReferenceStatus.h"

#include <span>
#include <string_view>

#include "kpx/domain/Operations.h"
#include "kpx/report/Error.h"
#include "kpx/support/texts/TextStore.h"

namespace kpx {
namespace {

struct Status {
  std::u16string_view code;
  std::int32_t value;
  std::int32_t textId;
};

constexpr std::int32_t automatic = -1;

constexpr Status heights[] = {
    {u"Auto", automatic, 3180},
    {u"0", 0, 1528},
    {u"D", 1, 1427},
    {u"M", 2, 1428},
    {u"N", 3, 1429},
    {u"R", 4, 1430},
    {u"S", 5, 1431},
};
// Kept: stored points carry the numbers of the heights, so there is no 3.
constexpr Status positions[] = {
    {u"Auto", automatic, 3180},
    {u"0", 0, 1528},
    {u"D", 1, 1422},
    {u"M", 2, 1423},
    {u"R", 4, 1424},
    {u"S", 5, 1425},
};

constexpr bool isKnown(const Status& status, bool withAutomatic, int limit) noexcept {
  return status.value == automatic ? withAutomatic : limit == 0 || status.value <= limit;
}

void fill(OperationNumber operation, std::span<const Status> list, std::vector<CString>& texts,
          std::vector<std::int32_t>& values, bool withAutomatic, int limit) {
  texts.clear();
  values.clear();
  Guarded(operation, [&] {
    std::vector<CString> shown;
    std::vector<std::int32_t> numbers;
    for (const Status& status : list) {
      if (!isKnown(status, withAutomatic, limit)) continue;
      CString text(status.code);
      text += u' ';
      text += storedText(status.textId);
      shown.push_back(std::move(text));
      numbers.push_back(status.value);
    }
    texts.swap(shown);
    values.swap(numbers);
  });
}

std::int32_t valueOf(std::span<const Status> list, std::u16string_view code,
                     bool withAutomatic) noexcept {
  for (const Status& status : list) {
    if (status.code == code && isKnown(status, withAutomatic, 0)) return status.value;
  }
  return 0;
}

CString codeOf(OperationNumber operation, std::span<const Status> list, int value,
               bool withAutomatic, int limit) {
  return Guarded(operation, CString(), [&] {
    for (const Status& status : list) {
      if (status.value == value && isKnown(status, withAutomatic, limit)) {
        return CString(status.code);
      }
    }
    return CString(u"0");
  });
}

}  // namespace

void kpxInitHGS(std::vector<CString>& texts, std::vector<std::int32_t>& values, bool withAutomatic,
                int limit) {
  fill("kpxInitHGS"_domain, heights, texts, values, withAutomatic, limit);
}
void kpxInitLGS(std::vector<CString>& texts, std::vector<std::int32_t>& values, bool withAutomatic,
                int limit) {
  fill("kpxInitLGS"_domain, positions, texts, values, withAutomatic, limit);
}

std::int32_t kpxGetHGS(const CString& code, bool withAutomatic) noexcept {
  return valueOf(heights, code, withAutomatic);
}
std::int32_t kpxGetLGS(const CString& code, bool withAutomatic) noexcept {
  return valueOf(positions, code, withAutomatic);
}

CString kpxSetHGS(int value, bool withAutomatic, int limit) {
  return codeOf("kpxSetHGS"_domain, heights, value, withAutomatic, limit);
}
CString kpxSetLGS(int value, bool withAutomatic, int limit) {
  return codeOf("kpxSetLGS"_domain, positions, value, withAutomatic, limit);
}

}  // namespace kpx
