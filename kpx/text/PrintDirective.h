#pragma once

#include <string_view>

#include "kpx/text/LengthModifier.h"

namespace kpx::detail {

/// One conversion of a print format, as it is written there.
struct PrintDirective {
  bool leftAligned = false;
  bool plus = false;
  bool blank = false;
  bool alternate = false;
  bool zeroPadded = false;
  bool widthIsArgument = false;
  bool precisionIsArgument = false;
  int width = 0;
  int precision = -1;  // negative: none
  LengthModifier length = LengthModifier::none;
  char conversion = 0;  // one of the grammar's letters
};

inline constexpr std::string_view printConversions = "sdfuigxXeEFGoaAcCSp%";

/// Reads what follows a percent sign and moves `at` behind it. False when it is no conversion
/// of the grammar. `%n` is none: writing through an argument has no place in a text that a
/// translated template may have supplied.
template <class CharT>
bool readPrintDirective(const CharT*& at, const CharT* end, PrintDirective& directive) noexcept {
  constexpr int largest = 0x7FFFFFFF;
  directive = {};
  for (; at != end; ++at) {
    if (*at == '-') {
      directive.leftAligned = true;
    } else if (*at == '+') {
      directive.plus = true;
    } else if (*at == ' ') {
      directive.blank = true;
    } else if (*at == '#') {
      directive.alternate = true;
    } else if (*at == '0') {
      directive.zeroPadded = true;
    } else {
      break;
    }
  }
  if (at != end && *at == '*') {
    directive.widthIsArgument = true;
    ++at;
  } else {
    directive.width = readCount(at, end, largest);
  }
  if (at != end && *at == '.') {
    ++at;
    if (at != end && *at == '*') {
      directive.precisionIsArgument = true;
      ++at;
    } else {
      directive.precision = readCount(at, end, largest);
    }
  }
  directive.length = readLengthModifier(at, end);
  for (const char conversion : printConversions) {
    if (at == end || *at != static_cast<CharT>(conversion)) continue;
    directive.conversion = conversion;
    ++at;
    return true;
  }
  return false;
}

}  // namespace kpx::detail
