#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kpx/platform/Registry.h"
#include "kpx/support/registry/RegistrySnapshot.h"
#include "kpx/support/registry/RegistryText.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/Input.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::string key;
  std::string other;  // the second side of a comparison
  std::optional<std::string> name;
  std::optional<std::string> value;
  std::string type;
  std::string file;
  bool tree = false;
  bool json = false;
};

// --- keys and failures ------------------------------------------------------------------------

struct KeyPlace {
  RegistryRoot root = RegistryRoot::currentUser;
  CString path;
};

KeyPlace placeOf(const std::string& key) {
  KeyPlace place;
  if (!parseRegistryKey(fromArgument(key), place.root, place.path)) {
    throw Failure(Exit::usage, key +
                                   ": a key begins with HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE, "
                                   "HKCU or HKLM for short");
  }
  return place;
}

[[noreturn]] void fail(const RegistryResult& result, const std::string& what, Exit otherwise) {
  const bool isMissing = result.status == RegistryStatus::notFound;
  const bool isWrong = result.status == RegistryStatus::badName;
  throw Failure(isMissing ? Exit::no
                : isWrong ? Exit::usage
                          : otherwise,
                what + ": " + asUtf8(result.message()));
}

std::unique_ptr<RegistryKey> openKey(const std::string& name) {
  const KeyPlace place = placeOf(name);
  std::unique_ptr<RegistryKey> key;
  const RegistryResult result = registry().open(place.root, place.path, RegistryAccess::read, key);
  if (!result) fail(result, name, Exit::input);
  return key;
}

/// The name of the value; that of the default value is empty.
CString nameOf(const Arguments& arguments) { return fromArgument(arguments.name.value_or("")); }

/// How messages name it.
std::string valueText(const Arguments& arguments) {
  const std::string name = arguments.name.value_or("");
  return arguments.key + ", " + (name.empty() ? "default value" : "value '" + name + "'");
}

// --- values as people write them --------------------------------------------------------------

std::string typeText(RegistryType type) {
  switch (type) {
    case RegistryType::string:
      return "string";
    case RegistryType::binary:
      return "binary";
    case RegistryType::dword:
      return "dword";
    case RegistryType::expandString:
      return "expand";
    default:
      return "type " + std::to_string(static_cast<std::uint32_t>(type));
  }
}

/// The text, the number, or the bytes in hexadecimal digits.
std::string contentText(const RegistryValue& value) {
  CString text;
  std::uint32_t number = 0;
  if (value.asText(text)) return asUtf8(text);
  if (value.asNumber(number)) return std::to_string(number);
  std::string digits;
  for (const char byte : value.bytes) {
    const auto code = static_cast<unsigned char>(byte);
    if (!digits.empty()) digits += ' ';
    digits += "0123456789abcdef"[code >> 4];
    digits += "0123456789abcdef"[code & 15];
  }
  return digits;
}

bool parseNumber(std::string_view text, std::uint32_t& number) {
  const bool isHex = text.starts_with("0x") || text.starts_with("0X");
  if (isHex) text.remove_prefix(2);
  const char* const end = text.data() + text.size();
  const auto [read, error] = std::from_chars(text.data(), end, number, isHex ? 16 : 10);
  return error == std::errc() && read == end;
}

bool parseBytes(std::string_view text, std::string& bytes) {
  while (!text.empty()) {
    if (text.front() == ' ' || text.front() == ',') {
      text.remove_prefix(1);
      continue;
    }
    unsigned byte = 0;
    const char* const end = text.data() + std::min<std::size_t>(2, text.size());
    const auto [read, error] = std::from_chars(text.data(), end, byte, 16);
    if (error != std::errc() || read != text.data() + 2) return false;
    bytes += static_cast<char>(byte);
    text.remove_prefix(2);
  }
  return true;
}

