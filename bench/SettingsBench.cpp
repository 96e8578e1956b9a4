// Typed settings: reading, changing, constructing, saving and loading. The peers are the plain
// ways to do the same: copying the column as the collection's own interface does, the standard
// map, and pugixml with the same elements and attributes.

#include <benchmark/benchmark.h>

#include <pugixml.hpp>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench/PugixmlCopy.h"
#include "kpx/settings/CFGGeneralSettings.h"
#include "kpx/support/texts/TextStore.h"
#include "kpx/text/NumberText.h"
#include "kpx/xml/CMarkup.h"

namespace {

using kpx::CFGCol;
using kpx::CFGGeneralSettings;
using kpx::CMarkup;
using kpx::CString;

// --- one setting
// ------------------------------------------------------------------------------------

void getRealKpx(benchmark::State& state) {
  const CFGGeneralSettings settings;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(settings.getCA2TTolXY());
    benchmark::ClobberMemory();
  }
}
void getRealCopied(benchmark::State& state) {
  const CFGGeneralSettings settings;
  const CString key = u"CA2T_Tol_XY";
  for ([[maybe_unused]] auto _ : state) {
    CFGCol column;
    settings.Class.FindCol(key, column);
    benchmark::DoNotOptimize(kpx::detail::textAsDouble(column.Value.Value));
    benchmark::ClobberMemory();
  }
}
void getIntegerKpx(benchmark::State& state) {
  const CFGGeneralSettings settings;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(settings.getCA2THG());
    benchmark::ClobberMemory();
  }
}
void findKpx(benchmark::State& state) {
  const CFGGeneralSettings settings;
  constexpr kpx::KeyLiteral key(u"CA2T_Tol_XY");
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(settings.Class.find(key));
    benchmark::ClobberMemory();
  }
}
void findMap(benchmark::State& state) {
  const CFGGeneralSettings settings;
  std::unordered_map<std::u16string, CFGCol> columns;
  for (const auto& entry : settings.Class.Cols) columns.emplace(entry.key.view(), entry.value);
  const std::u16string key = u"CA2T_Tol_XY";
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(columns.find(key));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(getRealKpx)->Name("settings/get_real/kpx");
BENCHMARK(getRealCopied)->Name("settings/get_real/copied_column");
BENCHMARK(getIntegerKpx)->Name("settings/get_integer/kpx");
BENCHMARK(findKpx)->Name("settings/find/kpx");
BENCHMARK(findMap)->Name("settings/find/unordered_map");

void setRealKpx(benchmark::State& state) {
  CFGGeneralSettings settings;
  double value = 0.0;
  for ([[maybe_unused]] auto _ : state) {
    value += 0.001;
    benchmark::DoNotOptimize(settings.setCA2TTolXY(value));
    benchmark::ClobberMemory();
  }
}
void setRealCopied(benchmark::State& state) {
  CFGGeneralSettings settings;
  const CString key = u"CA2T_Tol_XY";
  double value = 0.0;
  for ([[maybe_unused]] auto _ : state) {
    value += 0.001;
    CFGCol column;
    settings.Class.FindCol(key, column);
    column.Value.Value = kpx::utlDoubleAsText(value, 3, u'.');
    settings.Class.ColAt(key) = column;
    benchmark::ClobberMemory();
  }
}
BENCHMARK(setRealKpx)->Name("settings/set_real/kpx");
BENCHMARK(setRealCopied)->Name("settings/set_real/copied_column");

// --- texts by number
// --------------------------------------------------------------------------------

constexpr int textIds[] = {1581, 2094, 1583, 1821, 1579, 163, 170, 1584, 2093, 1585, 1580, 1185};

void textKpx(benchmark::State& state) {
  kpx::addBuiltInTexts();
  for ([[maybe_unused]] auto _ : state) {
    for (const int id : textIds) benchmark::DoNotOptimize(kpx::GetMLT(id));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int>(std::size(textIds)));
}
void textMap(benchmark::State& state) {
  // As many as a full table has.
  std::unordered_map<int, std::u16string> texts;
  for (int id = 1; id <= 8300; ++id) texts.emplace(id, u"a text as long as those here");
  for ([[maybe_unused]] auto _ : state) {
    for (const int id : textIds) benchmark::DoNotOptimize(std::u16string(texts.find(id)->second));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int>(std::size(textIds)));
}
BENCHMARK(textKpx)->Name("settings/twelve_texts/kpx");
BENCHMARK(textMap)->Name("settings/twelve_texts/unordered_map");

// --- a whole configuration of 220 settings
// ------------------------------------------------------------

void constructKpx(benchmark::State& state) {
  kpx::addBuiltInTexts();
  for ([[maybe_unused]] auto _ : state) {
    const CFGGeneralSettings settings;
    benchmark::DoNotOptimize(&settings);
  }
}
void copyKpx(benchmark::State& state) {
  const CFGGeneralSettings settings;
  for ([[maybe_unused]] auto _ : state) {
    const CFGGeneralSettings copy(settings);
    benchmark::DoNotOptimize(&copy);
  }
}
BENCHMARK(constructKpx)->Name("settings/construct_220/kpx")->Unit(benchmark::kMicrosecond);
BENCHMARK(copyKpx)->Name("settings/copy_220/kpx")->Unit(benchmark::kMicrosecond);

void saveKpx(benchmark::State& state) {
  const CFGGeneralSettings settings;
  for ([[maybe_unused]] auto _ : state) {
    CMarkup document;
    settings.serializeXML(&document);
    benchmark::DoNotOptimize(document.GetDoc().GetLength());
  }
}

std::string fileText() {
  CMarkup document;
  CFGGeneralSettings().serializeXML(&document);
  return document.GetDoc().utf8();
}

void savePugixml(benchmark::State& state) {
  pugi::xml_document source;
  source.load_string(fileText().c_str());
  const bench::Element root = bench::elementOf(source.document_element());
  for ([[maybe_unused]] auto _ : state) {
    pugi::xml_document document;
    bench::append(document, root);
    bench::TextWriter writer;
    document.save(writer, "", pugi::format_raw);
    benchmark::DoNotOptimize(writer.text.data());
  }
}
BENCHMARK(saveKpx)->Name("settings/save_220/kpx")->Unit(benchmark::kMicrosecond);
BENCHMARK(savePugixml)->Name("settings/save_220/pugixml")->Unit(benchmark::kMicrosecond);

void loadKpx(benchmark::State& state) {
  const CString text = CString::fromUtf8(fileText());
  CFGGeneralSettings settings;
  for ([[maybe_unused]] auto _ : state) {
    CMarkup document;
    document.SetDoc(text);
    document.FindChildElem();
    if (settings.loadByXML(&document) != 1) state.SkipWithError("not read");
    benchmark::DoNotOptimize(settings.getCA2TTolXY());
  }
}
// Reads the same fields of each column into a record, by attribute names as kpx does.
void loadPugixml(benchmark::State& state) {
  struct Column {
    int integers[14];
    std::string name, caption, category, defaultText, value;
    std::string times[4];
  };
  const std::string text = fileText();
  std::unordered_map<std::string, Column> columns;
  for ([[maybe_unused]] auto _ : state) {
    pugi::xml_document document;
    document.load_string(text.c_str());
    const auto object = document.document_element().child("CFGClass");
    for (const auto& node : object.children("CFGCol")) {
      const auto value = node.child("CFGValue");
      Column& column = columns[node.attribute("Name").value()];
      int at = 0;
      for (const auto& each : {node, value}) {
        for (const char* const name : {"ObjectID", "UserChangedID", "UserCreatedID", "TransID"}) {
          column.integers[at++] = each.attribute(name).as_int();
        }
      }
      for (const char* const name : {"ClassID", "Type", "Length", "Prec", "Nullable", "Unit"}) {
        column.integers[at++] = node.attribute(name).as_int();
      }
      column.name = node.attribute("Name").value();
      column.caption = node.attribute("Caption").value();
      column.category = node.attribute("Category").value();
      column.defaultText = node.attribute("Default").value();
      column.value = value.attribute("Value").value();
      column.times[0] = node.attribute("changed").value();
      column.times[1] = node.attribute("created").value();
      column.times[2] = value.attribute("changed").value();
      column.times[3] = value.attribute("created").value();
    }
    benchmark::DoNotOptimize(columns.size());
  }
}
BENCHMARK(loadKpx)->Name("settings/load_220/kpx")->Unit(benchmark::kMicrosecond);
BENCHMARK(loadPugixml)->Name("settings/load_220/pugixml")->Unit(benchmark::kMicrosecond);

}  // namespace
