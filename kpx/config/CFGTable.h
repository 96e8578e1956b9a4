#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/config/CDBObject.h"
#include "kpx/config/CFGClass.h"
#include "kpx/config/CFGRow.h"
#include "kpx/config/KeyedCollection.h"

namespace kpx {

/// A configuration in the form of a table: the definitions of its columns, and rows by key. The
/// table classes derive from it and define their columns.
///
/// As XML: element "CFGTable" with the header attributes only. The modules that use tables store
/// columns and rows themselves.
///
/// Keys are compared by case. Copies are deep; assignment writes the source's rows and columns
/// over the target's, and those that only the target has remain.
///
/// Failures are reported as 42866 (GetElementName), 42861 (serializeXML), 42860 (loadByXML).
class KPX_API CFGTable : public CDBObject {
 public:
  CFGTable() = default;
  CFGTable(const CFGTable&) = default;
  CFGTable(CFGTable&&) noexcept = default;
  CFGTable& operator=(const CFGTable&) = default;
  ~CFGTable() override = default;

  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  int loadByXML(CMarkup* document) override;
  /// Puts the columns into their order of presentation. Does nothing here.
  virtual void ResetPos();

  // --- columns --------------------------------------------------------------------------------

  /// Adds the definition of a column; `value` is its initial value. The third argument goes to
  /// Category and the fifth to Caption. A failure is reported as 42863 and nothing is stored.
  void AddColDef(const CString& value, const CString& key, const CString& category,
                 std::int32_t type, const CString& caption);
  /// Adds a prepared definition with `CFGClass::AddCol`. A failure is reported as 42864 and nothing
  /// is stored.
  void AddColumn(const CFGCol& column);

  // --- rows: named as the same operations of a row and of a CFGClass --------------------------

  /// Copies the row into `row` (deep, over what it holds) and answers true, or answers false and
  /// leaves it as it is.
  bool FindCol(const CString& key, CFGRow& row) const;
  /// The row, without a copy; nullptr if there is none.
  const CFGRow* find(std::u16string_view key) const noexcept { return Rows.find(key); }
  /// The row; an empty one is inserted first if there is none.
  CFGRow& ColAt(const CString& key);
  /// Stores a copy under the key; nothing of an earlier row stays.
  void SetCol(const CString& key, const CFGRow& row);

  CFGClass Class;  // the definitions of the columns
  KeyedCollection<CFGRow> Rows;
};

}  // namespace kpx
