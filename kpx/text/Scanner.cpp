#include "kpx/text/Scanner.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "kpx/text/CString.h"
#include "kpx/text/internal/RealParser.h"
#include "kpx/text/internal/ScanSet.h"
#include "kpx/text/LengthModifier.h"
#include "kpx/text/Utf.h"

namespace kpx::detail {
namespace {

struct ScanDirective {
  bool suppressed = false;
  std::size_t width = 0;  // 0: none
  LengthModifier length = LengthModifier::none;
  char conversion = 0;
};

enum class Outcome { matched, endOfText, mismatch, refused };

struct ParsedInteger {
  bool negative = false;
  std::uint64_t magnitude = 0;  // the largest value when there are more digits than fit
};

/// Reads digits with an optional sign; base 0 tells it from the prefix 0x or 0.
template <class CharT>
bool parseInteger(const CharT*& at, const CharT* end, unsigned base, ParsedInteger& parsed) {
  const auto digitAt = [&](const CharT* place) {
    if (place == end) return 99u;
    const CharT unit = *place;
    if (unit >= '0' && unit <= '9') return static_cast<unsigned>(unit - '0');
    if (unit >= 'a' && unit <= 'z') return static_cast<unsigned>(unit - 'a' + 10);
    if (unit >= 'A' && unit <= 'Z') return static_cast<unsigned>(unit - 'A' + 10);
    return 99u;
  };
  parsed.negative = at != end && *at == '-';
  if (at != end && (*at == '-' || *at == '+')) ++at;
  if ((base == 0 || base == 16) && digitAt(at) == 0 && digitAt(at + 1) == 'x' - 'a' + 10 &&
      digitAt(at + 2) < 16) {
    at += 2;
    base = 16;
  }
  if (base == 0) base = digitAt(at) == 0 ? 8 : 10;
  const CharT* const first = at;
  constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
  for (unsigned digit; (digit = digitAt(at)) < base; ++at) {
    parsed.magnitude =
        parsed.magnitude > (largest - digit) / base ? largest : parsed.magnitude * base + digit;
  }
  return at != first;
}

void storeInteger(const ScanArg& target, bool isSigned, const ParsedInteger& parsed) {
  const unsigned bits = 8u * target.size;
  const std::uint64_t all = std::numeric_limits<std::uint64_t>::max() >> (64 - bits);
  const std::uint64_t limit = isSigned ? (all >> 1) + (parsed.negative ? 1 : 0) : all;
  // A negative number wraps around in an unsigned target, as in C.
  const bool wraps = parsed.negative && !isSigned;
  std::uint64_t value = wraps ? parsed.magnitude : std::min(parsed.magnitude, limit);
  if (parsed.negative) value = ~value + 1;
  switch (target.size) {
    case 1:
      *static_cast<std::uint8_t*>(target.pointer) = static_cast<std::uint8_t>(value);
      break;
    case 2: {
      const auto narrowed = static_cast<std::uint16_t>(value);
      std::memcpy(target.pointer, &narrowed, sizeof narrowed);
      break;
    }
    case 4: {
      const auto narrowed = static_cast<std::uint32_t>(value);
      std::memcpy(target.pointer, &narrowed, sizeof narrowed);
      break;
    }
    default:
      std::memcpy(target.pointer, &value, sizeof value);
      break;
  }
}

template <class CharT>
class Scan {
 public:
  Scan(std::basic_string_view<CharT> text, const ScanArgs& args, bool sized) noexcept
      : at_(text.data()), end_(text.data() + text.size()), args_(args), sized_(sized) {}

  int run(std::basic_string_view<CharT> format) {
    const CharT* at = format.data();
    const CharT* const end = at + format.size();
    while (at != end) {
      Outcome outcome = Outcome::matched;
      const CharT unit = *at++;
      if (isBlank(unit)) {
        skipBlanks();
      } else if (unit != '%') {
        outcome = literal(unit);
      } else {
        outcome = conversion(at, end);
      }
      if (outcome == Outcome::endOfText && !converted_) return -1;
      if (outcome != Outcome::matched) break;
    }
    return assigned_;
  }

  int assigned() const noexcept { return assigned_; }

 private:
  void skipBlanks() noexcept {
    while (at_ != end_ && isBlank(*at_)) ++at_;
  }

  Outcome literal(CharT unit) noexcept {
    if (at_ == end_) return Outcome::endOfText;
    if (*at_ != unit) return Outcome::mismatch;
    ++at_;
    return Outcome::matched;
  }

