#include "tools/kpx/ConfigSet.h"

#include <algorithm>
#include <vector>

#include "kpx/text/NumberText.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/ConfigAbsent.h"
#include "tools/kpx/FileChange.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {
namespace {

struct Request {
  const std::string& source;
  const std::string& key;
  const SetOptions& options;
  const Configurations& configurations;
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

/// The setting that the class of a configuration has under the key; nullptr if there is none.
const SettingAccess* accessOf(const DocumentConfiguration& configuration, const CString& key) {
  return configuration.settingsClass ? configuration.settingsClass->findKey(key) : nullptr;
}

/// Says what the value should have been.
std::string badValue(const Request& request, const EditResult& result) {
  std::string sentence =
      request.source + ": '" + request.key + "' cannot become '" + request.options.value + "'";
  for (const DocumentConfiguration& configuration : request.configurations.list) {
    if (configuration.number != result.number) continue;
    if (const SettingAccess* access = accessOf(configuration, CString::fromUtf8(request.key))) {
      sentence += std::string(", it takes ") + typeName(access->setting->kind);
    }
  }
  return sentence + ": this " + describe(result.check.problem);
}

/// Where the key stands, or where it could be added.
std::string candidates(const Request& request) {
  const CString key = CString::fromUtf8(request.key);
  CandidateList places(request.configurations.document);
  CandidateList owners(request.configurations.document);
  for (const DocumentConfiguration& configuration : request.configurations.list) {
    if (!accessOf(configuration, key)) continue;
    owners.add(configuration, configuration.offset);
    for (const DocumentSetting& setting : configuration.settings) {
      if (setting.key == key) places.add(configuration, setting.offset);
    }
  }
  return places.count() > 0 ? "stands in " + places.sentence()
                            : "could be added to " + owners.sentence();
}

/// Why a key that a class knows has no value to change, and what could be done.
std::string notInFile(const Request& request) {
  const CString key = CString::fromUtf8(request.key);
  for (const DocumentConfiguration& configuration : request.configurations.list) {
    if (accessOf(configuration, key) &&
        std::ranges::find(configuration.settings, key, &DocumentSetting::key) !=
            configuration.settings.end()) {
      return "stands in " + labelOf(configuration) + " without a value; --add gives it one";
    }
  }
  return whyAbsent(request.configurations, key);
}

[[noreturn]] void failUnknownClass(const Request& request) {
  const CString key = CString::fromUtf8(request.key);
  for (const DocumentConfiguration& each : request.configurations.list) {
    if (!each.settingsClass &&
        std::ranges::find(each.settings, key, &DocumentSetting::key) != each.settings.end()) {
      throw Failure(Exit::usage, request.source + ": '" + request.key + "' stands in " +
                                     labelOf(each) +
                                     ", a class that is not known, so its value cannot be checked");
    }
  }
  throw Failure(Exit::no, request.source + ": '" + request.key +
                              "' is not in this file, and the class of " +
                              labelOf(request.configurations.list.front()) + " is not known");
}

[[noreturn]] void failEdit(const Request& request, const EditResult& result) {
  const std::string subject = request.source + ": '" + request.key + "' ";
  switch (result.outcome) {
    case EditOutcome::badValue:
      throw Failure(Exit::usage, badValue(request, result));
    case EditOutcome::severalCandidates:
      throw Failure(Exit::usage, subject + candidates(request));
    case EditOutcome::unknownClass:
      failUnknownClass(request);
    case EditOutcome::notInFile:
      throw Failure(Exit::no, subject + notInFile(request));
    case EditOutcome::refused:
      throw Failure(
          Exit::notWritten,
          subject + "does not fit into the document" +
              (request.options.add ? ", or there is no CFGClass element to hold it" : ""));
    case EditOutcome::unknownKey: {
      const CString key = CString::fromUtf8(request.key);
      if (isOfUnknownClass(request.configurations, key)) failUnknownClass(request);
      throw Failure(Exit::no, subject + whyAbsent(request.configurations, key));
    }
    default:
      throw Failure(Exit::no, subject + describe(result.outcome));
  }
}

/// The document in the bytes of its encoding, with the promise that what was not changed has the
/// bytes it had.
std::string encode(const Configurations& read) {
  EncodedText encoded = encodeMarkupText(read.document.GetDoc(), read.storage);
  if (!encoded.usable || encoded.losses > 0) {
    throw Failure(Exit::notWritten, read.source + ": the value cannot be written in the encoding " +
                                        read.encoding + "; nothing was changed");
  }
  return std::move(encoded.bytes);
}

}  // namespace

void addSetOptions(OptionList& verb, SetOptions& options) {
  verb.needs("VALUE", &options.value, "Its new value")
      .takes("--add", &options.add,
             "Add the setting, or its value, if the class knows it and the file lacks it")
      .takes("--dry-run", &options.dryRun, "Only tell what would be changed");
  addWaitOption(verb, options.wait);
  verb.takes("--backup", &options.backup, "Keep the old file as FILE.bak, .bak2 ...");
}

Exit setValue(const std::string& file, const std::string& key, const Selection& selection,
              const SetOptions& options, bool json) {
  const bool toOutput = file == "-";
  if (toOutput && (json || options.backup)) {
    throw Failure(Exit::usage,
                  "with standard input the document is printed, so neither --json "
                  "nor --backup can be meant");
  }
  FileChange change(file, options.dryRun ? std::nullopt : std::optional<ChangeWait>(options.wait));
  const Input& input = change.input();
  Configurations read = configurationsOf(input, selection);
  if (encode(read) != input.bytes()) {
    throw Failure(Exit::input, input.name + ": would not keep every other byte in the encoding " +
                                   read.encoding + "; nothing was changed");
  }

  const EditResult result =
      setValueInDocument(read.document, choiceOf(selection), given(key), given(options.value),
                         options.add ? MissingKey::add : MissingKey::refuse);
  const bool added = result.outcome == EditOutcome::added;
  const bool changed = added || result.outcome == EditOutcome::changed;
  if (!changed && result.outcome != EditOutcome::unchanged) {
    failEdit({input.name, key, options, read}, result);
  }

  const std::string bytes = encode(read);
  const bool write = changed && !options.dryRun && !toOutput;
  if (options.backup) change.keepOld();
  if (write) change.write(bytes);

  const std::string sentence = shownOnOneLine(given(key)) + ": " +
                               (added ? "added as " : shownOnOneLine(result.oldValue) + " -> ") +
                               shownOnOneLine(result.newValue) +
                               (!changed         ? " (unchanged)"
                                : options.dryRun ? " (not written)"
                                                 : "");
  if (textAsDouble(given(options.value)) != textAsDouble(result.newValue)) {
    complain(key + ": " + options.value + " is stored as " + shownOnOneLine(result.newValue) +
             ", with the decimals of this setting");
  }
  if (changed && result.newValue.FindOneOf(u"\r\n") >= 0) {
    complain(key + ": the value holds a line break, which other programs turn into a blank");
  }
  if (toOutput && !options.dryRun) {
    change.write(bytes);
    complain(sentence);
  } else if (json) {
    Json answer = answerAbout(input.name);
    answer.update({{"index", result.number},
                   {"key", key},
                   {"old", added ? Json(nullptr) : Json(shown(result.oldValue))},
                   {"new", shown(result.newValue)},
                   {"written", write}});
    printJson(answer);
  } else {
    print(sentence + "\n");
  }
  return Exit::success;
}

}  // namespace kpx::tool
