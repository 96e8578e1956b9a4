#include "kpx/config/CFGCol.h"

#include "kpx/config/internal/ElementReader.h"
#include "kpx/config/internal/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGCol::GetElementName() const {
  return Guarded("CFGCol::GetElementName"_config, CString(), [] { return CString(u"CFGCol"); });
}

int CFGCol::serializeXML(CMarkup* document) const {
  return Guarded("CFGCol::serializeXML"_config, 0,
                 [&] { return detail::addElement(document, *this); });
}

int CFGCol::loadByXML(CMarkup* document) {
  return Guarded("CFGCol::loadByXML"_config, 0, [&] {
    detail::ElementReader reader(document, *this);
    if (!reader.matches()) return 0;
    reader.header(*this);
    reader.read(u"ClassID", ClassID);
    reader.read(u"Type", Type);
    reader.read(u"Name", Name);
    reader.read(u"Caption", Caption);
    reader.read(u"Category", Category);
    reader.read(u"Length", Length);
    reader.read(u"Prec", Prec);
    reader.read(u"Nullable", Nullable);
    reader.read(u"Empty", Empty);
    reader.read(u"Default", Default);
    reader.read(u"Unit", Unit);
    const detail::InsideElement inside(*document);
    if (document->FindChildElem(u"CFGValue")) Value.loadByXML(document);
    return reader.done();
  });
}

void detail::appendElement(ElementWriter& writer, const CFGCol& column) {
  writer.start(column);
  writer.attribute(u" ClassID=\"", column.ClassID);
  writer.attribute(u" Type=\"", column.Type);
  writer.attribute(u" Name=\"", column.Name);
  writer.attribute(u" Caption=\"", column.Caption);
  writer.attribute(u" Category=\"", column.Category);
  writer.attribute(u" Length=\"", column.Length);
  writer.attribute(u" Prec=\"", column.Prec);
  writer.attribute(u" Nullable=\"", column.Nullable);
  writer.attribute(u" Empty=\"", column.Empty);
  writer.attribute(u" Default=\"", column.Default);
  writer.attribute(u" Unit=\"", column.Unit);
  writer.open();
  appendPart("CFGValue::serializeXML"_config, writer, column.Value);
  writer.close(column);
}

}  // namespace kpx
