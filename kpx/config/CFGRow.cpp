#include "kpx/config/CFGRow.h"

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGRow::GetElementName() const {
  return Guarded("CFGRow::GetElementName"_config, CString(), [] { return CString(u"CFGRow"); });
}

int CFGRow::serializeXML(CMarkup* document) const {
  return Guarded("CFGRow::serializeXML"_config, 0, [&] { return addElement(document, *this); });
}

int CFGRow::loadByXML(CMarkup* document) {
  return Guarded("CFGRow::loadByXML"_config, 0, [&] { return readElement(document, *this); });
}

void CFGRow::AddCell(const CString& value, const CString& key, const CString& category,
                     std::int32_t type, const CString& caption) {
  Guarded("CFGRow::AddCell"_config,
          [&] { Cells.set(key, CFGCol(value, key, category, type, caption)); });
}

bool CFGRow::FindCol(const CString& key, CFGCol& cell) const {
  const CFGCol* const found = Cells.find(key);
  if (found) cell = *found;
  return found != nullptr;
}

CFGCol& CFGRow::ColAt(const CString& key) { return Cells.at(key); }

void CFGRow::SetCol(const CString& key, const CFGCol& cell) { Cells.set(key, cell); }

}  // namespace kpx
