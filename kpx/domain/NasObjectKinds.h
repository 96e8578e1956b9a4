#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// A feature class of the exchange format and the number of its object kind.
struct NasObjectKind {
  std::u16string_view name;
  std::int32_t code = 0;
};

/// The object-kind code of a feature class, for example 11003 for "AX_Grenzpunkt"; 0 for a name
/// that is not known. Names are compared with case. The cost does not depend on the number of
/// kinds, nor on the length of a name that is none.
KPX_API std::int32_t GetNASObjektart(const CString& name) noexcept;

/// The feature class of an object-kind code; empty for a code that is not known. The units live as
/// long as the library is loaded.
KPX_API std::u16string_view nasObjectKindName(std::int32_t code) noexcept;

/// All kinds. The order is that of the feature catalogue, which is not ascending everywhere.
KPX_API std::span<const NasObjectKind> nasObjectKinds() noexcept;

}  // namespace kpx
