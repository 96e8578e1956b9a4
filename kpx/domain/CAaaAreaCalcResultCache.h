#pragma once

#include <cstdint>

#include "kpx/config/KeyedCollection.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Results of area calculations, by a text that the caller chooses. Keys compare with case. The
/// three numbers of a result are the caller's; they are kept as they are.
///
/// Nothing is thrown: a failure is reported under the number of the operation, which then answers
/// 0. Copies are deep.
class KPX_API CAaaAreaCalcResultCache {
 public:
  struct CAaaAreaCalcResult {
    double Result1 = -1.0;
    double Result2 = -1.0;
    double Result3 = -1.0;
    CString Key;
  };

  CAaaAreaCalcResultCache() = default;
  CAaaAreaCalcResultCache(const CAaaAreaCalcResultCache&) = default;
  CAaaAreaCalcResultCache& operator=(const CAaaAreaCalcResultCache& other);
  virtual ~CAaaAreaCalcResultCache();

  /// Stores a result; one that the key has already is replaced. Error number 81616.
  void add(const CString& key, double result1, double result2, double result3) noexcept;
  /// The result at a place in the order of the cache, which is the same on every system but may
  /// change with every entry that is added or removed. 1, or 0 and the outputs as they were: when
  /// one of them is null, when there is no such place, and when the key there is empty. Error
  /// number 81613.
  int getAt(std::int32_t index, CString* key, double* result1, double* result2,
            double* result3) const noexcept;
  /// The number of entries. Error number 81615.
  int getCount() const noexcept;
  /// Removes all entries. Error number 81614.
  void removeAll() noexcept;

 private:
  KeyedCollection<CAaaAreaCalcResult> results_;
};

}  // namespace kpx
