#include "kpx/text/Formatter.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "kpx/text/internal/NumberPieces.h"
#include "kpx/text/internal/TextSink.h"
#include "kpx/text/PrintDirective.h"
#include "kpx/text/Utf.h"
#include "kpx/text/Utf8Sequence.h"

namespace kpx::detail {
namespace {

constexpr std::size_t noLimit = static_cast<std::size_t>(-1);

/// Whether %c and %s mean wide characters: by modifier, else by the case of the letter.
template <class CharT>
bool meansWide(const PrintDirective& directive) noexcept {
  if (directive.length == LengthModifier::shortWidth) return false;
  if (directive.length == LengthModifier::longWidth || directive.length == LengthModifier::wide) {
    return true;
  }
  const bool lowerCase = directive.conversion == 'c' || directive.conversion == 's';
  return lowerCase == (sizeof(CharT) == sizeof(char16_t));
}

template <class CharT>
void appendAligned(TextSink<CharT>& out, const PrintDirective& directive,
                   std::basic_string_view<CharT> text) {
  const auto width = static_cast<std::size_t>(directive.width);
  const std::size_t padding = width > text.size() ? width - text.size() : 0;
  if (!directive.leftAligned) out.fill(padding, ' ');
  out.append(text);
  if (directive.leftAligned) out.fill(padding, ' ');
}

template <class CharT>
void appendPieces(TextSink<CharT>& out, const PrintDirective& directive, NumberPieces& pieces) {
  const auto width = static_cast<std::size_t>(directive.width);
  const std::size_t length = pieces.length();
  std::size_t padding = width > length ? width - length : 0;
  if (directive.zeroPadded && !directive.leftAligned && pieces.zeroPaddable) {
    pieces.leadingZeros += padding;
    padding = 0;
  }
  if (!directive.leftAligned) out.fill(padding, ' ');
  out.appendAscii({pieces.prefix, pieces.prefixLength});
  out.fill(pieces.leadingZeros, '0');
  out.appendAscii({pieces.body, pieces.bodyLength});
  out.fill(pieces.trailingZeros, '0');
  out.appendAscii({pieces.exponent, pieces.exponentLength});
  if (directive.leftAligned) out.fill(padding, ' ');
}

/// The length of a text that a 0 may end, looking at no more than `limit` units.
template <class Unit>
std::size_t boundedLength(const Unit* text, std::size_t limit) noexcept {
  if (limit == noLimit) return std::char_traits<Unit>::length(text);
  std::size_t length = 0;
  while (length < limit && text[length] != 0) ++length;
  return length;
}

/// The next character of a text of units that are not those of the result.
struct CharacterReader {
  const FormatArg& text;
  std::size_t at = 0;

