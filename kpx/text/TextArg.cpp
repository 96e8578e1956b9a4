#include "kpx/text/TextArg.h"

namespace kpx::detail {

std::unique_ptr<const std::u16string> copyOfCodes(std::wstring_view codes) {
  auto copy = std::make_unique<std::u16string>();
  appendWide(*copy, codes);
  return copy;
}

}  // namespace kpx::detail
