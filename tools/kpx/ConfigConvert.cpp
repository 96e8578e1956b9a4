#include "tools/kpx/ConfigConvert.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "tools/kpx/ConfigJson.h"

namespace kpx::tool {
namespace {

// --- CSV and INI ----------------------------------------------------------------------------

/// One setting of a configuration as the tables of other programs take it.
struct PlainSetting {
  CString key;
  CString value;
  CString type;
  CString caption;
  CString group;
  int offset = 0;
};

struct PlainConfiguration {
  std::string name;  // the class, from its second configuration on with ".2", ".3"
  std::vector<PlainSetting> settings;
};

std::vector<PlainConfiguration> plainConfigurations(const Configurations& configurations) {
  std::vector<PlainConfiguration> plain;
  std::map<std::string, int> counts;
  const ConfigView& view = configurations.view();
  for (const ViewedConfiguration* const each : configurations.list) {
    std::string name = nameOf(*each);
    if (const int count = ++counts[name]; count > 1) name += "." + std::to_string(count);
    PlainConfiguration& configuration = plain.emplace_back();
    configuration.name = std::move(name);
    for (std::size_t i = 0; i < each->ownColumns; ++i) {
      const ConfigColumn& column = each->columns[i];
      const auto attribute = [&](std::u16string_view attributeName) {
        return view.attributeOf(column.column, attributeName);
      };
      configuration.settings.push_back({view.keyOf(column), view.valueOf(column),
                                        attribute(u"Type"), attribute(u"Caption"),
                                        attribute(u"Category"), column.column.begin});
    }
  }
  return plain;
}

class CsvWriter {
 public:
  explicit CsvWriter(char separator) : separator_(separator) {}

  void row(std::initializer_list<std::string_view> fields) {
    for (const std::string_view& field : fields) {
      if (&field != fields.begin()) out_ += separator_;
      appendField(field);
    }
    out_ += "\r\n";
  }
  std::string take() { return std::move(out_); }

 private:
  void appendField(std::string_view field) {
    const bool blank = !field.empty() && (field.front() == ' ' || field.back() == ' ');
    if (!blank && field.find_first_of("\"\r\n") == field.npos &&
        field.find(separator_) == field.npos) {
      out_ += field;
      return;
    }
    out_ += '"';
    for (const char each : field) {
      if (each == '"') out_ += '"';
      out_ += each;
    }
    out_ += '"';
  }

  char separator_;
  std::string out_;
};

std::string csvOf(const Configurations& configurations, const ConvertOptions& options) {
  CsvWriter csv(options.separator.empty()    ? ','
                : options.separator == "tab" ? '\t'
                                             : options.separator.front());
  csv.row({"class", "key", "value", "type", "caption", "group"});
  for (const PlainConfiguration& configuration : plainConfigurations(configurations)) {
    for (const PlainSetting& each : configuration.settings) {
      csv.row({configuration.name, asUtf8(each.key), asUtf8(each.value), asUtf8(each.type),
               asUtf8(each.caption), asUtf8(each.group)});
    }
  }
  return (options.mark ? "\xEF\xBB\xBF" : "") + csv.take();
}

/// Why an INI file cannot carry a key; empty if it can.
std::string_view iniProblem(const CString& key) {
  if (key.IsEmpty()) return "is empty";
  if (key.FindOneOf(u"=\"\r\n") >= 0) return "has a \"=\", a quote or a line break in it";
  if (key[0] == u';' || key[0] == u'[') return "begins like a comment or a section";
  if (CString(key).Trim() != key) return "has blanks at an end";
  return {};
}

/// A value on one line, as the INI files of the suite have it.
CString iniValue(CString value) {
  value.Replace(u"\r\n", u"\n");
  value.Replace(u'\r', u'\n');
  value.Replace(u"\n", u"\\n");
  return value;
}

std::string iniOf(const Configurations& configurations) {
  PlaceCounter places(configurations.document.text());
  const auto refuse = [&](const PlainSetting& setting, const std::string& sentence) {
    const auto [line, column] = places.at(setting.offset);
    throw Failure(Exit::input,
                  placeOf(configurations.source,
                          {line, column,
                           "the key '" + shownOnOneLine(setting.key) + "' " + sentence +
                               ", which an INI file cannot carry; JSON and CSV can"}));
  };
  std::string out;
  for (const PlainConfiguration& configuration : plainConfigurations(configurations)) {
    if (configuration.name.find(']') != std::string::npos) {
      throw Failure(Exit::input, configurations.source + ": '" + configuration.name +
                                     "' cannot be a section of an INI file");
    }
    out += (out.empty() ? "[" : "\r\n[") + configuration.name + "]\r\n";
    std::set<std::u16string_view> keys;
    for (const PlainSetting& setting : configuration.settings) {
      if (const auto problem = iniProblem(setting.key); !problem.empty()) {
        refuse(setting, std::string(problem));
      }
      if (!keys.insert(setting.key).second) refuse(setting, "stands here a second time");
      out += asUtf8(setting.key) + "=" + asUtf8(iniValue(setting.value)) + "\r\n";
    }
  }
  return out;
}

// --- files ----------------------------------------------------------------------------------

bool isSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return std::filesystem::equivalent(std::filesystem::path(fromArgument(a).units()),
                                     std::filesystem::path(fromArgument(b).units()), error);
}

std::string xmlFrom(const std::string& file, const Selection& selection, bool strict) {
  if (!selection.none()) {
    throw Failure(Exit::usage, "--class and --index choose from XML; from JSON all is converted");
  }
  const Input input = readInput(file);
  const std::size_t first = input.bytes().find_first_not_of(" \t\r\n\xEF\xBB\xBF");
  if (first != std::string_view::npos && input.bytes()[first] == '<') {
    throw Failure(Exit::input, input.name + ": is XML already; --to xml reads JSON");
  }
  XmlFromJson result = xmlFromJson(input.bytes(), input.name);
  for (const std::string& note : result.notes) complain(note);
  if (const std::size_t more = result.noteCount - result.notes.size(); more > 0) {
    complain(input.name + ": " + std::to_string(more) +
             " more of these, which kpx config validate names in the XML");
  }
  if (strict && result.noteCount > 0) {
    throw Failure(Exit::no, input.name + ": nothing was written, because of --strict");
  }
  return std::move(result.bytes);
}

std::string jsonFrom(Configurations& configurations, std::string_view bytes,
                     const Selection& selection) {
  std::string json = jsonOf(configurations);
  const std::string difference = differenceFromJson(json, configurations, bytes, selection);
  if (!difference.empty()) complain(difference);
  return json;
}

std::string convertedFrom(const std::string& file, const Selection& selection,
                          const ConvertOptions& options) {
  if (options.to == "xml") return xmlFrom(file, selection, options.strict);
  Configurations configurations;
  Input input;
  if (findClassOf(file)) {
    configurations = readConfigurations(file, selection);
    input.piped = configurations.document.text().utf8();
  } else {
    input = readInput(file);
    configurations = configurationsOf(input, selection);
  }
  if (options.to == "csv") return csvOf(configurations, options);
  if (options.to == "ini") return iniOf(configurations);
  return jsonFrom(configurations, input.bytes(), selection);
}

}  // namespace

