#include "tools/kpx/ConfigDiff.h"

#include <deque>
#include <map>
#include <utility>

#include "kpx/settings/document/ConfigDifference.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/Exit.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {
namespace {

/// Collects the differences of all configurations, as lines and as JSON.
class DifferenceReport {
 public:
  DifferenceReport(std::string a, std::string b) : a_(std::move(a)), b_(std::move(b)) {}

  /// `owner` is the configuration as the messages call it.
  void add(const Configurations& all, const ViewedConfiguration& owner,
           const ConfigDifference& difference) {
    compared_ = true;
    for (const ChangedValue& each : difference.changed) {
      add(all, owner, each.key, &each.valueA, &each.valueB);
    }
    for (const KeyAndValue& each : difference.onlyInA) {
      add(all, owner, each.key, &each.value, nullptr);
    }
    for (const KeyAndValue& each : difference.onlyInB) {
      add(all, owner, each.key, nullptr, &each.value);
    }
  }
  void addUnpaired(const Configurations& all, const ViewedConfiguration& owner) {
    list_.push_back({{"class", nameOf(owner)}, {"index", owner.number}, {"only_in", all.source}});
    lines_ += labelOf(all, owner) + ": only in " + onOneLine(all.source) + "\n";
  }

  Exit finish(bool json) const {
    if (json) {
      Json answer = newAnswer();
      answer.update({{"a", a_}, {"b", b_}, {"differences", list_}});
      printJson(answer);
    } else {
      print(lines_);
    }
    return list_.empty() && compared_ ? Exit::success : Exit::no;
  }

 private:
  void add(const Configurations& all, const ViewedConfiguration& owner, const CString& key,
           const CString* a, const CString* b) {
    const auto json = [](const CString* value) {
      return value ? Json(asUtf8(*value)) : Json(nullptr);
    };
    const auto text = [](const CString* value) {
      return value->IsEmpty() ? std::string("\"\"") : shownOnOneLine(*value);
    };
    list_.push_back({{"class", nameOf(owner)},
                     {"index", owner.number},
                     {"key", asUtf8(key)},
                     {"a", json(a)},
                     {"b", json(b)}});
    lines_ += labelOf(all, owner) + ": " + shownOnOneLine(key) + ": ";
    if (a && b) {
      lines_ += text(a) + " -> " + text(b);
    } else {
      lines_ += text(a ? a : b) + " (only in " + onOneLine(a ? a_ : b_) + ")";
    }
    lines_ += "\n";
  }

  std::string a_;
  std::string b_;
  std::string lines_;
  Json list_ = Json::array();
  bool compared_ = false;  // what was not compared is not equal
};

Exit diffFromDefaults(const std::string& file, const Selection& selection, bool json) {
  const Configurations configurations = readConfigurations(file, selection);
  DifferenceReport report("defaults", configurations.source);
  for (const ViewedConfiguration* const each : configurations.list) {
    if (each->settingsClass) {
      report.add(configurations, *each, changedFromDefaults(configurations.view(), *each));
    } else {
      complain(configurations.source + ": " + labelOf(*each) +
               " is not a known class and has no defaults to compare with");
    }
  }
  return report.finish(json);
}

/// Which configurations of B are meant: the numbers of A count there too, unless B is a class or
/// has a number of its own.
Selection selectionInB(Selection selection, const DiffOptions& options) {
  if (options.otherIndex > 0) {
    selection.index = options.otherIndex;
  } else if (findClassOf(options.other)) {
    selection.index = 0;
  }
  return selection;
}

}  // namespace

void addDiffOptions(OptionList& verb, DiffOptions& options) {
  verb.takes("B", &options.other, "The same; without it, the defaults")
      .takes("--other-index", &options.otherIndex, "The number in B, where it is not that in A",
             WholeNumbers{.least = 1});
}

Exit diffConfigurations(const std::string& file, const Selection& selection,
                        const DiffOptions& options, bool json) {
  if (options.other.empty()) {
    if (options.otherIndex > 0) {
      throw Failure(Exit::usage, "--other-index chooses in the file B, and there is none");
    }
    return diffFromDefaults(file, selection, json);
  }
  const Configurations a = readConfigurations(file, selection);
  const Configurations b = readConfigurations(options.other, selectionInB(selection, options));
  // The first of an element is paired with the first, and so on.
  DifferenceReport report(a.source, b.source);
  std::map<std::u16string_view, std::deque<const ViewedConfiguration*>> unpaired;
  for (const ViewedConfiguration* const each : b.list) unpaired[each->elementName].push_back(each);
  for (const ViewedConfiguration* const each : a.list) {
    auto& partners = unpaired[each->elementName];
    if (partners.empty()) {
      report.addUnpaired(a, *each);
    } else {
      report.add(a, *each, compareConfigurations(a.view(), *each, b.view(), *partners.front()));
      partners.pop_front();
    }
  }
  for (const ViewedConfiguration* const each : b.list) {
    const auto& left = unpaired[each->elementName];
    if (!left.empty() && each->number >= left.front()->number) report.addUnpaired(b, *each);
  }
  return report.finish(json);
}

}  // namespace kpx::tool
