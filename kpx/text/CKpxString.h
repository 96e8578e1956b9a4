#pragma once

#include <cstdarg>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// A text that also formats an argument list of C.
class KPX_API CKpxString : public CString {
 public:
  using CString::CString;
  CKpxString() noexcept = default;
  CKpxString(const CString& text) : CString(text) {}
  CKpxString(CString&& text) noexcept : CString(std::move(text)) {}
  using CString::operator=;

  /// Replaces the text as `Format` does, with values read from `list` by the types that the
  /// format tells (see `kpxvfwprintf`). `locale` is kept for callers that pass one and has no
  /// effect: the decimal sign is always ".". A format that cannot be carried out leaves the
  /// text as it was and answers false. Error number 910555.
  bool FormatV_l(const TextArg& format, const void* locale, std::va_list list);
};

}  // namespace kpx
