// Point objects of the exchange format NAS: looking up object kinds, writing and reading points.
// The peers are the standard map and pugixml with the same elements and attributes.

#include <benchmark/benchmark.h>

#include <pugixml.hpp>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "bench/PugixmlCopy.h"
#include "kpx/domain/CNAS_Punktobjekt.h"
#include "kpx/xml/CMarkup.h"

namespace {

using kpx::CMarkup;
using kpx::CNAS_Punktobjekt;
using kpx::CString;

// --- object kinds -----------------------------------------------------------------------------

// Every known name, and for each one that is not known.
std::vector<CString> wantedNames() {
  std::vector<CString> names;
  for (const kpx::NasObjectKind& kind : kpx::nasObjectKinds()) {
    names.emplace_back(kind.name);
    names.push_back(CString(kind.name) + u'x');
  }
  return names;
}

void codeKpx(benchmark::State& state) {
  const std::vector<CString> names = wantedNames();
  for ([[maybe_unused]] auto _ : state) {
    for (const CString& name : names) benchmark::DoNotOptimize(kpx::GetNASObjektart(name));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(names.size()));
}
void codeMap(benchmark::State& state) {
  const std::vector<CString> names = wantedNames();
  std::unordered_map<std::u16string_view, std::int32_t> codes;
  for (const kpx::NasObjectKind& kind : kpx::nasObjectKinds()) codes.emplace(kind.name, kind.code);
  for ([[maybe_unused]] auto _ : state) {
    for (const CString& name : names) {
      const auto found = codes.find(name.view());
      benchmark::DoNotOptimize(found != codes.end() ? found->second : 0);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(names.size()));
}
void nameKpx(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    for (std::int32_t code = 11000; code < 11182; ++code) {
      benchmark::DoNotOptimize(kpx::nasObjectKindName(code).size());
    }
  }
}
void nameMap(benchmark::State& state) {
  std::unordered_map<std::int32_t, std::u16string_view> names;
  for (const kpx::NasObjectKind& kind : kpx::nasObjectKinds()) names.emplace(kind.code, kind.name);
  for ([[maybe_unused]] auto _ : state) {
    for (std::int32_t code = 11000; code < 11182; ++code) {
      const auto found = names.find(code);
      benchmark::DoNotOptimize(found != names.end() ? found->second.size() : 0);
    }
  }
}
BENCHMARK(codeKpx)->Name("nas/code_of_182_names/kpx");
BENCHMARK(codeMap)->Name("nas/code_of_182_names/unordered_map");
BENCHMARK(nameKpx)->Name("nas/name_of_182_codes/kpx");
BENCHMARK(nameMap)->Name("nas/name_of_182_codes/unordered_map");

// --- points -------------------------------------------------------------------------------------

constexpr int pointCount = 10000;

CNAS_Punktobjekt pointOf(int number) {
  CNAS_Punktobjekt point;
  point.ObjArt = 11003;
  point.OID.Format(u"DEXX0123000%05d", number);
  point.Punktkennung.Format(u"32473569202%05d", number);
  point.Abmarkung = u"1110";
  point.ZSTLand = u"05";
  point.ZSTStelle = u"0123";
  point.Festgestellt = u"true";
  point.ZeigtAuf = u"urn:adv:oid:DEXX012300012345";
  point.LebenBeginnt = u"2021-03-05T08:33:34Z";
  point.Anlass = u"300500";
  point.sonstigeEigenschaftenAdd(u"iG");
  point.sonstigeEigenschaftenAdd(u"Gebäude & Mauer");
  point.Sicherungspunkte = {u"32473569205001"};
  point.ZeigtAufExternes = {{u"", u"http://example.org/art", u"", u"Risse 17/2", u""}};
  return point;
}

std::vector<CNAS_Punktobjekt> points() {
  std::vector<CNAS_Punktobjekt> all;
  for (int number = 0; number < pointCount; ++number) all.push_back(pointOf(number));
  return all;
}

CMarkup documentOf(const std::vector<CNAS_Punktobjekt>& all) {
  CMarkup document;
  document.AddElem(u"Points");
  for (const CNAS_Punktobjekt& point : all) point.serializeXML(&document);
  return document;
}

// Down to the text, which is what kpx holds then.
void saveKpx(benchmark::State& state) {
  const std::vector<CNAS_Punktobjekt> all = points();
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(documentOf(all).GetDoc().GetLength());
  }
}
void savePugixml(benchmark::State& state) {
  pugi::xml_document source;
  source.load_string(documentOf(points()).GetDoc().utf8().c_str());
  const bench::Element root = bench::elementOf(source.document_element());
  for ([[maybe_unused]] auto _ : state) {
    pugi::xml_document document;
    bench::append(document, root);
    bench::TextWriter writer;
    document.save(writer, "", pugi::format_raw);
    benchmark::DoNotOptimize(writer.text.data());
  }
}
BENCHMARK(saveKpx)->Name("nas/save_10000_points/kpx")->Unit(benchmark::kMillisecond);
BENCHMARK(savePugixml)->Name("nas/save_10000_points/pugixml")->Unit(benchmark::kMillisecond);

