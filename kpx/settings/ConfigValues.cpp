#include <algorithm>
#include <string_view>
#include <utility>

#include "kpx/config/KeyedCollection.h"
#include "kpx/report/Error.h"
#include "kpx/settings/ConfigFile.h"
#include "kpx/settings/internal/ConfigWalk.h"
#include "kpx/settings/internal/DefaultColumns.h"
#include "kpx/xml/WrittenMarkup.h"

// Many values at once: the places of all are looked for in one walk, and the text is put together
// anew in one pass. Changing the document value by value would move its end each time.

namespace kpx {
namespace {

/// A piece of the document that another text takes the place of; empty where one is inserted.
struct Replacement {
  int begin = 0;
  int end = 0;
  CString text;
};

struct Wanted {
  const CString* value = nullptr;
  bool hasColumn = false;
  bool isPlaced = false;
};

/// The markup of columns, with which a line that ends behind another column goes on.
CString markupOf(const std::vector<CFGCol>& columns, std::u16string_view lineBreak) {
  CMarkup scratch;
  scratch.SetDoc(CString(lineBreak));
  scratch.AddElem(u"columns");
  scratch.IntoElem();
  for (const CFGCol& column : columns) {
    if (column.serializeXML(&scratch) != 1) return {};
  }
  scratch.OutOfElem();
  int begin = 0;
  int end = 0;
  scratch.GetContentOffsets(begin, end);
  return scratch.GetDoc().Mid(begin, end - begin).TrimRight();
}

/// Collects what has to be replaced in a document, in its order.
class Collector {
 public:
  explicit Collector(CMarkup& document)
      : document_(document), lineBreak_(WrittenMarkup::lineBreakOf(document)) {}

  /// Requires the configuration as the document's main element.
  void collect(const ConfigurationValues& values) {
    KeyedCollection<Wanted> wanted;
    for (const KeyAndValue& each : values.values) wanted.at(each.key).value = &each.value;
    const CString elementName = document_.ReadTagName();
    int columnsEnd = 0;
    detail::visitColumns(document_, [&](bool hasValue) {
      int begin = 0;
      document_.GetOffsets(begin, columnsEnd);
      Wanted* const found = wanted.find(detail::valueOf(document_.ReadAttribs(), u"Name"));
      if (found && !found->isPlaced) place(*found, hasValue);
      return true;
    });
    add(findSettingsClassByElement(elementName), wanted, columnsEnd, values.number);
  }

  /// The document's text with everything replaced.
  CString text() const {
    const std::u16string_view old = document_.GetDoc();
    std::u16string text;
    std::size_t length = old.size();
    for (const Replacement& each : replacements_) length += each.text.view().size();
    text.reserve(length);
    std::size_t copied = 0;
    for (const Replacement& each : replacements_) {
      const auto begin = static_cast<std::size_t>(each.begin);
      text += old.substr(copied, begin - copied);
      text += each.text.view();
      copied = static_cast<std::size_t>(each.end);
    }
    text += old.substr(copied);
    return CString(std::move(text));
  }

  bool isEmpty() const noexcept { return replacements_.empty(); }
  /// Whether there is markup for everything that is added.
  bool isComplete() const noexcept { return isComplete_; }
  /// What has no place yet: in configurations without any column, and columns without a value.
  const std::vector<ConfigurationValues>& rest() const noexcept { return rest_; }

 private:
  void place(Wanted& wanted, bool hasValue) {
    wanted.hasColumn = true;
    int begin = 0;
    int end = 0;
    if (!hasValue || !document_.GetChildAttribOffsets(u"Value", begin, end)) return;
    wanted.isPlaced = true;
    if (detail::valueOf(document_.ReadChildAttribs(), u"Value") == *wanted.value) return;
    Replacement& replacement = replacements_.emplace_back(Replacement{begin, end, {}});
    WrittenMarkup::appendValue(replacement.text.units(), *wanted.value);
  }

  void add(const SettingsClass* settingsClass, const KeyedCollection<Wanted>& wanted,
           int columnsEnd, int number) {
    std::vector<CFGCol> added;
    ConfigurationValues rest{number, {}};
    for (const auto& [key, each] : wanted) {
      if (each.isPlaced) continue;
      const bool isAddable = settingsClass && columnsEnd > 0 && !each.hasColumn;
      if (const CFGCol* const usual =
              isAddable ? defaultColumns_.find(*settingsClass, key) : nullptr) {
        added.push_back(*usual);
        added.back().Value.Value = *each.value;
      } else {
        rest.values.push_back({key, *each.value});
      }
    }
    if (!added.empty()) {
      CString markup = markupOf(added, lineBreak_);
      isComplete_ = isComplete_ && !markup.IsEmpty();
      replacements_.push_back({columnsEnd, columnsEnd, std::move(markup)});
    }
    if (!rest.values.empty()) rest_.push_back(std::move(rest));
  }

  CMarkup& document_;
  const std::u16string_view lineBreak_;
  bool isComplete_ = true;
  detail::DefaultColumns defaultColumns_;
  std::vector<Replacement> replacements_;
  std::vector<ConfigurationValues> rest_;
};

bool setOneByOne(CMarkup& document, const std::vector<ConfigurationValues>& all) {
  for (const ConfigurationValues& configuration : all) {
    for (const KeyAndValue& each : configuration.values) {
      const EditOutcome outcome = setValueInDocument(document, {{}, configuration.number}, each.key,
                                                     each.value, MissingKey::add)
                                      .outcome;
      if (outcome != EditOutcome::added && outcome != EditOutcome::changed &&
          outcome != EditOutcome::unchanged) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

bool setValuesInDocument(CMarkup& document, const std::vector<ConfigurationValues>& all) {
  // What a guard inside has answered with nothing must not become a part of the document.
  const GuardWatch watch;
  std::vector<const ConfigurationValues*> inOrder;
  inOrder.reserve(all.size());
  for (const ConfigurationValues& each : all) inOrder.push_back(&each);
  std::ranges::sort(inOrder, {}, &ConfigurationValues::number);

  Collector collector(document);
  int number = 0;
  auto next = inOrder.begin();
  detail::visitConfigurations(document, [&] {
    ++number;
    if (next != inOrder.end() && (*next)->number == number) collector.collect(**next++);
    return next != inOrder.end();
  });
  document.ResetPos();
  watch.passOn();
  if (next != inOrder.end() || !collector.isComplete()) return false;
  if (collector.isEmpty() && collector.rest().empty()) return true;

  CMarkup changed(document.GetDocFlags());
  const bool isTaken = changed.SetDoc(collector.isEmpty() ? document.GetDoc() : collector.text()) &&
                       setOneByOne(changed, collector.rest());
  watch.passOn();
  if (isTaken) document = std::move(changed);
  return isTaken;
}

}  // namespace kpx
