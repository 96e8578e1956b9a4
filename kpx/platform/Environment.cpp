#include "kpx/platform/Environment.h"

namespace kpx {

CString environmentVariable(const CString& name) {
  CString value;
  readEnvironmentVariable(name, value);
  return value;
}

}  // namespace kpx
