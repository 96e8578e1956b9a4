#pragma once

#include <cstddef>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Compares two texts by their units: negative, 0 or positive.
KPX_API int utlCompStr(const CString& left, const CString& right) noexcept;

/// The same without regard to case, by the library's own table: ä equals Ä on every system.
KPX_API int utlCompStrNoCase(const CString& left, const CString& right) noexcept;

/// Sorts in place, ascending, by insertion: quick for short and for nearly sorted lists; the cost
/// grows with the square of the length otherwise.
KPX_API void utlInsertSort(unsigned* values, std::size_t count) noexcept;
KPX_API void utlInsertSort(std::vector<unsigned>& values) noexcept;

}  // namespace kpx
