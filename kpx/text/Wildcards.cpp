#include "kpx/text/Wildcards.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kpx {
namespace {

using View = std::u16string_view;
constexpr std::size_t notFound = View::npos;

bool matchesAt(View text, std::size_t at, View piece) noexcept {
  for (std::size_t i = 0; i < piece.size(); ++i) {
    if (piece[i] != u'?' && piece[i] != text[at + i]) return false;
  }
  return true;
}

/// Up to this length, comparing at each offset costs less than preparing the piece.
constexpr std::size_t shortPiece = 64;

/// Finds a long piece without wildcards in one pass (after Knuth, Morris and Pratt), for texts
/// made of repetitions.
std::size_t findLong(View text, View piece) {
  // For each length of a matched beginning, the longest shorter one that ends it too.
  std::vector<std::size_t> shorter(piece.size() + 1, 0);
  std::size_t matched = 0;
  for (std::size_t i = 1; i < piece.size(); ++i) {
    while (matched > 0 && piece[i] != piece[matched]) matched = shorter[matched];
    if (piece[i] == piece[matched]) ++matched;
    shorter[i + 1] = matched;
  }
  matched = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    while (matched > 0 && text[i] != piece[matched]) matched = shorter[matched];
    if (text[i] == piece[matched]) ++matched;
    if (matched == piece.size()) return i + 1 - matched;
  }
  return notFound;
}

/// For each unit the places of a part of up to 64 units that take it, a bit for each.
class Places {
 public:
  void set(View part) {
    if (pages_.empty()) pages_.emplace_back();
    std::uint64_t bit = 1;
    for (const char16_t unit : part) {
      if (unit == u'?') {
        any_ |= bit;
      } else {
        placesOf(unit) |= bit;
      }
      bit <<= 1;
    }
  }
  /// Forgets the part that was set, at the cost of its length.
  void clear(View part) noexcept {
    any_ = 0;
    for (const char16_t unit : part) pages_[pageOf_[unit >> 8]][unit & 0xFF] = 0;
  }
  std::uint64_t operator[](char16_t unit) const noexcept {
    return pages_[pageOf_[unit >> 8]][unit & 0xFF] | any_;
  }

 private:
  using Page = std::array<std::uint64_t, 256>;

  std::uint64_t& placesOf(char16_t unit) {
    std::uint16_t& page = pageOf_[unit >> 8];
    if (page == 0) {
      pages_.emplace_back();
      page = static_cast<std::uint16_t>(pages_.size() - 1);
    }
    return pages_[page][unit & 0xFF];
  }

  std::array<std::uint16_t, 256> pageOf_{};  // by the high byte; page 0 stays empty
  std::vector<Page> pages_;                  // made with the first part
  std::uint64_t any_ = 0;
};

/// Finds a piece that holds "?": 64 of its units at a time, all beginnings of the piece that end at
/// a unit of the text are kept in the bits of one number (Shift-And, after Baeza-Yates and Gonnet).
/// Where a part of the piece ends in the text is noted for the part behind it.
class WildPieceFinder {
 public:
  std::size_t find(View text, View piece) {
    // Not worth preparing anything; the texts of most callers are names.
    constexpr std::size_t fewSteps = 4096;
    const std::size_t last = text.size() - piece.size();
    if ((last + 1) * piece.size() <= fewSteps) {
      std::size_t at = 0;
      while (at <= last && !matchesAt(text, at, piece)) ++at;
      return at <= last ? at : notFound;
    }
    ends_.clear();
    for (std::size_t begin = 0; begin < piece.size(); begin += partSize) {
      const View part = piece.substr(begin, partSize);
      const bool isLast = begin + part.size() == piece.size();
      places_.set(part);
      const std::size_t end = isLast ? findEnd(text, part, begin) : noteEnds(text, part, begin);
      places_.clear(part);
      if (isLast || end == notFound) return end == notFound ? end : end - piece.size();
    }
    return notFound;
  }

 private:
  static constexpr std::size_t partSize = 64;

  /// Whether the parts before the one that begins at `begin` of the piece end before a unit.
  std::uint64_t endsBefore(std::size_t unit, std::size_t begin) const noexcept {
    return begin == 0 ? 1 : ends_[unit / 64] >> unit % 64 & 1;
  }

  /// The first end of the whole piece, by its last part.
  std::size_t findEnd(View text, View part, std::size_t begin) const noexcept {
    const std::uint64_t whole = std::uint64_t{1} << (part.size() - 1);
    std::uint64_t begun = 0;
    for (std::size_t i = begin; i < text.size(); ++i) {
      begun = (begun << 1 | endsBefore(i, begin)) & places_[text[i]];
      if ((begun & whole) != 0) return i + 1;
    }
    return notFound;
  }

  /// Notes all ends of the piece up to and with a part of 64 units; answers the first.
  std::size_t noteEnds(View text, View part, std::size_t begin) {
    std::vector<std::uint64_t> ends(text.size() / 64 + 1, 0);
    const std::uint64_t whole = std::uint64_t{1} << (part.size() - 1);
    std::size_t first = notFound;
    std::uint64_t begun = 0;
    for (std::size_t i = begin; i < text.size(); ++i) {
      begun = (begun << 1 | endsBefore(i, begin)) & places_[text[i]];
      if ((begun & whole) == 0) continue;
      ends[(i + 1) / 64] |= std::uint64_t{1} << (i + 1) % 64;
      if (first == notFound) first = i + 1;
    }
    ends_ = std::move(ends);
    return first;
  }

  Places places_;
  std::vector<std::uint64_t> ends_;  // a bit for each place between two units of the text
};

std::size_t findPiece(View text, View piece, WildPieceFinder& wild) {
  if (piece.size() > text.size()) return notFound;
  if (piece.find(u'?') != notFound) return wild.find(text, piece);
  return piece.size() <= shortPiece ? text.find(piece) : findLong(text, piece);
}

}  // namespace

bool detail::matchesWildcards(View text, View pattern) {
  const std::size_t firstStar = pattern.find(u'*');
  if (firstStar == notFound) {
    return text.size() == pattern.size() && matchesAt(text, 0, pattern);
  }
  const std::size_t lastStar = pattern.rfind(u'*');
  const View front = pattern.substr(0, firstStar);
  const View back = pattern.substr(lastStar + 1);
  if (text.size() < front.size() + back.size() || !matchesAt(text, 0, front) ||
      !matchesAt(text, text.size() - back.size(), back)) {
    return false;
  }
  text = text.substr(front.size(), text.size() - front.size() - back.size());
  WildPieceFinder wild;
  // The earliest place of a piece leaves most room for the pieces behind it, so no other place
  // needs to be tried.
  for (std::size_t at = firstStar; at < lastStar;) {
    const std::size_t end = pattern.find(u'*', at + 1);
    const View piece = pattern.substr(at + 1, end - at - 1);
    const std::size_t place = findPiece(text, piece, wild);
    if (place == notFound) return false;
    text.remove_prefix(place + piece.size());
    at = end;
  }
  return true;
}

}  // namespace kpx
