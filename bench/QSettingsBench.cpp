// Typed settings beside the same settings in Qt's QSettings (an INI file, in memory after it was
// loaded). The peer keeps numbers as numbers until it writes; kpx stores the text that the file
// will have, and with each setting its type, caption, group and record header.

#include <benchmark/benchmark.h>

#include <memory>
#include <QFile>
#include <QSettings>
#include <QString>
#include <QTemporaryDir>
#include <QVariant>
#include <vector>

#include "kpx/settings/Catalogue.h"
#include "kpx/settings/CFGProjectSettings.h"
#include "kpx/support/texts/TextStore.h"
#include "kpx/xml/CMarkup.h"

namespace {

using kpx::CFGProjectSettings;

QString qtText(std::u16string_view text) {
  return QString::fromUtf16(text.data(), static_cast<int>(text.size()));
}

/// A setting for the peer: its key below its class, and its value with its type.
struct Pair {
  QString key;
  QVariant value;
};

std::vector<Pair> pairsOf(const kpx::SettingsClass& settingsClass) {
  std::vector<Pair> pairs;
  const std::unique_ptr<kpx::CFGConfig> object = settingsClass.create();
  for (const kpx::SettingAccess& access : settingsClass.settings) {
    const kpx::CFGCol* const column = object->Class.find(access.key());
    if (!column) continue;
    const QString text = qtText(column->Value.Value.view());
    QVariant value = text;
    if (access.setting->kind == kpx::ValueKind::real) {
      value = text.toDouble();
    } else if (access.setting->kind != kpx::ValueKind::text) {
      value = text.toInt();
    }
    pairs.push_back({qtText(settingsClass.name) + '/' + qtText(access.key()), value});
  }
  return pairs;
}

std::vector<Pair> projectPairs() { return pairsOf(*kpx::findSettingsClass(u"CFGProjectSettings")); }

/// The project settings as an INI file that the peer has loaded.
class QtProject {
 public:
  QtProject() {
    QSettings first(path(), QSettings::IniFormat);
    for (const Pair& pair : projectPairs()) first.setValue(pair.key, pair.value);
    first.sync();
    settings = std::make_unique<QSettings>(path(), QSettings::IniFormat);
  }
  QString path() const { return folder_.filePath("project.ini"); }

 private:
  QTemporaryDir folder_;

