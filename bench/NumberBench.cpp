// Numbers to texts and back, each beside what a C runtime needs for the same text when the user's
// locale must not show: a "C" locale made and freed in every call.

#include <benchmark/benchmark.h>
#include <locale.h>

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "kpx/text/NumberText.h"
#include "kpx/text/PrintScan.h"

namespace {

constexpr std::size_t valueCount = 1024;  // a power of two

/// Coordinates and heights in metres with millimetres, tolerances, and angles with more digits.
std::vector<double> surveyedValues() {
  std::mt19937_64 random(4711);
  std::vector<double> values;
  for (std::size_t i = 0; i < valueCount; ++i) {
    const auto bits = static_cast<std::int64_t>(random() >> 12);
    switch (i % 4) {
      case 0:
        values.push_back(static_cast<double>(bits % 6'000'000'000) / 1000);
        break;
      case 1:
        values.push_back(static_cast<double>(bits % 2'000'000 - 1'000'000) / 1000);
        break;
      case 2:
        values.push_back(static_cast<double>(bits % 1000) / 1000);
        break;
      default:
        values.push_back(static_cast<double>(bits % 4'000'000'000'000) / 1e10);
        break;
    }
  }
  return values;
}

/// Results of computations: all bits of the mantissa are used.
std::vector<double> computedValues() {
  std::mt19937_64 random(4712);
  std::uniform_real_distribution<double> spread(-1e6, 1e6);
  std::vector<double> values;
  for (std::size_t i = 0; i < valueCount; ++i) values.push_back(spread(random));
  return values;
}

template <class Write>
void writeAll(benchmark::State& state, const std::vector<double>& values, Write write) {
  std::size_t i = 0;
  for (auto _ : state) write(values[i++ & (valueCount - 1)]);
}

#ifdef LC_ALL_MASK

/// The "C" locale for the time of one call.
class CLocale {
 public:
  CLocale() : locale_(newlocale(LC_ALL_MASK, "C", nullptr)), previous_(uselocale(locale_)) {}
  ~CLocale() {
    uselocale(previous_);
    freelocale(locale_);
  }
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;

 private:
  locale_t locale_;
  locale_t previous_;
};

void printInCLocale(double value, bool allDigits) {
  char text[64];
  {
    const CLocale locale;
    if (allDigits) {
      std::snprintf(text, sizeof text, "%.15g", value);
    } else {
      std::snprintf(text, sizeof text, "%.3f", value);
    }
  }
  benchmark::DoNotOptimize(text);
}

#endif

void printToChars(double value, std::chars_format format, int precision) {
  char text[64];
  benchmark::DoNotOptimize(std::to_chars(text, text + sizeof text, value, format, precision));
  benchmark::DoNotOptimize(text);
}

// --- three decimals, the form of tolerances and coordinates -----------------------------------

void WriteReal3Kpx(benchmark::State& state) {
  writeAll(state, surveyedValues(),
           [](double value) { benchmark::DoNotOptimize(kpx::utlDoubleAsText(value, 3, u'.')); });
}
BENCHMARK(WriteReal3Kpx)->Name("numbers/write_3_decimals/kpx");

void WriteReal3KpxInPlace(benchmark::State& state) {
  kpx::CString text;
  writeAll(state, surveyedValues(), [&](double value) {
    kpx::detail::doubleAsTextInto(text, value, 3, u'.');
    benchmark::DoNotOptimize(text.GetString());
  });
}
BENCHMARK(WriteReal3KpxInPlace)->Name("numbers/write_3_decimals/kpx_in_place");

#ifdef LC_ALL_MASK
void WriteReal3CLocale(benchmark::State& state) {
  writeAll(state, surveyedValues(), [](double value) { printInCLocale(value, false); });
}
BENCHMARK(WriteReal3CLocale)->Name("numbers/write_3_decimals/snprintf_C_locale");
#endif

void WriteReal3ToChars(benchmark::State& state) {
  writeAll(state, surveyedValues(),
           [](double value) { printToChars(value, std::chars_format::fixed, 3); });
}
BENCHMARK(WriteReal3ToChars)->Name("numbers/write_3_decimals/to_chars_narrow");

// --- all digits ---------------------------------------------------------------------------------

void WriteRealAllKpx(benchmark::State& state, const std::vector<double>& values) {
  writeAll(state, values, [](double value) {
    benchmark::DoNotOptimize(kpx::utlDoubleAsText(value, kpx::allDigits, u'.'));
  });
}
void WriteRealAllToChars(benchmark::State& state, const std::vector<double>& values) {
  writeAll(state, values,
           [](double value) { printToChars(value, std::chars_format::general, 15); });
}
BENCHMARK_CAPTURE(WriteRealAllKpx, surveyed, surveyedValues())
    ->Name("numbers/write_all_digits_surveyed/kpx");
#ifdef LC_ALL_MASK
void WriteRealAllCLocale(benchmark::State& state, const std::vector<double>& values) {
  writeAll(state, values, [](double value) { printInCLocale(value, true); });
}
BENCHMARK_CAPTURE(WriteRealAllCLocale, surveyed, surveyedValues())
    ->Name("numbers/write_all_digits_surveyed/snprintf_C_locale");
#endif
BENCHMARK_CAPTURE(WriteRealAllToChars, surveyed, surveyedValues())
    ->Name("numbers/write_all_digits_surveyed/to_chars_narrow");
BENCHMARK_CAPTURE(WriteRealAllKpx, computed, computedValues())
    ->Name("numbers/write_all_digits_computed/kpx");
#ifdef LC_ALL_MASK
BENCHMARK_CAPTURE(WriteRealAllCLocale, computed, computedValues())
    ->Name("numbers/write_all_digits_computed/snprintf_C_locale");
#endif
BENCHMARK_CAPTURE(WriteRealAllToChars, computed, computedValues())
    ->Name("numbers/write_all_digits_computed/to_chars_narrow");

// --- reading ------------------------------------------------------------------------------------

std::vector<std::string> printed(const std::vector<double>& values, const char* format) {
  std::vector<std::string> texts;
  for (const double value : values) {
    char text[64];
    kpx::kpxsprintf(text, format, value);
    texts.emplace_back(text);
  }
  return texts;
}

void ReadRealKpx(benchmark::State& state, const std::vector<std::string>& texts) {
  std::vector<kpx::CString> wide;
  for (const std::string& text : texts) wide.push_back(kpx::CString::fromUtf8(text));
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(kpx::utlTextAsDouble(wide[i++ & (valueCount - 1)]));
  }
}
void ReadRealStrtod(benchmark::State& state, const std::vector<std::string>& texts) {
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::strtod(texts[i++ & (valueCount - 1)].c_str(), nullptr));
  }
}
#ifdef LC_ALL_MASK
void ReadRealCLocale(benchmark::State& state, const std::vector<std::string>& texts) {
  std::size_t i = 0;
  for (auto _ : state) {
    double value = 0;
    const CLocale locale;
    std::sscanf(texts[i++ & (valueCount - 1)].c_str(), "%lf", &value);
    benchmark::DoNotOptimize(value);
  }
}
#endif

