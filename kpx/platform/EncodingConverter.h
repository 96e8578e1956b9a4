#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kpx {

/// What could not be decoded: where the first such byte is, and how many there are.
struct DecodingLoss {
  static constexpr std::size_t none = static_cast<std::size_t>(-1);
  std::size_t firstByte = none;
  std::size_t count = 0;
};

/// Appends bytes in an encoding that the system knows as UTF-16; each byte (in UTF-32, each group
/// of four) that is part of no character becomes U+FFFD. Answers false, and appends nothing, when
/// the system does not know the code page.
bool decodeCodePage(int codePage, std::string_view bytes, std::u16string& text, DecodingLoss& loss);

/// Writes UTF-16 in an encoding that the system knows.
class CodePageEncoder {
 public:
  explicit CodePageEncoder(int codePage);
  ~CodePageEncoder();
  CodePageEncoder(const CodePageEncoder&) = delete;
  CodePageEncoder& operator=(const CodePageEncoder&) = delete;

  /// False when the system does not know the code page; nothing is encoded then.
  bool usable() const noexcept { return handle_ != nullptr; }
  /// Appends the text up to the first character that the encoding cannot hold, that would be read
  /// back as another one, or that the text holds only half of, and answers how many units those
  /// were.
  std::size_t encode(std::u16string_view text, std::string& bytes);
  /// Appends what brings the encoding back to its initial state; the last call.
  void finish(std::string& bytes);

 private:
  void* handle_ = nullptr;  // the system's converter
};

}  // namespace kpx
