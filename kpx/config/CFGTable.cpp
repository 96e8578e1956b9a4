#include "kpx/config/CFGTable.h"

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGTable::GetElementName() const {
  return Guarded("CFGTable::GetElementName"_config, CString(), [] { return CString(u"CFGTable"); });
}

int CFGTable::serializeXML(CMarkup* document) const {
  return Guarded("CFGTable::serializeXML"_config, 0, [&] { return addElement(document, *this); });
}

int CFGTable::loadByXML(CMarkup* document) {
  return Guarded("CFGTable::loadByXML"_config, 0, [&] { return readElement(document, *this); });
}

void CFGTable::ResetPos() {}

void CFGTable::AddColDef(const CString& value, const CString& key, const CString& category,
                         std::int32_t type, const CString& caption) {
  Guarded("CFGTable::AddColDef"_config,
          [&] { Class.AddCol(CFGCol(value, key, category, type, caption)); });
}

void CFGTable::AddColumn(const CFGCol& column) {
  Guarded("CFGTable::AddColumn"_config, [&] { Class.AddCol(column); });
}

bool CFGTable::FindCol(const CString& key, CFGRow& row) const {
  const CFGRow* const found = Rows.find(key);
  if (found) row = *found;
  return found != nullptr;
}

CFGRow& CFGTable::ColAt(const CString& key) { return Rows.at(key); }

void CFGTable::SetCol(const CString& key, const CFGRow& row) { Rows.set(key, row); }

}  // namespace kpx
