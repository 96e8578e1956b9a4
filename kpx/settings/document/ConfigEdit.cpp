#include "kpx/settings/document/ConfigEdit.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "kpx/report/Error.h"
#include "kpx/settings/document/internal/DefaultColumns.h"
#include "kpx/xml/WrittenMarkup.h"

namespace kpx {
namespace {

/// A piece of the text that another one takes the place of; empty where one is inserted.
struct Replacement {
  int begin = 0;
  int end = 0;
  std::u16string text;
};

/// Makes the replacements of one document, in its order.
class Replacements {
 public:
  Replacements(CMarkup& document, const ConfigView& view, detail::DefaultColumns& defaults)
      : view_(view), lineBreak_(WrittenMarkup::lineBreakOf(document)), defaults_(defaults) {}

  /// False when the configuration cannot take all of them.
  bool add(const ViewedConfiguration& configuration, const KeyedCollection<CString>& changes) {
    std::map<std::u16string_view, std::size_t> numbers;
    for (const auto& change : changes) numbers.emplace(change.key, numbers.size());
    // The first column that has a value, else the first.
    std::vector<const ConfigColumn*> places(changes.size());
    CString key;
    for (const ConfigColumn& column : configuration.columns) {
      key.Empty();
      view_.attributesOf(column.column).read(u"Name", key);
      const auto found = numbers.find(key);
      if (found == numbers.end()) continue;
      const ConfigColumn*& place = places[found->second];
      if (!place || (!view_.hasValue(*place) && view_.hasValue(column))) place = &column;
    }
    for (std::size_t i = 0; i < places.size(); ++i) {
      if (places[i]) setValue(configuration, *places[i], changes.entryAt(i).value);
    }
    if (!addColumns(configuration, changes, places)) return false;
    std::ranges::sort(all_.begin() + static_cast<std::ptrdiff_t>(sorted_), all_.end(), {},
                      &Replacement::begin);
    sorted_ = all_.size();
    return true;
  }

  bool isEmpty() const noexcept { return all_.empty(); }

  /// The document's text with everything replaced.
  CString text() const {
    const std::u16string_view old = view_.text();
    std::size_t length = old.size();
    for (const Replacement& each : all_) length += each.text.size();
    std::u16string text;
    text.reserve(length);
    std::size_t copied = 0;
    for (const Replacement& each : all_) {
      const auto begin = static_cast<std::size_t>(each.begin);
      text += old.substr(copied, begin - copied);
      text += each.text;
      copied = static_cast<std::size_t>(each.end);
    }
    text += old.substr(copied);
    return CString(std::move(text));
  }

 private:
  void setValue(const ViewedConfiguration& configuration, const ConfigColumn& column,
                const CString& value) {
    if (!column.value.exists()) {
      CFGValue added;
      added.Value = value;
      CMarkup scratch;
      addChild(configuration, column.column, markupOf(scratch, added));
      return;
    }
    const int begin = column.value.begin;
    AttributeReader attributes = view_.attributesOf(column.value);
    if (!attributes.find(u"Value")) {
      insertAttribute(begin, attributes, value);
    } else if (attributes.isQuoted()) {
      if (attributes.value() == value) return;
      all_.push_back({begin + attributes.valueBegin(), begin + attributes.valueEnd(), {}});
      WrittenMarkup::appendValue(all_.back().text, value);
    } else {
      all_.push_back({begin + attributes.nameEnd(), begin + attributes.end(), u"=\""});
      WrittenMarkup::appendValue(all_.back().text, value);
      all_.back().text += u'"';
    }
  }

  /// Puts the attribute behind the others of a tag.
  void insertAttribute(int tag, AttributeReader& attributes, const CString& value) {
    constexpr int nameLength = 8;  // of "CFGValue"
    int at = tag + 1 + nameLength;
    for (attributes.rewind(); attributes.next();) at = tag + attributes.end();
    all_.push_back({at, at, u" Value=\""});
    WrittenMarkup::appendValue(all_.back().text, value);
    all_.back().text += u'"';
  }

  bool addColumns(const ViewedConfiguration& configuration, const KeyedCollection<CString>& changes,
                  const std::vector<const ConfigColumn*>& places) {
    CMarkup scratch;
    std::u16string markup;
    for (std::size_t i = 0; i < changes.size(); ++i) {
      if (places[i]) continue;
      const auto& [key, value] = changes.entryAt(i);
      const CFGCol* const usual =
          configuration.settingsClass ? defaults_.find(*configuration.settingsClass, key) : nullptr;
      if (!usual || !configuration.keyedClass.exists()) return false;
      CFGCol column = *usual;
      column.Value.Value = value;
      if (!markup.empty()) markup += lineBreak_;
      markup += markupOf(scratch, column);
    }
    if (markup.empty()) return true;
    if (configuration.ownColumns > 0) {
      const int end = configuration.columns[configuration.ownColumns - 1].column.end;
      all_.push_back({end, end, std::u16string(lineBreak_) + markup});
    } else {
      addChild(configuration, configuration.keyedClass, markup);
    }
    return true;
  }

