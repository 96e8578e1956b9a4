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

OpenNames::OpenNames(std::u16string_view text, bool ignoreCase)
    : text_(text), ignoreCase_(ignoreCase), base_(chooseBase()) {}

std::uint64_t OpenNames::extend(std::uint64_t key, char16_t unit) const noexcept {
  return multiplyModulo61(key, base_) + (ignoreCase_ ? foldCase(unit) : unit) + 1u;
}

template <class Visit>
void OpenNames::visitKeys(int namePosition, Visit visit) const {
  const std::u16string_view name =
      text_.substr(static_cast<std::size_t>(namePosition), longestName + 1);
  std::uint64_t key = 0;
  for (const char16_t& unit : name) {
    if (endsName(unit) || (mayFollowName(unit) && &unit != name.data())) visit(key);
    if (endsName(unit)) break;
    key = extend(key, unit);
  }
}

void OpenNames::push(int namePosition) {
  const int depth = this->depth();
  names_.push_back(namePosition);
  visitKeys(namePosition, [&](std::uint64_t key) { depths_[key].push_back(depth); });
}

void OpenNames::pop() {
  visitKeys(names_.back(), [&](std::uint64_t key) {
    const auto found = depths_.find(key);
    found->second.pop_back();
    if (found->second.empty()) depths_.erase(found);
  });
  names_.pop_back();
}

int OpenNames::find(std::u16string_view endTagName) const {
  std::uint64_t key = 0;
  for (const char16_t unit : endTagName.substr(0, longestName)) key = extend(key, unit);
  const auto found = depths_.find(key);
  if (found == depths_.end()) return -1;
  for (auto depth = found->second.rbegin(); depth != found->second.rend(); ++depth) {
    const int position = names_[static_cast<std::size_t>(*depth)];
    if (closesTagAt(text_, position, endTagName, ignoreCase_)) return *depth;
  }
  return -1;
}

}  // namespace kpx::detail
