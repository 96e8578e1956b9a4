#pragma once

#include <cstdint>
#include <string_view>

namespace kpx::detail {

// The templates of reports in German. They stand here, too, so that a failure is logged before the
// texts are filled, and whatever table of texts a build has.
inline constexpr std::int32_t errorBoxId = 541;
inline constexpr std::u16string_view errorBoxTemplate =
    u"In %s ist ein Fehler aufgetreten.\n\nFehler %d\n\nBitte wenden Sie sich an die %s-Hotline.";
inline constexpr std::int32_t errorLineId = 542;
inline constexpr std::u16string_view errorLineTemplate =
    u"Projekt: %s    Job: %s    Fehler: %d     Datum / Zeit: %s / %s    User: %s\n";
inline constexpr std::int32_t textLineId = 8114;
inline constexpr std::u16string_view textLineTemplate =
    u"Projekt: %s    Job: %s                      Datum / Zeit: %s / %s    User: %s  Info: %s\n";
inline constexpr std::int32_t errorWordId = 614;
inline constexpr std::u16string_view errorWord = u"Fehler";

}  // namespace kpx::detail