  Outcome conversion(const CharT*& at, const CharT* end) {
    ScanDirective directive;
    if (at != end && *at == '*') {
      directive.suppressed = true;
      ++at;
    }
    if (at != end && *at >= '0' && *at <= '9') {
      directive.width =
          static_cast<std::size_t>(readCount(at, end, std::numeric_limits<int>::max()));
      if (directive.width == 0) return Outcome::refused;
    }
    directive.length = readLengthModifier(at, end);
    if (at == end || *at >= 0x80) return Outcome::refused;
    directive.conversion = static_cast<char>(*at++);
    if (directive.conversion == '%') {
      skipBlanks();
      return literal('%');
    }
    const Outcome outcome = convert(directive, at, end);
    if (outcome == Outcome::matched) {
      converted_ = true;
      if (!directive.suppressed) ++assigned_;
    }
    return outcome;
  }

  Outcome convert(const ScanDirective& directive, const CharT*& at, const CharT* end) {
    switch (directive.conversion) {
      case 'd':
        return integer(directive, 10);
      case 'i':
        return integer(directive, 0);
      case 'u':
        return integer(directive, 10);
      case 'o':
        return integer(directive, 8);
      case 'x':
      case 'X':
      case 'p':
        return integer(directive, 16);
      case 'f':
      case 'F':
      case 'e':
      case 'E':
      case 'g':
      case 'G':
      case 'a':
      case 'A':
        return real(directive);
      case 'c':
      case 'C':
        return characters(directive);
      case 's':
      case 'S':
        skipBlanks();
        return text(directive, [](CharT unit) { return !isBlank(unit); });
      case '[': {
        ScanSet<CharT> set;
        if (!set.read(at, end)) return Outcome::refused;
        return text(directive, [&](CharT unit) { return set.contains(unit); });
      }
      default:
        return Outcome::refused;
    }
  }

  /// The end of what a conversion may read.
  const CharT* fieldEnd(const ScanDirective& directive) const noexcept {
    const auto rest = static_cast<std::size_t>(end_ - at_);
    return directive.width == 0 || directive.width > rest ? end_ : at_ + directive.width;
  }

  const ScanArg* nextTarget() noexcept { return next_ < args_.size() ? &args_[next_++] : nullptr; }

  Outcome integer(const ScanDirective& directive, unsigned base) {
    skipBlanks();
    if (at_ == end_) return Outcome::endOfText;
    const CharT* place = at_;
    ParsedInteger parsed;
    if (!parseInteger(place, fieldEnd(directive), base, parsed)) return Outcome::mismatch;
    if (!directive.suppressed) {
      const ScanArg* const target = nextTarget();
      if (target == nullptr || target->pointer == nullptr) return Outcome::refused;
      if (directive.conversion == 'p') {
        if (target->kind != ScanArg::Kind::address) return Outcome::refused;
        *static_cast<void**>(target->pointer) =
            // An address was asked for. NOLINTNEXTLINE(performance-no-int-to-ptr)
            reinterpret_cast<void*>(static_cast<std::uintptr_t>(parsed.magnitude));
      } else {
        // A char is a number only where the format says so.
        const bool isByte = target->kind == ScanArg::Kind::narrowText &&
                            directive.length == LengthModifier::character;
        if (target->kind != ScanArg::Kind::integer && !isByte) return Outcome::refused;
        storeInteger(*target, directive.conversion == 'd' || directive.conversion == 'i', parsed);
      }
    }
    at_ = place;
    return Outcome::matched;
  }

  Outcome real(const ScanDirective& directive) {
    skipBlanks();
    if (at_ == end_) return Outcome::endOfText;
    const ParsedReal<CharT> parsed = parseReal(at_, fieldEnd(directive), false);
    if (parsed.end == at_) return Outcome::mismatch;
    if (!directive.suppressed) {
      const ScanArg* const target = nextTarget();
      if (target == nullptr || target->pointer == nullptr) return Outcome::refused;
      switch (target->kind) {
        case ScanArg::Kind::singleReal:
          *static_cast<float*>(target->pointer) = static_cast<float>(parsed.value);
          break;
        case ScanArg::Kind::doubleReal:
          *static_cast<double*>(target->pointer) = parsed.value;
          break;
        case ScanArg::Kind::longReal:
          *static_cast<long double*>(target->pointer) = parsed.value;
          break;
        default:
          return Outcome::refused;
      }
    }
    at_ = parsed.end;
    return Outcome::matched;
  }

