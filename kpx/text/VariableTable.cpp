#include "kpx/text/VariableTable.h"

#include <algorithm>
#include <utility>

#include "kpx/report/Error.h"
#include "kpx/text/internal/RealParser.h"
#include "kpx/text/Operations.h"

namespace kpx {
namespace {

bool beginsWithInteger(std::u16string_view text) noexcept {
  if (text.empty()) return true;
  const std::size_t start = text.find_first_not_of(u" \t\n\v\f\r");
  if (start == std::u16string_view::npos) return false;
  text.remove_prefix(start);
  if (text.front() == u'+' || text.front() == u'-') text.remove_prefix(1);
  return !text.empty() && text.front() >= u'0' && text.front() <= u'9';
}

bool beginsWithReal(std::u16string_view text) noexcept {
  if (text.empty() || text == undefinedNumberText) return true;
  const std::size_t start = text.find_first_not_of(u" \t\n\v\f\r");
  if (start == std::u16string_view::npos) return false;
  const char16_t* const first = text.data() + start;
  return detail::parseReal(first, text.data() + text.size(), true).end != first;
}

}  // namespace

void VariableTable::add(const CString& name, std::int32_t& variable) { put({name, &variable}); }

void VariableTable::add(const CString& name, double& variable, int decimals) {
  put({name, &variable, decimals});
}

void VariableTable::add(const CString& name, CString& variable) { put({name, &variable}); }

void VariableTable::put(Entry entry) {
  const auto known = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& other) { return other.name == entry.name; });
  if (known != entries_.end()) {
    *known = std::move(entry);
  } else {
    entries_.push_back(std::move(entry));
  }
}

const VariableTable::Entry* VariableTable::find(std::u16string_view name) const noexcept {
  for (const Entry& entry : entries_) {
    if (entry.name == name) return &entry;
  }
  return nullptr;
}

bool VariableTable::write(std::u16string_view name, std::u16string_view text) const {
  const Entry* entry = find(name);
  if (!entry) return false;
  if (const auto* variable = std::get_if<CString*>(&entry->variable)) {
    (*variable)->Assign(text);
    return true;
  }
  // The conversions answer 0 for any text without a number, so without this look a typing error
  // would overwrite the value.
  if (const auto* integer = std::get_if<std::int32_t*>(&entry->variable)) {
    if (!beginsWithInteger(text)) return false;
    **integer = detail::textAsLong(text);
  } else {
    if (!beginsWithReal(text)) return false;
    *std::get<double*>(entry->variable) = detail::textAsDouble(text);
  }
  return true;
}

bool VariableTable::read(std::u16string_view name, CString& text) const {
  const Entry* entry = find(name);
  if (!entry) return false;
  if (const auto* variable = std::get_if<CString*>(&entry->variable)) {
    text = **variable;
  } else if (const auto* integer = std::get_if<std::int32_t*>(&entry->variable)) {
    detail::longAsTextInto(text, **integer);
  } else {
    detail::doubleAsTextInto(text, *std::get<double*>(entry->variable), entry->decimals, u'.');
  }
  return true;
}

int utlStringToVar(const CString& name, const CString& text, const VariableTable& table) {
  return Guarded("utlStringToVar"_text, 0, [&] { return table.write(name, text) ? 1 : 0; });
}

int utlVarToString(const CString& name, CString& buffer, const VariableTable& table) {
  return Guarded("utlVarToString"_text, 0, [&] { return table.read(name, buffer) ? 1 : 0; });
}

}  // namespace kpx
