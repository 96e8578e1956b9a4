#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kpx/report/Export.h"
#include "kpx/text/FormatArgs.h"
#include "kpx/text/TextArg.h"
#include "kpx/text/TextHash.h"

namespace kpx {

namespace detail {

/// What stands beside a CString in an expression: any other text, or a character.
template <class T>
concept TextOperand = TextOrCharacter<T> && !std::derived_from<T, CString>;

/// What must not stand there, although some conversion would make an expression of it.
template <class T>
concept NoTextOperand = (std::is_arithmetic_v<T> && !Character<T>) || std::is_null_pointer_v<T>;

}  // namespace detail

/// The text of the suite: a value class over UTF-16 units.
///
/// Offsets and lengths count units. Lone surrogates are legal content, and so is a unit 0,
/// although operations that take a bare pointer end there. Comparison, searching and changing of
/// case never depend on a locale. Offsets that lie outside a text are moved to its nearest end,
/// so no operation but `at`-style access (`GetAt`, `SetAt`, `operator[]`) requires a valid one.
///
/// An argument that is a TextArg may be a text or a single character, and both may be wide:
/// `text.Find(u"ab")`, `text.Find(L'a')`. A null pointer counts as the empty text. Numbers, narrow
/// texts and literal null pointers do not compile.
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
      : CString(std::u16string_view(text, lengthOf(text, length))) {}

  /// From the platform's wide text: a copy where it is UTF-16, else transcoded from UTF-32;
  /// values beyond Unicode become U+FFFD.
  CString(const wchar_t* text);
  CString(std::wstring_view text) { appendWide(text_, text); }
  CString(const std::wstring& text) { appendWide(text_, text); }
  CString(const wchar_t* text, int length)
      : CString(std::wstring_view(text, lengthOf(text, length))) {}

  /// A character, `count` times.
  template <Character Unit>
  explicit CString(Unit character, int count = 1) {
    repeat(TextUnits(character), count);
  }

  // A narrow text has no known encoding, and a literal null pointer is a mistake.
  CString(std::nullptr_t) = delete;
  CString(const char*) = delete;