  template <class Belongs>
  Outcome text(const ScanDirective& directive, Belongs belongs) {
    if (at_ == end_) return Outcome::endOfText;
    const CharT* const limit = fieldEnd(directive);
    const CharT* last = at_;
    while (last != limit && belongs(*last)) ++last;
    if (last == at_) return Outcome::mismatch;
    return take(directive, last, true);
  }

  Outcome characters(const ScanDirective& directive) {
    if (at_ == end_) return Outcome::endOfText;
    const std::size_t count = std::max<std::size_t>(directive.width, 1);
    if (count > static_cast<std::size_t>(end_ - at_)) return Outcome::mismatch;
    return take(directive, at_ + count, false);
  }

  /// Stores what lies before `last` and goes on there.
  Outcome take(const ScanDirective& directive, const CharT* last, bool terminated) {
    const std::basic_string_view<CharT> found(at_, static_cast<std::size_t>(last - at_));
    if (!directive.suppressed) {
      const ScanArg* const target = nextTarget();
      if (target == nullptr || target->pointer == nullptr) return Outcome::refused;
      const bool isBuffer = target->kind == ScanArg::Kind::narrowText ||
                            target->kind == ScanArg::Kind::wideText ||
                            target->kind == ScanArg::Kind::codeText;
      std::size_t size = static_cast<std::size_t>(-1);
      if (sized_ && isBuffer) {
        const ScanArg* const given = nextTarget();
        if (given == nullptr || given->kind != ScanArg::Kind::bufferSize) return Outcome::refused;
        size = given->bufferSize;
      }
      if (!store(*target, size, found, terminated)) return Outcome::refused;
    }
    at_ = last;
    return Outcome::matched;
  }

  static bool store(const ScanArg& target, std::size_t size, std::string_view found,
                    bool terminated) {
    if (target.kind == ScanArg::Kind::narrowText) {
      return fill(static_cast<char*>(target.pointer), size, found, terminated);
    }
    std::u16string wide;
    appendUtf8(wide, found);
    return storeWide(target, size, wide, terminated);
  }

  static bool store(const ScanArg& target, std::size_t size, std::u16string_view found,
                    bool terminated) {
    if (target.kind == ScanArg::Kind::narrowText) {
      return fill<char>(static_cast<char*>(target.pointer), size, utf8FromUtf16(found), terminated);
    }
    return storeWide(target, size, found, terminated);
  }

  static bool storeWide(const ScanArg& target, std::size_t size, std::u16string_view found,
                        bool terminated) {
    if (target.kind == ScanArg::Kind::wideText) {
      return fill(static_cast<char16_t*>(target.pointer), size, found, terminated);
    }
    if (target.kind == ScanArg::Kind::codeText) {
      return fill<wchar_t>(static_cast<wchar_t*>(target.pointer), size, wideFromUtf16(found),
                           terminated);
    }
    if (target.kind != ScanArg::Kind::string) return false;
    static_cast<CString*>(target.pointer)->Assign(found);
    return true;
  }

  template <class Unit>
  static bool fill(Unit* buffer, std::size_t size, std::basic_string_view<Unit> text,
                   bool terminated) {
    if (text.size() + (terminated ? 1 : 0) > size) {
      if (size > 0) buffer[0] = 0;
      return false;
    }
    std::copy(text.begin(), text.end(), buffer);
    if (terminated) buffer[text.size()] = 0;
    return true;
  }

  const CharT* at_;
  const CharT* const end_;
  const ScanArgs& args_;
  const bool sized_;
  std::size_t next_ = 0;
  int assigned_ = 0;
  bool converted_ = false;
};

template <class CharT>
int scan(std::basic_string_view<CharT> text, std::basic_string_view<CharT> format,
         const ScanArgs& args, bool sized) noexcept {
  Scan<CharT> state(text, args, sized);
  try {
    return state.run(format);
  } catch (...) {
    return state.assigned();
  }
}

}  // namespace

int scanText(const TextArg& text, const TextArg& format, const ScanArgs& args,
             bool sized) noexcept {
  if (text.isNull() || format.isNull()) return -1;
  if (!text.isCodes() && !format.isCodes()) return scan(text.units(), format.units(), args, sized);
  try {
    return scan<char16_t>(TextUnits(text), TextUnits(format), args, sized);
  } catch (...) {
    return 0;  // no memory for a copy of the text
  }
}

int scanText(std::string_view text, std::string_view format, const ScanArgs& args,
             bool sized) noexcept {
  if (text.data() == nullptr || format.data() == nullptr) return -1;
  return scan(text, format, args, sized);
}

}  // namespace kpx::detail
