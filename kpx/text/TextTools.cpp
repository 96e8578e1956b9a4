#include "kpx/text/TextTools.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "kpx/text/CaseFold.h"
#include "kpx/text/NumberText.h"

namespace kpx {
namespace {

using View = std::u16string_view;
constexpr std::size_t notFound = View::npos;

bool matchesAt(View text, std::size_t at, View piece) noexcept {
  for (std::size_t i = 0; i < piece.size(); ++i) {
    if (piece[i] != u'?' && piece[i] != text[at + i]) return false;
  }
  return true;
}

/// Up to this length, comparing at each offset costs less than preparing the piece.
constexpr std::size_t shortPiece = 64;

/// Finds a long piece without wildcards in one pass (after Knuth, Morris and Pratt), for texts
/// made of repetitions.
std::size_t findLong(View text, View piece) {
  // For each length of a matched beginning, the longest shorter one that ends it too.
  std::vector<std::size_t> shorter(piece.size() + 1, 0);
  std::size_t matched = 0;
  for (std::size_t i = 1; i < piece.size(); ++i) {
    while (matched > 0 && piece[i] != piece[matched]) matched = shorter[matched];
    if (piece[i] == piece[matched]) ++matched;
    shorter[i + 1] = matched;
  }
  matched = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    while (matched > 0 && text[i] != piece[matched]) matched = shorter[matched];
    if (text[i] == piece[matched]) ++matched;
    if (matched == piece.size()) return i + 1 - matched;
  }
  return notFound;
}

std::size_t findPiece(View text, View piece) {
  if (piece.size() > text.size()) return notFound;
  if (piece.find(u'?') == notFound) {
    return piece.size() <= shortPiece ? text.find(piece) : findLong(text, piece);
  }
  const std::size_t last = text.size() - piece.size();
  for (std::size_t at = 0; at <= last; ++at) {
    if (matchesAt(text, at, piece)) return at;
  }
  return notFound;
}

bool matches(View text, View pattern) {
  const std::size_t firstStar = pattern.find(u'*');
  if (firstStar == notFound) {
    return text.size() == pattern.size() && matchesAt(text, 0, pattern);
  }
  const std::size_t lastStar = pattern.rfind(u'*');
  const View front = pattern.substr(0, firstStar);
  const View back = pattern.substr(lastStar + 1);
  if (text.size() < front.size() + back.size() || !matchesAt(text, 0, front) ||
      !matchesAt(text, text.size() - back.size(), back)) {
    return false;
  }
  text = text.substr(front.size(), text.size() - front.size() - back.size());
  // The earliest place of a piece leaves most room for the pieces behind it, so no other place
  // needs to be tried.
  for (std::size_t at = firstStar; at < lastStar;) {
    const std::size_t end = pattern.find(u'*', at + 1);
    const View piece = pattern.substr(at + 1, end - at - 1);
    const std::size_t place = findPiece(text, piece);
    if (place == notFound) return false;
    text.remove_prefix(place + piece.size());
    at = end;
  }
  return true;
}

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

}  // namespace

int kpxHasWildcard(const CString& text) noexcept {
  return text.view().find_first_of(u"*?") == notFound ? 0 : 1;
}

int kpxMatchWildcardString(const CString& text, const CString& pattern) {
  return matches(text, pattern) ? 1 : 0;
}

void kpxRtfEncode(CString& text) {
  const auto needsEscape = [](char16_t unit) {
    return unit == u'\\' || unit == u'{' || unit == u'}' || unit > 127;
  };
  if (std::none_of(text.begin(), text.end(), needsEscape)) return;
  std::u16string encoded;
  encoded.reserve(text.view().size() * 2);
  for (const char16_t unit : text) {
    if (!needsEscape(unit)) {
      encoded += unit;
    } else if (unit <= 127) {
      encoded += u'\\';
      encoded += unit;
    } else {
      encoded += u"\\u";
      encoded += utlLongAsText(static_cast<std::int16_t>(unit)).view();
      encoded += u'?';
    }
  }
  text.units() = std::move(encoded);
}

void kpxUTF8Encode(CString& text) {
  const std::string bytes = text.utf8();
  text.units().resize(bytes.size());
  std::transform(bytes.begin(), bytes.end(), text.units().begin(),
                 [](char byte) { return static_cast<unsigned char>(byte); });
}

CString UTF8to16(const char* bytes, int length) {
  if (!bytes || length <= 0) return {};
  return CString::fromUtf8({bytes, static_cast<std::size_t>(length)});
}

CString UTF8to16(const char* text) { return text ? CString::fromUtf8(text) : CString(); }

CString kpxChangeFormat(const CString& text, const CString& from, const CString& to) {
  CString changed(text);
  changed.Replace(from, to);
  return changed;
}

View withoutLeadingBlanks(View text) noexcept {
  return text.substr(std::min(text.find_first_not_of(u' '), text.size()));
}

View withoutTrailingBlanks(View text) noexcept {
  // With nothing to keep, find_last_not_of answers npos, and npos + 1 is 0.
  return text.substr(0, text.find_last_not_of(u' ') + 1);
}

View withoutBlanks(View text) noexcept { return withoutLeadingBlanks(withoutTrailingBlanks(text)); }

CString joinPath(View folder, View file) {
  if (folder.empty()) return CString(file);
  if (file.empty()) return CString(folder);
  const std::size_t used = folder.find_last_of(u"/\\");
  const char16_t separator =
      used != notFound ? folder[used]
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

CString pathBelow(View path, View folder) {
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
