#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "kpx/report/Export.h"
#include "kpx/text/Utf.h"

namespace kpx {

/// A type of single characters. A number is none, although the language would turn it into one:
/// who adds a number to a text means its digits.
template <class T>
concept Character = std::is_same_v<T, char16_t> || std::is_same_v<T, wchar_t> ||
    std::is_same_v<T, char32_t> || std::is_same_v<T, char>;

/// A type whose sequences are wide texts.
template <class T>
concept WideUnit = std::is_same_v<T, char16_t> || std::is_same_v<T, wchar_t>;

namespace detail {

template <class T>
concept UnitText = std::is_convertible_v<const T&, std::u16string_view> ||
    std::is_convertible_v<const T&, const char16_t*>;
template <class T>
concept WideText = std::is_convertible_v<const T&, std::wstring_view> ||
    std::is_convertible_v<const T&, const wchar_t*>;

}  // namespace detail

/// A type of texts in UTF-16 units or in the platform's wide characters: literals, pointers that a
/// 0 ends, views, strings, and classes that turn into one of these. A literal null pointer is none.
template <class T>
concept TextLike = !std::is_null_pointer_v<T> && (detail::UnitText<T> || detail::WideText<T>);

template <class T>
concept TextOrCharacter = TextLike<T> || Character<T>;

namespace detail {

/// The same 16-bit units as the platform's wide characters, or the other way round. The compiler
/// holds that memory of the two types never is the same, so it is told that this memory may be.
template <class To, class From>
To* sameUnits(From* units) noexcept {
  static_assert(sizeof(To) == sizeof(From));
#ifdef __GNUC__
  __asm__ volatile("" : : "r"(units) : "memory");
#endif
  return reinterpret_cast<To*>(units);
}

}  // namespace detail

/// An argument that is a text or a single character, in UTF-16 units or in the platform's wide
/// characters. It refers to the caller's text and lives no longer than the call. A pointer that is
/// null is accepted, and the functions say what it means to them: mostly the empty text.
///
/// A `char` beyond ASCII has no known encoding and counts as U+FFFD.
class TextArg {
 public:
  template <TextOrCharacter Text>
  TextArg(const Text& text) noexcept {
    if constexpr (Character<Text>) {
      setCharacter(text);
    } else if constexpr (std::is_convertible_v<const Text&, std::u16string_view> &&
                         std::is_class_v<Text>) {
      const std::u16string_view view = text;
      setView(view);
    } else if constexpr (detail::UnitText<Text>) {
      setPointer(static_cast<const char16_t*>(text));
    } else if constexpr (std::is_convertible_v<const Text&, std::wstring_view> &&
                         std::is_class_v<Text>) {
      const std::wstring_view view = text;
      setView(view);
    } else {
      setPointer(static_cast<const wchar_t*>(text));
    }
  }

  /// Whether a null pointer was given.
  bool isNull() const noexcept { return kind_ != Kind::character && data_ == nullptr; }
  /// Whether these are wide characters of 32 bits, which `codes` gives; else `units` gives all.
  bool isCodes() const noexcept { return !wideIsUtf16 && kind_ == Kind::codes; }
  std::u16string_view units() const noexcept {
    return {kind_ == Kind::character ? character_ : static_cast<const char16_t*>(data_), length_};
  }
  std::wstring_view codes() const noexcept { return {static_cast<const wchar_t*>(data_), length_}; }

 private:
  enum class Kind : unsigned char { units, codes, character };

  template <class Unit>
  void setCharacter(Unit character) noexcept {
    kind_ = Kind::character;
    length_ =
        encodeUtf16(sizeof(Unit) == 1 && (character & 0x80) != 0 ? replacementCharacter
                                                                 : static_cast<char32_t>(character),
                    character_);
  }
  template <class Unit>
  void setPointer(const Unit* text) noexcept {
    if (text != nullptr) setView(std::basic_string_view<Unit>(text));
  }
  template <class Unit>
  void setView(std::basic_string_view<Unit> text) noexcept {
    length_ = text.size();
    if (text.data() == nullptr) {
      data_ = u"";  // an empty text, but no null pointer
    } else if constexpr (sizeof(Unit) != sizeof(char16_t)) {
      data_ = text.data();
      kind_ = Kind::codes;
    } else if constexpr (std::is_same_v<Unit, char16_t>) {
      data_ = text.data();
    } else {
      data_ = detail::sameUnits<const char16_t>(text.data());
    }
  }

  const void* data_ = nullptr;
  std::size_t length_ = 0;
  Kind kind_ = Kind::units;
  char16_t character_[2] = {};
};

namespace detail {
KPX_API std::unique_ptr<const std::u16string> copyOfCodes(std::wstring_view codes);
}

/// The UTF-16 units of an argument, in a copy where they are not at hand. Lives no longer than the
/// argument. A null pointer gives the empty text. Throws std::bad_alloc.
class TextUnits {
 public:
  explicit TextUnits(const TextArg& text)
      : copy_(text.isCodes() ? detail::copyOfCodes(text.codes()) : nullptr),
        view_(copy_ != nullptr ? std::u16string_view(*copy_) : text.units()) {}
  TextUnits(const TextUnits&) = delete;
  TextUnits& operator=(const TextUnits&) = delete;

  std::u16string_view view() const noexcept { return view_; }
  operator std::u16string_view() const noexcept { return view_; }

 private:
  std::unique_ptr<const std::u16string> copy_;
  std::u16string_view view_;
};

}  // namespace kpx
