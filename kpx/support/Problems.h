#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

namespace kpx {

/// So many problems of one input are kept with what they say, unless the caller wants more.
inline constexpr std::size_t usualProblemLimit = 1000;
inline constexpr std::size_t noProblemLimit = std::numeric_limits<std::size_t>::max();

/// The problems of one input: how many there are, and the first of them in the order of the input.
template <class Problem>
struct Problems {
  std::size_t count = 0;
  std::vector<Problem> first;

  bool empty() const noexcept { return count == 0; }
  auto begin() const noexcept { return first.begin(); }
  auto end() const noexcept { return first.end(); }
  /// How many are only counted.
  std::size_t leftOut() const noexcept { return count - first.size(); }
};

/// Collects the problems of one input, which may come in any order. What it keeps has a limit, so
/// that an input of nothing but mistakes does not fill the memory.
template <class Problem>
class ProblemCollector {
 public:
  explicit ProblemCollector(std::size_t limit = usualProblemLimit) noexcept : limit_(limit) {}

  /// Adds a problem at a place, such as line and column. `make` gives it; it is called only if the
  /// problem is kept. Of problems at the same place those that came first are the first.
  template <class Make>
  void add(std::size_t place, std::size_t placeWithin, Make make) {
    const Key key{place, placeWithin, count_++};
    if (kept_.size() < limit_) {
      kept_.push_back({key, make()});
      isSorted_ = isSorted_ && (kept_.size() == 1 || kept_[kept_.size() - 2].key < key);
      return;
    }
    if (limit_ == 0) return;
    // From here on, a heap with the last one on top.
    if (!isHeap_) std::ranges::make_heap(kept_, {}, &Entry::key);
    isHeap_ = true;
    if (kept_.front().key < key) return;
    Entry entry{key, make()};
    std::ranges::pop_heap(kept_, {}, &Entry::key);
    kept_.back() = std::move(entry);
    std::ranges::push_heap(kept_, {}, &Entry::key);
  }

  Problems<Problem> finish() && {
    if (isHeap_ || !isSorted_) std::ranges::sort(kept_, {}, &Entry::key);
    Problems<Problem> problems;
    problems.count = count_;
    problems.first.reserve(kept_.size());
    for (Entry& entry : kept_) problems.first.push_back(std::move(entry.problem));
    return problems;
  }

 private:
  struct Key {
    std::size_t place;
    std::size_t placeWithin;
    std::size_t order;
    friend auto operator<=>(const Key&, const Key&) = default;
  };
  struct Entry {
    Key key;
    Problem problem;
  };

  std::size_t limit_;
  std::size_t count_ = 0;
  bool isSorted_ = true;
  bool isHeap_ = false;
  std::vector<Entry> kept_;
};

}  // namespace kpx
