#include "kpx/domain/CNAS_Punktobjekt.h"

#include <algorithm>
#include <bitset>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kpx/config/ElementReader.h"
#include "kpx/config/ElementWriter.h"
#include "kpx/domain/Operations.h"
#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/WrittenMarkup.h"

namespace kpx {
namespace {

constexpr std::u16string_view className = u"CNAS_Punktobjekt";
constexpr std::u16string_view propertyName = u"SonstigeEigenschaft";
constexpr std::u16string_view protectionPointName = u"Sicherungspunkt";
constexpr std::u16string_view referenceName = u"ZeigtAufExternes";

/// A text attribute that is written only when it is set.
template <class Owner>
struct TextAttribute {
  std::u16string_view opening;  // with everything that stands before the value
  CString Owner::*field;

  constexpr std::u16string_view name() const noexcept {
    return opening.substr(1, opening.size() - 3);
  }
};

// In the order in which stored files have them.
constexpr TextAttribute<CNAS_Punktobjekt> textAttributes[] = {
    {u" OID=\"", &CNAS_Punktobjekt::OID},
    {u" Punktkennung=\"", &CNAS_Punktobjekt::Punktkennung},
    {u" Abmarkung=\"", &CNAS_Punktobjekt::Abmarkung},
    {u" ZSTLand=\"", &CNAS_Punktobjekt::ZSTLand},
    {u" ZSTStelle=\"", &CNAS_Punktobjekt::ZSTStelle},
    {u" BemerkungZurAbmarkung=\"", &CNAS_Punktobjekt::BemerkungZurAbmarkung},
    {u" RelHoehe=\"", &CNAS_Punktobjekt::RelHoehe},
    {u" BesonderePunktnummer=\"", &CNAS_Punktobjekt::BesonderePunktnummer},
    {u" AusgAbmarkung=\"", &CNAS_Punktobjekt::AusgAbmarkung},
    {u" Festgestellt=\"", &CNAS_Punktobjekt::Festgestellt},
    {u" GruendeAussetzung=\"", &CNAS_Punktobjekt::GruendeAussetzung},
    {u" HorzFreiheit=\"", &CNAS_Punktobjekt::HorzFreiheit},
    {u" ZeitpunktDerEntstehung=\"", &CNAS_Punktobjekt::ZeitpunktDerEntstehung},
    {u" ZeigtAuf=\"", &CNAS_Punktobjekt::ZeigtAuf},
    {u" GehoertZu=\"", &CNAS_Punktobjekt::GehoertZu},
    {u" BeziehtSichAuf=\"", &CNAS_Punktobjekt::BeziehtSichAuf},
    {u" Hat=\"", &CNAS_Punktobjekt::Hat},
    {u" Art=\"", &CNAS_Punktobjekt::Art},
    {u" Veraenderungsnummer=\"", &CNAS_Punktobjekt::Veraenderungsnummer},
    {u" Schriftinhalt=\"", &CNAS_Punktobjekt::Schriftinhalt},
    {u" LebenBeginnt=\"", &CNAS_Punktobjekt::LebenBeginnt},
    {u" Anlass=\"", &CNAS_Punktobjekt::Anlass},
    {u" IsIndirektAbgemarkt=\"", &CNAS_Punktobjekt::IsIndirektAbgemarkt},  // even when it is empty
};
constexpr std::u16string_view objectKindName = u"ObjArt";

constexpr TextAttribute<NasExternalReference> referenceAttributes[] = {
    {u" Art=\"", &NasExternalReference::Art},
    {u" Typ=\"", &NasExternalReference::Typ},
    {u" Fachdaten=\"", &NasExternalReference::Fachdaten},
    {u" FachdatenUrl=\"", &NasExternalReference::FachdatenUrl},
};

// Two points are the same when these are, and the lists; what changes with each delivery of the
// office (life begins, occasion) and what only describes the point is left out on purpose.
constexpr CString CNAS_Punktobjekt::*comparedTexts[] = {
    &CNAS_Punktobjekt::OID,       &CNAS_Punktobjekt::Punktkennung,
    &CNAS_Punktobjekt::Abmarkung, &CNAS_Punktobjekt::ZSTLand,
    &CNAS_Punktobjekt::ZSTStelle, &CNAS_Punktobjekt::BemerkungZurAbmarkung,
    &CNAS_Punktobjekt::RelHoehe,  &CNAS_Punktobjekt::IsIndirektAbgemarkt,
};

constexpr std::u16string_view firstProperty = u"iG";

bool isBefore(const CString& a, const CString& b) noexcept {
  const bool aIsFirst = a.CompareNoCase(firstProperty) == 0;
  const bool bIsFirst = b.CompareNoCase(firstProperty) == 0;
  return aIsFirst != bIsFirst ? aIsFirst : a.Compare(b) < 0;
}

bool sameReference(const NasExternalReference& a, const NasExternalReference& b) noexcept {
  return a.Art.CompareNoCase(b.Art) == 0 && a.Typ.CompareNoCase(b.Typ) == 0 &&
         a.Fachdaten.CompareNoCase(b.Fachdaten) == 0;
}

// --- writing --------------------------------------------------------------------------------

template <class Owner, std::size_t N>
void writeTexts(ElementWriter& writer, const TextAttribute<Owner> (&attributes)[N],
                const Owner& owner) {
  for (const TextAttribute<Owner>& attribute : attributes) {
    const CString& value = owner.*attribute.field;
    if (!value.IsEmpty()) writer.attribute(attribute.opening, value);
  }
}

void writeDataElements(std::u16string& out, std::u16string_view name,
                       const std::vector<CString>& texts, std::u16string_view lineBreak) {
  for (const CString& text : texts) {
    out += u'<';
    out += name;
    if (text.IsEmpty()) {
      out.append(u"/>").append(lineBreak);
      continue;
    }
    out += u'>';
    WrittenMarkup::appendData(out, text);
    out.append(u"</").append(name).append(u">").append(lineBreak);
  }
}

void writeReferences(std::u16string& out, const std::vector<NasExternalReference>& references,
                     std::u16string_view lineBreak) {
  ElementWriter writer(out, lineBreak);
  for (const NasExternalReference& reference : references) {
    out += u'<';
    out += referenceName;
    writeTexts(writer, referenceAttributes, reference);
    writer.closeEmpty();
  }
}

/// Without a main element the document would take the object as a root beside the one it has.
bool hasPlace(const CMarkup& document) {
  int begin = 0;
  int end = 0;
  return document.GetContentOffsets(begin, end) || document.GetDocElemCount() == 0;
}

// --- reading --------------------------------------------------------------------------------

/// Stores the attributes of an element in the texts that belong to them, in one pass over the tag:
/// most texts of a point are not set, and to look for each would be a pass of its own. The first
/// of a repeated attribute counts.
template <class Owner, std::size_t N>
class TextFiller {
 public:
  TextFiller(const TextAttribute<Owner> (&attributes)[N], Owner& owner) noexcept
      : attributes_(attributes), owner_(owner) {}

