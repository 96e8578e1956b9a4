#pragma once

#include <gtest/gtest.h>

#include "kpx/config/CDBObject.h"
#include "kpx/xml/CMarkup.h"

namespace kpx {

/// The document of one persistent object.
inline CString xmlOf(const CDBObject& object) {
  CMarkup document;
  EXPECT_EQ(object.serializeXML(&document), 1);
  return document.GetDoc();
}

/// Lets an object read itself from the root of a document. Answers what `loadByXML` answers.
inline int loadFromXml(CDBObject& object, const CString& text) {
  CMarkup document;
  document.SetDoc(text);
  document.FindChildElem();
  return object.loadByXML(&document);
}

}  // namespace kpx
