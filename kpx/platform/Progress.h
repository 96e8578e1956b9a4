#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace kpx {

/// How far a long operation is. `done` never falls and never passes a known `total`; what they
/// count (bytes, records) is told by the operation.
struct Progress {
  std::uint64_t done = 0;
  std::uint64_t total = 0;        // 0: not known
  std::u16string_view text = {};  // what is worked on now; valid during the report only
};

/// Receives the progress of a long operation, often enough to move a bar smoothly. Answers
/// whether to go on: false cancels, and the operation tells what became of its work until then.
/// An operation that is given an empty function reports nothing. `ProgressDialog` makes one that
/// shows it to the user.
using ProgressReport = std::function<bool(const Progress&)>;

}  // namespace kpx
