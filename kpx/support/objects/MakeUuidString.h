#pragma once

#include <algorithm>
#include <cstdint>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// A GUID with the fields of the system's own record.
struct Guid {
  std::uint32_t Data1 = 0;
  std::uint16_t Data2 = 0;
  std::uint16_t Data3 = 0;
  std::uint8_t Data4[8] = {};
};

/// The text of a GUID: 8-4-4-4-12 hexadecimal digits in upper case, without braces. With a null
/// pointer, that of a new one of random bits (version 4). Empty when none could be made. Error
/// 910227.
KPX_API CString MakeUuidString(const Guid* guid);

/// The same for the system's own record.
template <class SystemGuid>
requires requires(const SystemGuid& guid) {
  guid.Data1;
  guid.Data2;
  guid.Data3;
  guid.Data4[7];
}
CString MakeUuidString(const SystemGuid* guid) {
  if (guid == nullptr) return MakeUuidString(static_cast<const Guid*>(nullptr));
  Guid copy{static_cast<std::uint32_t>(guid->Data1), guid->Data2, guid->Data3, {}};
  std::copy(guid->Data4, guid->Data4 + 8, copy.Data4);
  return MakeUuidString(&copy);
}

}  // namespace kpx
