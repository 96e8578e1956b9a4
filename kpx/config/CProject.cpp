#include "kpx/config/CProject.h"

#include <utility>

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"

namespace kpx {

CProject::CProject(const CProject& other) : CProject() {
  Guarded("CProject::CProject"_config, [&] {
    CProject copy;
    copy = other;
    *this = std::move(copy);
  });
}

CString CProject::GetElementName() const {
  return Guarded("CProject::GetElementName"_config, CString(), [] { return CString(u"CProject"); });
}

int CProject::serializeXML(CMarkup* document) const {
  return Guarded("CProject::serializeXML"_config, 0, [&] { return addElement(document, *this); });
}

int CProject::loadByXML(CMarkup* document) {
  return Guarded("CProject::loadByXML"_config, 0, [&] { return readElement(document, *this); });
}

}  // namespace kpx
