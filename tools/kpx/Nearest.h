#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kpx/text/CString.h"

namespace kpx::tool {

/// Finds among names the one that a person meant by a slip of the keyboard: without regard to case,
/// up to a quarter of the characters changed, added, left out or swapped with their neighbour. Of
/// equally near ones the first.
class Nearest {
 public:
  explicit Nearest(std::u16string_view wanted);

  void offer(std::u16string_view name) { offer(name, name); }
  /// The same for a name that may be written in more than one way.
  void offer(std::u16string_view name, std::u16string_view written);

  /// Empty if none is near enough.
  const CString& name() const noexcept { return name_; }
  /// "; did you mean 'name'?", empty likewise.
  std::string question() const;

 private:
  std::u16string_view wanted_;
  std::size_t smallest_;  // the distance that the next one must be below
  CString name_;
};

}  // namespace kpx::tool
