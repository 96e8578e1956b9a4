#pragma once

#include <string_view>

#include "kpx/xml/internal/DocumentRules.h"

namespace kpx::detail {

// Whether a piece of markup has nothing against it that `MarkupCheck` would tell of, warnings and
// characters aside: characters in values are written and read back whatever they are.

/// An element with all in it, as a part of a document with these rules.
bool isRightElement(std::u16string_view markup, const DocumentRules& rules);

/// The references in a text or value.
bool hasRightReferences(std::u16string_view text, const DocumentRules& rules);

/// A whole document.
bool isRightDocument(std::u16string_view text);

}  // namespace kpx::detail
