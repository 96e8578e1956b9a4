#pragma once

#include <cstdint>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

class CMarkup;

/// The base of every persistent object: the record header, and the operations with which an
/// object writes itself into a markup document and reads itself back.
///
/// Copying copies every field of the header. Times are time doubles, whose digits read
/// YYYYMMDDhhmmss; 0 means none.
class KPX_API CDBObject {
 public:
  virtual ~CDBObject() = default;

  /// The name of the XML element that holds the object; empty after an internal failure.
  virtual CString GetElementName() const = 0;
  /// Writes the object as one element behind the current (main) element of the document, or as
  /// the last one at this level if there is none; it becomes the current element. Answers 1;
  /// 0 without a document, and 0 with a report under the operation's number when the object has no
  /// name for an element, when the document refuses it, or after a failure; the document then stays
  /// as it was. A part that fails reports its number before the object does.
  virtual int serializeXML(CMarkup* document) const = 0;
  /// Reads the object from the current child element of the document. Attributes that are absent
  /// leave their fields as they are. Answers 1 when it read; 0, changing nothing, without a
  /// document or when the child has another name; 0 also after a failure, with what could be read.
  /// The position of the document stays.
  virtual int loadByXML(CMarkup* document);

  std::int32_t ObjectID = 0;       // in the object's store
  std::int32_t LockState = 0;      // never in XML
  std::int32_t Reserved1 = 0;      // kept and copied for the store, never in XML
  std::int32_t UserChangedID = 0;  // who changed it last
  std::int32_t UserCreatedID = 0;
  double changed = 0.0;  // when it was changed last
  double created = 0.0;
  std::int32_t TransID = 0;
  std::int32_t Reserved2 = 0;  // as Reserved1

 protected:
  CDBObject() = default;
  CDBObject(const CDBObject&) = default;
  CDBObject(CDBObject&&) noexcept = default;
  CDBObject& operator=(const CDBObject&) = default;
  CDBObject& operator=(CDBObject&&) noexcept = default;
};

}  // namespace kpx
