#include "kpx/config/CFGConfig.h"

#include <string_view>

#include "kpx/config/internal/ElementReader.h"
#include "kpx/config/internal/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGConfig::GetElementName() const {
  return Guarded("CFGConfig::GetElementName"_config, CString(), [&] {
    constexpr std::u16string_view prefix = u"CFGConfig";
    if (Class.Name.StartsWith(prefix)) return Class.Name;
    CString name(prefix);
    name += Class.Name.view();
    return name;
  });
}

int CFGConfig::serializeXML(CMarkup* document) const {
  return Guarded("CFGConfig::serializeXML"_config, 0,
                 [&] { return detail::addElement(document, *this); });
}

int CFGConfig::loadByXML(CMarkup* document) {
  return Guarded("CFGConfig::loadByXML"_config, 0, [&] {
    detail::ElementReader reader(document, *this);
    if (!reader.matches()) return 0;
    reader.header(*this);
    reader.read(u"Name", Name);
    reader.read(u"ClassID", ClassID);
    const detail::InsideElement inside(*document);
    while (document->FindChildElem(u"CFGClass")) Class.loadByXML(document);
    return reader.done();
  });
}

void CFGConfig::ResetPos() {}

void CFGConfig::AddSetting(const CString& value, const CString& key, const CString& groupText,
                           std::int32_t type, const CString& caption, std::int32_t param1,
                           std::int32_t prec, std::int32_t param5) {
  Guarded("CFGConfig::AddSetting"_config, [&] {
    Class.AddCol(CFGCol(value, key, groupText, type, caption, param1, prec, param5));
  });
}

void CFGConfig::AddColumn(const CFGCol& column) {
  Guarded("CFGConfig::AddColumn"_config, [&] { Class.AddCol(column); });
}

void detail::appendElement(ElementWriter& writer, const CFGConfig& object) {
  writer.start(object);
  writer.attribute(u" Name=\"", object.Name);
  writer.attribute(u" ClassID=\"", object.ClassID);
  writer.open();
  appendPart("CFGClass::serializeXML"_config, writer, object.Class);
  writer.close(object);
}

}  // namespace kpx
