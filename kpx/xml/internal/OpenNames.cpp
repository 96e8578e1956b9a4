#include "kpx/xml/internal/OpenNames.h"

#include <algorithm>
#include <random>

#include "kpx/text/CaseFold.h"
#include "kpx/xml/ElemPos.h"
#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {
namespace {

// End tags with longer names are refused, so the rest of a name decides nothing.
constexpr std::size_t longestName = ElemPos::maxEndTag;

constexpr bool mayFollowName(char16_t unit) noexcept {
  return unit == u' ' || unit == u'/' || unit == u'=' || unit == u'[' || unit == u']';
}

bool equalNames(std::u16string_view left, std::u16string_view right, bool ignoreCase) noexcept {
  if (!ignoreCase) return left == right;
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char16_t a, char16_t b) { return foldCase(a) == foldCase(b); });
}

// Keys are the values of polynomials, so that those of all beginnings of a name cost one step for
// each unit. The point is chosen by chance: no document can be made whose names share keys. The
// keys decide nothing but the time, so results do not depend on it.
std::uint64_t chooseBase() {
  static const std::uint64_t base = [] {
    std::random_device source;
    return (std::uint64_t{source()} << 29 ^ source()) % ((std::uint64_t{1} << 61) - 1);
  }();
  return base;
}

std::uint64_t multiplyModulo61(std::uint64_t a, std::uint64_t b) noexcept {
  constexpr std::uint64_t modulus = (std::uint64_t{1} << 61) - 1;
  constexpr std::uint64_t lowBits = (std::uint64_t{1} << 31) - 1;
  // a * b in parts of 31 bits, with 2^61 = 1 and so 2^62 = 2.
  const std::uint64_t aHigh = a >> 31, aLow = a & lowBits;
  const std::uint64_t bHigh = b >> 31, bLow = b & lowBits;
  const std::uint64_t middle = aLow * bHigh + aHigh * bLow;
  constexpr std::uint64_t low30 = (std::uint64_t{1} << 30) - 1;
  const std::uint64_t sum =
      2 * aHigh * bHigh + (middle >> 30) + ((middle & low30) << 31) + aLow * bLow;
  const std::uint64_t folded = (sum & modulus) + (sum >> 61);
  return folded >= modulus ? folded - modulus : folded;
}

}  // namespace

std::u16string_view tagNameAt(std::u16string_view text, int position) noexcept {
  std::size_t end = static_cast<std::size_t>(position);
  while (end < text.size() && !endsName(text[end])) ++end;
  return text.substr(static_cast<std::size_t>(position), end - static_cast<std::size_t>(position));
}

bool closesTagAt(std::u16string_view text, int position, std::u16string_view endTagName,
                 bool ignoreCase) noexcept {
  const std::size_t length = endTagName.size();
  const std::u16string_view found = text.substr(static_cast<std::size_t>(position), length + 1);
  if (length == 0 || found.size() <= length) return false;
  const char16_t behind = found[length];
  return (endsName(behind) || mayFollowName(behind)) &&
         equalNames(found.substr(0, length), endTagName, ignoreCase);
}

OpenNames::OpenNames(std::u16string_view text, const std::vector<OpenElement>& stack,
                     bool ignoreCase)
    : text_(text),
      stack_(stack),
      ignoreCase_(ignoreCase),
      base_(chooseBase()),
      slots_(std::size_t{64}) {}

std::uint64_t OpenNames::extend(std::uint64_t key, char16_t unit) const noexcept {
  return multiplyModulo61(key, base_) + (ignoreCase_ ? foldCase(unit) : unit) + 1u;
}

// The keys of all names that close the element at a depth.
template <class Visit>
void OpenNames::visitKeys(int depth, Visit visit) const {
  const auto begin = static_cast<std::size_t>(stack_[static_cast<std::size_t>(depth)].start) + 1;
  const std::u16string_view name = text_.substr(begin, longestName + 1);
  std::uint64_t key = 0;
  for (const char16_t& unit : name) {
    if (endsName(unit) || (mayFollowName(unit) && &unit != name.data())) visit(key);
    if (endsName(unit)) break;
    key = extend(key, unit);
  }
}

// Where a key stands, or would be put.
std::size_t OpenNames::slotOf(std::uint64_t key) const noexcept {
  const std::size_t mask = slots_.size() - 1;
  const auto part = static_cast<std::uint32_t>(key);
  std::size_t slot = (key >> 20) & mask;
  while (slots_[slot].depth != free && slots_[slot].key != part) slot = (slot + 1) & mask;
  return slot;
}

// Makes sure that so many more keys can be put in without an allocation: a failure must leave what
// can be taken out again.
void OpenNames::makeRoom(std::size_t keys) {
  if (shadowed_.capacity() - shadowed_.size() < keys) {
    shadowed_.reserve(std::max(2 * shadowed_.capacity(), shadowed_.size() + keys));
  }
  std::size_t size = slots_.size();
  while (4 * (used_ + keys) > 3 * size) size *= 2;
  if (size == slots_.size()) return;
  // A table of another size, as if all had been put into it from the beginning.
  slots_ = std::vector<Slot>(size);
  used_ = 0;
  for (int depth = 1; depth < depth_; ++depth) {
    visitKeys(depth, [&](std::uint64_t key) {
      Slot& slot = slots_[slotOf(key)];
      used_ += slot.depth == free;
      slot = {static_cast<std::uint32_t>(key), depth};
    });
  }
}

void OpenNames::push() {
  std::size_t keys = 0;
  visitKeys(depth_, [&](std::uint64_t) { ++keys; });
  makeRoom(keys);
  visitKeys(depth_, [&](std::uint64_t key) {
    Slot& slot = slots_[slotOf(key)];
    shadowed_.push_back(slot.depth);
    used_ += slot.depth == free;
    slot = {static_cast<std::uint32_t>(key), depth_};
  });
  ++depth_;
}

void OpenNames::pop() {
  --depth_;
  std::uint64_t keys[longestName + 1];
  std::size_t count = 0;
  visitKeys(depth_, [&](std::uint64_t key) { keys[count++] = key; });
  while (count-- > 0) {
    Slot& slot = slots_[slotOf(keys[count])];
    slot.depth = shadowed_.back();
    shadowed_.pop_back();
    used_ -= slot.depth == free;
  }
}

bool OpenNames::closes(int depth, std::u16string_view endTagName) const noexcept {
  return closesTagAt(text_, stack_[static_cast<std::size_t>(depth)].start + 1, endTagName,
                     ignoreCase_);
}

int OpenNames::find(std::u16string_view endTagName) const {
  std::uint64_t key = 0;
  for (const char16_t unit : endTagName.substr(0, longestName)) key = extend(key, unit);
  // Different names may share a key, though hardly ever.
  int depth = slots_[slotOf(key)].depth;
  while (depth > 0 && !closes(depth, endTagName)) --depth;
  return depth > 0 ? depth : -1;
}

}  // namespace kpx::detail