RegistryValue valueOf(const std::string& text, RegistryType type) {
  RegistryValue value = RegistryValue::ofText(fromArgument(text));
  std::uint32_t number = 0;
  switch (type) {
    case RegistryType::string:
    case RegistryType::expandString:
      break;
    case RegistryType::dword:
      if (!parseNumber(text, number)) {
        throw Failure(Exit::usage, "'" + text + "' is no number from 0 to 4294967295");
      }
      return RegistryValue::ofNumber(number);
    case RegistryType::binary:
      value.bytes.clear();
      if (!parseBytes(text, value.bytes)) {
        throw Failure(Exit::usage, "'" + text + "' is not made of bytes of two hexadecimal digits");
      }
      break;
    default:
      throw Failure(Exit::usage, "the value has " + typeText(type) + "; --type gives it another");
  }
  value.type = type;
  return value;
}

// --- get, set, del, list ----------------------------------------------------------------------

Exit get(const Arguments& arguments) {
  RegistryValue value;
  const RegistryResult result = openKey(arguments.key)->read(nameOf(arguments), value);
  if (!result) fail(result, valueText(arguments), Exit::input);
  if (arguments.json) {
    Json answer = newAnswer();
    answer.update({{"key", arguments.key},
                   {"name", arguments.name.value_or("")},
                   {"type", typeText(value.type)},
                   {"value", contentText(value)}});
    printJson(answer);
  } else {
    print(contentText(value) + "\n");
  }
  return Exit::success;
}

/// The type to write: the one that is asked for, else the one that the value has now.
RegistryType typeFor(const Arguments& arguments, const KeyPlace& place) {
  if (arguments.type == "string") return RegistryType::string;
  if (arguments.type == "dword") return RegistryType::dword;
  if (arguments.type == "binary") return RegistryType::binary;
  std::unique_ptr<RegistryKey> key;
  RegistryValue value = RegistryValue::ofText({});
  if (registry().open(place.root, place.path, RegistryAccess::read, key)) {
    key->read(nameOf(arguments), value);
  }
  return value.type;
}

Exit set(const Arguments& arguments) {
  const KeyPlace place = placeOf(arguments.key);
  if (arguments.name && !arguments.value) {
    throw Failure(Exit::usage, "the value to set is missing");
  }
  RegistryChange change;
  change.key = place.path;
  if (arguments.name) {
    change.kind = RegistryChange::Kind::write;
    change.name = nameOf(arguments);
    change.value = valueOf(*arguments.value, typeFor(arguments, place));
  }
  std::size_t reached = 0;
  const RegistryResult result = registry().change(place.root, {&change, 1}, reached);
  if (!result) fail(result, arguments.key, Exit::notWritten);
  noteChange();
  return Exit::success;
}

Exit remove(const Arguments& arguments) {
  const KeyPlace place = placeOf(arguments.key);
  if (arguments.name) {
    std::unique_ptr<RegistryKey> key;
    RegistryResult result = registry().open(place.root, place.path, RegistryAccess::readWrite, key);
    if (!result) fail(result, arguments.key, Exit::notWritten);
    result = key->removeValue(nameOf(arguments));
    if (!result) fail(result, valueText(arguments), Exit::notWritten);
    noteChange();
    return Exit::success;
  }
  if (place.path.view().find_first_not_of(u'\\') == std::u16string_view::npos) {
    throw Failure(Exit::usage, arguments.key + ": a root stays; only keys below it can be removed");
  }
  const RegistryResult result = arguments.tree ? registry().removeTree(place.root, place.path)
                                               : registry().remove(place.root, place.path);
  if (result.status == RegistryStatus::hasSubkeys) {
    throw Failure(Exit::no, arguments.key + ": there are keys below it; --tree removes them too");
  }
  const bool isPart = arguments.tree && !registry().isChangeWhole();
  if (!result) fail(result, arguments.key, isPart ? Exit::incomplete : Exit::notWritten);
  noteChange();
  return Exit::success;
}

