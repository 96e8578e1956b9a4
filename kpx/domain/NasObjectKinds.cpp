#include "kpx/domain/NasObjectKinds.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <stdexcept>

namespace kpx {
namespace {

// AX_Gelaendekante stands between kinds with smaller numbers, and SD_Hilfspunkt has another prefix:
// both are right.
constexpr NasObjectKind kinds[] = {
    {u"AX_Flurstueck", 11001},
    {u"AX_BesondereFlurstuecksgrenze", 11002},
    {u"AX_Grenzpunkt", 11003},
    {u"AX_Aufnahmepunkt", 13001},
    {u"AX_Sicherungspunkt", 13002},
    {u"AX_SonstigerVermessungspunkt", 13003},
    {u"SD_Hilfspunkt", 13999},
    {u"AX_Lagefestpunkt", 19001},
    {u"AX_Hoehenfestpunkt", 19002},
    {u"AX_Schwerefestpunkt", 19003},
    {u"AX_Referenzstationspunkt", 19004},
    {u"AX_Gebaeude", 31001},
    {u"AX_Bauteil", 31002},
    {u"AX_Firstlinie", 31004},
    {u"AX_BesondererGebaeudepunkt", 31005},
    {u"AX_Wohnbauflaeche", 41001},
    {u"AX_IndustrieUndGewerbeflaeche", 41002},
    {u"AX_Halde", 41003},
    {u"AX_Bergbaubetrieb", 41004},
    {u"AX_TagebauGrubeSteinbruch", 41005},
    {u"AX_FlaecheGemischterNutzung", 41006},
    {u"AX_FlaecheBesondererFunktionalerPraegung", 41007},
    {u"AX_SportFreizeitUndErholungsflaeche", 41008},
    {u"AX_Friedhof", 41009},
    {u"AX_Strassenverkehr", 42001},
    {u"AX_Weg", 42006},
    {u"AX_Platz", 42009},
    {u"AX_Bahnverkehr", 42010},
    {u"AX_Flugverkehr", 42015},
    {u"AX_Schiffsverkehr", 42016},
    {u"AX_Landwirtschaft", 43001},
    {u"AX_Wald", 43002},
    {u"AX_Gehoelz", 43003},
    {u"AX_Heide", 43004},
    {u"AX_Moor", 43005},
    {u"AX_Sumpf", 43006},
    {u"AX_UnlandVegetationsloseFlaeche", 43007},
    {u"AX_Fliessgewaesser", 44001},
    {u"AX_Hafenbecken", 44005},
    {u"AX_StehendesGewaesser", 44006},
    {u"AX_Meer", 44007},
    {u"AX_BauwerkOderAnlageFuerIndustrieUndGewerbe", 51002},
    {u"AX_VorratsbehaelterSpeicherbauwerk", 51003},
    {u"AX_BauwerkOderAnlageFuerSportFreizeitUndErholung", 51006},
    {u"AX_SonstigesBauwerkOderSonstigeEinrichtung", 51009},
    {u"AX_BoeschungKliff", 61001},
    {u"AX_Boeschungsflaeche", 61002},
    {u"AX_DammWallDeich", 61003},
    {u"AX_Einschnitt", 61004},
    {u"AX_Hoehleneingang", 61005},
    {u"AX_FelsenFelsblockFelsnadel", 61006},
    {u"AX_Duene", 61007},
    {u"AX_Hoehenlinie", 61008},
    {u"AX_Gelaendekante", 62040},
    {u"AX_BesondererTopographischerPunkt", 61009},
    {u"AX_KlassifizierungNachStrassenrecht", 71001},
    {u"AX_AndereFestlegungNachStrassenrecht", 71002},
    {u"AX_KlassifizierungNachWasserrecht", 71003},
    {u"AX_AndereFestlegungNachWasserrecht", 71004},
    {u"AX_SchutzgebietNachWasserrecht", 71005},
    {u"AX_NaturUmweltOderBodenschutzrecht", 71006},
    {u"AX_SchutzgebietNachNaturUmweltOderBodenschutzrecht", 71007},
    {u"AX_BauRaumOderBodenordnungsrecht", 71008},
    {u"AX_Denkmalschutzrecht", 71009},
    {u"AX_Forstrecht", 71010},
    {u"AX_SonstigesRecht", 71011},
    {u"AX_Schutzzone", 71012},
    {u"AX_Bodenschaetzung", 72001},
    {u"AX_Bewertung", 72004},
    {u"AX_Bundesland", 73002},
    {u"AX_Regierungsbezirk", 73003},
    {u"AX_KreisRegion", 73004},
    {u"AX_Gemeinde", 73005},
    {u"AX_Gemeindeteil", 73006},
    {u"AX_Gemarkung", 73007},
    {u"AX_GemarkungsteilFlur", 73008},
    {u"AX_Buchungsblattbezirk", 73010},
    {u"AX_Dienststelle", 73011},
    {u"AX_Verband", 73012},
    {u"AX_LagebezeichnungKatalogeintrag", 73013},
    {u"AX_Landschaft", 74001},
    {u"AX_KleinraeumigerLandschaftsteil", 74002},
    {u"AX_Gewann", 74003},
    {u"AX_Insel", 74004},
    {u"AX_Wohnplatz", 74005},
    {u"AX_Baublock", 75001},
    {u"AX_WirtschaftlicheEinheit", 75002},
    {u"AX_KommunalesGebiet", 75003},
    {u"AX_Gebiet", 75010},
    {u"AX_Gebiet_Verwaltungsgemeinschaft", 75011},
    {u"AX_Gebaeudeausgestaltung", 91001},
};
constexpr std::size_t kindCount = std::size(kinds);

constexpr auto byLength = [](const NasObjectKind& a, const NasObjectKind& b) {
  return a.name.size() < b.name.size();
};
constexpr std::size_t shortestName =
    std::min_element(std::begin(kinds), std::end(kinds), byLength)->name.size();
constexpr std::size_t longestName =
    std::max_element(std::begin(kinds), std::end(kinds), byLength)->name.size();

/// What tells the names apart: four of their units and their length. Requires at least four units.
constexpr std::uint64_t markOf(std::u16string_view name) noexcept {
  const std::size_t length = name.size();
  const std::uint64_t units = std::uint64_t{name[3]} | std::uint64_t{name[length / 2]} << 16 |
                              std::uint64_t{name[length - 3]} << 32 |
                              std::uint64_t{name[length - 1]} << 48;
  return units + length * 0x9E3779B97F4A7C15u;
}
static_assert(shortestName >= 4);

/// A hash table without collisions: each row has a slot of its own.
struct Slots {
  static constexpr int bits = 10;