  bool atEnd() const noexcept {
    if (text.length != FormatArg::unknownLength) return at >= text.length;
    switch (text.kind) {
      case FormatArg::Kind::narrowText:
        return static_cast<const char*>(text.pointer)[at] == 0;
      case FormatArg::Kind::wideText:
        return static_cast<const char16_t*>(text.pointer)[at] == 0;
      default:
        return static_cast<const wchar_t*>(text.pointer)[at] == 0;
    }
  }
  char32_t next() noexcept {
    switch (text.kind) {
      case FormatArg::Kind::narrowText: {
        const auto [code, length] =
            decodeUtf8(static_cast<const char*>(text.pointer) + at, text.length - at);
        at += length;
        return code == invalidSequence ? replacementCharacter : code;
      }
      case FormatArg::Kind::wideText: {
        const auto* units = static_cast<const char16_t*>(text.pointer) + at;
        const std::size_t readable = isHighSurrogate(units[0]) && text.length - at > 1 ? 2 : 1;
        std::size_t used = 0;
        const char32_t code = nextCodePoint({units, readable}, used);
        at += used;
        return code;
      }
      default: {
        const auto code = static_cast<char32_t>(static_cast<const wchar_t*>(text.pointer)[at++]);
        return code > 0x10FFFF ? replacementCharacter : code;
      }
    }
  }
};

std::size_t encode(char32_t code, char* to) noexcept { return encodeUtf8(code, to); }
std::size_t encode(char32_t code, char16_t* to) noexcept { return encodeUtf16(code, to); }

template <class CharT>
bool appendText(TextSink<CharT>& out, const PrintDirective& directive, const FormatArg& text) {
  constexpr FormatArg::Kind ownKind =
      sizeof(CharT) == sizeof(char16_t) ? FormatArg::Kind::wideText : FormatArg::Kind::narrowText;
  const std::size_t limit =
      directive.precision < 0 ? noLimit : static_cast<std::size_t>(directive.precision);
  if (text.kind != FormatArg::Kind::narrowText && text.kind != FormatArg::Kind::wideText &&
      text.kind != FormatArg::Kind::codeText) {
    return false;
  }
  if (text.pointer == nullptr) {
    TextSink<CharT> null;
    if (text.length == FormatArg::unknownLength) null.appendAscii("(null)");
    appendAligned(out, directive, null.view().substr(0, limit));
  } else if (text.kind == ownKind) {
    const auto* units = static_cast<const CharT*>(text.pointer);
    const std::size_t length = text.length == FormatArg::unknownLength
                                   ? boundedLength(units, limit)
                                   : std::min(text.length, limit);
    appendAligned(out, directive, {units, length});
  } else {
    TextSink<CharT> converted;
    for (CharacterReader reader{text}; converted.view().size() < limit && !reader.atEnd();) {
      CharT units[4];
      const std::size_t count = encode(reader.next(), units);
      if (count > limit - converted.view().size()) break;
      converted.append({units, count});
    }
    appendAligned(out, directive, converted.view());
  }
  return true;
}

template <class CharT>
bool appendCharacter(TextSink<CharT>& out, const PrintDirective& directive, const FormatArg& arg) {
  if (arg.kind != FormatArg::Kind::signedInteger && arg.kind != FormatArg::Kind::unsignedInteger) {
    return false;
  }
  CharT units[4];
  std::size_t count = 1;
  const bool isWide = meansWide<CharT>(directive);
  // As in C, a narrow character is one byte of the value; a wide one is a unit, and a code
  // point where the value is one that no unit can hold.
  char32_t code = static_cast<char32_t>(arg.integer);
  if (isWide && (code < 0x10000 || code > 0x10FFFF)) code &= 0xFFFF;
  if (!isWide) code &= 0xFF;
  if (isWide) {
    count = encode(code, units);
  } else if (sizeof(CharT) == 1 || code < 0x80) {
    units[0] = static_cast<CharT>(code);
  } else {
    units[0] = static_cast<CharT>(replacementCharacter);  // a lone byte is no character
  }
  appendAligned(out, directive, {units, count});
  return true;
}

template <class CharT>
bool appendPointer(TextSink<CharT>& out, const PrintDirective& directive, const FormatArg& arg) {
  PrintDirective digits = directive;
  digits.conversion = 'X';
  digits.length = LengthModifier::none;
  digits.precision = 2 * sizeof(void*);
  std::uint64_t address = 0;
  switch (arg.kind) {
    case FormatArg::Kind::real:
      return false;
    case FormatArg::Kind::signedInteger:
    case FormatArg::Kind::unsignedInteger:
      address = arg.integer;
      break;
    default:
      address = reinterpret_cast<std::uintptr_t>(arg.pointer);
      break;
  }
  NumberPieces pieces;
  printInteger(pieces, digits, address, sizeof(std::uint64_t));
  appendPieces(out, directive, pieces);
  return true;
}

template <class CharT>
bool appendConverted(TextSink<CharT>& out, const PrintDirective& directive, const FormatArg& arg) {
  const bool isInteger =
      arg.kind == FormatArg::Kind::signedInteger || arg.kind == FormatArg::Kind::unsignedInteger;
  switch (directive.conversion) {
    case 's':
    case 'S':
      return appendText(out, directive, arg);
    case 'c':
    case 'C':
      return appendCharacter(out, directive, arg);
    case 'p':
      return appendPointer(out, directive, arg);
    default:
      break;
  }
  if (directive.precision > largestFormatWidth) return false;
  NumberPieces pieces;
  switch (directive.conversion) {
    case 'd':
    case 'i':
    case 'u':
    case 'o':
    case 'x':
    case 'X':
      if (!isInteger) return false;
      printInteger(pieces, directive, arg.integer, arg.size);
      break;
    default:
      if (arg.kind == FormatArg::Kind::real) {
        printReal(pieces, directive, arg.real);
      } else if (arg.kind == FormatArg::Kind::signedInteger) {
        printReal(pieces, directive, static_cast<double>(static_cast<std::int64_t>(arg.integer)));
      } else if (isInteger) {
        printReal(pieces, directive, static_cast<double>(arg.integer));
      } else {
        return false;
      }
      break;
  }
  appendPieces(out, directive, pieces);
  return true;
}

/// Takes a width or precision from the arguments.
bool takeCount(const FormatArgs& args, std::size_t& next, int& count) noexcept {
  if (next >= args.size()) return false;
  const FormatArg& arg = args[next++];
  if (arg.kind != FormatArg::Kind::signedInteger && arg.kind != FormatArg::Kind::unsignedInteger) {
    return false;
  }
  const auto value = static_cast<std::int64_t>(arg.integer);
  if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max()) {
    return false;
  }
  count = static_cast<int>(value);
  return true;
}

template <class CharT>
bool formatAll(TextSink<CharT>& out, std::basic_string_view<CharT> format, const FormatArgs& args) {
  const CharT* at = format.data();
  const CharT* const end = at + format.size();
  std::size_t next = 0;
  for (;;) {
    const CharT* const percent = std::find(at, end, static_cast<CharT>('%'));
    out.append({at, static_cast<std::size_t>(percent - at)});
    if (percent == end) break;
    at = percent + 1;
    PrintDirective directive;
    if (!readPrintDirective(at, end, directive)) return false;
    if (directive.widthIsArgument) {
      if (!takeCount(args, next, directive.width)) return false;
      if (directive.width < 0) directive.leftAligned = true;
    }
    if (directive.precisionIsArgument && !takeCount(args, next, directive.precision)) return false;
    if (directive.width > largestFormatWidth || directive.width < -largestFormatWidth) {
      return false;
    }
    directive.width = std::abs(directive.width);
    if (directive.conversion == '%') {
      out.fill(1, '%');
    } else if (next >= args.size() || !appendConverted(out, directive, args[next++])) {
      return false;
    }
  }
  return out.view().size() <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

template <class CharT>
int appendAll(std::basic_string<CharT>& text, std::basic_string_view<CharT> format,
              const FormatArgs& args) {
  TextSink<CharT> out;
  if (!formatAll(out, format, args)) return -1;
  text.append(out.view());
  return static_cast<int>(out.view().size());
}

/// Ends the text in the buffer and answers its length, or -1 when it had to be cut.
template <class Unit, class Text>
int copyToBuffer(Unit* buffer, std::size_t size, const Text& text) noexcept {
  const std::size_t written = std::min(text.size(), size - 1);
  std::copy_n(text.data(), written, buffer);
  buffer[written] = 0;
  return written == text.size() ? static_cast<int>(written) : -1;
}

template <class Unit>
int formatWideToBuffer(Unit* buffer, std::size_t size, const TextArg& format,
                       const FormatArgs& args) noexcept {
  if (buffer == nullptr || size == 0 || format.isNull()) return -1;
  try {
    TextSink<char16_t> out;
    if (!formatAll<char16_t>(out, TextUnits(format), args)) return -1;
    if constexpr (sizeof(Unit) == sizeof(char16_t)) return copyToBuffer(buffer, size, out.view());
    return copyToBuffer(buffer, size, wideFromUtf16(out.view()));
  } catch (...) {
    return -1;
  }
}

bool writeAll(std::FILE* stream, std::string_view bytes) noexcept {
  return std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
}

}  // namespace

int appendFormatted(std::u16string& text, std::u16string_view format, const FormatArgs& args) {
  return appendAll(text, format, args);
}

int appendFormatted(std::string& text, std::string_view format, const FormatArgs& args) {
  return appendAll(text, format, args);
}

int formatToBuffer(char16_t* buffer, std::size_t size, const TextArg& format,
                   const FormatArgs& args) noexcept {
  return formatWideToBuffer(buffer, size, format, args);
}

int formatToBuffer(wchar_t* buffer, std::size_t size, const TextArg& format,
                   const FormatArgs& args) noexcept {
  return formatWideToBuffer(buffer, size, format, args);
}

int formatToBuffer(char* buffer, std::size_t size, std::string_view format,
                   const FormatArgs& args) noexcept {
  if (buffer == nullptr || size == 0 || format.data() == nullptr) return -1;
  try {
    TextSink<char> out;
    return formatAll(out, format, args) ? copyToBuffer(buffer, size, out.view()) : -1;
  } catch (...) {
    return -1;
  }
}

int formatToStream(std::FILE* stream, const TextArg& format, const FormatArgs& args) noexcept {
  if (stream == nullptr || format.isNull()) return -1;
  try {
    TextSink<char16_t> out;
    if (!formatAll<char16_t>(out, TextUnits(format), args)) return -1;
    return writeAll(stream, utf8FromUtf16(out.view())) ? static_cast<int>(out.view().size()) : -1;
  } catch (...) {
    return -1;
  }
}

int formatToStream(std::FILE* stream, std::string_view format, const FormatArgs& args) noexcept {
  if (stream == nullptr || format.data() == nullptr) return -1;
  try {
    TextSink<char> out;
    if (!formatAll(out, format, args)) return -1;
    return writeAll(stream, out.view()) ? static_cast<int>(out.view().size()) : -1;
  } catch (...) {
    return -1;
  }
}

namespace {

/// Keeps its own copy of the list, so that reading goes on where a function called stopped.
struct ListReader {
  explicit ListReader(std::va_list source) { va_copy(list, source); }
  ~ListReader() { va_end(list); }
  ListReader(const ListReader&) = delete;
  ListReader& operator=(const ListReader&) = delete;

