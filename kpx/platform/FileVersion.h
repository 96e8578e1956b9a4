#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kpx/report/Export.h"

namespace kpx {

/// What a file was when somebody read or wrote it, to tell later whether another program has
/// changed it since. Two that are equal mean the same file with the same content.
struct FileVersion {
  bool exists = false;  // false: there was no such file
  std::uint64_t volume = 0;
  std::uint64_t number = 0;   // of the file on its volume
  std::uint64_t size = 0;     // bytes
  std::int64_t modified = 0;  // nanoseconds since 1970, as exactly as the volume keeps it
  /// Of the content, where a change just after this moment could leave everything else as it is;
  /// 0 where the time alone tells.
  std::uint64_t digest = 0;

  friend bool operator==(const FileVersion&, const FileVersion&) = default;
};

/// A number for the bytes of a file, fed in pieces of any size. It tells apart what programs write
/// by chance, not what somebody makes to deceive. Never 0.
class KPX_API ContentDigest {
 public:
  void add(std::string_view bytes) noexcept;
  std::uint64_t value() const noexcept;

 private:
  void mix(std::uint64_t word) noexcept;

  std::uint64_t state_ = 0x9e3779b97f4a7c15u;
  std::uint64_t rest_ = 0;  // bytes that are no whole word yet
  std::uint64_t count_ = 0;
};

namespace detail {
/// Whether a file with this time could be changed within the same tick of its volume's clock, so
/// that only its content would tell. Such a version needs a digest.
bool needsDigest(const FileVersion& version) noexcept;
}  // namespace detail

}  // namespace kpx
