#include "kpx/config/CFGValue.h"

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGValue::GetElementName() const {
  return Guarded("CFGValue::GetElementName"_config, CString(), [] { return CString(u"CFGValue"); });
}

int CFGValue::serializeXML(CMarkup* document) const {
  return Guarded("CFGValue::serializeXML"_config, 0, [&] { return addElement(document, *this); });
}

int CFGValue::loadByXML(CMarkup* document) {
  return Guarded("CFGValue::loadByXML"_config, 0, [&] { return readElement(document, *this); });
}

}  // namespace kpx
