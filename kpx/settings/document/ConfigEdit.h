#pragma once

#include <map>
#include <vector>

#include "kpx/config/KeyedCollection.h"
#include "kpx/settings/Catalogue.h"
#include "kpx/settings/document/ConfigView.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Changes of the configurations of a document, collected first and then made all together: in one
/// pass over the text, so that many cost no more than the document is long. Nothing else of the
/// text changes; what is added has its line ends.
///
/// Configurations are counted from 0: those of the view, then those that are added.
class ConfigEdit {
 public:
  /// The column of this key gets the text. A column without a value gets one; a key without a
  /// column gets the column that a new object has, or else that the setter creates, behind the
  /// others. Of a key that stands twice the first changes, so callers refuse that before.
  void set(int configuration, const CString& key, CString text);
  /// What a key will have; nullptr if it is not changed.
  const CString* find(int configuration, std::u16string_view key) const noexcept;

  /// A new object of the class, which must be one of configurations, becomes the last child of the
  /// root; without a root it becomes that.
  void add(const SettingsClass& settingsClass);

  bool isEmpty() const noexcept { return changes_.empty() && added_.empty(); }
  void clear() noexcept;

  /// Makes the changes in a copy of the document. Answers false, and leaves `changed` as it was,
  /// when the document does not take them. Throws std::bad_alloc and `GuardedException`, likewise.
  bool apply(CMarkup& document, const ConfigView& view, CMarkup& changed) const;

 private:
  std::map<int, KeyedCollection<CString>> changes_;
  std::vector<const SettingsClass*> added_;
};

/// Adds a configuration with the line ends of the document: as the root of one that has none, else
/// as the last child of the root. Answers false, with the document as it was, when the root is a
/// configuration itself, which holds no others, or when the document does not take it.
bool addConfiguration(CMarkup& document, const CFGConfig& config);

}  // namespace kpx
