#include "kpx/settings/ConfigParts.h"

#include "kpx/settings/internal/ConfigPartsWalk.h"
#include "kpx/settings/internal/ConfigWalk.h"
#include "kpx/text/NumberText.h"
#include "kpx/text/TimeValue.h"

namespace kpx {
namespace {

/// Keeps all parts.
struct PartsKeeper {
  ConfigParts& parts;

  void configuration(const ConfigElement& element) { parts.element = element; }
  void keyedClass(const ConfigElement& element) { parts.keyedClass = element; }
  void column(const ConfigColumnParts& column) { parts.columns.push_back(column); }
  template <class Name>
  void foreign(int offset, Name name) {
    parts.foreign.push_back({offset, name()});
  }
};

}  // namespace

bool isAsWritten(AttributeKind kind, const CString& text) {
  if (kind == AttributeKind::integer) return longAsText(utlTextAsLong(text)) == text;
  if (kind == AttributeKind::time) return timeDoubleText(timeDoubleOf(text)) == text;
  return true;
}

std::vector<ConfigParts> configPartsOf(CMarkup& document) {
  std::vector<ConfigParts> all;
  detail::visitConfigurations(document, [&] {
    ConfigParts& parts = all.emplace_back();
    int begin = 0;
    int end = 0;
    document.GetOffsets(begin, end);
    parts.elementName = document.ReadTagName();
    parts.length = end - begin;
    PartsKeeper keeper{parts};
    detail::ConfigPartsWalk(document, keeper).run();
    return true;
  });
  document.ResetPos();
  return all;
}

}  // namespace kpx
