#pragma once

#include <string_view>
#include <vector>

#include "kpx/config/CDBObject.h"
#include "kpx/config/CFGCol.h"
#include "kpx/config/KeyedCollection.h"
#include "kpx/config/KeyLiteral.h"

namespace kpx {

/// The columns of a configuration by key, and the order in which they are presented. Element
/// "CFGClass" with one child "CFGCol" for each column; the order is not written.
///
/// Keys are compared by case. Columns iterate in the order in which they were first stored.
/// Assignment writes the source's columns over the target's (columns that only the target has
/// remain) and takes over the source's key order; a copy construction has the source's only.
///
/// Failures are reported as 42898 (GetElementName), 42893 (serializeXML), 42892 (loadByXML).
class KPX_API CFGClass : public CDBObject {
 public:
  CFGClass() = default;
  CFGClass(const CFGClass&) = default;
  CFGClass(CFGClass&&) noexcept = default;
  CFGClass& operator=(const CFGClass&) = default;
  ~CFGClass() override = default;

  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  /// Updates columns that are present, whole; a "CFGCol" with an unknown name is passed over, so
  /// reading never adds a setting.
  int loadByXML(CMarkup* document) override;

  // --- columns --------------------------------------------------------------------------------

  /// Copies the column into `column` and answers true, or answers false and leaves it as it is.
  bool FindCol(const CString& key, CFGCol& column) const;
  /// The column, without a copy; nullptr if there is none. Valid until it is removed.
  const CFGCol* find(std::u16string_view key) const noexcept { return Cols.find(key); }
  const CFGCol* find(const KeyLiteral& key) const noexcept { return Cols.find(key); }
  /// The column; a default-constructed one (with an empty Name) is inserted first if there is
  /// none. KeyOrder stays as it is.
  CFGCol& ColAt(const CString& key);
  /// Stores a copy under the key, over an earlier column. KeyOrder stays as it is.
  void SetCol(const CString& key, const CFGCol& column);
  /// Stores the column under its Name, over an earlier one; a new name is appended to KeyOrder.
  void AddCol(CFGCol column);
  /// Removes all columns. KeyOrder stays as it is.
  void RemoveCols() noexcept { Cols.clear(); }

  // --- order of presentation ------------------------------------------------------------------

  /// Sets one key of KeyOrder, which grows to index + 1 where needed. Raises
  /// `InvalidArgException` for a negative index.
  void SetKeyAt(int index, const CString& key);
  /// Resizes KeyOrder; new keys are empty. Raises `InvalidArgException` for a negative count.
  void SetKeyCount(int count);

  CString Name;  // the name of the class of configuration
  KeyedCollection<CFGCol> Cols;
  std::vector<CString> KeyOrder;
};

}  // namespace kpx
