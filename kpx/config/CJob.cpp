#include "kpx/config/CJob.h"

#include <utility>

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"

namespace kpx {

CJob::CJob(const CJob& other) : CJob() {
  Guarded("CJob::CJob"_config, [&] {
    CJob copy;
    copy = other;
    *this = std::move(copy);
  });
}

CString CJob::GetElementName() const {
  return Guarded("CJob::GetElementName"_config, CString(), [] { return CString(u"CJob"); });
}

int CJob::serializeXML(CMarkup* document) const {
  return Guarded("CJob::serializeXML"_config, 0, [&] { return addElement(document, *this); });
}

int CJob::loadByXML(CMarkup* document) {
  return Guarded("CJob::loadByXML"_config, 0, [&] { return readElement(document, *this); });
}

}  // namespace kpx
