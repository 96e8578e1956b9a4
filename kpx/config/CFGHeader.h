#pragma once

#include "kpx/config/CFGConfig.h"

namespace kpx {

/// The header record of a configuration table: a class and a description. Element
/// "CFGConfigCFGClassHeader".
///
/// The getters answer the empty text when the column is missing and create nothing; the setters
/// create a missing column and answer 1.
class KPX_API CFGHeader : public CFGConfig {
 public:
  /// Both settings are present and empty.
  CFGHeader();

  /// Class, Description. A failure is reported as 42857.
  void ResetPos() override;

  CString getClass() const;
  int setClass(const CString& value);
  CString getDescription() const;
  int setDescription(const CString& value);
};

}  // namespace kpx
