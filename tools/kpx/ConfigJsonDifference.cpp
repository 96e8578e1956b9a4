#include <algorithm>

#include "tools/kpx/ConfigJson.h"
#include "tools/kpx/Exit.h"

namespace kpx::tool {
namespace {

bool isBlank(char16_t unit) noexcept { return unit == u' ' || unit == u'\t'; }
bool isLineEnd(char16_t unit) noexcept { return unit == u'\r' || unit == u'\n'; }
bool isQuote(char16_t unit) noexcept { return unit == u'"' || unit == u'\''; }

/// Whether a place is at or in a reference, or behind an "&" that begins none.
bool isInReference(std::u16string_view text, std::size_t at) {
  constexpr std::size_t longest = 10;
  for (std::size_t back = 0; back <= longest && back <= at && at - back < text.size(); ++back) {
    const char16_t unit = text[at - back];
    if (unit == u'&') return true;
    if (back > 0 && (unit == u';' || unit == u'<' || isQuote(unit))) return false;
  }
  return false;
}

/// What the spelling of two texts differs in at a place.
const char* kindOf(std::u16string_view was, std::u16string_view becomes, std::size_t at) {
  const char16_t old = at < was.size() ? was[at] : u'\0';
  const char16_t fresh = at < becomes.size() ? becomes[at] : u'\0';
  if (isInReference(was, at) || isInReference(becomes, at)) {
    return "a reference in place of a character, or the other way round";
  }
  if (isQuote(old) && isQuote(fresh)) return "other quotes";
  if (isLineEnd(old) && isLineEnd(fresh)) return "another line end";
  if (isLineEnd(old) || isLineEnd(fresh) || isBlank(old) || isBlank(fresh)) {
    return "other spacing or line breaks between elements or attributes";
  }
  if (old == u'>' || fresh == u'>' || old == u'/' || fresh == u'/') {
    return "an empty element is closed in the other way";
  }
  return "another order or spelling of attributes";
}

/// Where two texts first differ; npos if they do not.
std::size_t firstDifference(std::u16string_view a, std::u16string_view b) {
  if (a == b) return a.npos;
  return static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
}

std::string sentenceOf(const Configurations& configurations, std::size_t offset, const char* kind) {
  const int line = PlaceCounter(configurations.document.text()).at(static_cast<int>(offset)).first;
  return configurations.source + ":" + std::to_string(line) +
         ": the JSON keeps the content but not its spelling: --to xml gives a file that first "
         "differs here, by " +
         kind;
}

}  // namespace

std::string differenceFromJson(const std::string& json, Configurations& configurations,
                               std::string_view bytes, const Selection& selection) {
  std::string again;
  try {
    again = xmlFromJson(json, configurations.source).bytes;
  } catch (const Failure& failure) {
    return std::string("--to xml will refuse this JSON: ") + failure.what();
  }
  if (selection.none() && again == bytes) return {};
  CMarkup fresh;
  fresh.SetDoc(decodeMarkupBytes(again).text);
  const std::u16string_view was = configurations.document.text();
  const std::u16string_view becomes = fresh.GetDoc();
  if (selection.none()) {
    const std::size_t at = firstDifference(was, becomes);
    return at == was.npos ? sentenceOf(configurations, 0, "other bytes of the encoding")
                          : sentenceOf(configurations, at, kindOf(was, becomes, at));
  }
  const ConfigView parts(fresh);
  const std::size_t count = std::min(parts.configurations().size(), configurations.list.size());
  for (std::size_t i = 0; i < count; ++i) {
    const ViewedConfiguration& each = *configurations.list[i];
    const auto begin = static_cast<std::size_t>(each.element.begin);
    const auto old = configurations.view().markupOf(each.element);
    const auto now = parts.markupOf(parts.configurations()[i].element);
    const std::size_t at = firstDifference(old, now);
    if (at != old.npos) return sentenceOf(configurations, begin + at, kindOf(old, now, at));
  }
  return {};
}

}  // namespace kpx::tool
