#include "kpx/text/TextOrder.h"

#include "kpx/text/CaseFold.h"

namespace kpx {

int utlCompStr(const CString& left, const CString& right) noexcept {
  return detail::compareText(left.view(), right.view());
}

int utlCompStrNoCase(const CString& left, const CString& right) noexcept {
  return detail::compareTextNoCase(left.view(), right.view());
}

void utlInsertSort(unsigned* values, std::size_t count) noexcept {
  for (std::size_t i = 1; i < count; ++i) {
    const unsigned value = values[i];
    std::size_t place = i;
    for (; place > 0 && values[place - 1] > value; --place) values[place] = values[place - 1];
    values[place] = value;
  }
}

void utlInsertSort(std::vector<unsigned>& values) noexcept {
  utlInsertSort(values.data(), values.size());
}

}  // namespace kpx
