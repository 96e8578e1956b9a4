#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kpx/report/Error.h"
#include "kpx/text/CString.h"
#include "kpx/xml/CMarkup.h"

namespace kpx {
class CDBObject;
class CFGValue;
class CFGCodedValue;
class CFGRange;
class CFGCommand;
class CFGCol;
class CFGClass;
class CFGConfig;
class CJob;
class CProject;
class CUser;
class CFGRow;
class CFGTable;
}  // namespace kpx

namespace kpx::detail {

/// Writes persistent objects as markup text, each element on a line of its own as the document
/// itself would write it.
///
/// A whole object is written as one text and handed to the document once: setting attribute by
/// attribute would move the rest of the document's text for each of them.
class ElementWriter {
 public:
  explicit ElementWriter(std::u16string& out) noexcept : out_(out) {}

  /// Room for this many columns of ordinary length, with their values.
  void reserveColumns(std::size_t count) { out_.reserve(out_.size() + 256 + count * 600); }

  /// The start tag's name and the six header attributes.
  void start(const CDBObject& object);
  /// Attributes; `opening` is the name with everything before the value: u" Name=\"".
  void attribute(std::u16string_view opening, const CString& value);
  void attribute(std::u16string_view opening, std::int32_t value);
  /// Ends the start tag of an element that has children.
  void open() { out_ += u">\r\n"; }
  void closeEmpty() { out_ += u"/>\r\n"; }
  void close(const CDBObject& object);

 private:
  void timeAttribute(std::u16string_view opening, double time);

  std::u16string& out_;
};

/// The object's element name. Raises `InvalidArgException` for one that would not read back as a
/// name, since that would lose the object.
CString writableNameOf(const CDBObject& object);

// Each stands beside its class.
void appendElement(ElementWriter& writer, const CFGValue& value);
void appendElement(ElementWriter& writer, const CFGCodedValue& value);
void appendElement(ElementWriter& writer, const CFGRange& range);
void appendElement(ElementWriter& writer, const CFGCommand& command);
void appendElement(ElementWriter& writer, const CFGCol& column);
void appendElement(ElementWriter& writer, const CFGClass& object);
void appendElement(ElementWriter& writer, const CFGConfig& object);
void appendElement(ElementWriter& writer, const CJob& job);
void appendElement(ElementWriter& writer, const CProject& project);
void appendElement(ElementWriter& writer, const CUser& user);
void appendElement(ElementWriter& writer, const CFGRow& row);
void appendElement(ElementWriter& writer, const CFGTable& table);

/// Writes an object that is a part of another one. A failure is reported under its own number and
/// goes on to the one around it, which cannot be whole without it.
template <class Object>
void appendPart(OperationNumber operation, ElementWriter& writer, const Object& part) {
  Reported(operation, [&] { appendElement(writer, part); });
}

/// Adds the object to the document as `CDBObject::serializeXML` says.
template <class Object>
int addElement(CMarkup* document, const Object& object) {
  if (!document) return 0;
  std::u16string text;
  ElementWriter writer(text);
  appendElement(writer, object);
  text.resize(text.size() - 2);  // the document puts its own line break behind an element
  const GuardWatch watch;
  if (document->AddSubDoc(std::u16string_view(text))) return 1;
  watch.passOn();
  return 0;
}

}  // namespace kpx::detail
