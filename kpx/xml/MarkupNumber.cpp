#include "kpx/xml/MarkupNumber.h"

#include <charconv>

namespace kpx::detail {

IntegerText::IntegerText(bool isNegative, std::uint64_t bits) noexcept {
  char digits[20];
  char* from = digits;
  if (isNegative) units_[length_++] = u'-';
  const char* const end =
      std::to_chars(digits, digits + sizeof digits, isNegative ? 0 - bits : bits).ptr;
  while (from != end) units_[length_++] = static_cast<unsigned char>(*from++);
}

}  // namespace kpx::detail
