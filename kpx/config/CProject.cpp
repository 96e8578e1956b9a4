#include "kpx/config/CProject.h"

#include <utility>

#include "kpx/config/internal/ElementReader.h"
#include "kpx/config/internal/ElementWriter.h"
#include "kpx/config/Operations.h"
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
  return Guarded("CProject::serializeXML"_config, 0,
                 [&] { return detail::addElement(document, *this); });
}

int CProject::loadByXML(CMarkup* document) {
  return Guarded("CProject::loadByXML"_config, 0, [&] {
    detail::ElementReader reader(document, *this);
    if (!reader.matches()) return 0;
    reader.header(*this);
    reader.read(u"Name", Name);
    reader.read(u"Description", Description);
    reader.read(u"Status", Status);
    reader.read(u"Path", Path);
    reader.read(u"Text", Text);
    reader.read(u"DBName", DBName);
    reader.read(u"DBType", DBType);
    return reader.done();
  });
}

void detail::appendElement(ElementWriter& writer, const CProject& project) {
  writer.start(project);
  writer.attribute(u" Name=\"", project.Name);
  writer.attribute(u" Description=\"", project.Description);
  writer.attribute(u" Status=\"", project.Status);
  writer.attribute(u" Path=\"", project.Path);
  writer.attribute(u" Text=\"", project.Text);
  writer.attribute(u" DBName=\"", project.DBName);
  writer.attribute(u" DBType=\"", project.DBType);
  writer.closeEmpty();
}

}  // namespace kpx
