// Points of the cadastral exchange format: fills one in, writes it below a root element, and reads
// all points of the document back.

#include <iostream>

#include "KpxBaseObjects.h"

int main() {
  CNAS_Punktobjekt point;
  point.ObjArt = GetNASObjektart(u"AX_Grenzpunkt");
  point.OID = u"DEXX012300001234";
  point.Punktkennung = u"3247356920200017";
  point.Abmarkung = u"1110";
  point.sonstigeEigenschaftenAdd(u"Passpunkt");
  point.sonstigeEigenschaftenAdd(u"iG");

  // A point is written below the current element, so there has to be one.
  CMarkup document;
  document.AddElem(u"Points");
  point.serializeXML(&document);
  std::cout << document.GetDoc().utf8() << "\n";

  // Empty() makes a record ready for the next point; reading does the same by itself.
  CNAS_Punktobjekt read;
  document.ResetPos();
  document.FindElem(u"Points");
  while (document.FindChildElem(read.getClassName())) {
    if (read.loadByXML(&document) != 1) continue;
    std::cout << (read.IsEqual(point) == 1 ? "as written: " : "changed: ");
    std::cout << read.Punktkennung.utf8() << "  "
              << CString(kpx::nasObjectKindName(read.ObjArt)).utf8() << "  "
              << read.sonstigeEigenschaftenGetAsText().utf8() << "\n";
  }
}
