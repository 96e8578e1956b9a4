#include "kpx/config/CJob.h"

#include <utility>

#include "kpx/config/internal/ElementReader.h"
#include "kpx/config/internal/ElementWriter.h"
#include "kpx/config/Operations.h"
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
  return Guarded("CJob::serializeXML"_config, 0,
                 [&] { return detail::addElement(document, *this); });
}

int CJob::loadByXML(CMarkup* document) {
  return Guarded("CJob::loadByXML"_config, 0, [&] {
    detail::ElementReader reader(document, *this);
    if (!reader.matches()) return 0;
    reader.header(*this);
    reader.read(u"Name", Name);
    reader.read(u"Description", Description);
    reader.read(u"Type", Type);
    reader.read(u"SystemID", SystemID);
    return reader.done();
  });
}

void detail::appendElement(ElementWriter& writer, const CJob& job) {
  writer.start(job);
  writer.attribute(u" Name=\"", job.Name);
  writer.attribute(u" Description=\"", job.Description);
  writer.attribute(u" Type=\"", job.Type);
  writer.attribute(u" SystemID=\"", job.SystemID);
  writer.closeEmpty();
}

}  // namespace kpx