  /// In the memory that the text has, where that is enough.
  template <detail::TextOperand Other>
  CString& operator=(const Other& text) {
    assign(TextUnits(text));
    return *this;
  }
  CString& operator=(std::u16string&& text) noexcept {
    text_ = std::move(text);
    return *this;
  }

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
    return detail::sameUnits<const Wide>(text_.c_str());
  }
  /// Requires 0 <= index <= length; the unit at the length is 0.
  char16_t GetAt(int index) const noexcept { return text_[static_cast<std::size_t>(index)]; }
  char16_t operator[](int index) const noexcept { return GetAt(index); }
  auto begin() const noexcept { return text_.begin(); }
  auto end() const noexcept { return text_.end(); }

  // --- comparing ----------------------------------------------------------------------------

  /// Negative, 0 or positive, by units.
  int Compare(const TextArg& other) const { return compare(TextUnits(other)); }
  /// Negative, 0 or positive, by the library's own case table (ä equals Ä).
  int CompareNoCase(const TextArg& other) const { return compareNoCase(TextUnits(other)); }

  // By units, with any other text and with a character.
  friend bool operator==(const CString& a, const CString& b) noexcept { return a.text_ == b.text_; }
  friend std::strong_ordering operator<=>(const CString& a, const CString& b) noexcept {
    return a.view() <=> b.view();
  }
  template <detail::TextOperand Other>
  friend bool operator==(const CString& a, const Other& b) {
    return a.view() == TextUnits(b).view();
  }
  template <detail::TextOperand Other>
  friend std::strong_ordering operator<=>(const CString& a, const Other& b) {
    return a.view() <=> TextUnits(b).view();
  }
  template <detail::NoTextOperand Other>
  friend bool operator==(const CString&, const Other&) = delete;

  // --- searching: the offset of the first unit, or -1 -----------------------------------------

  int Find(const TextArg& part, int start = 0) const { return find(TextUnits(part), start); }
  int ReverseFind(const TextArg& part) const { return reverseFind(TextUnits(part)); }
  int FindOneOf(const TextArg& units) const { return findOneOf(TextUnits(units)); }
  bool StartsWith(const TextArg& part) const { return view().starts_with(TextUnits(part)); }
  bool EndsWith(const TextArg& part) const { return view().ends_with(TextUnits(part)); }

  // --- parts --------------------------------------------------------------------------------

  CString Left(int count) const;
  CString Right(int count) const;
  CString Mid(int first) const;
  CString Mid(int first, int count) const;
  /// The longest beginning made only of (not made of) the given units.
  CString SpanIncluding(const TextArg& units) const;
  CString SpanExcluding(const TextArg& units) const;
  /// The next part between delimiters from `position` on, which moves behind it; parts that are
  /// empty are passed over. At the end the answer is empty and `position` is -1.
  CString Tokenize(const TextArg& delimiters, int& position) const;

  // --- changing it --------------------------------------------------------------------------

  void Empty() noexcept { text_.clear(); }
  void Append(const TextArg& text) { append(TextUnits(text)); }
  void Assign(const TextArg& text) { assign(TextUnits(text)); }
  template <TextOrCharacter Text>
  CString& operator+=(const Text& text) {
    if constexpr (std::is_same_v<Text, char16_t>) {
      text_.push_back(text);
    } else if constexpr (detail::UnitText<Text>) {
      text_.append(TextArg(text).units());
    } else {
      append(TextUnits(text));
    }
    return *this;
  }
  /// A character, or one unit, which may be a computed one: `u'0' + digit`.
  void AppendChar(char16_t unit) { text_.push_back(unit); }
  template <Character Unit>
  void AppendChar(Unit character) {
    *this += character;
  }
  /// Requires 0 <= index < length.
  void SetAt(int index, char16_t unit) noexcept { text_[static_cast<std::size_t>(index)] = unit; }
  void Truncate(int length);
  /// Room for `capacity` units without another allocation.
  void Preallocate(int capacity) { text_.reserve(static_cast<std::size_t>(capacity)); }

  /// Insert and Delete answer the new length; Replace and Remove how often they did it.
  int Insert(int index, const TextArg& text) { return insert(index, TextUnits(text)); }
  int Delete(int index, int count = 1);
  int Replace(const TextArg& from, const TextArg& to) {
    return replace(TextUnits(from), TextUnits(to));
  }
  int Remove(const TextArg& part) { return replace(TextUnits(part), {}); }

  CString& MakeUpper() noexcept;
  CString& MakeLower() noexcept;
  CString& MakeReverse() noexcept;

  /// Without arguments, white space: blank, tab, line feed, carriage return, form feed,
  /// vertical tab.
  CString& Trim();
  CString& Trim(const TextArg& units);
  CString& TrimLeft();
  CString& TrimLeft(const TextArg& units);
  CString& TrimRight();
  CString& TrimRight(const TextArg& units);

  /// A writable area of at least `minLength` units and a terminator. End the access with
  /// ReleaseBuffer, which takes the new length, or -1 to look for the terminator.
  char16_t* GetBuffer(int minLength = 0);
  void ReleaseBuffer(int newLength = -1);

  /// The owned units, for moving them out or reusing their memory.
  std::u16string& units() noexcept { return text_; }
  const std::u16string& units() const noexcept { return text_; }

  // --- joining: with any other text and with a character -------------------------------------

  friend CString operator+(const CString& a, const CString& b) { return joined(a, b); }
  friend CString operator+(CString&& a, const CString& b) { return std::move(a += b); }
  template <detail::TextOperand Other>
  friend CString operator+(const CString& a, const Other& b) {
    return joined(a, TextUnits(b));
  }
  template <detail::TextOperand Other>
  friend CString operator+(CString&& a, const Other& b) {
    return std::move(a += b);
  }
  template <detail::TextOperand Other>
  friend CString operator+(const Other& a, const CString& b) {
    return joined(TextUnits(a), b);
  }
  template <detail::NoTextOperand Other>
  friend CString operator+(const CString&, const Other&) = delete;
  template <detail::NoTextOperand Other>
  friend CString operator+(const Other&, const CString&) = delete;

  /// Writes the text as UTF-8.
  friend KPX_API std::ostream& operator<<(std::ostream& out, const CString& text);

  // --- formatting: the print family of PrintScan.h, always with "." as decimal sign ------------

  /// Replaces the text. A format that cannot be carried out leaves the text as it was and
  /// answers false. Arguments may be parts of the text itself.
  template <class... Args>
  bool Format(const TextArg& format, const Args&... args) {
    return formatInto(TextUnits(format), FormatArgs{args...}, false);
  }
  /// Appends to the text, with the same promise.
  template <class... Args>
  bool AppendFormat(const TextArg& format, const Args&... args) {
    return formatInto(TextUnits(format), FormatArgs{args...}, true);
  }

 private:
  static std::size_t lengthOf(const void* text, int length) noexcept {
    return text != nullptr && length > 0 ? static_cast<std::size_t>(length) : 0;
  }
  static CString joined(std::u16string_view a, std::u16string_view b);
  void repeat(std::u16string_view character, int count);
  void assign(std::u16string_view text);
  void append(std::u16string_view text);
  int compare(std::u16string_view other) const noexcept;
  int compareNoCase(std::u16string_view other) const noexcept;
  int find(std::u16string_view part, int start) const noexcept;
  int reverseFind(std::u16string_view part) const noexcept;
  int findOneOf(std::u16string_view units) const noexcept;
  int insert(int index, std::u16string_view text);
  int replaceUnit(char16_t from, char16_t to) noexcept;
  int replace(std::u16string_view from, std::u16string_view to);
  bool formatInto(std::u16string_view format, const FormatArgs& args, bool append);

  std::u16string text_;
};

inline FormatArg::FormatArg(const CString& text) noexcept : FormatArg(text.view()) {}

namespace literals {
inline CString operator""_cs(const char16_t* text, std::size_t length) {
  return CString(std::u16string_view(text, length));
}
inline CString operator""_cs(const wchar_t* text, std::size_t length) {
  return CString(std::wstring_view(text, length));
}
}  // namespace literals

}  // namespace kpx

template <>
struct std::hash<kpx::CString> {
  std::size_t operator()(const kpx::CString& text) const noexcept {
    return kpx::textHash(text.view());
  }
};
