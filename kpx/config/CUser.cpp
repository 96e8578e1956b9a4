#include "kpx/config/CUser.h"

#include <utility>

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
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
  return Guarded("CUser::serializeXML"_config, 0, [&] { return addElement(document, *this); });
}

int CUser::loadByXML(CMarkup* document) {
  return Guarded("CUser::loadByXML"_config, 0, [&] { return readElement(document, *this); });
}

}  // namespace kpx
