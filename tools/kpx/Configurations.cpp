#include "tools/kpx/Configurations.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "tools/kpx/Classes.h"
#include "tools/kpx/Exit.h"

namespace kpx::tool {
namespace {

void requireConfiguration(const SettingsClass& settingsClass) {
  if (settingsClass.isConfiguration()) return;
  const char* const shape = settingsClass.shape == ClassShape::row ? "a row" : "a table";
  throw Failure(Exit::usage, "'" + shown(settingsClass.name) + "' is the class of " + shape +
                                 ", no configuration: its content does not travel through XML");
}

/// The classes that a file holds, each once, for a message.
std::string namesOf(const std::vector<DocumentConfiguration>& list) {
  constexpr std::size_t mostNames = 10;
  std::vector<std::string> names;
  for (const DocumentConfiguration& each : list) {
    std::string name = nameOf(each);
    if (std::ranges::find(names, name) != names.end()) continue;
    if (names.size() == mostNames) {
      names.emplace_back("...");
      break;
    }
    names.push_back(std::move(name));
  }
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

/// Leaves the selected ones.
void select(Configurations& all, const Selection& selection) {
  all.count = static_cast<int>(all.list.size());
  if (all.list.empty()) throw Failure(Exit::input, all.source + ": holds no configuration");
  const ConfigurationChoice choice = choiceOf(selection);
  if (choice.number > all.count) {
    throw Failure(Exit::no, all.source + ": holds " + std::to_string(all.count) +
                                (all.count == 1 ? " configuration" : " configurations") +
                                ", none with the number " + std::to_string(choice.number));
  }
  if (choice.number > 0) {
    const DocumentConfiguration& meant = all.list[static_cast<std::size_t>(choice.number) - 1];
    if (!choice.includes(meant)) {
      throw Failure(Exit::no, all.source + ": configuration " + std::to_string(choice.number) +
                                  " is of the class " + nameOf(meant) + ", not " +
                                  selection.className);
    }
  }
  const std::string names = namesOf(all.list);
  std::erase_if(all.list, [&](const auto& each) { return !choice.includes(each); });
  if (all.list.empty()) {
    throw Failure(Exit::no, all.source + ": holds no configuration of the class " +
                                selection.className + ", but of " + names);
  }
}

}  // namespace

void addSelection(CLI::App& command, Selection& selection) {
  command.add_option("--class", selection.className,
                     "Only configurations of this class (or element)");
  command
      .add_option("--index", selection.index,
                  "Only the configuration with this number, counted from 1 as config show lists "
                  "all of the file")
      ->check(CLI::Range(1, std::numeric_limits<int>::max()).description(""));
}

ConfigurationChoice choiceOf(const Selection& selection) {
  const CString name = given(selection.className);
  if (const SettingsClass* const known = findSettingsClass(name)) requireConfiguration(*known);
  return {name, selection.index};
}

CString defaultsAsXml(const SettingsClass& settingsClass) {
  requireConfiguration(settingsClass);
  const std::unique_ptr<CFGConfig> object = settingsClass.create();
  CMarkup document;
  document.SetDoc(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n");
  if (!object || object->serializeXML(&document) == 0) {
    throw Failure(Exit::notWritten, "'" + shown(settingsClass.name) + "' cannot be written");
  }
  return document.TakeDoc();
}

Configurations configurationsOf(const Input& input, const Selection& selection) {
  ReadDocument read = requireWellFormed(input);
  Configurations result{input.name, std::move(read.document), read.encoding, read.storage, {}, 0};
  result.list = findConfigurations(result.document);
  select(result, selection);
  return result;
}

Configurations readConfigurations(const std::string& fileOrClass, const Selection& selection) {
  const SettingsClass* const known = findSettingsClass(CString::fromUtf8(fileOrClass));
  if (!known) return configurationsOf(readInput(fileOrClass), selection);
  Configurations result{fileOrClass, {}, "UTF-8", {}, {}, 0};
  result.document.SetDoc(defaultsAsXml(*known));
  result.list = findConfigurations(result.document);
  select(result, selection);
  return result;
}

std::string nameOf(const DocumentConfiguration& configuration) {
  return shown(configuration.settingsClass ? CString(configuration.settingsClass->name)
                                           : configuration.elementName);
}

std::string labelOf(const Configurations& configurations,
                    const DocumentConfiguration& configuration) {
  const std::string name = nameOf(configuration);
  if (configurations.count == 1) return name;
  return name + " (" + std::to_string(configuration.number) + ")";
}

void CandidateList::add(const DocumentConfiguration& configuration, int offset) {
  const std::string name = nameOf(configuration);
  if (++count_ == 1) {
    firstName_ = name;
    firstNumber_ = configuration.number;
  }
  severalNames_ |= name != firstName_;
  severalNumbers_ |= configuration.number != firstNumber_;
  if (count_ > mostPlaces) return;
  const int line = places_.at(offset).first;
  names_ += (names_.empty() ? "" : ", ") + name + " (--index " +
            std::to_string(configuration.number) + ", line " + std::to_string(line) + ")";
}

std::string CandidateList::sentence() const {
  const std::string names = names_ + (count_ > mostPlaces ? ", ..." : "");
  if (!severalNumbers_) return names + ", so it is not clear which one is meant";
  return names +
         (severalNames_ ? "; choose one with --class or --index" : "; choose one with --index");
}

}  // namespace kpx::tool
