#pragma once

#include <vector>

#include "kpx/config/CFGConfig.h"
#include "kpx/report/Export.h"
#include "kpx/settings/document/ConfigView.h"
#include "kpx/text/CString.h"

namespace kpx {

struct KeyAndValue {
  CString key;
  CString value;
};
struct ChangedValue {
  CString key;
  CString valueA;
  CString valueB;
};

/// How the values of two configurations differ; each list in the order of A, for onlyInB of B.
struct ConfigDifference {
  std::vector<KeyAndValue> onlyInA;
  std::vector<KeyAndValue> onlyInB;
  std::vector<ChangedValue> changed;

  bool none() const noexcept { return onlyInA.empty() && onlyInB.empty() && changed.empty(); }
};

/// Compares values only, not captions or headers. Numbers of a class that the catalogue knows are
/// compared as numbers: "0.020" equals "0.02". Of a key that a document has twice the last counts,
/// as it does in reading.
KPX_API ConfigDifference compareConfigurations(const ConfigView& viewA,
                                               const ViewedConfiguration& a,
                                               const ConfigView& viewB,
                                               const ViewedConfiguration& b);
KPX_API ConfigDifference compareConfigurations(const CFGConfig& a, const CFGConfig& b);
/// The defaults of the class as A against the document as B; keys that the document lacks are
/// only in A. Nothing when the class is unknown.
KPX_API ConfigDifference changedFromDefaults(const ConfigView& view,
                                             const ViewedConfiguration& configuration);

}  // namespace kpx
