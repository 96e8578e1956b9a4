#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kpx/config/CDBObject.h"
#include "kpx/config/Field.h"
#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"
#include "kpx/text/CString.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/WrittenMarkup.h"

namespace kpx {

class CFGCol;
class CFGClass;
class CFGConfig;

/// Writes persistent objects as markup text, each element on a line of its own as the document
/// itself would write it.
///
/// A whole object is written as one text and handed to the document once: setting attribute by
/// attribute would move the rest of the document's text for each of them.
class ElementWriter {
 public:
  /// `lineBreak` is that of the document that the text is for.
  ElementWriter(std::u16string& out, std::u16string_view lineBreak) noexcept
      : out_(out), lineBreak_(lineBreak) {}

  /// Room for this many columns of ordinary length, with their values.
  void reserveColumns(std::size_t count) { out_.reserve(out_.size() + 256 + count * 600); }

  /// The start tag with the header and the fields of the class. Raises `InvalidArgException` when
  /// the object's element name would not read back as one.
  template <class Object>
  void start(const Object& object) {
    startHeader(object);
    forEachField<Object>(
        [&](const auto& field) { attribute(field.opening(), object.*field.member); });
  }
  /// One attribute; `opening` is the name with everything before the value, see `Field::opening`.
  /// A double is a time double.
  void attribute(std::u16string_view opening, const CString& value);
  void attribute(std::u16string_view opening, std::int32_t value);
  void attribute(std::u16string_view opening, double time);
  /// Ends the start tag of an element that has children.
  void open() { out_.append(u">").append(lineBreak_); }
  void closeEmpty() { out_.append(u"/>").append(lineBreak_); }
  void close(const CDBObject& object);

 private:
  void startHeader(const CDBObject& object);

  std::u16string& out_;
  std::u16string_view lineBreak_;
};

/// Writes an object without parts.
template <class Object>
void appendElement(ElementWriter& writer, const Object& object) {
  writer.start(object);
  writer.closeEmpty();
}
// Those with parts stand beside their classes.
void appendElement(ElementWriter& writer, const CFGCol& column);
void appendElement(ElementWriter& writer, const CFGClass& object);
void appendElement(ElementWriter& writer, const CFGConfig& object);

/// Writes an object that is a part of another one. A failure is reported under its own number and
/// goes on to the one around it, which cannot be whole without it.
template <class Object>
void appendPart(OperationNumber operation, ElementWriter& writer, const Object& part) {
  Reported(operation, [&] { appendElement(writer, part); });
}

/// Adds the object to the document as `CDBObject::serializeXML` says. Throws when it cannot be
/// written, or when the document does not take it.
template <class Object>
int addElement(CMarkup* document, const Object& object) {
  if (!document) return 0;
  const std::u16string_view lineBreak = WrittenMarkup::lineBreakOf(*document);
  std::u16string text;
  ElementWriter writer(text, lineBreak);
  appendElement(writer, object);
  // The document puts its own line break behind an element.
  text.resize(text.size() - lineBreak.size());
  if (!WrittenMarkup::add(*document, text)) throw InvalidArgException();
  return 1;
}

}  // namespace kpx
