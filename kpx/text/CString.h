#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kpx/report/Export.h"
#include "kpx/text/FormatArgs.h"
#include "kpx/text/TextHash.h"

namespace kpx {

/// Whether the platform's wide characters are UTF-16 units themselves.
inline constexpr bool wideIsUtf16 = sizeof(wchar_t) == sizeof(char16_t);

/// The text of the suite: a value class over UTF-16 units.
///
/// Offsets and lengths count units. Lone surrogates are legal content, and so is a unit 0,
/// although operations that take a bare pointer end there. Comparison, searching and changing of
/// case never depend on a locale. Offsets that lie outside a text are moved to its nearest end,
/// so no operation but `at`-style access (`GetAt`, `SetAt`, `operator[]`) requires a valid one.
class KPX_API CString {
 public:
  // --- making one ---------------------------------------------------------------------------

  CString() noexcept = default;
  CString(const CString&) = default;
  CString(CString&&) noexcept = default;
  CString& operator=(const CString&) = default;
  CString& operator=(CString&&) noexcept = default;
  ~CString() = default;

  /// A null pointer gives the empty text.
  CString(const char16_t* text) : text_(text != nullptr ? text : u"") {}
  CString(std::u16string_view text) : text_(text) {}
  CString(const std::u16string& text) : text_(text) {}
  CString(std::u16string&& text) noexcept : text_(std::move(text)) {}
  CString(const char16_t* text, int length)
      : text_(text, length > 0 ? static_cast<std::size_t>(length) : 0) {}
  explicit CString(char16_t unit, int count = 1)
      : text_(count > 0 ? static_cast<std::size_t>(count) : 0, unit) {}

  /// From the platform's wide text: a copy where it is UTF-16, else transcoded from UTF-32;
  /// values beyond Unicode become U+FFFD.
  CString(const wchar_t* text);
  CString(std::wstring_view text);
  CString(const std::wstring& text) : CString(std::wstring_view(text)) {}

  // A narrow text has no known encoding, and a literal null pointer is a mistake.
  CString(std::nullptr_t) = delete;
  CString(const char*) = delete;

  /// From UTF-8. Each byte that is part of no valid sequence becomes U+FFFD.
  static CString fromUtf8(std::string_view bytes);

  /// As UTF-8. A lone surrogate is written as the three bytes of its code, so that no content
  /// is lost; programs that insist on valid UTF-8 refuse such a text.
  std::string utf8() const;

  /// As the platform's wide text.
  std::wstring wide() const;

  // --- looking at it ------------------------------------------------------------------------

  int GetLength() const noexcept { return static_cast<int>(text_.size()); }
  bool IsEmpty() const noexcept { return text_.empty(); }
  /// The units with a terminating 0 behind them; valid until the text changes.
  const char16_t* GetString() const noexcept { return text_.c_str(); }
  std::u16string_view view() const noexcept { return text_; }
  operator std::u16string_view() const noexcept { return text_; }
  /// Where wide text is UTF-16, the same units for interfaces of the system.
  template <class Wide>
  requires(std::is_same_v<Wide, wchar_t>&& wideIsUtf16) operator const Wide*() const noexcept {
    return reinterpret_cast<const Wide*>(text_.c_str());
  }
  /// Requires 0 <= index <= length; the unit at the length is 0.
  char16_t GetAt(int index) const noexcept { return text_[static_cast<std::size_t>(index)]; }
  char16_t operator[](int index) const noexcept { return GetAt(index); }
  auto begin() const noexcept { return text_.begin(); }
  auto end() const noexcept { return text_.end(); }

  // --- comparing ----------------------------------------------------------------------------

  /// Negative, 0 or positive, by units.
  int Compare(std::u16string_view other) const noexcept;
  /// Negative, 0 or positive, by the library's own case table (ä equals Ä).
  int CompareNoCase(std::u16string_view other) const noexcept;

  friend bool operator==(const CString& a, const CString& b) noexcept { return a.text_ == b.text_; }
  friend bool operator==(const CString& a, std::u16string_view b) noexcept { return a.view() == b; }
  friend bool operator==(const CString& a, const char16_t* b) noexcept { return a.view() == b; }
  friend auto operator<=>(const CString& a, const CString& b) noexcept {
    return a.view() <=> b.view();
  }

  // --- searching: the offset of the first unit, or -1 -----------------------------------------

