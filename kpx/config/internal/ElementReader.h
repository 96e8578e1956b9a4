#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/config/CDBObject.h"
#include "kpx/report/Error.h"
#include "kpx/xml/AttributeReader.h"
#include "kpx/xml/CMarkup.h"

namespace kpx::detail {

/// The text of a time double that is 0.
inline constexpr std::u16string_view zeroTimeText = u"00.00.0000-00:00:00";

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

  void header(CDBObject& object);
  void read(std::u16string_view name, CString& field) { attributes_.read(name, field); }
  void read(std::u16string_view name, std::int32_t& field);

 private:
  void readTime(std::u16string_view name, double& field);

  GuardWatch watch_;
  bool matches_ = false;
  AttributeReader attributes_;
};

/// Reads the header of an object whose XML holds nothing else. Answers as `CDBObject::loadByXML`.
int readHeaderOnly(CMarkup* document, CDBObject& object);

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

}  // namespace kpx::detail
