#include "tools/kpx/ConfigSet.h"

#include "kpx/platform/FileSystem.h"
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

std::string candidates(const Request& request, CMarkup& document) {
  std::string names;
  const CString key = CString::fromUtf8(request.key);
  for (const DocumentConfiguration& configuration : findConfigurations(document)) {
    for (const DocumentSetting& setting : configuration.settings) {
      if (setting.key != key) continue;
      names += (names.empty() ? "" : ", ") + nameOf(configuration);
    }
  }
  return names;
}

[[noreturn]] void failEdit(const Request& request, const EditResult& result, CMarkup& document) {
  const std::string subject = request.source + ": '" + request.key + "'";
  switch (result.outcome) {
    case EditOutcome::badValue:
      throw Failure(Exit::usage, badValue(request, result, document));
    case EditOutcome::severalCandidates:
      throw Failure(Exit::usage, subject + " stands in " + candidates(request, document) +
                                     "; choose one with --class");
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
  const Input input = readInput(file);
  const bool toOutput = file == "-";
  ReadDocument read = requireWellFormed(input);
  CMarkup& document = read.document;
  if (encode(read, input.name) != input.bytes()) {
    throw Failure(Exit::input, input.name + ": would not keep every other byte in the encoding " +
                                   read.encoding + "; nothing was changed");
  }

  const Request request{input.name, key, className, options};
  const EditResult result =
      setValueInDocument(document, CString::fromUtf8(className), CString::fromUtf8(key),
                         CString::fromUtf8(options.value));
  const bool changed = result.outcome == EditOutcome::changed;
  if (!changed && result.outcome != EditOutcome::unchanged) failEdit(request, result, document);

  const std::string bytes = encode(read, input.name);
  const bool write = changed && !options.dryRun && !toOutput;
  if (write) {
    if (options.backup) replaceOrFail(file + ".bak", input.bytes());
    replaceOrFail(file, bytes);
  }

  const std::string sentence = key + ": " + shownOnOneLine(result.oldValue) + " -> " +
                               shownOnOneLine(result.newValue) +
                               (!changed         ? " (unchanged)"
                                : options.dryRun ? " (not written)"
                                                 : "");
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
