#include "tools/kpx/ConfigSet.h"

#include <algorithm>
#include <vector>

#include "kpx/platform/FileSystem.h"
#include "kpx/text/NumberText.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {
namespace {

struct Request {
  const std::string& source;
  const std::string& key;
  const std::string& className;
  const SetOptions& options;
};

const char* typeName(ValueKind kind) {
  switch (kind) {
    case ValueKind::integer:
      return "a whole number";
    case ValueKind::flag:
      return "a flag, 0 or 1";
    case ValueKind::enumeration:
      return "the number of a choice";
    case ValueKind::real:
      return "a real number";
    case ValueKind::text:
      return "a text";
  }
  return "";
}

/// Says what the value should have been: the first class of the file that knows the key tells.
std::string badValue(const Request& request, const EditResult& result, CMarkup& document) {
  std::string sentence =
      request.source + ": '" + request.key + "' cannot become '" + request.options.value + "'";
  const CString key = CString::fromUtf8(request.key);
  for (const DocumentConfiguration& configuration : findConfigurations(document)) {
    if (!configuration.settingsClass || !isMeant(configuration, request.className)) continue;
    if (const SettingAccess* access = configuration.settingsClass->findKey(key)) {
      sentence += std::string(", it takes ") + typeName(access->setting->kind);
      break;
    }
  }
  return sentence + ": this " + describe(result.check.problem);
}

/// Where the key stands: the classes, or the lines where they are of one class.
std::string candidates(const Request& request, CMarkup& document) {
  constexpr std::size_t mostLines = 10;
  std::vector<std::string> names;
  std::string lines;
  std::size_t count = 0;
  const CString key = CString::fromUtf8(request.key);
  PlaceCounter places(document.GetDoc());
  for (const DocumentConfiguration& configuration : findConfigurations(document)) {
    for (const DocumentSetting& setting : configuration.settings) {
      if (setting.key != key || !isMeant(configuration, request.className)) continue;
      const std::string name = nameOf(configuration);
      if (std::ranges::find(names, name) == names.end()) names.push_back(name);
      if (++count > mostLines) continue;
      lines += (count > 1 ? ", " : "") + std::to_string(places.at(setting.offset).first);
    }
  }
  if (names.size() == 1) {
    return "stands " + std::to_string(count) + " times in " + names.front() + " (lines " + lines +
           (count > mostLines ? ", ..." : "") + "), so it is not clear which one is meant";
  }
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return "stands in " + list + "; choose one with --class";
}

[[noreturn]] void failEdit(const Request& request, const EditResult& result, CMarkup& document) {
  const std::string subject = request.source + ": '" + request.key + "'";
  switch (result.outcome) {
    case EditOutcome::badValue:
      throw Failure(Exit::usage, badValue(request, result, document));
    case EditOutcome::severalCandidates:
      throw Failure(Exit::usage, subject + " " + candidates(request, document));
    case EditOutcome::noConfiguration:
      throw Failure(request.className.empty() ? Exit::input : Exit::no,
                    request.source + ": holds no configuration" + inClass(request.className));
    case EditOutcome::unknownClass:
      throw Failure(Exit::usage, subject +
                                     " belongs to a class that is not known, so its value "
                                     "cannot be checked");
    case EditOutcome::refused:
      throw Failure(Exit::notWritten, subject + " does not fit into the document");
    default:
      throw Failure(Exit::no, subject + " " + describe(result.outcome));
  }
}

void replaceOrFail(const std::string& path, std::string_view bytes) {
  const FileResult result = fileSystem().replaceFile(CString::fromUtf8(path), bytes);
  if (!result) {
    throw Failure(Exit::notWritten,
                  path + ": " + shown(result.message()) + "; nothing was changed");
  }
}

/// The document in the bytes of its encoding, with the promise that what was not changed has the
/// bytes it had.
std::string encode(const ReadDocument& read, const std::string& source) {
  EncodedText encoded = encodeMarkupText(read.document.GetDoc(), read.storage);
  if (!encoded.usable || encoded.losses > 0) {
    throw Failure(Exit::notWritten, source + ": the value cannot be written in the encoding " +
                                        read.encoding + "; nothing was changed");
  }
  return std::move(encoded.bytes);
}

}  // namespace

bool isMeant(const DocumentConfiguration& configuration, const std::string& className) {
  if (className.empty()) return true;
  const CString name = CString::fromUtf8(className);
  return configuration.elementName == name ||
         (configuration.settingsClass && configuration.settingsClass->name == name.view());
}

std::string inClass(const std::string& className) {
  return className.empty() ? "" : " of the class " + className;
}

Exit setValue(const std::string& file, const std::string& key, const std::string& className,
              const SetOptions& options, bool json) {
  const bool toOutput = file == "-";
  if (toOutput && (json || options.backup)) {
    throw Failure(Exit::usage,
                  "with standard input the document is printed, so neither --json "
                  "nor --backup can be meant");
  }
  const Input input = readInput(file);
  ReadDocument read = requireWellFormed(input);
  CMarkup& document = read.document;
  if (encode(read, input.name) != input.bytes()) {
    throw Failure(Exit::input, input.name + ": would not keep every other byte in the encoding " +
                                   read.encoding + "; nothing was changed");
  }

  const Request request{input.name, key, className, options};
  const EditResult result =
      setValueInDocument(document, given(className), given(key), given(options.value));
  const bool changed = result.outcome == EditOutcome::changed;
  if (!changed && result.outcome != EditOutcome::unchanged) failEdit(request, result, document);

  const std::string bytes = encode(read, input.name);
  const bool write = changed && !options.dryRun && !toOutput;
  if (write) {
    if (options.backup) {
      replaceOrFail(file + ".bak", input.bytes());
      fileSystem().copyPermissions(given(file), given(file + ".bak"));
    }
    replaceOrFail(file, bytes);
  }

  const std::string sentence = key + ": " + shownOnOneLine(result.oldValue) + " -> " +
                               shownOnOneLine(result.newValue) +
                               (!changed         ? " (unchanged)"
                                : options.dryRun ? " (not written)"
                                                 : "");
  if (textAsDouble(given(options.value)) != textAsDouble(result.newValue)) {
    complain(key + ": " + options.value + " is stored as " + shownOnOneLine(result.newValue) +
             ", with the decimals of this setting");
  }
  if (toOutput && !options.dryRun) {
    print(bytes);
    complain(sentence);
  } else if (json) {
    printJson(Json{{"file", input.name},
                   {"key", key},
                   {"old", shown(result.oldValue)},
                   {"new", shown(result.newValue)},
                   {"written", write}});
  } else {
    print(sentence + "\n");
  }
  return Exit::success;
}

}  // namespace kpx::tool
