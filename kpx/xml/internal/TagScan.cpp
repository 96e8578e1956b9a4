#include "kpx/xml/internal/TagScan.h"

#include <iterator>

#if defined(KPX_TAG_SCAN_AVX2) && defined(_MSC_VER) && !defined(__clang__)
#include <immintrin.h>
#include <intrin.h>
#endif

namespace kpx::detail {
namespace {

#ifdef KPX_TAG_SCAN_AVX2
// AVX2 with what its scan is compiled for besides: BMI, BMI2 and carry-less multiplication.
bool runsAvx2() noexcept {
#if defined(_MSC_VER) && !defined(__clang__)
  int info[4];
  __cpuid(info, 1);
  constexpr int carryLess = 1 << 1;
  constexpr int savedByTheSystem = 1 << 27;
  if ((info[2] & carryLess) == 0 || (info[2] & savedByTheSystem) == 0) return false;
  if ((_xgetbv(0) & 6) != 6) return false;
  __cpuidex(info, 7, 0);
  constexpr int wanted = 1 << 3 | 1 << 5 | 1 << 8;
  return (info[1] & wanted) == wanted;
#else
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
         __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("pclmul");
#endif
}
#endif

constexpr TagScan allScans[] = {
#ifdef KPX_TAG_SCAN_AVX2
    {"avx2", scanTagsAvx2},
#endif
#if defined(__SSE2__) || defined(_M_X64)
    {"sse2", scanTagsSse2},
#endif
    {"plain", nullptr},
};

const TagScan* bestScan() noexcept {
#ifdef KPX_TAG_SCAN_AVX2
  return runsAvx2() ? allScans : allScans + 1;
#else
  return allScans;
#endif
}

// Documents may be parsed while other files of the library are still initialised; until this one
// is, they take the plain road.
constinit const TagScan* best = std::end(allScans) - 1;
constinit const TagScan* active = std::end(allScans) - 1;
[[maybe_unused]] const bool chosen = (best = active = bestScan(), true);

}  // namespace

std::span<const TagScan> tagScans() noexcept { return {best, std::end(allScans)}; }

const TagScan& activeTagScan() noexcept { return *active; }

void setActiveTagScan(const TagScan& scan) noexcept { active = &scan; }

}  // namespace kpx::detail
