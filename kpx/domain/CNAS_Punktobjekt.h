#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "kpx/config/CDBObject.h"
#include "kpx/domain/CAaaPunktortUUID.h"
#include "kpx/domain/internal/PropertyList.h"
#include "kpx/domain/NasObjectKinds.h"
#include "kpx/domain/PointLocationMap.h"

namespace kpx {

/// A reference of a point object to data outside the cadastre.
struct NasExternalReference {
  CString Reserved;  // the owner's to use: copied, but neither written nor compared
  CString Art;       // kind
  CString Typ;       // type
  CString Fachdaten;
  CString FachdatenUrl;
};

/// One point object of the cadastral exchange format NAS: object kind, identifiers, marking,
/// relations and a list of other properties. Element "CNAS_Punktobjekt".
///
/// The text fields are named after their XML attributes. An empty text means that the field is
/// not set, and is not written. Copies have every field.
///
/// To write points below a root element and to read them all:
///
///     document.AddElem(u"Points");                      |  document.FindElem(u"Points");
///     for (const CNAS_Punktobjekt& point : points)      |  while (document.FindChildElem(
///       point.serializeXML(&document);                  |             u"CNAS_Punktobjekt"))
///                                                       |    point.loadByXML(&document);
///
/// Failures are reported as 910004 (getClassName, GetElementName), 910005 (serializeXML), 910006
/// (loadByXML) and as stated at the operations of the list.
class KPX_API CNAS_Punktobjekt : public CDBObject {
 public:
  /// Everything empty and 0.
  CNAS_Punktobjekt() = default;

  /// Sets the header and the object kind to 0 and empties every text and the three lists. The
  /// point locations stay: they belong to the place in the project, not to what was read for it.
  void Empty() noexcept;

  // --- XML ----------------------------------------------------------------------------------

  /// "CNAS_Punktobjekt"; empty after a failure.
  CString getClassName() const;
  CString GetElementName() const override { return getClassName(); }

  /// Adds the object as a child element of the current (main) element, behind the current child
  /// or as the last one; it becomes the child. In a document without any element it becomes the
  /// root. Of the header only the lock state is written, and only when it is greater than 0.
  /// Answers 1; 0 without a document, when there is no main element, or after a failure: the
  /// document then stays as it was.
  int serializeXML(CMarkup* document) const override;

  /// Reads the object from the current child element, or from the next child of its class name
  /// when the current one has another name; that one becomes the child. Answers 1; 0, changing
  /// nothing in the object, without a document, when there is no such child, or after a failure.
  ///
  /// Fields that are not set are not written, so an absent attribute or list means empty (for the
  /// lock state 0): a record that is used again keeps nothing of the point before. The object kind
  /// and the rest of the header keep their values when their attributes are absent; the reserved
  /// words and the point locations stay.
  int loadByXML(CMarkup* document) override;

  // --- comparing ----------------------------------------------------------------------------

  /// 1 when both describe the same point with the same marking, else 0. Compared are the object
  /// kind, both identifiers, the other properties and protection points in their order, marking,
  /// responsible state and office, remark on marking, relative height, the external references
  /// (without regard to case, and without their addresses), and whether it is marked indirectly.
  /// Everything else may differ.
  int IsEqual(const CNAS_Punktobjekt& other) const noexcept;

  // --- other properties ---------------------------------------------------------------------

  /// Adds a property without the white space around it. Answers 1 also when it is there already,
  /// compared without case: the first one stays. 0 for an empty one. Failure: 910007, answers 0.
  /// The cost does not grow with the list.
  int sonstigeEigenschaftenAdd(const CString& property);
  /// Takes over the whole list of another object. Answers 1; 0 for a null pointer and after a
  /// failure (910008), and changes nothing then.
  int sonstigeEigenschaftenCopy(const CNAS_Punktobjekt* source);
  /// An index outside the list raises InvalidArgException. Other failures: 910009 (the empty
  /// text), 910010 (0, nothing is changed). SetAt answers 1 and takes the text as it is.
  CString sonstigeEigenschaftenGetAt(int index) const;
  int sonstigeEigenschaftenSetAt(int index, const CString& property);
  /// The number of properties.
  int sonstigeEigenschaftenGetSize() const noexcept;
  /// Empties the list.
  void sonstigeEigenschaftenRemoveAll() noexcept;
  /// The properties, divided by ", ": "iG" (in any case) first, the others by their units, and
  /// "PP" for every "Passpunkt". The list itself stays in this order, which counts
  /// for IsEqual. Failure: 910011, empty text.
  CString sonstigeEigenschaftenGetAsText();

  // --- fields -------------------------------------------------------------------------------

  std::int32_t ObjArt = 0;  // object kind, see NasObjectKinds.h
  CString OID;              // object identifier
  CString Punktkennung;     // point identifier
  CString Abmarkung;        // marking
  CString ZSTLand;          // responsible state
  CString ZSTStelle;        // responsible office
  CString LebenBeginnt;     // life begins
  CString Anlass;           // occasion
  CString BemerkungZurAbmarkung;
  CString RelHoehe;  // relative height
  CString BesonderePunktnummer;
  CString AusgAbmarkung;      // marking suspended
  CString Festgestellt;       // established
  CString GruendeAussetzung;  // reasons for suspension
  CString HorzFreiheit;       // horizontal clearance
  CString ZeitpunktDerEntstehung;
  CString ZeigtAuf;                       // points to
  CString GehoertZu;                      // belongs to
  CString BeziehtSichAuf;                 // refers to
  CString Hat;                            // has
  CString Art;                            // kind
  std::vector<CString> Sicherungspunkte;  // protection points; elements "Sicherungspunkt"
  CString Veraenderungsnummer;            // change number
  CString Schriftinhalt;                  // text content
  std::vector<NasExternalReference> ZeigtAufExternes;  // an element of this name for each
  CString IsIndirektAbgemarkt;
  /// Point locations by coordinate-and-height identifier; never in XML.
  std::map<std::int32_t, CAaaPunktortUUID> Punktorte;

 private:
  KPX_LOCAL bool hasProperty(int index) const noexcept;

  detail::PropertyList sonstigeEigenschaften_;  // elements "SonstigeEigenschaft"
};

}  // namespace kpx
