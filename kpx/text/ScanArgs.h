#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <type_traits>

namespace kpx {

class CString;

/// One target of the scan family, with the type that it has. The scanner stores by this type,
/// so a length modifier that does not fit the target cannot overwrite what lies behind it. The
/// `_s` members also take the sizes of text buffers this way.
class ScanArg {
 public:
  enum class Kind : std::uint8_t {
    integer,
    singleReal,
    doubleReal,
    longReal,
    narrowText,  // char units; also an integer for %hhd and its like
    wideText,    // char16_t units
    codeText,    // wchar_t units where these have 32 bits
    string,      // CString
    address,
    bufferSize,  // no target: the number of units of the buffer named before it
  };

  template <class T>
  requires(std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char> &&
           !std::is_same_v<T, wchar_t> && !std::is_same_v<T, char16_t> && !std::is_const_v<T>)
      ScanArg(T* target)
  noexcept : kind(Kind::integer), size(sizeof(T)), pointer(target) {}
  ScanArg(float* target) noexcept : kind(Kind::singleReal), pointer(target) {}
  ScanArg(double* target) noexcept : kind(Kind::doubleReal), pointer(target) {}
  ScanArg(long double* target) noexcept : kind(Kind::longReal), pointer(target) {}
  ScanArg(char* target) noexcept : kind(Kind::narrowText), size(1), pointer(target) {}
  ScanArg(char16_t* target) noexcept : kind(Kind::wideText), pointer(target) {}
  ScanArg(wchar_t* target) noexcept
      : kind(sizeof(wchar_t) == sizeof(char16_t) ? Kind::wideText : Kind::codeText),
        pointer(target) {}
  ScanArg(CString* target) noexcept : kind(Kind::string), pointer(target) {}
  ScanArg(void** target) noexcept : kind(Kind::address), pointer(target) {}
  /// A negative size is one of 0, into which nothing fits.
  template <class T>
  requires(std::is_integral_v<T> && !std::is_same_v<T, bool>) ScanArg(T units)
  noexcept : kind(Kind::bufferSize), bufferSize(units > 0 ? static_cast<std::size_t>(units) : 0) {}

  Kind kind;
  std::uint8_t size = 0;  // bytes of an integer
  std::size_t bufferSize = 0;
  void* pointer = nullptr;
};

/// The targets of one call, in order. Refers to them; lives no longer than the call.
class ScanArgs {
 public:
  ScanArgs() noexcept = default;
  ScanArgs(std::initializer_list<ScanArg> args) noexcept : count_(args.size()) {
    first_ = args.begin();  // lives as long as the expression that makes the call
  }

  std::size_t size() const noexcept { return count_; }
  const ScanArg& operator[](std::size_t index) const noexcept { return first_[index]; }

 private:
  const ScanArg* first_ = nullptr;
  std::size_t count_ = 0;
};

}  // namespace kpx
