#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/domain/NasObjectKinds.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/Nearest.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::optional<std::string> wanted;  // all without it
  bool json = false;
};

// --- codes ----------------------------------------------------------------------------------

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
  const CString name = fromArgument(argument);
  if (const std::int32_t code = GetNASObjektart(name)) return {nasObjectKindName(code), code};
  Nearest nearest(name);
  for (const NasObjectKind& kind : nasObjectKinds()) {
    constexpr std::size_t prefixLength = 3;  // "AX_", which people leave out
    nearest.offer(kind.name);
    nearest.offer(kind.name, kind.name.substr(prefixLength));
  }
  const std::int32_t code = GetNASObjektart(nearest.name());
  throw Failure(Exit::no, "there is no object kind '" + argument + "'; " +
                              (code == 0 ? "kpx nas codes lists them"
                                         : "did you mean " + asUtf8(nearest.name()) + " (" +
                                               std::to_string(code) + ")?"));
}

std::vector<NasObjectKind> wantedKinds(const std::optional<std::string>& wanted) {
  if (wanted) return {isNumber(*wanted) ? kindOfNumber(*wanted) : kindOfName(*wanted)};
  const auto all = nasObjectKinds();
  return {all.begin(), all.end()};
}

Exit codes(const Arguments& arguments) {
  Json list = Json::array();
  std::string text;
  for (const NasObjectKind& kind : wantedKinds(arguments.wanted)) {
    const std::string name = asUtf8(CString(kind.name));
    list.push_back({{"name", name}, {"code", kind.code}});
    text += std::to_string(kind.code) + "  " + name + "\n";
  }
  if (arguments.json) {
    Json answer = newAnswer();
    answer["kinds"] = std::move(list);
    printJson(answer);
  } else {
    print(text);
  }
  return Exit::success;
}

}  // namespace

void addNasVerbs(VerbGroup& program) {
  program.group("nas", "The cadastral exchange format NAS")
      .verb("codes", "List the object kinds, or look one up by name or number", &codes)
      .takes("NAME|NUMBER", &Arguments::wanted, "Feature class or object-kind number")
      .takes("--json", &Arguments::json, "Print JSON");
}

}  // namespace kpx::tool
