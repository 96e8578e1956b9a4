#include "kpx/config/CUser.h"

#include <utility>

#include "kpx/config/internal/ElementReader.h"
#include "kpx/config/internal/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/report/Error.h"

namespace kpx {

CUser::CUser(const CUser& other) : CUser() {
  Guarded("CUser::CUser"_config, [&] {
    CUser copy;
    copy = other;
    *this = std::move(copy);
  });
}

CString CUser::GetElementName() const {
  return Guarded("CUser::GetElementName"_config, CString(), [] { return CString(u"CUser"); });
}

int CUser::serializeXML(CMarkup* document) const {
  return Guarded("CUser::serializeXML"_config, 0,
                 [&] { return detail::addElement(document, *this); });
}

int CUser::loadByXML(CMarkup* document) {
  return Guarded("CUser::loadByXML"_config, 0, [&] {
    detail::ElementReader reader(document, *this);
    if (!reader.matches()) return 0;
    reader.header(*this);
    reader.read(u"Type", Type);
    reader.read(u"Name", Name);
    reader.read(u"Comment", Comment);
    reader.read(u"Password", Password);
    return reader.done();
  });
}

void detail::appendElement(ElementWriter& writer, const CUser& user) {
  writer.start(user);
  writer.attribute(u" Type=\"", user.Type);
  writer.attribute(u" Name=\"", user.Name);
  writer.attribute(u" Comment=\"", user.Comment);
  writer.attribute(u" Password=\"", user.Password);
  writer.closeEmpty();
}

}  // namespace kpx
