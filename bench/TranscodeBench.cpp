// UTF-8 to UTF-16 and back; bytes per second count the UTF-8 side. The counterpart is the loop
// over single characters that any program has at hand.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "kpx/text/Utf.h"

namespace {

constexpr std::size_t textLength = 1 << 20;

std::string repeated(std::string_view part) {
  std::string text;
  while (text.size() + part.size() <= textLength) text += part;
  return text;
}

std::string asciiText() { return repeated("<CFGValue Value=\"1234.567\" Type=\"3\"/>\n"); }
std::string germanText() {
  return repeated("Die Höhe des Festpunktes wurde über zwei Anschlüsse geprüft und stimmt.\n");
}
std::string cyrillicText() { return repeated("Высота опорного пункта проверена.\n"); }

std::u16string wideText(std::string_view bytes) {
  std::u16string text;
  kpx::appendUtf8(text, bytes);
  return text;
}

void countBytes(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

void ReadUtf8Kpx(benchmark::State& state, const std::string& bytes) {
  std::u16string text;
  for (auto _ : state) {
    text.clear();
    benchmark::DoNotOptimize(kpx::appendUtf8(text, bytes));
  }
  countBytes(state, bytes.size());
}
void ReadUtf8Single(benchmark::State& state, const std::string& bytes) {
  std::u16string text;
  for (auto _ : state) {
    text.clear();
    for (std::size_t i = 0; i < bytes.size();) {
      const auto lead = static_cast<unsigned char>(bytes[i]);
      const std::size_t more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
      char32_t code = more == 0 ? lead : lead & (0x3Fu >> more);
      for (std::size_t k = 1; k <= more; ++k) {
        code = (code << 6) | (static_cast<unsigned char>(bytes[i + k]) & 0x3Fu);
      }
      kpx::appendCodePoint(text, code);
      i += more + 1;
    }
    benchmark::DoNotOptimize(text.data());
  }
  countBytes(state, bytes.size());
}

void WriteUtf8Kpx(benchmark::State& state, const std::string& bytes) {
  const std::u16string text = wideText(bytes);
  std::string result;
  for (auto _ : state) {
    result.clear();
    kpx::appendUtf16(result, text);
    benchmark::DoNotOptimize(result.data());
  }
  countBytes(state, bytes.size());
}

#define KPX_TRANSCODE_BENCHMARKS(name, bytes)                                             \
  BENCHMARK_CAPTURE(ReadUtf8Kpx, name, bytes)->Name("encodings/read_utf8_" #name "/kpx"); \
  BENCHMARK_CAPTURE(ReadUtf8Single, name, bytes)                                          \
      ->Name("encodings/read_utf8_" #name "/single_characters");                          \
  BENCHMARK_CAPTURE(WriteUtf8Kpx, name, bytes)->Name("encodings/write_utf8_" #name "/kpx")
KPX_TRANSCODE_BENCHMARKS(ascii, asciiText());
KPX_TRANSCODE_BENCHMARKS(german, germanText());
KPX_TRANSCODE_BENCHMARKS(cyrillic, cyrillicText());

}  // namespace
