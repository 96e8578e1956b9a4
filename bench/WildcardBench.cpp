// Wildcards in a text that is made to defeat them: 200,000 times the letter that the piece between
// two stars begins with. The peer compares the piece at each offset.
#include <benchmark/benchmark.h>

#include <string>
#include <string_view>

#include "kpx/text/TextTools.h"

namespace {

const std::u16string text(200'000, u'a');

/// A piece of this length that is nowhere in the text, and has a "?" where only its end differs.
std::u16string piece(const benchmark::State& state) {
  return std::u16string(static_cast<std::size_t>(state.range(0)) - 2, u'a') + u"?b";
}

void matchKpx(benchmark::State& state) {
  const kpx::CString pattern(u'*' + piece(state) + u'*');
  const kpx::CString whole(text);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(kpx::kpxMatchWildcardString(whole, pattern));
  }
}

bool isAnywhere(std::u16string_view wanted) {
  for (std::size_t at = 0; at + wanted.size() <= text.size(); ++at) {
    std::size_t i = 0;
    while (i < wanted.size() && (wanted[i] == u'?' || wanted[i] == text[at + i])) ++i;
    if (i == wanted.size()) return true;
  }
  return false;
}
void matchEachOffset(benchmark::State& state) {
  const std::u16string wanted = piece(state);
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(isAnywhere(wanted));
}
BENCHMARK(matchKpx)
    ->Name("text/wildcard_in_200000_units/kpx")
    ->Arg(10)
    ->Arg(64)
    ->Arg(6400)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(matchEachOffset)
    ->Name("text/wildcard_in_200000_units/each_offset")
    ->Arg(10)
    ->Arg(64)
    ->Arg(6400)
    ->Unit(benchmark::kMillisecond);

}  // namespace
