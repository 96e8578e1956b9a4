#include "kpx/platform/LineText.h"

#include <string>

#include "kpx/platform/Terminal.h"
#include "kpx/text/Utf.h"

namespace kpx::detail {
namespace {

constexpr bool isLineBreak(char16_t unit) noexcept {
  return (unit >= u'\n' && unit <= u'\r') || unit == 0x85 || unit == 0x2028 || unit == 0x2029;
}

constexpr bool isSurrogate(char32_t code) noexcept { return code >= 0xD800 && code <= 0xDFFF; }

}  // namespace

CString withoutLineBreaks(std::u16string_view text) {
  std::u16string line;
  line.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') continue;
    line += isLineBreak(text[i]) ? u' ' : text[i];
  }
  return line;
}

CString terminalText(std::u16string_view text) {
  std::u16string shown;
  shown.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const char32_t code = nextCodePoint(text, i);
    const bool harmful = (steersTerminal(code) && code != U'\n') || isSurrogate(code);
    appendCodePoint(shown, harmful ? replacementCharacter : code);
  }
  return shown;
}

}  // namespace kpx::detail
