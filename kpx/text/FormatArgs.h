#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

namespace kpx {

class CString;

/// One value given to the print family, with the type that it was given with. The formatter
/// converts by this type, so a length modifier that does not fit the value cannot go wrong.
class FormatArg {
 public:
  enum class Kind : std::uint8_t {
    signedInteger,
    unsignedInteger,
    real,
    narrowText,  // char units; `length` is unknownLength when terminated by 0
    wideText,    // char16_t units, likewise
    codeText,    // wchar_t units where these have 32 bits, likewise
    pointer,
  };
  static constexpr std::size_t unknownLength = static_cast<std::size_t>(-1);

  template <class T>
  requires(std::is_integral_v<T> || std::is_enum_v<T>) FormatArg(T value)
  noexcept : size(sizeof(T)) {
    if constexpr (std::is_enum_v<T>) {
      *this = FormatArg(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_signed_v<T>) {
      kind = Kind::signedInteger;
      integer = static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
    } else {
      kind = Kind::unsignedInteger;
      integer = static_cast<std::uint64_t>(value);
    }
  }
  FormatArg(double value) noexcept : kind(Kind::real), size(sizeof value), real(value) {}
  FormatArg(float value) noexcept : FormatArg(static_cast<double>(value)) {}
  /// A long double is taken as a double: its own width differs from platform to platform, and
  /// the same value has to give the same text everywhere.
  FormatArg(long double value) noexcept : FormatArg(static_cast<double>(value)) {}
  FormatArg(const char* text) noexcept : kind(Kind::narrowText), pointer(text) {}
  FormatArg(std::string_view text) noexcept
      : kind(Kind::narrowText), length(text.size()), pointer(text.data()) {}
  FormatArg(const std::string& text) noexcept : FormatArg(std::string_view(text)) {}
  FormatArg(const char16_t* text) noexcept : kind(Kind::wideText), pointer(text) {}
  FormatArg(std::u16string_view text) noexcept
      : kind(Kind::wideText), length(text.size()), pointer(text.data()) {}
  FormatArg(const std::u16string& text) noexcept : FormatArg(std::u16string_view(text)) {}
  FormatArg(const CString& text) noexcept;
  FormatArg(const wchar_t* text) noexcept : kind(platformWide), pointer(text) {}
  FormatArg(std::wstring_view text) noexcept
      : kind(platformWide), length(text.size()), pointer(text.data()) {}
  FormatArg(const std::wstring& text) noexcept : FormatArg(std::wstring_view(text)) {}
  FormatArg(std::nullptr_t) = delete;
  FormatArg(const void* address) noexcept : kind(Kind::pointer), pointer(address) {}

  Kind kind = Kind::signedInteger;
  std::uint8_t size = 0;  // bytes of the number as it was given
  std::size_t length = unknownLength;
  union {
    std::uint64_t integer;  // sign-extended when signed
    double real;
    const void* pointer;
  };

 private:
  static constexpr Kind platformWide =
      sizeof(wchar_t) == sizeof(char16_t) ? Kind::wideText : Kind::codeText;
};

/// The values of one call, in order. Refers to them; lives no longer than the call.
class FormatArgs {
 public:
  FormatArgs() noexcept = default;
  FormatArgs(std::initializer_list<FormatArg> args) noexcept : count_(args.size()) {
    first_ = args.begin();  // lives as long as the expression that makes the call
  }
  FormatArgs(const FormatArg* first, std::size_t count) noexcept : first_(first), count_(count) {}

  std::size_t size() const noexcept { return count_; }
  const FormatArg& operator[](std::size_t index) const noexcept { return first_[index]; }

 private:
  const FormatArg* first_ = nullptr;
  std::size_t count_ = 0;
};

}  // namespace kpx
