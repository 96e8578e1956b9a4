#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/config/CDBObject.h"
#include "kpx/config/Field.h"
#include "kpx/report/Error.h"
#include "kpx/xml/AttributeReader.h"
#include "kpx/xml/CMarkup.h"

namespace kpx {

/// Reads the attributes of the document's current child element into fields. An absent attribute
/// leaves its field as it is. Quickest when fields are read in the order in which they stand.
class ElementReader {
 public:
  /// `document` may be nullptr: then nothing matches.
  ElementReader(CMarkup* document, const CDBObject& object);
  ElementReader(CMarkup* document, const CString& elementName);

  /// Whether the child element has the element name.
  bool matches() const noexcept { return matches_; }
  /// 1, what an object answers that has read itself. Raises `GuardedException` when a part of it,
  /// or the document, has reported that it could not be read: that part keeps its values, and the
  /// caller has to know.
  int done() const {
    watch_.passOn();
    return 1;
  }

  /// The header, and the fields of the class.
  void header(CDBObject& object);
  template <class Object>
  void fields(Object& object) {
    header(object);
    forEachField<Object>([&](const auto& field) { read(field.name(), object.*field.member); });
  }

  /// One attribute; a double is a time double.
  void read(std::u16string_view name, CString& value) { attributes_.read(name, value); }
  void read(std::u16string_view name, std::int32_t& value);
  void read(std::u16string_view name, double& time);

 private:
  GuardWatch watch_;
  bool matches_ = false;
  AttributeReader attributes_;
};

/// Steps into the current child element, and out again at the end of the scope.
class InsideElement {
 public:
  explicit InsideElement(CMarkup& document) : document_(document), inside_(document.IntoElem()) {}
  ~InsideElement() {
    if (inside_) document_.OutOfElem();
  }
  InsideElement(const InsideElement&) = delete;
  InsideElement& operator=(const InsideElement&) = delete;

 private:
  CMarkup& document_;
  bool inside_;
};

/// Reads the fields of an object, and what `readParts` reads inside its element. Answers as
/// `CDBObject::loadByXML`.
template <class Object, class ReadParts>
int readElement(CMarkup* document, Object& object, ReadParts readParts) {
  ElementReader reader(document, object);
  if (!reader.matches()) return 0;
  reader.fields(object);
  const InsideElement inside(*document);
  readParts();
  return reader.done();
}

/// The same of an object without parts.
template <class Object>
int readElement(CMarkup* document, Object& object) {
  ElementReader reader(document, object);
  if (!reader.matches()) return 0;
  reader.fields(object);
  return reader.done();
}

}  // namespace kpx
