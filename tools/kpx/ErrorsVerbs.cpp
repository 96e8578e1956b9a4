#include <algorithm>
#include <charconv>
#include <string>
#include <vector>

#include "kpx/capi/ErrorTable.h"
#include "kpx/settings/Catalogue.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/ErrorNames.h"
#include "tools/kpx/ErrorSentence.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::string wanted;
  bool json = false;
};

std::vector<ErrorName> allErrors() {
  std::vector<ErrorName> errors;
  for (const ErrorEntry& entry : errorTable()) {
    errors.push_back(
        {entry.number, std::string(entry.operation), errorSentence(entry.operation), {}, {}, {}});
  }
  const auto add = [&](int number, const SettingsClass& owner, std::u16string_view accessor,
                       std::u16string_view key, const char* done) {
    if (number == 0) return;
    const std::string name = asUtf8(CString(owner.name));
    const std::string method = asUtf8(CString(accessor));
    const std::string setting = asUtf8(CString(key));
    const std::string doing = key.empty()
                                  ? "the settings of " + name + " were being " + done
                                  : "the setting " + setting + " of " + name + " was being " + done;
    errors.push_back({number, name + "::" + method, doing, name, method, setting});
  };
  for (const SettingsClass* const owner : settingsClasses()) {
    add(owner->resetError, *owner, u"ResetPos", {}, "put in order");
    for (const SettingAccess& access : owner->settings) {
      add(access.setting->getterError, *owner, access.getter, access.key(), "read");
      add(access.setting->setterError, *owner, access.setter, access.key(), "changed");
    }
  }
  std::stable_sort(errors.begin(), errors.end(),
                   [](const ErrorName& a, const ErrorName& b) { return a.number < b.number; });
  return errors;
}

Json jsonOf(const ErrorName& error) {
  Json json{{"number", error.number}, {"operation", error.operation}, {"doing", error.doing}};
  if (!error.settingsClass.empty()) {
    json["class"] = error.settingsClass;
    json["accessor"] = error.accessor;
    json["key"] = error.key;
  }
  return json;
}

std::string lineOf(const ErrorName& error) {
  return std::to_string(error.number) + "  " + error.operation + ": " + error.doing + "\n";
}

Exit show(const Arguments& arguments) {
  const std::string& wanted = arguments.wanted;
  std::vector<ErrorName> errors = allErrors();
  if (wanted != "list") {
    int number = 0;
    const char* const end = wanted.data() + wanted.size();
    const auto read = std::from_chars(wanted.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end) {
      throw Failure(Exit::usage, "'" + wanted + "' is neither an error number nor the word list");
    }
    std::erase_if(errors, [&](const ErrorName& error) { return error.number != number; });
    if (errors.empty()) {
      throw Failure(Exit::no, "no operation of the library has the error number " + wanted +
                                  "; kpx errors list shows all");
    }
  }
  if (arguments.json) {
    Json report = Json::array();
    for (const ErrorName& error : errors) report.push_back(jsonOf(error));
    Json answer = newAnswer();
    answer["errors"] = std::move(report);
    printJson(answer);
  } else {
    std::string text;
    for (const ErrorName& error : errors) text += lineOf(error);
    print(text);
  }
  return Exit::success;
}

}  // namespace

std::string operationName(int number) {
  static const std::vector<ErrorName> errors = allErrors();
  const auto found =
      std::lower_bound(errors.begin(), errors.end(), number,
                       [](const ErrorName& error, int wanted) { return error.number < wanted; });
  return found != errors.end() && found->number == number ? found->operation : std::string();
}

void addErrorsVerbs(VerbGroup& program) {
  program.verb("errors", "What a program was doing when it reported an error number", &show)
      .needs("NUMBER|list", &Arguments::wanted, "Number of an error log, or list for all")
      .takes("--json", &Arguments::json, "Print JSON");
}

}  // namespace kpx::tool
