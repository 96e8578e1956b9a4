#include "kpx/platform/Processes.h"

#include "kpx/platform/Operations.h"
#include "kpx/report/Error.h"
#include "kpx/text/CaseFold.h"

namespace kpx {

std::vector<ProcessInfo> findProcesses(const CString& name) {
  return Guarded("findProcesses"_platform, std::vector<ProcessInfo>(),
                 [&] { return detail::systemProcesses(name); });
}

int endProcesses(const CString& name) {
  int ended = 0;
  Guarded("endProcesses"_platform, [&] {
    for (const ProcessInfo& process : detail::systemProcesses(name)) {
      ended += endProcess(process.id) ? 1 : 0;
    }
  });
  return ended;
}

namespace detail {

std::u16string_view withoutProgramEnding(std::u16string_view name) noexcept {
  constexpr std::u16string_view ending = u".exe";
  const bool has = name.size() > ending.size() &&
                   detail::compareTextNoCase(name.substr(name.size() - ending.size()), ending) == 0;
  return has ? name.substr(0, name.size() - ending.size()) : name;
}

}  // namespace detail

}  // namespace kpx
