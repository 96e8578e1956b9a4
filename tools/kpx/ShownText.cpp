#include "tools/kpx/ShownText.h"

#include <cstdint>

#include "kpx/platform/Terminal.h"
#include "kpx/text/Utf.h"
#include "tools/kpx/Exit.h"

namespace kpx::tool {
namespace {

std::string byteEscape(char32_t code) {
  switch (code) {
    case U'\n':
      return "\\n";
    case U'\r':
      return "\\r";
    case U'\t':
      return "\\t";
    default:
      break;
  }
  static constexpr char digits[] = "0123456789abcdef";
  std::u16string units;
  appendCodePoint(units, code);
  std::string escape;
  for (const char byte : utf8FromUtf16(units)) {
    const auto value = static_cast<unsigned char>(byte);
    escape += {'\\', 'x', digits[value >> 4], digits[value & 15]};
  }
  return escape;
}

std::string unitEscape(char32_t code) {
  CString escape;
  escape.Format(u"\\u%04x", static_cast<unsigned>(code));
  return escape.utf8();
}

enum class Escape : std::uint8_t { no, yes, doubled };

/// The text as UTF-8, with each character as `decide` says of it and the place behind it.
template <class Decide>
std::string escaped(std::u16string_view text, Decide decide,
                    std::string (*escapeOf)(char32_t) = &byteEscape) {
  std::string out;
  std::u16string plain;
  for (std::size_t i = 0; i < text.size();) {
    char32_t code = nextCodePoint(text, i);
    if (code >= 0xD800 && code <= 0xDFFF) code = replacementCharacter;
    const Escape escape = decide(code, i);
    if (escape == Escape::yes) {
      appendUtf16(out, plain);
      plain.clear();
      out += escapeOf(code);
      continue;
    }
    appendCodePoint(plain, code);
    if (escape == Escape::doubled) appendCodePoint(plain, code);
  }
  appendUtf16(out, plain);
  return out;
}

Escape escapeIf(bool steers) noexcept { return steers ? Escape::yes : Escape::no; }

}  // namespace

std::string asUtf8(const CString& text) {
  return escaped(text, [](char32_t, std::size_t) { return Escape::no; });
}

std::string shownOnOneLine(const CString& text) {
  constexpr std::u16string_view escapeLetters = u"nrtx\\";
  const std::u16string_view units = text;
  return escaped(text, [&](char32_t code, std::size_t next) {
    if (steersTerminal(code)) return Escape::yes;
    if (code != U'\\' || next == units.size()) return Escape::no;
    std::size_t behind = next;
    return escapeLetters.find(units[next]) != escapeLetters.npos ||
                   steersTerminal(nextCodePoint(units, behind))
               ? Escape::doubled
               : Escape::no;
  });
}

std::string shownPath(const CString& path) {
  return escaped(path, [](char32_t code, std::size_t) { return escapeIf(steersTerminal(code)); });
}

std::string shownName(const CString& name) {
  constexpr int mostUnits = 100;
  if (name.GetLength() <= mostUnits) return shownPath(name);
  return shownPath(name.Left(mostUnits)) + "...";
}

std::string onOneLine(std::string_view sentence) {
  // Paths and what a person typed fit in whole; the end of a sentence tells what to do.
  constexpr int mostUnits = 1000;
  constexpr int frontUnits = 700;
  constexpr int endUnits = 200;
  const CString text = CString::fromUtf8(sentence);
  if (text.GetLength() <= mostUnits) return shownPath(text);
  return shownPath(text.Left(frontUnits)) + " ... " + shownPath(text.Right(endUnits));
}

std::string forTerminal(std::string_view lines) {
  const CString text = CString::fromUtf8(lines);
  const std::u16string_view units = text;
  return escaped(units, [&](char32_t code, std::size_t next) {
    const bool endsLine = code == U'\r' && next < units.size() && units[next] == u'\n';
    return escapeIf(steersTerminal(code) && code != U'\n' && code != U'\t' && !endsLine);
  });
}

std::string harmlessJson(std::string_view json) {
  return escaped(
      CString::fromUtf8(json),
      [](char32_t code, std::size_t) { return escapeIf(steersTerminal(code) && code != U'\n'); },
      &unitEscape);
}

CString fromArgument(const std::string& argument) {
  std::u16string text;
  if (appendUtf8(text, argument) != std::string::npos) {
    throw Failure(Exit::usage, "'" + argument + "' is not valid UTF-8");
  }
  return CString(std::move(text));
}

}  // namespace kpx::tool