  /// The markup of an object with the document's line breaks.
  template <class Object>
  std::u16string markupOf(CMarkup& scratch, const Object& object) const {
    const GuardWatch watch;
    scratch.SetDoc(CString(lineBreak_));
    object.serializeXML(&scratch);
    watch.passOn();
    return std::u16string(CString(scratch.GetDoc()).Trim().view());
  }

  /// Puts markup behind what an element contains, on lines of its own unless there is text.
  void addChild(const ViewedConfiguration& configuration, const ConfigElement& parent,
                std::u16string markup) {
    const std::u16string_view tag = view_.markupOf(parent);
    if (tag.ends_with(u"/>") && parent.contentBegin == parent.end) {
      std::u16string text = u">";
      text.append(lineBreak_).append(markup).append(lineBreak_).append(u"</");
      text.append(tag.substr(1, tag.find_first_of(u" \t\r\n/") - 1)).append(u">");
      all_.push_back({parent.end - 2, parent.end, std::move(text)});
      return;
    }
    int at = parent.contentEnd;
    if (!holdsText(configuration, parent)) {
      const int line = lastLineOf(parent);
      const bool endsLine = line > 0;
      if (endsLine) at = line;
      if (!endsLine) markup.insert(0, lineBreak_);
      markup += lineBreak_;
    }
    all_.push_back({at, at, std::move(markup)});
  }

  static bool holdsText(const ViewedConfiguration& configuration, const ConfigElement& parent) {
    for (const ForeignMarkup& each : configuration.foreign) {
      if (each.offset >= parent.contentBegin && each.offset < parent.contentEnd &&
          (each.nodeType == MarkupNode::text || each.nodeType == MarkupNode::cdataSection)) {
        return true;
      }
    }
    return false;
  }

  /// Where the line of the end tag begins, if nothing but blanks stands before it; else 0.
  int lastLineOf(const ConfigElement& parent) const {
    for (int at = parent.contentEnd; at > parent.contentBegin; --at) {
      const char16_t unit = view_.text()[static_cast<std::size_t>(at) - 1];
      if (unit == u'\n' || unit == u'\r') return at;
      if (unit != u' ' && unit != u'\t') return 0;
    }
    return 0;
  }

  const ConfigView& view_;
  const std::u16string_view lineBreak_;
  detail::DefaultColumns& defaults_;
  std::vector<Replacement> all_;
  std::size_t sorted_ = 0;  // of them are in the document's order
};

/// A new object with the texts that were set.
std::unique_ptr<CFGConfig> newObject(const SettingsClass& settingsClass,
                                     const KeyedCollection<CString>* changes,
                                     detail::DefaultColumns& defaults) {
  std::unique_ptr<CFGConfig> object = settingsClass.create();
  if (!object || !changes) return object;
  for (const auto& [key, text] : *changes) {
    if (CFGCol* const own = object->Class.Cols.find(key.view())) {
      own->Value.Value = text;
    } else if (const CFGCol* const usual = defaults.find(settingsClass, key)) {
      CFGCol column = *usual;
      column.Value.Value = text;
      object->Class.AddCol(std::move(column));
    }
  }
  return object;
}

}  // namespace

void ConfigEdit::set(int configuration, const CString& key, CString text) {
  changes_[configuration].at(key) = std::move(text);
}

const CString* ConfigEdit::find(int configuration, std::u16string_view key) const noexcept {
  const auto found = changes_.find(configuration);
  return found == changes_.end() ? nullptr : found->second.find(key);
}

void ConfigEdit::add(const SettingsClass& settingsClass) { added_.push_back(&settingsClass); }

void ConfigEdit::clear() noexcept {
  changes_.clear();
  added_.clear();
}

bool ConfigEdit::apply(CMarkup& document, const ConfigView& view, CMarkup& changed) const {
  // What a guard inside has answered with nothing must not become a part of the document.
  const GuardWatch watch;
  detail::DefaultColumns defaults;
  Replacements replacements(document, view, defaults);
  for (const auto& [configuration, texts] : changes_) {
    if (configuration >= view.count()) break;
    if (!replacements.add(view.at(configuration), texts)) return false;
  }
  CMarkup made(document.GetDocFlags());
  bool isTaken = made.SetDoc(replacements.isEmpty() ? document.GetDoc() : replacements.text()) ||
                 document.GetDocElemCount() == 0;
  for (std::size_t i = 0; isTaken && i < added_.size(); ++i) {
    const auto texts = changes_.find(view.count() + static_cast<int>(i));
    const auto object =
        newObject(*added_[i], texts == changes_.end() ? nullptr : &texts->second, defaults);
    isTaken = object && addConfiguration(made, *object);
  }
  watch.passOn();
  if (isTaken) changed = std::move(made);
  return isTaken;
}

bool addConfiguration(CMarkup& document, const CFGConfig& config) {
  const GuardWatch watch;
  document.ResetPos();
  bool added = true;
  if (document.FindElem()) {
    added = !isConfiguration(document);
    document.ResetChildPos();
    document.IntoElem();
  }
  added = added && config.serializeXML(&document) == 1;
  document.ResetPos();
  if (!added) watch.passOn();
  return added;
}

}  // namespace kpx
