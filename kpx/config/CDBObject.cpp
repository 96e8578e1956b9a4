#include "kpx/config/CDBObject.h"

namespace kpx {

int CDBObject::loadByXML(CMarkup*) { return 0; }

}  // namespace kpx
