#include "kpx/domain/CFCFieldInfos.h"

#include <utility>

#include "kpx/domain/Operations.h"
#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"

namespace kpx {

CFCFieldAlias::~CFCFieldAlias() = default;
CFCFieldInfo::~CFCFieldInfo() = default;
CFCFieldInfos::~CFCFieldInfos() = default;

void CFCFieldInfo::Empty() noexcept { *this = CFCFieldInfo(); }

void CFCFieldInfos::Add(const CString& kind, const CFCFieldInfo& info) noexcept {
  Guarded("CFCFieldInfos::Add"_domain, [&] {
    Arts.push_back(kind);
    try {
      Infos.push_back(info);
    } catch (...) {
      Arts.pop_back();
      throw;
    }
  });
}

bool CFCFieldInfos::GetAt(std::int32_t index, CFCFieldInfo& info) const noexcept {
  return Guarded("CFCFieldInfos::GetAt"_domain, false, [&] {
    if (index < 0) throw InvalidArgException();
    const auto at = static_cast<std::size_t>(index);
    if (at >= Infos.size()) return false;
    CFCFieldInfo copy = Infos[at];
    info = std::move(copy);
    return true;
  });
}

int CFCFieldInfos::GetCount() const noexcept {
  return Guarded("CFCFieldInfos::GetCount"_domain, 0,
                 [&] { return static_cast<int>(Infos.size()); });
}

int CFCFieldInfos::GetCountArt(const CString& kind) const noexcept {
  return Guarded("CFCFieldInfos::GetCountArt"_domain, 0, [&] {
    if (Arts.size() < Infos.size()) throw InvalidArgException();
    int count = 0;
    for (std::size_t i = 0; i < Infos.size(); ++i) count += Arts[i] == kind ? 1 : 0;
    return count;
  });
}

bool CFCFieldInfos::GetAllByArt(const CString& kind, CFCFieldInfos& found) const noexcept {
  return Guarded("CFCFieldInfos::GetAllByArt"_domain, false, [&] {
    if (Infos.size() != Arts.size()) return false;
    // Put together first: the target, or a kind that is one of its texts, may be emptied by then.
    CFCFieldInfos all;
    for (std::size_t i = 0; i < Infos.size(); ++i) {
      if (Arts[i] != kind) continue;
      all.Arts.push_back(Arts[i]);
      all.Infos.push_back(Infos[i]);
    }
    found.Infos.swap(all.Infos);
    found.Arts.swap(all.Arts);
    return !found.Infos.empty();
  });
}

void CFCFieldInfos::RemoveAll() noexcept {
  Guarded("CFCFieldInfos::RemoveAll"_domain, [&] {
    Infos.clear();
    Arts.clear();
  });
}

}  // namespace kpx
