#pragma once

#include <ostream>
#include <string>

#include "kpx/text/CString.h"

namespace kpx {

/// Shows texts in test messages as UTF-8, with control characters and quotes escaped.
inline void PrintTo(const CString& text, std::ostream* out) {
  *out << "u\"";
  for (const char byte : text.utf8()) {
    const auto code = static_cast<unsigned char>(byte);
    if (byte == '\n') {
      *out << "\\n";
    } else if (byte == '\r') {
      *out << "\\r";
    } else if (byte == '\t') {
      *out << "\\t";
    } else if (byte == '"' || byte == '\\') {
      *out << '\\' << byte;
    } else if (code < 0x20) {
      *out << "\\x"
           << "0123456789abcdef"[code >> 4] << "0123456789abcdef"[code & 15];
    } else {
      *out << byte;
    }
  }
  *out << '"';
}

}  // namespace kpx
