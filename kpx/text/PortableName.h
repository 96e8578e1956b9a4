#pragma once

#include <cstdint>
#include <string_view>

namespace kpx {

/// Why a name is not that of one file or folder on every system.
enum class NameProblem : std::uint8_t {
  none,
  empty,
  parentStep,    // ".."
  badCharacter,  // a control character, or one of < > : " / \ | ? *
  trailingUnit,  // ends with a point or a blank, which some systems drop
  reserved,      // a device, such as NUL or COM1.txt
};

/// Looks at one name, without folders. A name without problem stays where it is put: it leaves no
/// folder and opens no device, whatever system reads it.
NameProblem portableNameProblem(std::u16string_view name) noexcept;

}  // namespace kpx
