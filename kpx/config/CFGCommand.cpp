#include "kpx/config/CFGCommand.h"

#include "kpx/config/internal/ElementReader.h"
#include "kpx/config/internal/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGCommand::GetElementName() const {
  return Guarded("CFGCommand::GetElementName"_config, CString(),
                 [] { return CString(u"CFGCommand"); });
}

int CFGCommand::serializeXML(CMarkup* document) const {
  return Guarded("CFGCommand::serializeXML"_config, 0,
                 [&] { return detail::addElement(document, *this); });
}

int CFGCommand::loadByXML(CMarkup* document) {
  return Guarded("CFGCommand::loadByXML"_config, 0, [&] {
    detail::ElementReader reader(document, *this);
    if (!reader.matches()) return 0;
    reader.header(*this);
    reader.read(u"Pos", Pos);
    reader.read(u"Caption", Caption);
    reader.read(u"Command", Command);
    return reader.done();
  });
}

void detail::appendElement(ElementWriter& writer, const CFGCommand& command) {
  writer.start(command);
  writer.attribute(u" Pos=\"", command.Pos);
  writer.attribute(u" Caption=\"", command.Caption);
  writer.attribute(u" Command=\"", command.Command);
  writer.closeEmpty();
}

}  // namespace kpx
