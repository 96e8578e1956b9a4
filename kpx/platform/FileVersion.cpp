#include "kpx/platform/FileVersion.h"

#include <chrono>
#include <utility>

namespace kpx {

void ContentDigest::mix(std::uint64_t word) noexcept {
  state_ = (state_ ^ word) * 0x9fb21c651e98df25u;
  state_ ^= state_ >> 32;
}

void ContentDigest::add(std::string_view bytes) noexcept {
  constexpr std::size_t wordBytes = sizeof(std::uint64_t);
  const auto addByte = [&](char byte) {
    rest_ = rest_ << 8 | static_cast<unsigned char>(byte);
    if (++count_ % wordBytes == 0) mix(std::exchange(rest_, 0));
  };
  while (!bytes.empty() && count_ % wordBytes != 0) {
    addByte(bytes.front());
    bytes.remove_prefix(1);
  }
  for (; bytes.size() >= wordBytes; bytes.remove_prefix(wordBytes), count_ += wordBytes) {
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < wordBytes; ++i) {
      word = word << 8 | static_cast<unsigned char>(bytes[i]);
    }
    mix(word);
  }
  for (const char byte : bytes) addByte(byte);
}

std::uint64_t ContentDigest::value() const noexcept {
  ContentDigest end = *this;
  end.mix(rest_);
  end.mix(count_);
  return end.state_ | 1;
}

bool detail::needsDigest(const FileVersion& version) noexcept {
  using std::chrono::nanoseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  // The coarsest volumes count in steps of two seconds. A server's clock may be ahead.
  constexpr nanoseconds window = std::chrono::seconds(3);
  return version.exists && nanoseconds(version.modified) > now - window;
}

}  // namespace kpx
