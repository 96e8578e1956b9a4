#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "kpx/text/CString.h"

/// The built-in texts as constant data, generated from the table of texts by
/// tools/texts_gen/texts_gen.py. An id may stand there twice; the later text counts.
namespace kpx::detail {

struct BuiltInText {
  std::int32_t id;
  std::uint32_t offset;  // of the first unit in builtInUnits
  std::uint32_t length;  // in units; there is no terminating 0
};

extern const char16_t builtInUnits[];
extern const BuiltInText builtInTexts[];  // in the order of the table
extern const std::size_t builtInTextCount;
/// For each id the place of its last text in builtInTexts, ascending by id.
extern const std::uint32_t builtInPlaces[];
extern const std::size_t builtInIdCount;

/// Adds texts to the store in their order. Throws std::bad_alloc, with those before it added.
void addTexts(const char16_t* units, std::span<const BuiltInText> texts);

/// Where the text of an id stands, to be written in the memory of the old one: a language file
/// replaces thousands. Throws std::bad_alloc, with the store as it was.
CString& textPlace(std::int32_t id);

/// Empties the store, which invalidates every reference into it.
void clearTexts() noexcept;

}  // namespace kpx::detail
