#pragma once

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"
#include "kpx/xml/CMarkup.h"

namespace kpx {

/// The document with each element, comment, processing instruction and declaration on a line of
/// its own, two blanks deeper for each level (no deeper than level 64).
///
/// Only white space between elements changes: tags and their attributes stay as they were
/// written, and an element that holds text, a CDATA section or xml:space="preserve" stays whole.
/// Lines end as the first line of the document does, else with a line feed. Formatting twice
/// changes nothing more.
///
/// Answers the empty text for a document that is not well formed. Moves the position of the
/// document back to its start.
KPX_API CString formatMarkup(CMarkup& document);

}  // namespace kpx
