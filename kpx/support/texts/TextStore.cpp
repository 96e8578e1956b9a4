#include "kpx/support/texts/TextStore.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>

#include "kpx/report/Error.h"
#include "kpx/support/Operations.h"
#include "kpx/support/texts/internal/BuiltInTexts.h"

namespace kpx {
namespace {

/// Ids up to this one, which all but a few of the suite's texts have, are found without hashing.
constexpr std::uint32_t endFlat = 16384;
constexpr std::uint32_t blockSize = 256;

using OtherTexts = std::unordered_map<std::int32_t, CString>;

/// The flat part comes in blocks, so that few texts need little memory.
constinit CString* blocks[endFlat / blockSize] = {};
constinit OtherTexts* others = nullptr;

/// Empties the store when the library is unloaded. The pointers themselves have no destructor, so
/// that whoever asks still later finds an empty store.
struct Release {
  ~Release() { detail::clearTexts(); }
};
const Release release;

std::u16string_view textOf(const char16_t* units, const detail::BuiltInText& entry) noexcept {
  return {units + entry.offset, entry.length};
}

}  // namespace

CString GetMLT(std::int32_t id) noexcept {
  try {
    return CString(storedText(id));
  } catch (...) {
    return {};  // labels are looked up while errors are shown, so this is none to report
  }
}

std::u16string_view storedText(std::int32_t id) noexcept {
  // Negative ids become large ones.
  const auto index = static_cast<std::uint32_t>(id);
  if (index < endFlat) {
    const CString* block = blocks[index / blockSize];
    return block ? block[index % blockSize].view() : std::u16string_view();
  }
  if (!others) return {};
  const auto found = others->find(id);
  return found == others->end() ? std::u16string_view() : found->second.view();
}

void AddMLT(std::int32_t id, const CString& text) {
  Guarded("AddMLT"_support, [&] {
    CString copy = text;  // `text` may be a part of the store
    detail::textPlace(id) = std::move(copy);
  });
}

void addBuiltInTexts() {
  detail::addTexts(detail::builtInUnits, {detail::builtInTexts, detail::builtInTextCount});
}

std::u16string_view builtInText(std::int32_t id) noexcept {
  const std::span<const std::uint32_t> places(detail::builtInPlaces, detail::builtInIdCount);
  const auto found = std::ranges::lower_bound(
      places, id, {}, [](std::uint32_t place) { return detail::builtInTexts[place].id; });
  if (found == places.end() || detail::builtInTexts[*found].id != id) return {};
  return textOf(detail::builtInUnits, detail::builtInTexts[*found]);
}

namespace detail {

void addTexts(const char16_t* units, std::span<const BuiltInText> texts) {
  for (const BuiltInText& entry : texts) textPlace(entry.id).Assign(textOf(units, entry));
}

CString& textPlace(std::int32_t id) {
  const auto index = static_cast<std::uint32_t>(id);
  if (index < endFlat) {
    CString*& block = blocks[index / blockSize];
    if (!block) block = new CString[blockSize];
    return block[index % blockSize];
  }
  if (!others) others = new OtherTexts;
  return (*others)[id];
}

void clearTexts() noexcept {
  for (CString*& block : blocks) delete[] std::exchange(block, nullptr);
  delete std::exchange(others, nullptr);
}

}  // namespace detail
}  // namespace kpx
