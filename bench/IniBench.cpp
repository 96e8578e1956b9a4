// INI files: reading 2 MB, and looking a value up among 60,000. The peer is GLib's key file with
// the same bytes, told to keep comments, since that is what saving needs.

#include <benchmark/benchmark.h>
#include <glib.h>

#include <string>

#include "kpx/support/ini/CIniEx.h"

namespace {

using kpx::CIniEx;
using kpx::CString;

constexpr int sections = 120;
constexpr int keysInSection = 500;

const std::string& fileText() {
  static const std::string text = [] {
    std::string made;
    for (int section = 0; section < sections; ++section) {
      made += "[Module " + std::to_string(section) + "]\n";
      for (int key = 0; key < keysInSection; ++key) {
        made += "TolerancePoint" + std::to_string(key) + "=" + std::to_string(key * section) +
                ".125 m; D:/data\n";
      }
    }
    return made;
  }();
  return text;
}

struct KeyFile {
  GKeyFile* file = g_key_file_new();
  ~KeyFile() { g_key_file_free(file); }

  bool load() {
    return g_key_file_load_from_data(file, fileText().data(), fileText().size(),
                                     G_KEY_FILE_KEEP_COMMENTS, nullptr) != 0;
  }
};

void readKpx(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    CIniEx ini;
    if (ini.readBytes(fileText()) == 0) state.SkipWithError("not read");
    benchmark::DoNotOptimize(&ini);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<long>(fileText().size()));
}
void readGlib(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    KeyFile keys;
    if (!keys.load()) state.SkipWithError("not read");
    benchmark::DoNotOptimize(keys.file);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<long>(fileText().size()));
}
BENCHMARK(readKpx)->Name("ini/read_2mb/kpx")->Unit(benchmark::kMillisecond);
BENCHMARK(readGlib)->Name("ini/read_2mb/glib")->Unit(benchmark::kMillisecond);

void getKpx(benchmark::State& state) {
  CIniEx ini;
  ini.readBytes(fileText());
  const CString section = u"Module 77";
  const CString key = u"TolerancePoint321";
  CString value;
  for ([[maybe_unused]] auto _ : state) {
    if (ini.GetKeyData(section, key, value) == 0) state.SkipWithError("not found");
    benchmark::DoNotOptimize(value.GetString());
    benchmark::ClobberMemory();
  }
}
void getGlib(benchmark::State& state) {
  KeyFile keys;
  keys.load();
  for ([[maybe_unused]] auto _ : state) {
    char* const value = g_key_file_get_value(keys.file, "Module 77", "TolerancePoint321", nullptr);
    if (value == nullptr) state.SkipWithError("not found");
    benchmark::DoNotOptimize(value);
    g_free(value);
  }
}
BENCHMARK(getKpx)->Name("ini/get/kpx");
BENCHMARK(getGlib)->Name("ini/get/glib");

void saveKpx(benchmark::State& state) {
  CIniEx ini;
  ini.readBytes(fileText());
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(ini.fileBytes().data());
  state.SetBytesProcessed(state.iterations() * static_cast<long>(fileText().size()));
}
void saveGlib(benchmark::State& state) {
  KeyFile keys;
  keys.load();
  for ([[maybe_unused]] auto _ : state) {
    char* const text = g_key_file_to_data(keys.file, nullptr, nullptr);
    benchmark::DoNotOptimize(text);
    g_free(text);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<long>(fileText().size()));
}
BENCHMARK(saveKpx)->Name("ini/file_bytes_2mb/kpx")->Unit(benchmark::kMillisecond);
BENCHMARK(saveGlib)->Name("ini/file_bytes_2mb/glib")->Unit(benchmark::kMillisecond);

}  // namespace
