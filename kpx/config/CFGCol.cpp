#include "kpx/config/CFGCol.h"

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGCol::GetElementName() const {
  return Guarded("CFGCol::GetElementName"_config, CString(), [] { return CString(u"CFGCol"); });
}

int CFGCol::serializeXML(CMarkup* document) const {
  return Guarded("CFGCol::serializeXML"_config, 0, [&] { return addElement(document, *this); });
}

int CFGCol::loadByXML(CMarkup* document) {
  return Guarded("CFGCol::loadByXML"_config, 0, [&] {
    return readElement(document, *this, [&] {
      if (document->FindChildElem(u"CFGValue")) Value.loadByXML(document);
    });
  });
}

void appendElement(ElementWriter& writer, const CFGCol& column) {
  writer.start(column);
  writer.open();
  appendPart("CFGValue::serializeXML"_config, writer, column.Value);
  writer.close(column);
}

}  // namespace kpx
