#pragma once

#include <string_view>
#include <vector>

namespace kpx::detail {

/// What the beginning of a document decides about the rest of it: the version of XML, and which
/// entities there are. Points into the text of the document.
class DocumentRules {
 public:
  DocumentRules() = default;
  /// Reads what stands before the first element.
  explicit DocumentRules(std::u16string_view document);

  /// The XML declaration, from "<?" through "?>".
  void readDeclaration(std::u16string_view declaration);
  /// What stands in a document type declaration, behind "DOCTYPE" and before its ">".
  void readDocumentType(std::u16string_view content);

  /// Whether the rules of XML 1.1 hold for characters and line ends.
  bool isVersion11() const noexcept { return isVersion11_; }
  /// Whether an entity of this name may be meant: one that every document has, one that is
  /// declared, or any where declarations may stand in another file or a parameter entity.
  bool knowsEntity(std::u16string_view name) const noexcept;

 private:
  void readSubset(std::u16string_view subset);

  bool isVersion11_ = false;
  bool isStandalone_ = false;
  bool hasOtherDeclarations_ = false;
  std::vector<std::u16string_view> entities_;  // in the order of their names
};

}  // namespace kpx::detail