  int Find(char16_t unit, int start = 0) const noexcept;
  int Find(std::u16string_view part, int start = 0) const noexcept;
  int ReverseFind(char16_t unit) const noexcept;
  int FindOneOf(std::u16string_view units) const noexcept;
  bool StartsWith(std::u16string_view part) const noexcept { return view().starts_with(part); }
  bool EndsWith(std::u16string_view part) const noexcept { return view().ends_with(part); }

  // --- parts --------------------------------------------------------------------------------

  CString Left(int count) const;
  CString Right(int count) const;
  CString Mid(int first) const;
  CString Mid(int first, int count) const;
  /// The longest beginning made only of (not made of) the given units.
  CString SpanIncluding(std::u16string_view units) const;
  CString SpanExcluding(std::u16string_view units) const;
  /// The next part between delimiters from `position` on, which moves behind it; parts that are
  /// empty are passed over. At the end the answer is empty and `position` is -1.
  CString Tokenize(std::u16string_view delimiters, int& position) const;

  // --- changing it --------------------------------------------------------------------------

  void Empty() noexcept { text_.clear(); }
  void Append(std::u16string_view text) { text_.append(text); }
  void AppendChar(char16_t unit) { text_.push_back(unit); }
  void Assign(std::u16string_view text) { text_.assign(text); }
  /// Requires 0 <= index < length.
  void SetAt(int index, char16_t unit) noexcept { text_[static_cast<std::size_t>(index)] = unit; }
  void Truncate(int length);
  /// Room for `capacity` units without another allocation.
  void Preallocate(int capacity) { text_.reserve(static_cast<std::size_t>(capacity)); }

  /// Insert and Delete answer the new length; Replace and Remove how often they did it.
  int Insert(int index, char16_t unit);
  int Insert(int index, std::u16string_view text);
  int Delete(int index, int count = 1);
  int Replace(char16_t from, char16_t to) noexcept;
  int Replace(std::u16string_view from, std::u16string_view to);
  int Remove(char16_t unit);

  CString& MakeUpper() noexcept;
  CString& MakeLower() noexcept;
  CString& MakeReverse() noexcept;

  /// Without arguments, white space: blank, tab, line feed, carriage return, form feed,
  /// vertical tab.
  CString& Trim();
  CString& Trim(std::u16string_view units);
  CString& TrimLeft();
  CString& TrimLeft(std::u16string_view units);
  CString& TrimRight();
  CString& TrimRight(std::u16string_view units);

  /// A writable area of at least `minLength` units and a terminator. End the access with
  /// ReleaseBuffer, which takes the new length, or -1 to look for the terminator.
  char16_t* GetBuffer(int minLength = 0);
  void ReleaseBuffer(int newLength = -1);

  CString& operator+=(std::u16string_view text) {
    text_.append(text);
    return *this;
  }
  CString& operator+=(char16_t unit) {
    text_.push_back(unit);
    return *this;
  }

  /// The owned units, for moving them out or reusing their memory.
  std::u16string& units() noexcept { return text_; }
  const std::u16string& units() const noexcept { return text_; }

  // --- formatting: the print family of PrintScan.h, always with "." as decimal sign ------------

  /// Replaces the text. A format that cannot be carried out leaves the text as it was and
  /// answers false. Arguments may be parts of the text itself.
  template <class... Args>
  bool Format(std::u16string_view format, const Args&... args) {
    return formatInto(format, FormatArgs{args...}, false);
  }
  /// Appends to the text, with the same promise.
  template <class... Args>
  bool AppendFormat(std::u16string_view format, const Args&... args) {
    return formatInto(format, FormatArgs{args...}, true);
  }

 private:
  bool formatInto(std::u16string_view format, const FormatArgs& args, bool append);

  std::u16string text_;
};

inline FormatArg::FormatArg(const CString& text) noexcept : FormatArg(text.view()) {}

inline CString operator+(const CString& a, const CString& b) {
  CString sum;
  sum.units().reserve(a.view().size() + b.view().size());
  sum += a.view();
  sum += b.view();
  return sum;
}
inline CString operator+(CString&& a, const CString& b) {
  a += b.view();
  return std::move(a);
}
inline CString operator+(const CString& a, char16_t b) {
  CString sum(a);
  sum += b;
  return sum;
}

namespace literals {
inline CString operator""_cs(const char16_t* text, std::size_t length) {
  return CString(std::u16string_view(text, length));
}
}  // namespace literals

}  // namespace kpx

template <>
struct std::hash<kpx::CString> {
  std::size_t operator()(const kpx::CString& text) const noexcept {
    return kpx::textHash(text.view());
  }
};
