// The text store against std::unordered_map with the same texts: starting an application and
// looking a text up for a label. A built-in table of the suite's own size (8,337 assignments) and
// two language files with all of its texts.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "kpx/support/texts/internal/BuiltInTexts.h"
#include "kpx/support/texts/LanguageFile.h"
#include "kpx/support/texts/TextStore.h"

namespace kpx {
namespace {

using Map = std::unordered_map<std::int32_t, std::u16string>;

constexpr int assignments = 8337;

/// Texts as long as those of dialogs, the same in each run: many labels, few messages.
CString textOf(std::int32_t id, const char16_t* language, std::minstd_rand& random) {
  CString text(language);
  const unsigned words = random() % 10 == 0 ? 8 + random() % 20 : 1 + random() % 4;
  for (unsigned i = 0; i < words; ++i) text.AppendFormat(u" Maß%u", random() % 10000);
  text.AppendFormat(u" %d", id);
  return text;
}

struct Texts {
  std::u16string units;
  std::vector<detail::BuiltInText> table;
  std::vector<TextList> languages;
  std::vector<CString> files;
  std::filesystem::path folder;

  Texts() {
    std::minstd_rand random(1);
    std::vector<std::int32_t> ids;
    for (std::int32_t id = 1; id <= 8300; ++id) {
      if ((id < 4295 || id > 4394) && id % 101 != 0) ids.push_back(id);
    }
    for (std::int32_t id = 9301; id <= 9396; ++id) ids.push_back(id);
    std::vector<std::int32_t> inOrder(ids);
    while (inOrder.size() < assignments) inOrder.push_back(ids[inOrder.size() % 79 * 100]);
    for (const std::int32_t id : inOrder) {
      const CString text = textOf(id, u"Überprüfung", random);
      table.push_back({id, static_cast<std::uint32_t>(units.size()),
                       static_cast<std::uint32_t>(text.GetLength())});
      units += text.units();
    }
    folder = std::filesystem::temp_directory_path() / "kpx-texts-bench";
    std::filesystem::create_directories(folder);
    for (const char16_t* const language : {u"Check of", u"Kontrol af"}) {
      TextList& list = languages.emplace_back();
      for (const std::int32_t id : ids) list.entries.push_back({id, textOf(id, language, random)});
      const std::string bytes = languageFileBytes(list);
      const std::filesystem::path path = folder / (std::to_string(files.size()) + ".LNG");
      std::ofstream(path, std::ios::binary)
          .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
      files.emplace_back(path.u16string());
    }
  }
  ~Texts() { std::filesystem::remove_all(folder); }
  Texts(const Texts&) = delete;
  Texts& operator=(const Texts&) = delete;

  std::u16string_view of(const detail::BuiltInText& entry) const {
    return std::u16string_view(units).substr(entry.offset, entry.length);
  }
};

const Texts& texts() {
  static const Texts made;
  return made;
}

void fillStore() { detail::addTexts(texts().units.data(), texts().table); }

void fillMap(Map& map) {
  for (const detail::BuiltInText& entry : texts().table) map[entry.id] = texts().of(entry);
}

// --- start-up -------------------------------------------------------------------------------

void startGerman(benchmark::State& state) {
  texts();
  for ([[maybe_unused]] auto _ : state) {
    fillStore();
    state.PauseTiming();
    detail::clearTexts();
    state.ResumeTiming();
  }
  addBuiltInTexts();
}
void startGermanMap(benchmark::State& state) {
  texts();
  Map map;
  for ([[maybe_unused]] auto _ : state) {
    fillMap(map);
    state.PauseTiming();
    Map().swap(map);
    state.ResumeTiming();
  }
}
BENCHMARK(startGerman)->Name("texts/start_german/kpx");
BENCHMARK(startGermanMap)->Name("texts/start_german/unordered_map");

/// The files are read and taken apart, too; the map gets its texts from memory: once the 8,337
/// built-in ones only, once those of all three languages.
void startLanguages(benchmark::State& state) {
  texts();
  for ([[maybe_unused]] auto _ : state) {
    fillStore();
    for (const CString& file : texts().files) LoadMLTFile(file);
    state.PauseTiming();
    detail::clearTexts();
    state.ResumeTiming();
  }
  addBuiltInTexts();
}
void startLanguagesMap(benchmark::State& state) {
  texts();
  Map map;
  for ([[maybe_unused]] auto _ : state) {
    fillMap(map);
    for (const TextList& list : texts().languages) {
      for (const TextEntry& entry : list.entries) map[entry.id] = entry.text.view();
    }
    state.PauseTiming();
    Map().swap(map);
    state.ResumeTiming();
  }
}
BENCHMARK(startLanguages)->Name("texts/start_two_languages/kpx");
BENCHMARK(startGermanMap)->Name("texts/start_two_languages/unordered_map_of_8337");
BENCHMARK(startLanguagesMap)->Name("texts/start_two_languages/unordered_map_of_all");

// --- look-up --------------------------------------------------------------------------------

std::vector<std::int32_t> idsToLookUp() {
  std::vector<std::int32_t> ids;
  std::minstd_rand random(7);
  for (int i = 0; i < 4096; ++i) ids.push_back(static_cast<std::int32_t>(1 + random() % 9500));
  return ids;
}

/// Looks texts up with `find`; what it answers is a copy, or a view for those who only look.
template <class Find>
void lookUp(benchmark::State& state, Find find) {
  const std::vector<std::int32_t> ids = idsToLookUp();
  std::size_t i = 0;
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(find(ids[i++ % 4096]));
}
template <class Find>
void lookUpKpx(benchmark::State& state, Find find) {
  fillStore();
  lookUp(state, find);
  detail::clearTexts();
  addBuiltInTexts();
}
template <class Text>
void lookUpMap(benchmark::State& state) {
  Map map;
  fillMap(map);
  lookUp(state, [&](std::int32_t id) {
    const auto found = map.find(id);
    return found == map.end() ? Text() : Text(found->second);
  });
}
BENCHMARK_CAPTURE(lookUpKpx, kpx, GetMLT)->Name("texts/look_up/kpx");
BENCHMARK(lookUpMap<std::u16string>)->Name("texts/look_up/unordered_map");
BENCHMARK_CAPTURE(lookUpKpx, kpx, storedText)->Name("texts/look_up_view/kpx");
BENCHMARK(lookUpMap<std::u16string_view>)->Name("texts/look_up_view/unordered_map");

}  // namespace
}  // namespace kpx
