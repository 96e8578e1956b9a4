#include "kpx/config/CFGCommand.h"

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGCommand::GetElementName() const {
  return Guarded("CFGCommand::GetElementName"_config, CString(),
                 [] { return CString(u"CFGCommand"); });
}

int CFGCommand::serializeXML(CMarkup* document) const {
  return Guarded("CFGCommand::serializeXML"_config, 0, [&] { return addElement(document, *this); });
}

int CFGCommand::loadByXML(CMarkup* document) {
  return Guarded("CFGCommand::loadByXML"_config, 0, [&] { return readElement(document, *this); });
}

}  // namespace kpx
