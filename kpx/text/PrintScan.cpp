#include "kpx/text/PrintScan.h"

#include "kpx/text/internal/RealParser.h"

namespace kpx {
namespace {

template <class CharT>
double readReal(std::basic_string_view<CharT> text, const CharT** end = nullptr) noexcept {
  const CharT* at = text.data();
  const CharT* const last = at + text.size();
  while (at != last && detail::isBlank(*at)) ++at;
  const detail::ParsedReal<CharT> parsed = detail::parseReal(at, last, false);
  if (end != nullptr) *end = parsed.end == at ? text.data() : parsed.end;
  return parsed.value;
}

template <class CharT>
double readReal(const CharT* text, CharT** end) noexcept {
  const CharT* stopped = text;
  const double value =
      text == nullptr ? 0 : readReal(std::basic_string_view<CharT>(text), &stopped);
  // As in C, the caller gets back the constness that the text came with.
  if (end != nullptr) *end = const_cast<CharT*>(stopped);
  return value;
}

}  // namespace

double kpxatof(detail::NarrowArg text) noexcept { return readReal(text.view()); }
double kpxwtof(const TextArg& text) noexcept {
  return text.isCodes() ? readReal(text.codes()) : readReal(text.units());
}

double kpxstrtod(const char* text, char** end) noexcept { return readReal(text, end); }
double kpxwcstod(const char16_t* text, char16_t** end) noexcept { return readReal(text, end); }
double kpxwcstod(const wchar_t* text, wchar_t** end) noexcept { return readReal(text, end); }

std::size_t kpxstrlen(const char16_t* text) noexcept {
  return text == nullptr ? 0 : std::char_traits<char16_t>::length(text);
}
std::size_t kpxstrlen(const wchar_t* text) noexcept {
  return text == nullptr ? 0 : std::char_traits<wchar_t>::length(text);
}
std::size_t kpxstrlen(const CString& text) noexcept { return kpxstrlen(text.GetString()); }

int kpxvfwprintf(std::FILE* stream, const TextArg& format, std::va_list list) noexcept {
  if (stream == nullptr || format.isNull()) return -1;
  try {
    const detail::VariableArguments arguments(format, list);
    return detail::formatToStream(stream, format, arguments.args());
  } catch (...) {
    return -1;
  }
}

int kpxvfwprintf_s(std::FILE* stream, const TextArg& format, std::va_list list) noexcept {
  return kpxvfwprintf(stream, format, list);
}

}  // namespace kpx
