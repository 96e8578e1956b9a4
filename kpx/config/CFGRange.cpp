#include "kpx/config/CFGRange.h"

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGRange::GetElementName() const {
  return Guarded("CFGRange::GetElementName"_config, CString(), [] { return CString(u"CFGRange"); });
}

int CFGRange::serializeXML(CMarkup* document) const {
  return Guarded("CFGRange::serializeXML"_config, 0, [&] { return addElement(document, *this); });
}

int CFGRange::loadByXML(CMarkup* document) {
  return Guarded("CFGRange::loadByXML"_config, 0, [&] { return readElement(document, *this); });
}

}  // namespace kpx
