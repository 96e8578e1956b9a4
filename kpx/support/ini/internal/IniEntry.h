#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "kpx/text/CString.h"

namespace kpx::detail {

/// A line of an INI file that has a name, with the lines above that belong to it. As long as
/// nobody changes it, both are parts of the file's text.
class IniEntry {
 public:
  enum State : int { asRead = 0, changed = 1, removed = 2 };

  IniEntry() = default;
  IniEntry(IniEntry&&) noexcept = default;
  IniEntry& operator=(IniEntry&&) noexcept = default;

  /// A line as it was read: with its line end, and `name` and `value` parts of it.
  void setRead(std::u16string_view before, std::u16string_view line, std::u16string_view name,
               std::u16string_view value) noexcept;
  /// Lines of its own. `nameAt` and the lengths count units of `line`. What throws (no memory)
  /// leaves the entry as it was.
  void setLine(std::u16string line, std::size_t nameAt, std::size_t nameLength,
               std::size_t valueLength);
  void setBefore(std::u16string before);
  void setType(const CString& type);

  /// The same entry, with copies of what is its own.
  IniEntry clone() const;

  std::u16string_view before() const noexcept { return before_; }
  std::u16string_view line() const noexcept { return line_; }
  std::u16string_view name() const noexcept { return line_.substr(nameAt_, nameLength_); }
  std::u16string_view value() const noexcept { return line_.substr(valueAt_, valueLength_); }
  CString type() const { return own_ ? own_->type : CString(); }
  CString comment() const;

  State state() const noexcept { return state_; }
  void setState(State state) noexcept { state_ = state; }

 private:
  struct Own {
    std::u16string before;
    std::u16string line;
    CString type;
  };
  Own& own();

  std::u16string_view before_;
  std::u16string_view line_;
  // A line has at most 4,000 units.
  std::uint16_t nameAt_ = 0;
  std::uint16_t nameLength_ = 0;
  std::uint16_t valueAt_ = 0;
  std::uint16_t valueLength_ = 0;
  State state_ = asRead;
  std::unique_ptr<Own> own_;
};

/// `before` with its comment lines replaced by others, which stand where the first one stood;
/// blank lines and lines without meaning stay. Both `before` and `comment` are lines of a file.
std::u16string withComment(std::u16string_view before, std::u16string_view comment,
                           std::u16string_view lineEnd);

/// A comment as lines of a file: each one begins with ";" and ends with the line end.
std::u16string commentLines(std::u16string_view comment, std::u16string_view lineEnd);

}  // namespace kpx::detail
