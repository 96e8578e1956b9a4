#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "kpx/support/registry/RegistryText.h"

namespace kpx::detail {

inline constexpr std::u16string_view registryTextHeader = u"Windows Registry Editor Version 5.00";

/// Reads the text form of the registry from front to back.
class RegistryTextReader {
 public:
  using Sink = std::function<void(RegistryStep&&)>;

  /// The sink gets every step before the first mistake; an empty one none.
  RegistryTextReader(Sink sink, RegistryTextProblem& problem)
      : sink_(std::move(sink)), problem_(problem) {}

  bool read(std::string_view bytes);

 private:
  bool fail(CString message);
  bool decode(std::string_view bytes);
  bool readHeader();
  bool readKey();
  bool readValue();
  bool readQuoted(CString& text);
  bool readNumber(RegistryValue& value);
  bool readBytes(RegistryValue& value);
  bool readBytesBehindColon(std::string& bytes);
  bool passLineEnd();
  bool passContinuation();

  bool atEnd() const noexcept { return place_ == text_.size(); }
  char16_t next() const noexcept { return atEnd() ? u'\0' : text_[place_]; }
  bool isAtLineEnd() const noexcept { return atEnd() || next() == u'\r' || next() == u'\n'; }
  void passBlanks() noexcept;
  void passLine() noexcept;
  bool passWord(std::u16string_view word) noexcept;
  bool passHex(int maxDigits, std::uint32_t& number) noexcept;

  std::u16string text_;
  std::size_t place_ = 0;
  int line_ = 1;
  bool inKey_ = false;
  RegistryRoot root_ = RegistryRoot::currentUser;
  RegistryPath key_;
  Sink sink_;
  RegistryTextProblem& problem_;
};

}  // namespace kpx::detail
