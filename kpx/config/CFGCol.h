#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "kpx/config/CDBObject.h"
#include "kpx/config/CFGCodedValue.h"
#include "kpx/config/CFGCommand.h"
#include "kpx/config/CFGRange.h"
#include "kpx/config/CFGValue.h"

namespace kpx {

/// What `CFGCol::Type` says about a value. No other code is created.
namespace ColumnType {
inline constexpr std::int32_t integer = 1;  // decimal text of a 32-bit integer
inline constexpr std::int32_t real = 3;     // decimal text with "."
inline constexpr std::int32_t text = 4;
inline constexpr std::int32_t flag = 6;    // "0" or "1"
inline constexpr std::int32_t option = 7;  // "0" or "1"; treated as a flag
}  // namespace ColumnType

/// One setting: a named, typed, described cell that carries its value as text. Element "CFGCol"
/// with one child "CFGValue".
///
/// XML holds the header and the fields from ClassID to Unit but for the parameters; the
/// parameters and the three lists are carried and copied only. Copies are deep.
///
/// Failures are reported as 42913 (GetElementName), 42905 (serializeXML), 42904 (loadByXML).
class KPX_API CFGCol : public CDBObject {
 public:
  CFGCol() = default;
  /// The third argument goes to Category and the fifth to Caption: stored files and their readers
  /// rely on this assignment.
  CFGCol(CString value, CString name, CString category, std::int32_t type, CString caption,
         std::int32_t param1 = 1, std::int32_t prec = 0, std::int32_t param5 = 0,
         std::int32_t param4 = 0, std::int32_t param3 = 0, std::int32_t param6 = 1)
      : Type(type),
        Name(std::move(name)),
        Caption(std::move(caption)),
        Category(std::move(category)),
        Prec(prec),
        Param1(param1),
        Param3(param3),
        Param4(param4),
        Param5(param5),
        Param6(param6),
        Value(std::move(value)) {}

  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  int loadByXML(CMarkup* document) override;

  std::int32_t ClassID = 0;  // the owning class
  std::int32_t Type = 0;     // see ColumnType
  CString Name;              // the key, unique within a class
  CString Caption;
  CString Category;
  std::int32_t Length = 0;
  std::int32_t Prec = 0;      // number of decimals
  std::int32_t Nullable = 0;  // whether the value may be null
  std::int32_t Empty = 0;     // whether the value may be empty
  CString Default;
  std::int32_t Unit = 0;
  std::int32_t Param1 = 1;
  std::int32_t Param2 = 1;
  std::int32_t Param3 = 0;
  std::int32_t Param4 = 0;
  std::int32_t Param5 = 0;
  std::int32_t Param6 = 1;
  std::vector<CFGRange> Ranges;
  std::vector<CFGCodedValue> CodedValues;
  std::vector<CFGCommand> Commands;
  CFGValue Value;
};

}  // namespace kpx
