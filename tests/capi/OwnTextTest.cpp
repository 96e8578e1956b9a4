// A host whose framework has a CString of its own.
#define KPX_NO_GLOBAL_NAMES
#include "KpxBaseObjects.h"

struct CString {
  int length;
};

int countWithOwnText();
int countWithOwnText() {
  const CString own{3};
  kpx::CFGGeneralSettings settings;
  const kpx::CString text = u"a";
  return own.length + text.GetLength();
}