void loadKpx(benchmark::State& state) {
  const CString text = documentOf(points()).GetDoc();
  for ([[maybe_unused]] auto _ : state) {
    CMarkup document;
    document.SetDoc(text);
    document.FindElem();
    std::vector<CNAS_Punktobjekt> read;
    while (document.FindChildElem(u"CNAS_Punktobjekt")) {
      read.emplace_back();
      if (read.back().loadByXML(&document) != 1) state.SkipWithError("not read");
    }
    if (read.size() != pointCount) state.SkipWithError("not all read");
  }
}
// Reads the same fields by name into a record.
void loadPugixml(benchmark::State& state) {
  static constexpr const char* names[] = {"OID",
                                          "Punktkennung",
                                          "Abmarkung",
                                          "ZSTLand",
                                          "ZSTStelle",
                                          "BemerkungZurAbmarkung",
                                          "RelHoehe",
                                          "BesonderePunktnummer",
                                          "AusgAbmarkung",
                                          "Festgestellt",
                                          "GruendeAussetzung",
                                          "HorzFreiheit",
                                          "ZeitpunktDerEntstehung",
                                          "ZeigtAuf",
                                          "GehoertZu",
                                          "BeziehtSichAuf",
                                          "Hat",
                                          "Art",
                                          "Veraenderungsnummer",
                                          "Schriftinhalt",
                                          "LebenBeginnt",
                                          "Anlass",
                                          "IsIndirektAbgemarkt"};
  struct Point {
    int kind = 0;
    int header[5] = {};
    std::string times[2];
    std::string texts[std::size(names)];
    std::vector<std::string> properties;
    std::vector<std::string> protectionPoints;
    std::vector<std::vector<std::string>> references;
  };
  const std::string text = documentOf(points()).GetDoc().utf8();
  for ([[maybe_unused]] auto _ : state) {
    pugi::xml_document document;
    document.load_string(text.c_str());
    std::vector<Point> read;
    for (const auto& node : document.document_element().children("CNAS_Punktobjekt")) {
      Point& point = read.emplace_back();
      int at = 0;
      for (const char* const name :
           {"ObjectID", "UserChangedID", "UserCreatedID", "TransID", "Lock"}) {
        point.header[at++] = node.attribute(name).as_int();
      }
      point.times[0] = node.attribute("changed").value();
      point.times[1] = node.attribute("created").value();
      point.kind = node.attribute("ObjArt").as_int();
      for (std::size_t i = 0; i < std::size(names); ++i) {
        point.texts[i] = node.attribute(names[i]).value();
      }
      for (const auto& child : node.children("SonstigeEigenschaft")) {
        point.properties.emplace_back(child.child_value());
      }
      for (const auto& child : node.children("Sicherungspunkt")) {
        point.protectionPoints.emplace_back(child.child_value());
      }
      for (const auto& child : node.children("ZeigtAufExternes")) {
        auto& reference = point.references.emplace_back();
        for (const char* const name : {"Art", "Typ", "Fachdaten", "FachdatenUrl"}) {
          reference.emplace_back(child.attribute(name).value());
        }
      }
    }
    if (read.size() != pointCount) state.SkipWithError("not all read");
  }
}
// --- properties
// -----------------------------------------------------------------------------------

std::vector<CString> manyProperties(const benchmark::State& state) {
  std::vector<CString> properties;
  for (int i = 0; i < state.range(0); ++i) {
    properties.emplace_back().Format(u" Eigenschaft Nummer %d ", i);
  }
  return properties;
}

void addPropertiesKpx(benchmark::State& state) {
  const std::vector<CString> properties = manyProperties(state);
  for ([[maybe_unused]] auto _ : state) {
    CNAS_Punktobjekt point;
    for (const CString& property : properties) point.sonstigeEigenschaftenAdd(property);
    if (point.sonstigeEigenschaftenGetSize() != state.range(0)) state.SkipWithError("not all");
  }
}
void addPropertiesSet(benchmark::State& state) {
  const std::vector<CString> properties = manyProperties(state);
  for ([[maybe_unused]] auto _ : state) {
    std::vector<CString> list;
    std::unordered_set<std::u16string> known;
    for (const CString& property : properties) {
      CString trimmed = property;
      trimmed.Trim();
      CString folded = trimmed;
      if (known.insert(folded.MakeLower().units()).second) list.push_back(std::move(trimmed));
    }
    benchmark::DoNotOptimize(list.size());
  }
}
BENCHMARK(addPropertiesKpx)->Name("nas/add_properties/kpx")->Arg(10)->Arg(1000)->Arg(40'000);
BENCHMARK(addPropertiesSet)
    ->Name("nas/add_properties/unordered_set")
    ->Arg(10)
    ->Arg(1000)
    ->Arg(40'000);

BENCHMARK(loadKpx)->Name("nas/load_10000_points/kpx")->Unit(benchmark::kMillisecond);
BENCHMARK(loadPugixml)->Name("nas/load_10000_points/pugixml")->Unit(benchmark::kMillisecond);

}  // namespace
