#include "kpx/domain/CAaaAreaCalcResultCache.h"

#include <utility>

#include "kpx/domain/Operations.h"
#include "kpx/report/Error.h"

namespace kpx {

CAaaAreaCalcResultCache::~CAaaAreaCalcResultCache() = default;

CAaaAreaCalcResultCache& CAaaAreaCalcResultCache::operator=(const CAaaAreaCalcResultCache& other) {
  if (this == &other) return *this;
  // The collection's own assignment would keep entries that the other one does not have.
  results_.clear();
  results_ = other.results_;
  return *this;
}

void CAaaAreaCalcResultCache::add(const CString& key, double result1, double result2,
                                  double result3) noexcept {
  Guarded("CAaaAreaCalcResultCache::add"_domain, [&] {
    results_.set(key, {result1, result2, result3, key});
  });
}

int CAaaAreaCalcResultCache::getAt(std::int32_t index, CString* key, double* result1,
                                   double* result2, double* result3) const noexcept {
  return Guarded("CAaaAreaCalcResultCache::getAt"_domain, 0, [&] {
    if (!key || !result1 || !result2 || !result3) return 0;
    if (index < 0 || static_cast<std::size_t>(index) >= results_.size()) return 0;
    const CAaaAreaCalcResult& result = results_.entryAt(static_cast<std::size_t>(index)).value;
    if (result.Key.IsEmpty()) return 0;
    *key = result.Key;
    *result1 = result.Result1;
    *result2 = result.Result2;
    *result3 = result.Result3;
    return 1;
  });
}

int CAaaAreaCalcResultCache::getCount() const noexcept {
  return Guarded("CAaaAreaCalcResultCache::getCount"_domain, 0,
                 [&] { return static_cast<int>(results_.size()); });
}

void CAaaAreaCalcResultCache::removeAll() noexcept {
  Guarded("CAaaAreaCalcResultCache::removeAll"_domain, [&] { results_.clear(); });
}

}  // namespace kpx