void addConvertOptions(OptionList& verb, ConvertOptions& options) {
  verb.needs("--to", &options.to, "json, csv, ini, or xml (from JSON)",
             OneOf{{"json", "csv", "ini", "xml"}});
  verb.takes("-o,--output", &options.output,
             "Write this file, whole or not at all, instead of standard output");
  verb.takes("--separator", &options.separator, "Of CSV: , ; | or tab (default ,)",
             OneOf{{",", ";", "|", "tab"}, false});
  verb.takes("--strict", &options.strict,
             "To XML: answer 1 and write nothing where a key or value is not as the suite "
             "writes it");
  verb.takes("--bom", &options.mark,
             "Begin CSV with a byte-order mark, without which Excel misreads umlauts");
  verb.footer(
      "json  keeps all content: --to xml gives the same file again, and a changed one after "
      "values\n"
      "      were changed by hand. The spelling of a file that the suite did not write (line "
      "ends,\n"
      "      spacing, quotes, references) is not kept inside a configuration, and one line on\n"
      "      standard error tells of it. What stands around the configurations is kept as text; a\n"
      "      comment, a foreign element or attribute inside one is refused. --class and --index\n"
      "      leave the other configurations out.\n"
      "xml   from JSON. Keys and values that the suite would not read, or not write so, are told\n"
      "      on standard error and written as they are, unless --strict forbids it.\n"
      "csv   one row for each setting, one way. UTF-8; quoted where needed.\n"
      "ini   one section for each configuration, one way. A line break in a value becomes \\n. A\n"
      "      key that is empty, stands twice, begins with ; or [, or has =, quotes, a line break\n"
      "      or outer blanks is refused.\n"
      "In CSV and INI a second configuration of a class is called CLASS.2, and a half surrogate\n"
      "pair becomes U+FFFD.");
}

Exit convert(const std::string& file, const Selection& selection, const ConvertOptions& options) {
  if (options.to != "csv" && (options.mark || !options.separator.empty())) {
    throw Failure(Exit::usage, "--separator and --bom are for --to csv");
  }
  if (options.strict && options.to != "xml") {
    throw Failure(Exit::usage, "--strict is for --to xml");
  }
  if (!options.output.empty() && file != "-" && isSameFile(file, options.output)) {
    throw Failure(Exit::usage, options.output + ": is the input; nothing was changed");
  }
  const std::string bytes = convertedFrom(file, selection, options);
  if (options.output.empty() || options.output == "-") {
    print(bytes);
  } else {
    replaceOrFail(options.output, bytes);
  }
  return Exit::success;
}

}  // namespace kpx::tool
