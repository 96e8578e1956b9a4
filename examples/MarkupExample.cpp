// Reading and changing an XML document: prints the points of a list, corrects one of them and
// adds another.

#include <iostream>

#include "kpx/xml/CMarkup.h"

using kpx::AttributeReader;
using kpx::CMarkup;

int main() {
  CMarkup document;
  if (!document.SetDoc(u"<Points>\r\n"
                       u"<Point Name=\"101\" Height=\"87.125\">Boundary &amp; corner</Point>\r\n"
                       u"<Point Name=\"102\" Height=\"88.5\"/>\r\n"
                       u"</Points>\r\n")) {
    // One sentence a line; an ill-formed document can be walked nevertheless.
    std::cerr << document.GetError().utf8() << "\n";
  }

  // A new document stands before its root. The children of the main element are walked without
  // stepping into it.
  document.FindElem(u"Points");
  while (document.FindChildElem(u"Point")) {
    // Values and data come with references such as "&amp;" resolved.
    for (AttributeReader attribute = document.ReadChildAttribs(); attribute.next();) {
      std::cout << attribute.value().utf8() << "  ";
    }
    std::cout << document.GetChildData().utf8() << "\n";

    if (document.GetChildAttrib(u"Name") == u"102") document.SetChildAttrib(u"Height", u"88.503");
  }

  // Step in to work at the points themselves: the child becomes the main element, and what is
  // added stands behind it.
  document.IntoElem();
  document.AddElem(u"Point", u"Tree <old>");
  document.SetAttrib(u"Name", 103);
  document.OutOfElem();

  std::cout << "\n" << document.GetDoc().utf8();
}