Exit list(const Arguments& arguments) {
  const std::unique_ptr<RegistryKey> key = openKey(arguments.key);
  std::vector<CString> keys;
  std::vector<CString> names;
  RegistryResult result = key->keyNames(keys);
  if (result) result = key->valueNames(names);
  if (!result) fail(result, arguments.key, Exit::input);
  Json report = newAnswer();
  report.update({{"key", arguments.key}, {"keys", Json::array()}, {"values", Json::array()}});
  std::string text;
  for (const CString& name : keys) {
    report["keys"].push_back(asUtf8(name));
    text += shownPath(name) + "\\\n";
  }
  for (const CString& name : names) {
    RegistryValue value;
    result = key->read(name, value);
    if (result.status == RegistryStatus::notFound) continue;
    if (!result) fail(result, arguments.key + ", value '" + shownName(name) + "'", Exit::input);
    const std::string content = contentText(value);
    report["values"].push_back(
        {{"name", asUtf8(name)}, {"type", typeText(value.type)}, {"value", content}});
    text += (name.IsEmpty() ? "@" : shownOnOneLine(name)) + " (" + typeText(value.type) +
            ") = " + shownOnOneLine(CString::fromUtf8(content)) + "\n";
  }
  if (arguments.json) {
    printJson(report);
  } else {
    print(text);
  }
  return Exit::success;
}

// --- the text form ----------------------------------------------------------------------------

std::string placeOf(const std::string& file, const RegistryTextProblem& problem) {
  const std::string line = problem.line != 0 ? ":" + std::to_string(problem.line) : "";
  return file + line + ": " + asUtf8(problem.message);
}

CString textOf(const std::vector<RegistryStep>& steps) {
  CString text;
  if (!writeRegistryText(steps, text)) {
    throw Failure(Exit::input,
                  "a key has a line break in its name, for which there is no text form");
  }
  return text;
}

Json jsonOf(const std::vector<RegistryStep>& steps) {
  constexpr const char* actions[] = {"create_key", "remove_key", "write", "remove_value"};
  Json list = Json::array();
  for (const RegistryStep& step : steps) {
    const RegistryChange& change = step.change;
    Json entry{{"action", actions[static_cast<int>(change.kind)]},
               {"key", asUtf8(registryKeyText(step.root, change.key))}};
    const bool isWrite = change.kind == RegistryChange::Kind::write;
    if (isWrite || change.kind == RegistryChange::Kind::removeValue) {
      entry["name"] = asUtf8(change.name);
    }
    if (isWrite) {
      entry["type"] = typeText(change.value.type);
      entry["value"] = contentText(change.value);
    }
    list.push_back(std::move(entry));
  }
  return list;
}

Exit exportKey(const Arguments& arguments) {
  const KeyPlace place = placeOf(arguments.key);
  RegistrySnapshot snapshot;
  const RegistryResult result = snapshot.add(place.root, place.path);
  if (!result) fail(result, arguments.key, Exit::input);
  const std::vector<RegistryStep> steps = snapshot.steps();
  if (arguments.json) {
    if (!arguments.file.empty()) {
      throw Failure(Exit::usage, "--json prints, so no file can be meant");
    }
    Json answer = newAnswer();
    answer.update({{"key", arguments.key}, {"steps", jsonOf(steps)}});
    printJson(answer);
    return Exit::success;
  }
  const CString text = textOf(steps);
  if (arguments.file.empty() || arguments.file == "-") {
    print(asUtf8(text));
  } else {
    replaceOrFail(arguments.file, registryTextBytes(text));
  }
  return Exit::success;
}

Exit importFile(const Arguments& arguments) {
  const Input input = readInput(arguments.file);
  RegistryTextProblem problem;
  if (!checkRegistryText(input.bytes(), problem)) {
    throw Failure(Exit::input, placeOf(input.name, problem) + "; nothing was imported");
  }
  if (!importRegistryText(input.bytes(), problem)) {
    throw Failure(problem.changed ? Exit::incomplete : Exit::notWritten,
                  placeOf(input.name, problem) +
                      (problem.changed ? "; a part of it was imported" : "; nothing was imported"));
  }
  noteChange();
  return Exit::success;
}

