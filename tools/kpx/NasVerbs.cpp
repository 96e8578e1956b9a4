#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/domain/NasObjectKinds.h"
#include "kpx/text/CaseFold.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

// --- codes ----------------------------------------------------------------------------------

Json jsonOf(const NasObjectKind& kind) {
  return {{"name", shown(CString(kind.name))}, {"code", kind.code}};
}

std::string lineOf(const NasObjectKind& kind) {
  return std::to_string(kind.code) + "  " + shown(CString(kind.name)) + "\n";
}

Exit listCodes(bool json) {
  Json report = Json::array();
  std::string text;
  for (const NasObjectKind& kind : nasObjectKinds()) {
    if (json) {
      report.push_back(jsonOf(kind));
    } else {
      text += lineOf(kind);
    }
  }
  if (json) {
    printJson(report);
  } else {
    print(text);
  }
  return Exit::success;
}

/// How many units have to be changed, added or left out to make one text of the other, without
/// regard to case.
std::size_t editDistance(std::u16string_view from, std::u16string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t changed = diagonal + (foldCase(from[i]) == foldCase(to[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

/// The kind whose name is meant by a slip of the keyboard, a forgotten prefix or another case;
/// nullptr if none is near enough.
const NasObjectKind* nearestKind(std::u16string_view name) {
  constexpr std::size_t prefixLength = 3;
  if (name.size() > 100) return nullptr;
  const NasObjectKind* nearest = nullptr;
  std::size_t smallest = std::max<std::size_t>(name.size() / 4, 1) + 1;
  for (const NasObjectKind& kind : nasObjectKinds()) {
    const std::size_t distance =
        std::min(editDistance(name, kind.name), editDistance(name, kind.name.substr(prefixLength)));
    if (distance < smallest) {
      smallest = distance;
      nearest = &kind;
    }
  }
  return nearest;
}

bool isNumber(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

NasObjectKind kindOfNumber(const std::string& number) {
  std::int32_t code = 0;
  const auto read = std::from_chars(number.data(), number.data() + number.size(), code);
  const std::u16string_view name =
      read.ec == std::errc() ? nasObjectKindName(code) : std::u16string_view();
  if (name.empty()) {
    throw Failure(Exit::no, "there is no object kind with the number " + number +
                                "; kpx nas codes lists them");
  }
  return {name, code};
}

NasObjectKind kindOfName(const std::string& argument) {
  const CString name = given(argument);
  if (const std::int32_t code = GetNASObjektart(name)) return {nasObjectKindName(code), code};
  std::string message = "there is no object kind '" + shownOnOneLine(name) + "'; ";
  if (const NasObjectKind* const nearest = nearestKind(name)) {
    message += "did you mean " + shown(CString(nearest->name)) + " (" +
               std::to_string(nearest->code) + ")?";
  } else {
    message += "kpx nas codes lists them";
  }
  throw Failure(Exit::no, message);
}

Exit showCode(const std::string& wanted, bool json) {
  const NasObjectKind kind = isNumber(wanted) ? kindOfNumber(wanted) : kindOfName(wanted);
  if (json) {
    printJson(jsonOf(kind));
  } else {
    print(lineOf(kind));
  }
  return Exit::success;
}

}  // namespace

void addNasVerbs(CLI::App& app, Action& chosen) {
  CLI::App* nas = app.add_subcommand("nas", "The cadastral exchange format NAS");
  requireVerb(*nas);
  auto json = std::make_shared<bool>(false);
  auto wanted = std::make_shared<std::string>();

  CLI::App* command =
      nas->add_subcommand("codes", "List the object kinds, or look one up by name or number");
  CLI::Option* one =
      command->add_option("NAME|NUMBER", *wanted, "Feature class or object-kind number");
  command->add_flag("--json", *json, "Print JSON");
  command->callback([&chosen, json, wanted, one] {
    const bool all = one->count() == 0;
    chosen = [json, wanted, all] { return all ? listCodes(*json) : showCode(*wanted, *json); };
  });
}

}  // namespace kpx::tool
