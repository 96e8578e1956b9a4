#include "kpx/config/CFGClass.h"

#include <utility>

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"

namespace kpx {

CString CFGClass::GetElementName() const {
  return Guarded("CFGClass::GetElementName"_config, CString(), [] { return CString(u"CFGClass"); });
}

int CFGClass::serializeXML(CMarkup* document) const {
  return Guarded("CFGClass::serializeXML"_config, 0, [&] { return addElement(document, *this); });
}

int CFGClass::loadByXML(CMarkup* document) {
  return Guarded("CFGClass::loadByXML"_config, 0, [&] {
    return readElement(document, *this, [&] {
      while (document->FindChildElem(u"CFGCol")) {
        CFGCol fresh;
        if (fresh.loadByXML(document) == 0) continue;
        if (CFGCol* const column = Cols.find(fresh.Name)) *column = std::move(fresh);
      }
    });
  });
}

bool CFGClass::FindCol(const CString& key, CFGCol& column) const {
  const CFGCol* const found = Cols.find(key);
  if (found) column = *found;
  return found != nullptr;
}

CFGCol& CFGClass::ColAt(const CString& key) { return Cols.at(key); }

void CFGClass::SetCol(const CString& key, const CFGCol& column) { Cols.set(key, column); }

void CFGClass::AddCol(CFGCol column) {
  if (Cols.find(column.Name)) {
    const CString key = column.Name;
    Cols.set(key, std::move(column));
    return;
  }
  KeyOrder.push_back(column.Name);
  try {
    Cols.set(KeyOrder.back(), std::move(column));
  } catch (...) {
    KeyOrder.pop_back();
    throw;
  }
}

void CFGClass::SetKeyAt(int index, const CString& key) {
  if (index < 0) throw InvalidArgException();
  // The key may be one of the list's own, which growing moves.
  CString copy = key;
  const auto at = static_cast<std::size_t>(index);
  if (at >= KeyOrder.size()) KeyOrder.resize(at + 1);
  KeyOrder[at] = std::move(copy);
}

void CFGClass::SetKeyCount(int count) {
  if (count < 0) throw InvalidArgException();
  KeyOrder.resize(static_cast<std::size_t>(count));
}

void appendElement(ElementWriter& writer, const CFGClass& object) {
  writer.start(object);
  writer.open();
  writer.reserveColumns(object.Cols.size());
  for (const auto& entry : object.Cols) {
    appendPart("CFGCol::serializeXML"_config, writer, entry.value);
  }
  writer.close(object);
}

}  // namespace kpx
