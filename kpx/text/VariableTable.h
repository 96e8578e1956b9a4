#pragma once

#include <cstdint>
#include <string_view>
#include <variant>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"
#include "kpx/text/NumberText.h"

namespace kpx {

/// Variables of a program that can be read and written by name, as texts.
///
/// The table refers to the variables, which must outlive it. Names compare by units, with case;
/// adding a name again replaces its variable.
///
///     std::int32_t count = 0;
///     double scale = 1.0;
///     VariableTable table;
///     table.add(u"Count", count);
///     table.add(u"Scale", scale, 3);
///     utlStringToVar(u"Scale", u"0,9996", table);
class VariableTable {
 public:
  KPX_API void add(const CString& name, std::int32_t& variable);
  /// `decimals` as `utlDoubleAsText` takes them.
  KPX_API void add(const CString& name, double& variable, int decimals = allDigits);
  KPX_API void add(const CString& name, CString& variable);

  bool has(std::u16string_view name) const noexcept { return find(name) != nullptr; }
  std::size_t size() const noexcept { return entries_.size(); }

  /// See utlStringToVar and utlVarToString.
  KPX_API bool write(std::u16string_view name, std::u16string_view text) const;
  KPX_API bool read(std::u16string_view name, CString& text) const;

 private:
  struct Entry {
    CString name;
    std::variant<std::int32_t*, double*, CString*> variable;
    int decimals = 0;  // of reals
  };

  KPX_API const Entry* find(std::u16string_view name) const noexcept;
  void put(Entry entry);

  std::vector<Entry> entries_;
};

/// Sets the variable of that name from a text, read as settings are: a number may have "," or "."
/// as decimal sign, "---" is the undefined number, an empty text is 0, an integer beyond 32 bits
/// the nearest limit. 1 when it was set; 0, and the variable as it was, when there is no such name
/// or the text of a number does not begin with one. Error number 910553.
KPX_API int utlStringToVar(const CString& name, const CString& text, const VariableTable& table);

/// Writes the value of the variable of that name into `buffer`, in the form that settings are
/// stored in. 1 when it was written; 0, and the buffer as it was, when there is no such name.
/// Error number 910554.
KPX_API int utlVarToString(const CString& name, CString& buffer, const VariableTable& table);

}  // namespace kpx
