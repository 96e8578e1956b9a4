#pragma once

#include "kpx/domain/CNAS_Punktobjekt.h"

namespace kpx {

/// A text of the point object, and whether it counts when two are compared.
struct PointText {
  const char* name;
  CString CNAS_Punktobjekt::*field;
  bool isCompared;
};

inline constexpr PointText pointTexts[] = {
    {"OID", &CNAS_Punktobjekt::OID, true},
    {"Punktkennung", &CNAS_Punktobjekt::Punktkennung, true},
    {"Abmarkung", &CNAS_Punktobjekt::Abmarkung, true},
    {"ZSTLand", &CNAS_Punktobjekt::ZSTLand, true},
    {"ZSTStelle", &CNAS_Punktobjekt::ZSTStelle, true},
    {"LebenBeginnt", &CNAS_Punktobjekt::LebenBeginnt, false},
    {"Anlass", &CNAS_Punktobjekt::Anlass, false},
    {"BemerkungZurAbmarkung", &CNAS_Punktobjekt::BemerkungZurAbmarkung, true},
    {"RelHoehe", &CNAS_Punktobjekt::RelHoehe, true},
    {"BesonderePunktnummer", &CNAS_Punktobjekt::BesonderePunktnummer, false},
    {"AusgAbmarkung", &CNAS_Punktobjekt::AusgAbmarkung, false},
    {"Festgestellt", &CNAS_Punktobjekt::Festgestellt, false},
    {"GruendeAussetzung", &CNAS_Punktobjekt::GruendeAussetzung, false},
    {"HorzFreiheit", &CNAS_Punktobjekt::HorzFreiheit, false},
    {"ZeitpunktDerEntstehung", &CNAS_Punktobjekt::ZeitpunktDerEntstehung, false},
    {"ZeigtAuf", &CNAS_Punktobjekt::ZeigtAuf, false},
    {"GehoertZu", &CNAS_Punktobjekt::GehoertZu, false},
    {"BeziehtSichAuf", &CNAS_Punktobjekt::BeziehtSichAuf, false},
    {"Hat", &CNAS_Punktobjekt::Hat, false},
    {"Art", &CNAS_Punktobjekt::Art, false},
    {"Veraenderungsnummer", &CNAS_Punktobjekt::Veraenderungsnummer, false},
    {"Schriftinhalt", &CNAS_Punktobjekt::Schriftinhalt, false},
    {"IsIndirektAbgemarkt", &CNAS_Punktobjekt::IsIndirektAbgemarkt, true},
};

/// A point in which every field differs from its default and from the others. The texts are long
/// enough to need memory of their own, and hold what markup must escape.
inline CNAS_Punktobjekt fullPoint() {
  CNAS_Punktobjekt point;
  point.ObjectID = 1;
  point.LockState = 2;
  point.Reserved1 = 3;
  point.UserChangedID = 4;
  point.UserCreatedID = 5;
  point.changed = 20210305083334.0;
  point.created = 19991231235959.0;
  point.TransID = 6;
  point.Reserved2 = 7;
  point.ObjArt = 11003;
  int number = 100;
  const auto next = [&number] {
    CString text;
    text.Format(u" <%d> & \"ä€\U0001F600' ", number++);
    return text;
  };
  for (const PointText& text : pointTexts) point.*text.field = next();
  for (int i = 0; i < 3; ++i) point.sonstigeEigenschaftenAdd(next());
  point.Sicherungspunkte = {next(), u"", next()};
  point.ZeigtAufExternes = {{u"kept by its owner", next(), next(), next(), next()}, {}};
  point.Punktorte[8] = CAaaPunktortUUID(9, 10);
  return point;
}

}  // namespace kpx
