#include "kpx/text/TextTools.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include "kpx/report/Error.h"
#include "kpx/text/CaseFold.h"
#include "kpx/text/NumberText.h"
#include "kpx/text/Operations.h"
#include "kpx/text/Wildcards.h"

namespace kpx {
namespace {

using View = std::u16string_view;

View withoutTrailingSeparators(View path) noexcept {
  while (!path.empty() && isPathSeparator(path.back())) path.remove_suffix(1);
  return path;
}

View withoutLeadingSeparators(View path) noexcept {
  while (!path.empty() && isPathSeparator(path.front())) path.remove_prefix(1);
  return path;
}

bool samePathUnit(char16_t a, char16_t b) noexcept {
  return foldCase(a) == foldCase(b) || (isPathSeparator(a) && isPathSeparator(b));
}

bool needsRtfEscape(char16_t unit) noexcept {
  return unit == u'\\' || unit == u'{' || unit == u'}' || unit > 127;
}

std::u16string rtfText(View text) {
  std::u16string encoded;
  encoded.reserve(text.size() * 2);
  for (const char16_t unit : text) {
    if (!needsRtfEscape(unit)) {
      encoded += unit;
    } else if (unit <= 127) {
      encoded += u'\\';
      encoded += unit;
    } else {
      encoded += u"\\u";
      encoded += detail::longAsText(static_cast<std::int16_t>(unit)).view();
      encoded += u'?';
    }
  }
  return encoded;
}

}  // namespace

int kpxHasWildcard(const CString& text) noexcept {
  return text.view().find_first_of(u"*?") == View::npos ? 0 : 1;
}

int kpxMatchWildcardString(const CString& text, const CString& pattern) {
  return Guarded("kpxMatchWildcardString"_text, 0,
                 [&] { return detail::matchesWildcards(text, pattern) ? 1 : 0; });
}

void kpxRtfEncode(CString& text) {
  Guarded("kpxRtfEncode"_text, [&] {
    if (std::any_of(text.begin(), text.end(), needsRtfEscape)) text.units() = rtfText(text);
  });
}

void kpxUTF8Encode(CString& text) {
  Guarded("kpxUTF8Encode"_text, [&] {
    const std::string bytes = text.utf8();
    // Growing keeps the text if there is no memory for it.
    text.units().resize(bytes.size());
    std::transform(bytes.begin(), bytes.end(), text.units().begin(),
                   [](char byte) { return static_cast<unsigned char>(byte); });
  });
}

CString UTF8to16(const char* bytes, int length) {
  if (!bytes || length <= 0) return {};
  return Guarded("UTF8to16"_text, CString(), [&] {
    return CString::fromUtf8({bytes, static_cast<std::size_t>(length)});
  });
}

CString UTF8to16(const char* text) {
  return Guarded("UTF8to16"_text, CString(),
                 [&] { return text ? CString::fromUtf8(text) : CString(); });
}

CString kpxChangeFormat(const CString& text, const CString& from, const CString& to) {
  return Guarded("kpxChangeFormat"_text, CString(), [&] {
    CString changed(text);
    changed.Replace(from, to);
    return changed;
  });
}

View detail::withoutLeadingBlanks(View text) noexcept {
  return text.substr(std::min(text.find_first_not_of(u' '), text.size()));
}

View detail::withoutTrailingBlanks(View text) noexcept {
  // With nothing to keep, find_last_not_of answers npos, and npos + 1 is 0.
  return text.substr(0, text.find_last_not_of(u' ') + 1);
}

View detail::withoutBlanks(View text) noexcept {
  return detail::withoutLeadingBlanks(detail::withoutTrailingBlanks(text));
}

CString detail::joinPath(View folder, View file) {
  if (folder.empty()) return CString(file);
  if (file.empty()) return CString(folder);
  const std::size_t used = folder.find_last_of(u"/\\");
  const char16_t separator =
      used != View::npos ? folder[used]
                         : static_cast<char16_t>(std::filesystem::path::preferred_separator);
  folder = withoutTrailingSeparators(folder);
  file = withoutLeadingSeparators(file);
  CString path;
  path.units().reserve(folder.size() + 1 + file.size());
  path += folder;
  path += separator;
  path += file;
  return path;
}

CString detail::pathBelow(View path, View folder) {
  const View front = withoutTrailingSeparators(folder);
  // Of a folder that is nothing but separators, the root, every absolute path is a part.
  const bool isRoot = front.empty() && !folder.empty();
  if (folder.empty() || path.size() < front.size() ||
      !std::equal(front.begin(), front.end(), path.begin(), samePathUnit)) {
    return CString(path);
  }
  const View rest = path.substr(front.size());
  const bool endsName = rest.empty() ? !isRoot : isPathSeparator(rest.front());
  return CString(endsName ? withoutLeadingSeparators(rest) : path);
}

}  // namespace kpx