RegistrySnapshot snapshotOf(const std::string& side) {
  RegistrySnapshot snapshot;
  KeyPlace place;
  if (parseRegistryKey(fromArgument(side), place.root, place.path)) {
    const RegistryResult result = snapshot.add(place.root, place.path);
    // A key that is not there has nothing in it.
    if (!result && result.status != RegistryStatus::notFound) fail(result, side, Exit::input);
    return snapshot;
  }
  const Input input = readInput(side);
  RegistryTextProblem problem;
  std::vector<RegistryStep> steps;
  if (!readRegistryText(input.bytes(), steps, problem)) {
    throw Failure(Exit::input, placeOf(input.name, problem));
  }
  for (const RegistryStep& step : steps) snapshot.apply(step);
  return snapshot;
}

Exit diff(const Arguments& arguments) {
  const std::vector<RegistryStep> steps =
      snapshotOf(arguments.key).stepsTo(snapshotOf(arguments.other));
  if (arguments.json) {
    Json answer = newAnswer();
    answer.update({{"a", nameOfInput(arguments.key)},
                   {"b", nameOfInput(arguments.other)},
                   {"steps", jsonOf(steps)}});
    printJson(answer);
  } else if (!steps.empty()) {
    print(asUtf8(textOf(steps)));
  }
  return steps.empty() ? Exit::success : Exit::no;
}

}  // namespace

void addRegistryVerbs(VerbGroup& program) {
  VerbGroup registry = program.group("registry", "Read, change, export and import the registry");
  const char* const key =
      R"(Key, for example HKEY_CURRENT_USER\Software\KPX\Settings or HKCU\Software)";

  registry.verb("get", "Print a value", &get)
      .needs("KEY", &Arguments::key, key)
      .takes("NAME", &Arguments::name, "Value; the key's default value without it")
      .takes("--json", &Arguments::json, "Print JSON, with the type");
  registry.verb("set", "Set a value, and create its key where it is missing", &set)
      .needs("KEY", &Arguments::key, key)
      .takes("NAME", &Arguments::name,
             "Value, \"\" for the default one; without it only the key is created")
      .takes("VALUE", &Arguments::value,
             "Text, number (0x… too) or bytes (2c 00 ff); -- in front of one that begins with -")
      .takes("--type", &Arguments::type, "Without it the present one, else string",
             OneOf{{"string", "dword", "binary"}});
  registry.verb("del", "Remove a value, or a key with its values", &remove)
      .needs("KEY", &Arguments::key, key)
      .takes("NAME", &Arguments::name,
             "Value, \"\" for the default one; without it the key is removed")
      .takes("--tree", &Arguments::tree, "Also the keys below the key");
  registry.verb("list", "Print the keys directly below a key and its values", &list)
      .needs("KEY", &Arguments::key, key)
      .takes("--json", &Arguments::json, "Print JSON");
  registry
      .verb("export", "Write a key with all below it in the registry editor's text form",
            &exportKey)
      .needs("KEY", &Arguments::key, key)
      .takes("FILE", &Arguments::file, "File, in UTF-16; without it standard output, in UTF-8")
      .takes("--json", &Arguments::json, "Print JSON");
  registry
      .verb("import", "Carry out a file of the registry editor, if nothing in it is wrong",
            &importFile)
      .needs("FILE", &Arguments::file, "File, or - for standard input");
  registry.verb("diff", "Print what makes the first into the second, in the text form", &diff)
      .needs("A", &Arguments::key, "Key or file")
      .needs("B", &Arguments::other, "Key or file")
      .takes("--json", &Arguments::json, "Print JSON");
}

}  // namespace kpx::tool
