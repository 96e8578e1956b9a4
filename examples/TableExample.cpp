// A table-shaped configuration: typed rows, kept in a table under the keys of their kinds.

#include <cstdlib>
#include <iostream>

#include "KpxBaseObjects.h"

int main() {
  // A row is empty until its setters make cells, with type, caption and group.
  CFGConfigDXFConvertLineRow boundary;
  boundary.setLayer(u"Grenzen");
  boundary.setColor(3);
  boundary.setWidth(0.25);

  // The table knows its columns; rows are stored as copies.
  CFGConfigDXFConvertLineTable table;
  table.SetCol(u"233", boundary);
  boundary.setLayer(u"changed later");

  CFGConfigDXFConvertLineRow row;
  if (!table.FindCol(u"233", row)) return EXIT_FAILURE;
  for (const CString& key : table.Class.KeyOrder) {
    const CFGCol* const cell = row.find(key);
    std::cout << key.utf8() << " = " << (cell ? cell->Value.Value.utf8() : "(none)") << "\n";
  }
  std::cout << "layer " << row.getLayer().utf8() << ", width " << row.getWidth() << "\n";

  // The table's XML is its record header only. The header class carries the columns.
  CMarkup document;
  CFGConfigDXFConvertLineHeader header;
  header.setDescription(u"Linien");
  header.serializeXML(&document);
  std::cout << header.GetElementName().utf8() << " holds " << header.Class.Cols.size()
            << " columns\n";
  return row.getLayer() == u"Grenzen" ? EXIT_SUCCESS : EXIT_FAILURE;
}
