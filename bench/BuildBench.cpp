// Building a document through the interface, as configurations write themselves, and changing a
// long one. The peer builds the same elements and attributes.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Encoding.h"

namespace {

using kpx::CMarkup;
using kpx::CString;

constexpr int settings = 100'000;

struct Attribute {
  const char* name;
  const char* value;
};

// A setting: a column of 17 attributes with its value of 10 inside.
constexpr Attribute header[] = {{"ObjectID", "0"}, {"UserChangedID", "0"}, {"UserCreatedID", "0"},
                                {"changed", "0"},  {"created", "0"},       {"TransID", "0"}};
constexpr Attribute column[] = {{"ClassID", "0"},
                                {"Type", "3"},
                                {"Name", nullptr},
                                {"Caption", "Toleranz_XY"},
                                {"Category", "Toleranz der Lage bei der Transformation"},
                                {"Length", "0"},
                                {"Prec", "3"},
                                {"Nullable", "0"},
                                {"Empty", "0"},
                                {"Default", "0.030"},
                                {"Unit", "0"}};
constexpr Attribute value[] = {{"Value", nullptr}, {"ColID", "0"}, {"RowID", "0"}, {"Data", "0"}};

// The texts of one setting, made before the time is taken.
template <class Text>
struct Texts {
  Text (*convert)(const char*);
  std::vector<std::pair<Text, Text>> header, column, value;

  explicit Texts(Text (*make)(const char*)) : convert(make) {
    for (const auto& each : ::header) header.emplace_back(make(each.name), make(each.value));
    for (const auto& each : ::column) {
      column.emplace_back(make(each.name), make(each.value ? each.value : "CA2T_Tol_XY"));
    }
    for (const auto& each : ::value) {
      value.emplace_back(make(each.name), make(each.value ? each.value : "0.030"));
    }
  }
};

CString wide(const char* text) { return CString::fromUtf8(text); }
std::string narrow(const char* text) { return text; }

void writeElement(CMarkup& document, const CString& name, const Texts<CString>& texts,
                  const std::vector<std::pair<CString, CString>>& own) {
  document.AddElem(name);
  for (const auto& [attribute, text] : texts.header) document.SetAttrib(attribute, text);
  for (const auto& [attribute, text] : own) document.SetAttrib(attribute, text);
}

void build(CMarkup& document, int count, const Texts<CString>& texts) {
  const CString columnName(u"CFGCol");
  const CString valueName(u"CFGValue");
  document.AddElem(u"CFGConfigPolar");
  document.IntoElem();
  document.AddElem(u"CFGClass");
  for (int i = 0; i < count; ++i) {
    document.IntoElem();
    writeElement(document, columnName, texts, texts.column);
    document.IntoElem();
    writeElement(document, valueName, texts, texts.value);
    document.OutOfElem();
    document.OutOfElem();
  }
  document.OutOfElem();
}

void buildKpx(benchmark::State& state) {
  const Texts<CString> texts(&wide);
  for ([[maybe_unused]] auto _ : state) {
    CMarkup document;
    build(document, settings, texts);
    const kpx::EncodedText written = kpx::encodeMarkupText(document.GetDoc());
    benchmark::DoNotOptimize(written.bytes.data());
  }
  state.counters["ns_per_setting"] = benchmark::Counter(
      settings * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(buildKpx)->Name("xml/build_100000_settings/kpx")->Unit(benchmark::kMillisecond);

struct StringWriter : pugi::xml_writer {
  std::string bytes;
  void write(const void* data, size_t size) override {
    bytes.append(static_cast<const char*>(data), size);
  }
};

void appendAttributes(pugi::xml_node node, const Texts<std::string>& texts,
                      const std::vector<std::pair<std::string, std::string>>& own) {
  for (const auto& [name, text] : texts.header) {
    node.append_attribute(name.c_str()).set_value(text.c_str());
  }
  for (const auto& [name, text] : own) {
    node.append_attribute(name.c_str()).set_value(text.c_str());
  }
}

void buildPugixml(benchmark::State& state) {
  const Texts<std::string> texts(&narrow);
  for ([[maybe_unused]] auto _ : state) {
    pugi::xml_document document;
    pugi::xml_node parent = document.append_child("CFGConfigPolar").append_child("CFGClass");
    for (int i = 0; i < settings; ++i) {
      pugi::xml_node columnNode = parent.append_child("CFGCol");
      appendAttributes(columnNode, texts, texts.column);
      appendAttributes(columnNode.append_child("CFGValue"), texts, texts.value);
    }
    StringWriter writer;
    document.save(writer, "", pugi::format_default | pugi::format_no_declaration);
    benchmark::DoNotOptimize(writer.bytes.data());
  }
  state.counters["ns_per_setting"] = benchmark::Counter(
      settings * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(buildPugixml)->Name("xml/build_100000_settings/pugixml")->Unit(benchmark::kMillisecond);

// A change of the first element of a long document, which all other elements lie behind.
void changeFront(benchmark::State& state) {
  CMarkup document;
  build(document, 2 * settings, Texts<CString>(&wide));
  document.ResetPos();
  document.FindElem();
  bool isLong = false;
  for ([[maybe_unused]] auto _ : state) {
    isLong = !isLong;
    document.SetAttrib(u"Name", isLong ? u"long" : u"x");
  }
  state.counters["units"] = document.GetDoc().GetLength();
}
BENCHMARK(changeFront)
    ->Name("xml/change_front_of_86_million_units/kpx")
    ->Unit(benchmark::kMillisecond);

// Reading all attributes of an element by name in written order.
void readInOrder(benchmark::State& state) {
  const Texts<CString> texts(&wide);
  CMarkup document;
  build(document, 1, texts);
  document.ResetPos();
  document.IntoElem();
  document.FindChildElem();
  document.IntoElem();
  document.FindChildElem();
  CString text;
  for ([[maybe_unused]] auto _ : state) {
    kpx::AttributeReader attributes = document.ReadChildAttribs();
    for (const auto& each : texts.header) attributes.read(each.first, text);
    for (const auto& each : texts.column) attributes.read(each.first, text);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(readInOrder)->Name("xml/read_17_attributes/kpx");

void readInOrderPugixml(benchmark::State& state) {
  const Texts<std::string> texts(&narrow);
  pugi::xml_document document;
  pugi::xml_node node = document.append_child("CFGCol");
  appendAttributes(node, texts, texts.column);
  for ([[maybe_unused]] auto _ : state) {
    for (const auto& each : texts.header) {
      benchmark::DoNotOptimize(node.attribute(each.first.c_str()).value());
    }
    for (const auto& each : texts.column) {
      benchmark::DoNotOptimize(node.attribute(each.first.c_str()).value());
    }
  }
}
BENCHMARK(readInOrderPugixml)->Name("xml/read_17_attributes/pugixml");

}  // namespace
