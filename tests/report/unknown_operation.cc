// Must not compile: the error table knows no such operation. (No .cpp, so that no tool takes it for
// a source.)
#include "kpx/report/Error.h"

int failing() {
  return kpx::Guarded("CFGCol::noSuchOperation", 0, [] { return 1; });
}
