#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <string_view>

namespace kpx::detail {

/// Collects characters; up to 512 without touching the heap.
template <class CharT>
class TextSink {
 public:
  TextSink() noexcept = default;
  TextSink(const TextSink&) = delete;
  TextSink& operator=(const TextSink&) = delete;

  std::basic_string_view<CharT> view() const noexcept { return {data_, size_}; }

  /// Room for `count` more characters, to be filled by the caller.
  CharT* extend(std::size_t count) {
    if (count > capacity_ - size_) grow(count);
    CharT* const room = data_ + size_;
    size_ += count;
    return room;
  }
  void append(std::basic_string_view<CharT> text) {
    std::copy(text.begin(), text.end(), extend(text.size()));
  }
  void fill(std::size_t count, char unit) {
    std::fill_n(extend(count), count, static_cast<CharT>(unit));
  }
  /// Appends ASCII.
  void appendAscii(std::string_view text) {
    CharT* to = extend(text.size());
    for (const char unit : text) *to++ = static_cast<CharT>(unit);
  }

 private:
  static constexpr std::size_t inlineCapacity = 512;

  void grow(std::size_t count) {
    if (count > static_cast<std::size_t>(-1) / sizeof(CharT) / 4 - size_) throw std::bad_alloc();
    const std::size_t capacity = std::max(2 * capacity_, size_ + count);
    std::unique_ptr<CharT[]> bigger(new CharT[capacity]);
    std::copy_n(data_, size_, bigger.get());
    heap_ = std::move(bigger);
    data_ = heap_.get();
    capacity_ = capacity;
  }

  CharT inline_[inlineCapacity];
  std::unique_ptr<CharT[]> heap_;
  CharT* data_ = inline_;
  std::size_t size_ = 0;
  std::size_t capacity_ = inlineCapacity;
};

}  // namespace kpx::detail