 public:
  std::unique_ptr<QSettings> settings;
};

// --- one setting ----------------------------------------------------------------------------

void getKpx(benchmark::State& state) {
  const CFGProjectSettings settings;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(settings.getScale());
    benchmark::ClobberMemory();
  }
}
void getQt(benchmark::State& state) {
  const QtProject project;
  const QString key = "CFGProjectSettings/Scale";
  if (!project.settings->contains(key)) state.SkipWithError("no such setting");
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(project.settings->value(key).toDouble());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(getKpx)->Name("settings/project_get_real/kpx");
BENCHMARK(getQt)->Name("settings/project_get_real/QSettings");

void setKpx(benchmark::State& state) {
  CFGProjectSettings settings;
  double value = 0.0;
  for ([[maybe_unused]] auto _ : state) {
    value += 0.5;
    benchmark::DoNotOptimize(settings.setScale(value));
    benchmark::ClobberMemory();
  }
}
void setQt(benchmark::State& state) {
  const QtProject project;
  const QString key = "CFGProjectSettings/Scale";
  double value = 0.0;
  for ([[maybe_unused]] auto _ : state) {
    value += 0.5;
    project.settings->setValue(key, value);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(setKpx)->Name("settings/project_set_real/kpx");
BENCHMARK(setQt)->Name("settings/project_set_real/QSettings");

// --- whole objects --------------------------------------------------------------------------

void constructKpx(benchmark::State& state) {
  kpx::addBuiltInTexts();
  for ([[maybe_unused]] auto _ : state) {
    for (const kpx::SettingsClass* const each : kpx::settingsClasses()) {
      benchmark::DoNotOptimize(each->make());
    }
  }
}
void constructQt(benchmark::State& state) {
  std::vector<Pair> pairs;
  for (const kpx::SettingsClass* const each : kpx::settingsClasses()) {
    if (!each->isConfiguration()) continue;
    for (Pair& pair : pairsOf(*each)) pairs.push_back(std::move(pair));
  }
  const QTemporaryDir folder;
  for ([[maybe_unused]] auto _ : state) {
    auto settings = std::make_unique<QSettings>(folder.filePath("all.ini"), QSettings::IniFormat);
    for (const Pair& pair : pairs) settings->setValue(pair.key, pair.value);
    state.PauseTiming();
    settings->clear();
    settings.reset();  // writes the file
    state.ResumeTiming();
  }
}
BENCHMARK(constructKpx)->Name("settings/construct_all_classes/kpx")->Unit(benchmark::kMicrosecond);
BENCHMARK(constructQt)
    ->Name("settings/construct_all_classes/QSettings")
    ->Unit(benchmark::kMicrosecond);

void saveKpx(benchmark::State& state) {
  const QTemporaryDir folder;
  const kpx::CString path(folder.filePath("project.xml").toStdU16String());
  const CFGProjectSettings settings;
  for ([[maybe_unused]] auto _ : state) {
    kpx::CMarkup document;
    settings.serializeXML(&document);
    if (!document.Save(path)) state.SkipWithError("not saved");
  }
}
void saveQt(benchmark::State& state) {
  const QTemporaryDir folder;
  QSettings settings(folder.filePath("project.ini"), QSettings::IniFormat);
  const std::vector<Pair> pairs = projectPairs();
  for ([[maybe_unused]] auto _ : state) {
    settings.clear();
    for (const Pair& pair : pairs) settings.setValue(pair.key, pair.value);
    settings.sync();
    if (settings.status() != QSettings::NoError) state.SkipWithError("not saved");
  }
}
BENCHMARK(saveKpx)->Name("settings/project_save_file/kpx")->Unit(benchmark::kMicrosecond);
BENCHMARK(saveQt)->Name("settings/project_save_file/QSettings")->Unit(benchmark::kMicrosecond);

void loadKpx(benchmark::State& state) {
  const QTemporaryDir folder;
  const kpx::CString path(folder.filePath("project.xml").toStdU16String());
  kpx::CMarkup saved;
  CFGProjectSettings settings;
  settings.serializeXML(&saved);
  saved.Save(path);
  for ([[maybe_unused]] auto _ : state) {
    kpx::CMarkup document;
    document.Load(path);
    document.FindChildElem();
    if (settings.loadByXML(&document) != 1) state.SkipWithError("not read");
    benchmark::DoNotOptimize(settings.getScale());
  }
}
// The peer keeps the file in a cache of the process: another process wrote it meanwhile is what a
// changed time stamp tells it, so each turn loads a file that it has not seen.
void loadQt(benchmark::State& state) {
  const QtProject project;
  const QTemporaryDir folder;
  int number = 0;
  for ([[maybe_unused]] auto _ : state) {
    state.PauseTiming();
    const QString path = folder.filePath(QString::number(++number) + ".ini");
    QFile::copy(project.path(), path);
    state.ResumeTiming();
    const QSettings settings(path, QSettings::IniFormat);
    const double scale = settings.value("CFGProjectSettings/Scale").toDouble();
    benchmark::DoNotOptimize(scale);
    if (scale == 0.0) state.SkipWithError("not read");
    state.PauseTiming();
    QFile::remove(path);
    state.ResumeTiming();
  }
}
BENCHMARK(loadKpx)->Name("settings/project_load_file/kpx")->Unit(benchmark::kMicrosecond);
BENCHMARK(loadQt)->Name("settings/project_load_file/QSettings")->Unit(benchmark::kMicrosecond);

}  // namespace
