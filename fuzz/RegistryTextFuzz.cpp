#include <cstdint>
#include <vector>

#include "fuzz/Check.h"
#include "kpx/support/registry/RegistrySnapshot.h"
#include "kpx/support/registry/RegistryText.h"

using namespace kpx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<RegistryStep> steps;
  RegistryTextProblem problem;
  const bool isRight =
      readRegistryText({reinterpret_cast<const char*>(data), size}, steps, problem);
  FUZZ_CHECK(isRight == problem.message.IsEmpty());
  if (!isRight) {
    FUZZ_CHECK(steps.empty());
    return 0;
  }

  // What was read can be written and read again, and comes to the same registry.
  CString text;
  std::vector<RegistryStep> again;
  FUZZ_CHECK(writeRegistryText(steps, text));
  FUZZ_CHECK(readRegistryText(registryTextBytes(text), again, problem));
  RegistrySnapshot first;
  RegistrySnapshot second;
  for (const RegistryStep& step : steps) first.apply(step);
  for (const RegistryStep& step : again) second.apply(step);
  FUZZ_CHECK(first.stepsTo(second).empty());

  RegistrySnapshot rebuilt;
  for (const RegistryStep& step : first.steps()) rebuilt.apply(step);
  FUZZ_CHECK(first.stepsTo(rebuilt).empty() && rebuilt.stepsTo(first).empty());
  RegistrySnapshot emptied = first;
  for (const RegistryStep& step : first.stepsTo(RegistrySnapshot())) emptied.apply(step);
  FUZZ_CHECK(emptied.isEmpty());
  return 0;
}