  std::uint64_t factor = 0;
  std::array<std::uint8_t, std::size_t{1} << bits> rows{};  // one more than the row; 0: none

  constexpr std::size_t slotOf(std::uint64_t mark) const noexcept {
    return static_cast<std::size_t>(mark * factor >> (64 - bits));
  }
  /// The only row that may have this mark; nullptr if there is none.
  const NasObjectKind* find(std::uint64_t mark) const noexcept {
    const std::size_t row = rows[slotOf(mark)];
    return row != 0 ? &kinds[row - 1] : nullptr;
  }
};
static_assert(kindCount < 256);

/// Looks for a factor that gives each row a slot of its own.
template <class Mark>
consteval Slots makeSlots(Mark mark) {
  std::array<std::uint64_t, kindCount> marks{};
  for (std::size_t row = 0; row < kindCount; ++row) marks[row] = mark(kinds[row]);
  std::uint64_t factor = 0x9E3779B97F4A7C15u;
  for (int attempt = 0; attempt < 1000; ++attempt) {
    Slots slots;
    slots.factor = factor;
    std::size_t row = 0;
    while (row < kindCount && slots.rows[slots.slotOf(marks[row])] == 0) {
      slots.rows[slots.slotOf(marks[row])] = static_cast<std::uint8_t>(row + 1);
      ++row;
    }
    if (row == kindCount) return slots;
    factor = factor * 6364136223846793005u + 1442695040888963407u;
  }
  throw std::logic_error("two kinds cannot be told apart");  // does not compile then
}

constexpr Slots byName = makeSlots([](const NasObjectKind& kind) { return markOf(kind.name); });
constexpr Slots byCode =
    makeSlots([](const NasObjectKind& kind) { return static_cast<std::uint64_t>(kind.code); });

}  // namespace

std::int32_t GetNASObjektart(const CString& text) noexcept {
  const std::u16string_view name = text;
  if (name.size() < shortestName || name.size() > longestName) return 0;
  const NasObjectKind* const kind = byName.find(markOf(name));
  return kind && kind->name == name ? kind->code : 0;
}

std::u16string_view nasObjectKindName(std::int32_t code) noexcept {
  const NasObjectKind* const kind = byCode.find(static_cast<std::uint64_t>(code));
  return kind && kind->code == code ? kind->name : std::u16string_view();
}

std::span<const NasObjectKind> nasObjectKinds() noexcept { return kinds; }

}  // namespace kpx
