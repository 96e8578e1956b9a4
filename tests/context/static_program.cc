// A program that links the static library with nothing but the libraries it needs.
#include "kpx/context/Folders.h"
#include "kpx/domain/CFCFieldInfos.h"

int main(int, char** arguments) {
  kpx::kpxSetSystemPath(kpx::CString::fromUtf8(arguments[1]));
  kpx::CFCFieldInfo info;
  return kpx::CFCFieldInfos().GetAt(-1, info) ? 1 : 0;
}
