#pragma once

#include <cstdint>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

// Descriptions of fields, filed under kinds. The library keeps, copies and filters them; what
// their numbers mean is between those who make and those who read them. Copies are deep.

/// Another text or code under which a field is known.
class KPX_API CFCFieldAlias {
 public:
  CFCFieldAlias() = default;
  CFCFieldAlias(const CFCFieldAlias&) = default;
  CFCFieldAlias(CFCFieldAlias&&) noexcept = default;
  CFCFieldAlias& operator=(const CFCFieldAlias&) = default;
  CFCFieldAlias& operator=(CFCFieldAlias&&) noexcept = default;
  virtual ~CFCFieldAlias();

  std::int32_t AliasID = -1;
  CString AliasText;
  std::int32_t AliasCode = -1;
};

/// The description of a field.
class KPX_API CFCFieldInfo {
 public:
  CFCFieldInfo() = default;
  CFCFieldInfo(const CFCFieldInfo&) = default;
  CFCFieldInfo(CFCFieldInfo&&) noexcept = default;
  CFCFieldInfo& operator=(const CFCFieldInfo&) = default;
  CFCFieldInfo& operator=(CFCFieldInfo&&) noexcept = default;
  virtual ~CFCFieldInfo();

  /// Makes it like a new one.
  void Empty() noexcept;

  CString Name;
  std::int32_t Number1 = 0;
  std::int32_t Number2 = 0;
  std::int32_t Slot1 = -1;
  std::int32_t Slot2 = -1;
  std::int32_t Slot3 = -1;
  std::int32_t Slot4 = -1;
  std::int32_t Slot5 = -1;
  std::int32_t Slot6 = -1;
  std::int32_t Slot7 = -1;
  std::vector<CFCFieldAlias> Aliases;
};

/// Descriptions of fields in the order in which they were added, each with its kind. Kinds compare
/// with case. Nothing is thrown: a failure is reported under the number of the operation, which
/// then answers false or 0.
class KPX_API CFCFieldInfos {
 public:
  CFCFieldInfos() = default;
  CFCFieldInfos(const CFCFieldInfos&) = default;
  CFCFieldInfos(CFCFieldInfos&&) noexcept = default;
  CFCFieldInfos& operator=(const CFCFieldInfos&) = default;
  CFCFieldInfos& operator=(CFCFieldInfos&&) noexcept = default;
  virtual ~CFCFieldInfos();

  /// Appends a copy of a description. Error number 56921; nothing is added then.
  void Add(const CString& kind, const CFCFieldInfo& info) noexcept;
  /// Copies the description at an index. False, and `info` as it was, from the end of the list on;
  /// a negative index is reported. Error number 56922.
  bool GetAt(std::int32_t index, CFCFieldInfo& info) const noexcept;
  /// The number of descriptions. Error number 80035.
  int GetCount() const noexcept;
  /// The number of descriptions of a kind. Error number 80033.
  int GetCountArt(const CString& kind) const noexcept;
  /// Makes `found` the list of all descriptions of a kind, in order; it may be this list itself.
  /// False when there are none, and also, with `found` as it was, when the two arrays have been
  /// given different lengths. Error number 80034.
  bool GetAllByArt(const CString& kind, CFCFieldInfos& found) const noexcept;
  /// Empties the list. Error number 80032.
  void RemoveAll() noexcept;

  std::vector<CFCFieldInfo> Infos;
  /// At each index the kind of the description there.
  std::vector<CString> Arts;
};

}  // namespace kpx
