#include "kpx/config/CFGConfig.h"

#include <string_view>

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/config/PersistentFields.h"
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
  return Guarded("CFGConfig::serializeXML"_config, 0, [&] { return addElement(document, *this); });
}

int CFGConfig::loadByXML(CMarkup* document) {
  return Guarded("CFGConfig::loadByXML"_config, 0, [&] {
    return readElement(document, *this, [&] {
      while (document->FindChildElem(u"CFGClass")) Class.loadByXML(document);
    });
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

void appendElement(ElementWriter& writer, const CFGConfig& object) {
  writer.start(object);
  writer.open();
  appendPart("CFGClass::serializeXML"_config, writer, object.Class);
  writer.close(object);
}

}  // namespace kpx
