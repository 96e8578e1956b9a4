#include "kpx/config/CFGCodedValue.h"

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGCodedValue::GetElementName() const {
  return Guarded("CFGCodedValue::GetElementName", CString(),
                 [] { return CString(u"CFGCodedValue"); });
}

int CFGCodedValue::serializeXML(CMarkup* document) const {
  return Guarded("CFGCodedValue::serializeXML", 0, [&] { return addElement(document, *this); });
}

int CFGCodedValue::loadByXML(CMarkup* document) {
  return Guarded("CFGCodedValue::loadByXML", 0, [&] { return readElement(document, *this); });
}

}  // namespace kpx
