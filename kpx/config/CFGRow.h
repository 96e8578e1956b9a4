#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/config/CDBObject.h"
#include "kpx/config/CFGCol.h"
#include "kpx/config/KeyedCollection.h"
#include "kpx/config/KeyLiteral.h"

namespace kpx {

/// One row of a table: cells by column key. A cell is a column that carries its value. The row
/// classes of the tables derive from it and add typed accessors.
///
/// As XML: element "CFGRow" with the header attributes only. The modules that use tables store
/// the cells themselves.
///
/// Keys are compared by case. Copies are deep; assignment writes the source's cells over the
/// target's, and cells that only the target has remain.
///
/// Failures are reported as 42878 (GetElementName), 42873 (serializeXML), 42872 (loadByXML).
class KPX_API CFGRow : public CDBObject {
 public:
  CFGRow() = default;
  CFGRow(const CFGRow&) = default;
  CFGRow(CFGRow&&) noexcept = default;
  CFGRow& operator=(const CFGRow&) = default;
  ~CFGRow() override = default;

  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  int loadByXML(CMarkup* document) override;

  /// Stores a new cell under the key, over an earlier one. The third argument goes to the cell's
  /// Category and the fifth to its Caption. A failure is reported as 42874 and nothing is stored.
  void AddCell(const CString& value, const CString& key, const CString& category, std::int32_t type,
               const CString& caption);

  /// Copies the cell into `cell` and answers true, or answers false and leaves it as it is.
  bool FindCol(const CString& key, CFGCol& cell) const;
  /// The cell, without a copy; nullptr if there is none.
  const CFGCol* find(std::u16string_view key) const noexcept { return Cells.find(key); }
  const CFGCol* find(const KeyLiteral& key) const noexcept { return Cells.find(key); }
  /// The cell; a default-constructed one is inserted first if there is none.
  CFGCol& ColAt(const CString& key);
  /// Stores a copy under the key, over an earlier cell.
  void SetCol(const CString& key, const CFGCol& cell);

  std::int32_t RowNo = 0;  // number and name are the owner's to use
  CString RowName;
  KeyedCollection<CFGCol> Cells;
};

}  // namespace kpx
