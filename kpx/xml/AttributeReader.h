#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"
#include "kpx/xml/MarkupText.h"

namespace kpx {

/// Walks the attributes of one start tag in written order.
///
/// Reading all attributes of an element this way costs one pass over its tag, whether they are
/// walked with `next` or asked for by name with `find` in about the order in which they stand.
/// Odd syntax is read as far as it makes sense: values in single quotes or none, missing values.
///
///     for (AttributeReader attribute = document.ReadChildAttribs(); attribute.next();)
///       use(attribute.name(), attribute.value());
///
/// Points into the text of the document: valid until the document is changed or destroyed. Many
/// readers of one document may be at work at the same time.
class AttributeReader {
 public:
  /// Has no attributes.
  AttributeReader() noexcept = default;
  /// A whole start tag, from "<" through ">".
  KPX_API explicit AttributeReader(std::u16string_view startTag) noexcept;

  /// Goes on to the next attribute; false behind the last.
  KPX_API bool next() noexcept;
  /// Goes to the attribute with this name, to the first of them if it is repeated. Quick when
  /// attributes are asked for in the order in which they stand. Answers false and stays where it is
  /// when there is none.
  KPX_API bool find(std::u16string_view name) noexcept;
  /// Finds the attribute and stores its value; answers false and stores nothing if it is missing.
  KPX_API bool read(std::u16string_view name, CString& value);
  /// Back to before the first attribute.
  void rewind() noexcept {
    current_ = Span{first_, first_, first_, first_, first_};
    passedNames_ = {};
    passedAny_ = false;
  }

  /// The current attribute; empty before the first.
  KPX_API std::u16string_view name() const noexcept;
  /// The value with references resolved.
  KPX_API CString value() const;
  /// The same into a text whose memory is used again.
  KPX_API void value(CString& into) const;
  /// The value as it stands in the tag, without its quotes.
  KPX_API std::u16string_view rawValue() const noexcept;

  /// Where the current attribute stands in the tag, in units. Without a value, the value is an
  /// empty place behind the name or its "=".
  int nameBegin() const noexcept { return current_.nameBegin; }
  int nameEnd() const noexcept { return current_.nameEnd; }
  int valueBegin() const noexcept { return current_.valueBegin; }
  int valueEnd() const noexcept { return current_.valueEnd; }
  /// Where it ends: behind the closing quote.
  int end() const noexcept { return current_.end; }
  /// Whether the value stands between two quotes of one kind.
  bool isQuoted() const noexcept { return current_.end > current_.valueEnd; }

 private:
  struct Span {
    int nameBegin = 0;
    int nameEnd = 0;
    int valueBegin = 0;
    int valueEnd = 0;
    int end = 0;
  };
  bool scanUsual(int from, Span& found) const noexcept;
  static unsigned markOf(std::u16string_view name) noexcept;
  bool scan(int from, Span& found) const noexcept;
  bool isNext(std::u16string_view name) noexcept;
  bool findBetween(int from, int to, std::u16string_view name) noexcept;

  std::u16string_view tag_;
  int first_ = 0;  // behind the tag name
  int last_ = 0;   // where the "/>" or ">" begins
  Span current_;
  // Which names may stand up to the end of the current attribute, as marks; never one too few.
  void pass(unsigned mark) noexcept { passedNames_[mark / 64] |= std::uint64_t{1} << mark % 64; }
  bool mayHavePassed(unsigned mark) const noexcept {
    return passedAny_ || (passedNames_[mark / 64] >> mark % 64 & 1) != 0;
  }
  std::array<std::uint64_t, 4> passedNames_{};
  bool passedAny_ = false;
};

}  // namespace kpx
