#include "kpx/config/ElementWriter.h"

#include "kpx/config/PersistentFields.h"
#include "kpx/report/Exceptions.h"
#include "kpx/text/NumberText.h"
#include "kpx/text/TimeValue.h"

namespace kpx {
namespace {

void appendInteger(std::u16string& out, std::int32_t value) {
  // Most integers of a configuration are 0 or a small code.
  if (value >= 0 && value <= 9) {
    out += static_cast<char16_t>(u'0' + value);
    return;
  }
  char16_t digits[11];
  char16_t* first = digits + 11;
  auto rest = static_cast<std::uint32_t>(value);
  if (value < 0) rest = 0 - rest;
  do {
    *--first = static_cast<char16_t>(u'0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  if (value < 0) *--first = u'-';
  out.append(first, digits + 11);
}

/// Raises `InvalidArgException` for a name that would not read back as one, since that would lose
/// the object.
CString writableNameOf(const CDBObject& object) {
  CString name = object.GetElementName();
  if (!WrittenMarkup::isName(name)) throw InvalidArgException();
  return name;
}

}  // namespace

void ElementWriter::startHeader(const CDBObject& object) {
  out_ += u'<';
  out_ += writableNameOf(object).view();
  forEachField<CDBObject>(
      [&](const auto& field) { attribute(field.opening(), object.*field.member); });
}

void ElementWriter::attribute(std::u16string_view opening, const CString& value) {
  out_ += opening;
  WrittenMarkup::appendValue(out_, value);
  out_ += u'"';
}

void ElementWriter::attribute(std::u16string_view opening, std::int32_t value) {
  out_ += opening;
  appendInteger(out_, value);
  out_ += u'"';
}

void ElementWriter::attribute(std::u16string_view opening, double time) {
  out_ += opening;
  if (time == 0.0) {
    out_ += zeroTimeText;
  } else {
    detail::appendTimeDoubleText(out_, time);
  }
  out_ += u'"';
}

void ElementWriter::close(const CDBObject& object) {
  out_ += u"</";
  out_ += writableNameOf(object).view();
  open();
}

}  // namespace kpx
