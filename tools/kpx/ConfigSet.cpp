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
const SettingAccess* accessOf(const ViewedConfiguration& configuration, const CString& key) {
  return configuration.settingsClass ? configuration.settingsClass->findKey(key) : nullptr;
}

/// Whether the configuration has a column of this key, in the document.
bool hasColumn(const Request& request, const ViewedConfiguration& configuration,
               const CString& key) {
  return std::ranges::any_of(configuration.columns, [&](const ConfigColumn& column) {
    return request.configurations.view().keyOf(column) == key;
  });
}

/// Says what the value should have been.
std::string badValue(const Request& request, const DocumentResult& result,
                     const DocumentChange& done) {
  const SettingDef& setting = *request.configurations.document.findSetting(
      done.configuration, CString::fromUtf8(request.key));
  return request.source + ": '" + request.key + "' cannot become '" + request.options.value +
         "', it takes " + typeName(setting.kind) + ": this " + describe(result.problem);
}

/// Where the key stands, or where it could be added.
std::string candidates(const Request& request) {
  const CString key = CString::fromUtf8(request.key);
  CandidateList places(request.configurations.document);
  CandidateList owners(request.configurations.document);
  const ConfigView& view = request.configurations.view();
  for (const ViewedConfiguration* const each : request.configurations.list) {
    if (!accessOf(*each, key)) continue;
    owners.add(*each, each->element.begin);
    for (const ConfigColumn& column : each->columns) {
      if (view.keyOf(column) == key) places.add(*each, column.column.begin);
    }
  }
  return places.count() > 0 ? "stands in " + places.sentence()
                            : "could be added to " + owners.sentence();
}

/// Why a key that a class knows has no value to change, and what could be done.
std::string notInFile(const Request& request) {
  const CString key = CString::fromUtf8(request.key);
  for (const ViewedConfiguration* const each : request.configurations.list) {
    if (accessOf(*each, key) && hasColumn(request, *each, key)) {
      return "stands in " + labelOf(*each) + " without a value; --add gives it one";
    }
  }
  return whyAbsent(request.configurations, key);
}

[[noreturn]] void failUnknownClass(const Request& request) {
  const CString key = CString::fromUtf8(request.key);
  for (const ViewedConfiguration* const each : request.configurations.list) {
    if (!each->settingsClass && hasColumn(request, *each, key)) {
      throw Failure(Exit::usage, request.source + ": '" + request.key + "' stands in " +
                                     labelOf(*each) +
                                     ", a class that is not known, so its value cannot be checked");
    }
  }
  throw Failure(Exit::no, request.source + ": '" + request.key +
                              "' is not in this file, and the class of " +
                              labelOf(*request.configurations.list.front()) + " is not known");
}

[[noreturn]] void failChange(const Request& request, const DocumentResult& result,
                             const DocumentChange& done) {
  const std::string subject = request.source + ": '" + request.key + "' ";
  switch (result.outcome) {
    case DocumentOutcome::badValue:
      throw Failure(Exit::usage, badValue(request, result, done));
    case DocumentOutcome::severalColumns:
      throw Failure(Exit::usage, subject + candidates(request));
    case DocumentOutcome::unknownClass:
      failUnknownClass(request);
    case DocumentOutcome::notStored:
      throw Failure(Exit::no, subject + notInFile(request));
    case DocumentOutcome::refused:
      throw Failure(
          Exit::notWritten,
          subject + "does not fit into the document" +
              (request.options.add ? ", or there is no CFGClass element to hold it" : ""));
    case DocumentOutcome::unknownKey: {
      const CString key = CString::fromUtf8(request.key);
      if (isOfUnknownClass(request.configurations, key)) failUnknownClass(request);
      throw Failure(Exit::no, subject + whyAbsent(request.configurations, key));
    }
    default:
      throw Failure(Exit::no, subject + asUtf8(describe(result)));
  }
}

/// The document as bytes. `problem` is what is told when that cannot be.
std::string bytesOf(Configurations& read, Exit code, const std::string& problem) {
  std::string bytes;
  if (!read.document.write(bytes).ok()) {
    throw Failure(code, read.source + ": " + problem + " the encoding " + read.encoding() +
                            "; nothing was changed");
  }
  return bytes;
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
  const char* const otherBytes = "would not keep every other byte in";
  if (bytesOf(read, Exit::input, otherBytes) != input.bytes()) {
    throw Failure(Exit::input, input.name + ": " + otherBytes + " the encoding " + read.encoding() +
                                   "; nothing was changed");
  }

  DocumentChange done;
  const DocumentResult result =
      read.document.change(choiceOf(selection), fromArgument(key), fromArgument(options.value),
                           options.add ? MissingKey::add : MissingKey::refuse, done);
  if (!result.ok()) failChange({input.name, key, options, read}, result, done);
  const bool added = done.isAdded;
  const bool changed = done.isChanged;
  const std::string bytes = bytesOf(read, Exit::notWritten, "the value cannot be written in");
  const bool write = changed && !options.dryRun && !toOutput;
  if (options.backup) change.keepOld();
  if (write) change.write(bytes);

  const std::string sentence = shownOnOneLine(fromArgument(key)) + ": " +
                               (added ? "added as " : shownOnOneLine(done.oldValue) + " -> ") +
                               shownOnOneLine(done.newValue) +
                               (!changed         ? " (unchanged)"
                                : options.dryRun ? " (not written)"
                                                 : "");
  if (utlTextAsDouble(fromArgument(options.value)) != utlTextAsDouble(done.newValue)) {
    complain(key + ": " + options.value + " is stored as " + shownOnOneLine(done.newValue) +
             ", with the decimals of this setting");
  }
  if (changed && done.newValue.FindOneOf(u"\r\n") >= 0) {
    complain(key + ": the value holds a line break, which other programs turn into a blank");
  }
  if (toOutput && !options.dryRun) {
    change.write(bytes);
    complain(sentence);
  } else if (json) {
    Json answer = answerAbout(input.name);
    answer.update({{"index", done.configuration + 1},
                   {"key", key},
                   {"old", added ? Json(nullptr) : Json(asUtf8(done.oldValue))},
                   {"new", asUtf8(done.newValue)},
                   {"written", write}});
    printJson(answer);
  } else {
    print(sentence + "\n");
  }
  return Exit::success;
}

}  // namespace kpx::tool
