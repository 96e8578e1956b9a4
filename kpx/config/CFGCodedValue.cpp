#include "kpx/config/CFGCodedValue.h"

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGCodedValue::GetElementName() const {
  return Guarded("CFGCodedValue::GetElementName"_config, CString(),
                 [] { return CString(u"CFGCodedValue"); });
}

int CFGCodedValue::serializeXML(CMarkup* document) const {
  return Guarded("CFGCodedValue::serializeXML"_config, 0,
                 [&] { return addElement(document, *this); });
}

int CFGCodedValue::loadByXML(CMarkup* document) {
  return Guarded("CFGCodedValue::loadByXML"_config, 0,
                 [&] { return readElement(document, *this); });
}

}  // namespace kpx