  /// Answers false when the attribute is none of the texts.
  bool take(const AttributeReader& attribute) {
    const std::u16string_view name = attribute.name();
    for (std::size_t tried = 0; tried < N; ++tried) {
      const std::size_t at = next_;
      next_ = at + 1 < N ? at + 1 : 0;  // the next attribute is likely to be one behind
      if (attributes_[at].name() != name) continue;
      if (!taken_[at]) attribute.value(owner_.*attributes_[at].field);
      taken_[at] = true;
      return true;
    }
    return false;
  }

 private:
  const TextAttribute<Owner> (&attributes_)[N];
  Owner& owner_;
  std::size_t next_ = 0;
  std::bitset<N> taken_;
};

/// Reads all children of one name, whatever stands between them.
template <class Item, class Read>
std::vector<Item> readChildren(CMarkup& document, std::u16string_view name, Read read) {
  std::vector<Item> items;
  document.ResetChildPos();
  while (document.FindChildElem(name)) items.push_back(read());
  return items;
}

}  // namespace

// A record that is read takes the place of the old one in a single step that cannot fail.
static_assert(std::is_nothrow_move_assignable_v<CNAS_Punktobjekt>);
static_assert(std::is_nothrow_default_constructible_v<CNAS_Punktobjekt>);

void CNAS_Punktobjekt::Empty() noexcept {
  CNAS_Punktobjekt empty;
  empty.Punktorte.swap(Punktorte);
  *this = std::move(empty);
}

CString CNAS_Punktobjekt::getClassName() const {
  return Guarded("CNAS_Punktobjekt::getClassName"_domain, CString(),
                 [] { return CString(className); });
}

int CNAS_Punktobjekt::serializeXML(CMarkup* document) const {
  return Guarded("CNAS_Punktobjekt::serializeXML"_domain, 0, [&] {
    if (!document || !hasPlace(*document)) return 0;
    // One text for the whole element: setting attribute by attribute would move the rest of the
    // document's text for each of them.
    std::u16string text;
    text.reserve(1024);
    const std::u16string_view lineBreak = WrittenMarkup::lineBreakOf(*document);
    ElementWriter writer(text, lineBreak);
    text += u'<';
    text += className;
    if (LockState > 0) writer.attribute(u" Lock=\"", LockState);
    writer.attribute(u" ObjArt=\"", ObjArt);
    writeTexts(writer, textAttributes, *this);
    if (IsIndirektAbgemarkt.IsEmpty()) writer.attribute(u" IsIndirektAbgemarkt=\"", CString());
    if (sonstigeEigenschaften_.texts().empty() && Sicherungspunkte.empty() &&
        ZeigtAufExternes.empty()) {
      text += u"/>";
    } else {
      writer.open();
      writeDataElements(text, propertyName, sonstigeEigenschaften_.texts(), lineBreak);
      writeDataElements(text, protectionPointName, Sicherungspunkte, lineBreak);
      writeReferences(text, ZeigtAufExternes, lineBreak);
      text += u"</";
      text += className;
      text += u'>';
    }
    return WrittenMarkup::addChild(*document, text) ? 1 : 0;
  });
}

int CNAS_Punktobjekt::loadByXML(CMarkup* document) {
  return Guarded("CNAS_Punktobjekt::loadByXML"_domain, 0, [&] {
    if (!document) return 0;
    const GuardWatch watch;
    const CString name(className);
    ElementReader reader(document, name);
    while (!reader.matches()) {
      if (!document->FindChildElem(name)) return 0;
      reader = ElementReader(document, name);
    }

    CNAS_Punktobjekt loaded;
    loaded.CDBObject::operator=(*this);
    loaded.LockState = 0;
    loaded.ObjArt = ObjArt;
    TextFiller texts(textAttributes, loaded);
    bool hasHeader = false;
    for (AttributeReader attribute = document->ReadChildAttribs(); attribute.next();) {
      if (attribute.name() == objectKindName || texts.take(attribute)) continue;
      hasHeader = true;
    }
    reader.read(objectKindName, loaded.ObjArt);
    if (hasHeader) {
      reader.header(loaded);
      reader.read(u"Lock", loaded.LockState);
    }
    const InsideElement inside(*document);
    const auto readData = [&] { return document->GetChildData(); };
    loaded.sonstigeEigenschaften_.assign(readChildren<CString>(*document, propertyName, readData));
    loaded.Sicherungspunkte = readChildren<CString>(*document, protectionPointName, readData);
    loaded.ZeigtAufExternes = readChildren<NasExternalReference>(*document, referenceName, [&] {
      NasExternalReference reference;
      TextFiller referenceTexts(referenceAttributes, reference);
      for (AttributeReader attribute = document->ReadChildAttribs(); attribute.next();) {
        referenceTexts.take(attribute);
      }
      return reference;
    });

    watch.passOn();  // the document answers data that it cannot read with the empty text
    loaded.Punktorte.swap(Punktorte);
    *this = std::move(loaded);
    return 1;
  });
}

int CNAS_Punktobjekt::IsEqual(const CNAS_Punktobjekt& other) const noexcept {
  if (ObjArt != other.ObjArt) return 0;
  for (const auto field : comparedTexts) {
    if (this->*field != other.*field) return 0;
  }
  const bool listsEqual =
      sonstigeEigenschaften_.texts() == other.sonstigeEigenschaften_.texts() &&
      Sicherungspunkte == other.Sicherungspunkte &&
      std::equal(ZeigtAufExternes.begin(), ZeigtAufExternes.end(), other.ZeigtAufExternes.begin(),
                 other.ZeigtAufExternes.end(), sameReference);
  return listsEqual ? 1 : 0;
}

// --- other properties -----------------------------------------------------------------------

bool CNAS_Punktobjekt::hasProperty(int index) const noexcept {
  return index >= 0 && index < sonstigeEigenschaftenGetSize();
}

int CNAS_Punktobjekt::sonstigeEigenschaftenAdd(const CString& property) {
  return Guarded("CNAS_Punktobjekt::sonstigeEigenschaftenAdd"_domain, 0, [&] {
    CString trimmed = property;
    trimmed.Trim();
    if (trimmed.IsEmpty()) return 0;
    if (!sonstigeEigenschaften_.contains(trimmed)) {
      sonstigeEigenschaften_.add(std::move(trimmed));
    }
    return 1;
  });
}

int CNAS_Punktobjekt::sonstigeEigenschaftenCopy(const CNAS_Punktobjekt* source) {
  return Guarded("CNAS_Punktobjekt::sonstigeEigenschaftenCopy"_domain, 0, [&] {
    if (!source) return 0;
    detail::PropertyList copy = source->sonstigeEigenschaften_;
    sonstigeEigenschaften_ = std::move(copy);
    return 1;
  });
}

CString CNAS_Punktobjekt::sonstigeEigenschaftenGetAt(int index) const {
  if (!hasProperty(index)) throw InvalidArgException();
  return Guarded("CNAS_Punktobjekt::sonstigeEigenschaftenGetAt"_domain, CString(),
                 [&] { return sonstigeEigenschaften_.texts()[static_cast<std::size_t>(index)]; });
}

int CNAS_Punktobjekt::sonstigeEigenschaftenSetAt(int index, const CString& property) {
  if (!hasProperty(index)) throw InvalidArgException();
  return Guarded("CNAS_Punktobjekt::sonstigeEigenschaftenSetAt"_domain, 0, [&] {
    CString copy = property;
    sonstigeEigenschaften_.set(static_cast<std::size_t>(index), std::move(copy));
    return 1;
  });
}

int CNAS_Punktobjekt::sonstigeEigenschaftenGetSize() const noexcept {
  return static_cast<int>(sonstigeEigenschaften_.texts().size());
}

void CNAS_Punktobjekt::sonstigeEigenschaftenRemoveAll() noexcept { sonstigeEigenschaften_.clear(); }

CString CNAS_Punktobjekt::sonstigeEigenschaftenGetAsText() {
  return Guarded("CNAS_Punktobjekt::sonstigeEigenschaftenGetAsText"_domain, CString(), [&] {
    sonstigeEigenschaften_.sort(isBefore);
    CString text;
    std::u16string_view divider;
    for (const CString& property : sonstigeEigenschaften_.texts()) {
      text += divider;
      text += property.view();
      divider = u", ";
    }
    text.Replace(u"Passpunkt", u"PP");
    return text;
  });
}

}  // namespace kpx
