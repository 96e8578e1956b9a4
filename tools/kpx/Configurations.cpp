#include "tools/kpx/Configurations.h"

#include <algorithm>
#include <memory>

#include "tools/kpx/Classes.h"
#include "tools/kpx/ConfigAbsent.h"
#include "tools/kpx/Exit.h"

namespace kpx::tool {
namespace {

void requireConfiguration(const SettingsClass& settingsClass) {
  if (settingsClass.isConfiguration()) return;
  const char* const shape = settingsClass.shape == ClassShape::row ? "a row" : "a table";
  throw Failure(Exit::usage, "'" + asUtf8(settingsClass.name) + "' is the class of " + shape +
                                 ", no configuration: its content does not travel through XML");
}

/// The classes that a file holds, each once, for a message.
std::string namesOf(const std::vector<const ViewedConfiguration*>& list) {
  constexpr std::size_t mostNames = 10;
  std::vector<std::string> names;
  for (const ViewedConfiguration* const each : list) {
    std::string name = labelOf(*each);
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

/// Whether bytes begin like JSON: with a brace, behind white space and a byte-order mark.
bool looksLikeJson(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  const std::size_t first = bytes.find_first_not_of(" \t\r\n");
  return first != bytes.npos && bytes[first] == '{';
}

/// Leaves the selected ones.
void select(Configurations& all, const Selection& selection) {
  for (const ViewedConfiguration& each : all.view().configurations()) all.list.push_back(&each);
  all.count = all.document.count();
  if (all.list.empty()) throw Failure(Exit::input, all.source + ": holds no configuration");
  const ConfigurationChoice choice = choiceOf(selection);
  if (choice.number > all.count) {
    throw Failure(Exit::no, all.source + ": holds " + std::to_string(all.count) +
                                (all.count == 1 ? " configuration" : " configurations") +
                                ", none with the number " + std::to_string(choice.number));
  }
  if (choice.number > 0) {
    const ViewedConfiguration& meant = all.view().at(choice.number - 1);
    if (!choice.includes(meant)) {
      throw Failure(Exit::no, all.source + ": configuration " + std::to_string(choice.number) +
                                  " is of the class " + labelOf(meant) + ", not " +
                                  selection.className);
    }
  }
  const std::string names = namesOf(all.list);
  std::erase_if(all.list, [&](const auto* each) { return !choice.includes(*each); });
  if (all.list.empty()) {
    throw Failure(Exit::no, all.source + ": holds no configuration of the class " +
                                selection.className + ", but of " + names +
                                nearClass(selection.className));
  }
}

}  // namespace

void addSelection(OptionList& verb, Selection& selection) {
  verb.takes("--class", &selection.className, "Only configurations of this class (or element)")
      .takes("--index", &selection.index,
             "Only the configuration with this number, counted from 1 as config show lists all of "
             "the file",
             WholeNumbers{.least = 1});
}

ConfigurationChoice choiceOf(const Selection& selection) {
  const CString name = fromArgument(selection.className);
  if (const SettingsClass* const known = findSettingsClass(name)) requireConfiguration(*known);
  return {name, selection.index};
}

ConfigDocument documentOfDefaults(const SettingsClass& settingsClass) {
  requireConfiguration(settingsClass);
  ConfigDocument document;
  std::string unused;
  if (!document.add(settingsClass).ok() || !document.write(unused).ok()) {
    throw Failure(Exit::notWritten, "'" + asUtf8(settingsClass.name) + "' cannot be written");
  }
  return document;
}

const SettingsClass* findClassOf(const std::string& name) {
  const CString text = CString::fromUtf8(name);
  const SettingsClass* const found = findSettingsClass(text);
  return found ? found : findSettingsClassByElement(text);
}

Configurations configurationsOf(const Input& input, const Selection& selection) {
  if (looksLikeJson(input.bytes())) {
    throw Failure(Exit::input, input.name +
                                   ": is JSON, not XML; kpx config convert --to xml makes XML of "
                                   "what --to json wrote");
  }
  if (input.bytes().empty()) throw Failure(Exit::input, input.name + ": is empty");
  Configurations result{input.name, {}, {}, 0};
  if (const DocumentResult read = result.document.read(input.bytes()); !read.ok()) {
    throw Failure(Exit::input, placeOf(input.name, {read.line, read.column, asUtf8(read.detail)}));
  }
  select(result, selection);
  return result;
}

Configurations readConfigurations(const std::string& fileOrClass, const Selection& selection) {
  const SettingsClass* const known = findClassOf(fileOrClass);
  if (!known) {
    try {
      return configurationsOf(readInput(fileOrClass), selection);
    } catch (const Failure& failure) {
      const std::string near = nearClass(fileOrClass);
      if (near.empty()) throw;
      throw Failure(failure.code(), failure.what() + near);
    }
  }
  Configurations result{fileOrClass, documentOfDefaults(*known), {}, 0};
  select(result, selection);
  return result;
}

namespace {

CString fullName(const ViewedConfiguration& configuration) {
  return configuration.settingsClass ? configuration.settingsClass->name
                                     : configuration.elementName;
}

}  // namespace

std::string nameOf(const ViewedConfiguration& configuration) {
  return asUtf8(fullName(configuration));
}

std::string labelOf(const ViewedConfiguration& configuration) {
  return shownName(fullName(configuration));
}

std::string labelOf(const Configurations& configurations,
                    const ViewedConfiguration& configuration) {
  std::string name = labelOf(configuration);
  if (configurations.count != 1) name += " (" + std::to_string(configuration.number) + ")";
  return name;
}

void CandidateList::add(const ViewedConfiguration& configuration, int offset) {
  ++count_;
  if (owners_.empty() || owners_.back().number != configuration.number) {
    owners_.push_back({labelOf(configuration), configuration.number, {}, 0});
  }
  Owner& owner = owners_.back();
  if (++owner.places > mostPlaces) return;
  if (owner.places > 1) owner.lines += ", ";
  owner.lines += owners_.size() > mostPlaces  ? ""
                 : owner.places == mostPlaces ? "..."
                                              : std::to_string(places_.at(offset).first);
}

std::string CandidateList::sentence() const {
  std::string names;
  for (const Owner& owner : owners_) {
    if (&owner - owners_.data() == mostPlaces) {
      names += ", ...";
      break;
    }
    names += (names.empty() ? "" : ", ") + owner.name + " (--index " +
             std::to_string(owner.number) + (owner.places > 1 ? ", lines " : ", line ") +
             owner.lines + ")";
  }
  if (owners_.size() == 1) {
    return names + ": twice in one configuration, of which the last is read; remove the other";
  }
  const bool severalNames = std::ranges::any_of(
      owners_, [&](const Owner& owner) { return owner.name != owners_.front().name; });
  return names +
         (severalNames ? "; choose one with --class or --index" : "; choose one with --index");
}

}  // namespace kpx::tool
