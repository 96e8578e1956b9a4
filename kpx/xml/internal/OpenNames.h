#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kpx::detail {

/// The name of a tag, which begins at `position`.
std::u16string_view tagNameAt(std::u16string_view text, int position) noexcept;

/// Whether an end tag of this name closes an element whose start tag has its name at `position`:
/// the names are equal, or the start tag's goes on with one of the units that end a name where
/// attributes may follow it. Looks at no more of the start tag than the name is long.
bool closesTagAt(std::u16string_view text, int position, std::u16string_view endTagName,
                 bool ignoreCase) noexcept;

/// Finds among many open elements the innermost one that an end tag closes, without walking them:
/// a document of end tags that close nothing costs no more for each the deeper it is nested.
class OpenNames {
 public:
  OpenNames(std::u16string_view text, bool ignoreCase);

  /// How many open elements it knows: all below this depth.
  int depth() const noexcept { return static_cast<int>(names_.size()); }
  /// The next one, by where its start tag has its name.
  void push(int namePosition);
  void pop();
  /// The depth of the innermost element, or -1.
  int find(std::u16string_view endTagName) const;

 private:
  template <class Visit>
  void visitKeys(int namePosition, Visit visit) const;
  std::uint64_t extend(std::uint64_t key, char16_t unit) const noexcept;

  const std::u16string_view text_;
  const bool ignoreCase_;
  const std::uint64_t base_;
  std::vector<int> names_;
  // By key of a name that closes them, the depths in ascending order. Different names may have
  // the same key, though hardly ever.
  std::unordered_map<std::uint64_t, std::vector<int>> depths_;
};

}  // namespace kpx::detail
