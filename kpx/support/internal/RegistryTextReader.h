#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/support/RegistryText.h"

namespace kpx::detail {

inline constexpr std::u16string_view registryTextHeader = u"Windows Registry Editor Version 5.00";

/// Reads the text form of the registry from front to back.
class RegistryTextReader {
 public:
  RegistryTextReader(std::vector<RegistryStep>& steps, RegistryTextProblem& problem) noexcept
      : steps_(steps), problem_(problem) {}

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
  CString key_;
  std::vector<RegistryStep>& steps_;
  RegistryTextProblem& problem_;
};

}  // namespace kpx::detail
