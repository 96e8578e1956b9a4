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

/// The text of an id; the empty text when it has none, and when there is no memory for the copy,
/// which stays whatever becomes of the store. Never throws or reports.
KPX_API CString GetMLT(std::int32_t id) noexcept;

/// The same without a copy, for those who only look: valid until the text of that id is replaced
/// or the library is unloaded; adding others leaves it alone.
KPX_API std::u16string_view storedText(std::int32_t id) noexcept;

/// Sets the text of an id, in place of any that it had. A failure is reported as 910501, with the
/// store as it was.
KPX_API void AddMLT(std::int32_t id, const CString& text);

/// Adds the German texts that are built into the library, in the order of their table. Throws
/// std::bad_alloc, with those before it added, since nobody can go on without texts unawares.
KPX_API void addBuiltInTexts();

/// The built-in German text of an id, whatever the store holds for it now; empty when there is
/// none. Valid as long as the library is loaded.
KPX_API std::u16string_view builtInText(std::int32_t id) noexcept;

}  // namespace kpx