  FormatArg integer(LengthModifier length) {
    switch (length) {
      case LengthModifier::longWidth:
        return va_arg(list, long);
      case LengthModifier::longDouble:
      case LengthModifier::longLong:
        return va_arg(list, long long);
      case LengthModifier::maximum:
        return va_arg(list, std::intmax_t);
      case LengthModifier::size:
        return va_arg(list, std::size_t);
      case LengthModifier::difference:
        return va_arg(list, std::ptrdiff_t);
      default:
        return va_arg(list, int);
    }
  }
  FormatArg real(LengthModifier length) {
    if (length == LengthModifier::longDouble) return va_arg(list, long double);
    return va_arg(list, double);
  }
  /// `wideIsCodes`: wide text has 32 bits a character, as the format has.
  FormatArg value(const PrintDirective& directive, bool wideIsCodes) {
    switch (directive.conversion) {
      case 'd':
      case 'i':
      case 'u':
      case 'o':
      case 'x':
      case 'X':
        return integer(directive.length);
      case 'c':
      case 'C':
        return va_arg(list, int);
      case 's':
      case 'S':
        if (!meansWide<char16_t>(directive)) return va_arg(list, const char*);
        if (wideIsCodes) return va_arg(list, const wchar_t*);
        return va_arg(list, const char16_t*);
      case 'p':
        return va_arg(list, const void*);
      default:
        return real(directive.length);
    }
  }

  std::va_list list;
};

}  // namespace

VariableArguments::VariableArguments(const TextArg& format, std::va_list list) {
  ListReader reader(list);
  const TextUnits units(format);
  const char16_t* at = units.view().data();
  const char16_t* const end = at + units.view().size();
  while ((at = std::find(at, end, u'%')) != end) {
    ++at;
    PrintDirective directive;
    if (!readPrintDirective(at, end, directive)) break;
    if (directive.widthIsArgument) args_.push_back(reader.integer(LengthModifier::none));
    if (directive.precisionIsArgument) args_.push_back(reader.integer(LengthModifier::none));
    if (directive.conversion != '%') {
      args_.push_back(reader.value(directive, format.isCodes()));
    }
  }
}

}  // namespace kpx::detail