#define KPX_READ_BENCHMARKS(name, texts)                                                \
  BENCHMARK_CAPTURE(ReadRealKpx, name, texts)->Name("numbers/read_real_" #name "/kpx"); \
  BENCHMARK_CAPTURE(ReadRealStrtod, name, texts)->Name("numbers/read_real_" #name "/strtod")
KPX_READ_BENCHMARKS(decimals3, printed(surveyedValues(), "%.3f"));
#ifdef LC_ALL_MASK
BENCHMARK_CAPTURE(ReadRealCLocale, decimals3, printed(surveyedValues(), "%.3f"))
    ->Name("numbers/read_real_decimals3/sscanf_C_locale");
#endif
KPX_READ_BENCHMARKS(digits15, printed(computedValues(), "%.15g"));
#ifdef LC_ALL_MASK
BENCHMARK_CAPTURE(ReadRealCLocale, digits15, printed(computedValues(), "%.15g"))
    ->Name("numbers/read_real_digits15/sscanf_C_locale");
#endif
KPX_READ_BENCHMARKS(digits17, printed(computedValues(), "%.17g"));
#ifdef LC_ALL_MASK
BENCHMARK_CAPTURE(ReadRealCLocale, digits17, printed(computedValues(), "%.17g"))
    ->Name("numbers/read_real_digits17/sscanf_C_locale");
#endif

// --- integers and formats -----------------------------------------------------------------------

void WriteLongKpx(benchmark::State& state) {
  std::int32_t value = 0;
  for (auto _ : state) benchmark::DoNotOptimize(kpx::utlLongAsText(value += 7919));
}
BENCHMARK(WriteLongKpx)->Name("numbers/write_integer/kpx");

void WriteLongSnprintf(benchmark::State& state) {
  std::int32_t value = 0;
  for (auto _ : state) {
    char text[16];
    std::snprintf(text, sizeof text, "%d", value += 7919);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(WriteLongSnprintf)->Name("numbers/write_integer/snprintf");

void ReadLongKpx(benchmark::State& state) {
  const kpx::CString text(u"1234567");
  for (auto _ : state) benchmark::DoNotOptimize(kpx::utlTextAsLong(text));
}
BENCHMARK(ReadLongKpx)->Name("numbers/read_integer/kpx");

void ReadLongStrtol(benchmark::State& state) {
  const char* text = "1234567";
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(std::strtol(text, nullptr, 10));
  }
}
BENCHMARK(ReadLongStrtol)->Name("numbers/read_integer/strtol");

void FormatLineKpx(benchmark::State& state) {
  kpx::CString line;
  for (auto _ : state) {
    line.Format(u"%-12s %5d %12.3f\n", u"Punkt", 4711, 123456.789);
    benchmark::DoNotOptimize(line.GetString());
  }
}
BENCHMARK(FormatLineKpx)->Name("numbers/format_line/kpx");

void FormatLineSnprintf(benchmark::State& state) {
  for (auto _ : state) {
    char line[64];
    std::snprintf(line, sizeof line, "%-12s %5d %12.3f\n", "Punkt", 4711, 123456.789);
    benchmark::DoNotOptimize(line);
  }
}
BENCHMARK(FormatLineSnprintf)->Name("numbers/format_line/snprintf");

}  // namespace
