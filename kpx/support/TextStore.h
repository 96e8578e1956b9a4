#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

// The process-wide store of the texts that are shown to users, by number. It is empty and has no
// memory of its own until the first text is added, and is emptied when the library is unloaded.
//
// Nothing is locked: the store is filled at start-up on one thread. Reading from several threads
// is safe while nobody adds.

/// The text of an id, or the empty text when it has none. Never allocates, throws or reports.
/// The reference is valid until the text of that id is replaced; adding others leaves it alone.
KPX_API const CString& GetMLT(std::int32_t id) noexcept;

/// Sets the text of an id, in place of any that it had. Throws std::bad_alloc, with the store as
/// it was.
KPX_API void AddMLT(std::int32_t id, CString text);

/// Adds the German texts that are built into the library, in the order of their table.
KPX_API void addBuiltInTexts();

/// The built-in German text of an id, whatever the store holds for it now; empty when there is
/// none. Valid as long as the library is loaded.
KPX_API std::u16string_view builtInText(std::int32_t id) noexcept;

}  // namespace kpx
