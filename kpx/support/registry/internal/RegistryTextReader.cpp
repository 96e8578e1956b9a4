#include "kpx/support/registry/internal/RegistryTextReader.h"

#include <utility>
#include <vector>

#include "kpx/support/files/StoredText.h"
#include "kpx/text/CaseFold.h"
#include "kpx/text/CodePage.h"
#include "kpx/text/HexDigit.h"

namespace kpx::detail {
namespace {

using Kind = RegistryChange::Kind;

bool isBlank(char16_t unit) noexcept { return unit == u' ' || unit == u'\t'; }

std::u16string_view withoutBlanksAtEnd(std::u16string_view text) noexcept {
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool isText(RegistryType type) noexcept {
  return type == RegistryType::string || type == RegistryType::expandString;
}

}  // namespace

bool RegistryTextReader::fail(CString message) {
  problem_ = {line_, std::move(message)};
  return false;
}

// --- places in the text -----------------------------------------------------------------------

void RegistryTextReader::passBlanks() noexcept {
  while (!atEnd() && isBlank(next())) ++place_;
}

void RegistryTextReader::passLine() noexcept {
  while (!isAtLineEnd()) ++place_;
}

bool RegistryTextReader::passLineEnd() {
  if (atEnd() || !isAtLineEnd()) return false;
  place_ += text_.compare(place_, 2, u"\r\n") == 0 ? 2 : 1;
  ++line_;
  return true;
}

bool RegistryTextReader::passWord(std::u16string_view word) noexcept {
  const std::u16string_view rest = std::u16string_view(text_).substr(place_, word.size());
  if (detail::compareTextNoCase(rest, word) != 0) return false;
  place_ += word.size();
  return true;
}

bool RegistryTextReader::passHex(int maxDigits, std::uint32_t& number) noexcept {
  number = 0;
  int digits = 0;
  for (unsigned digit = hexValue(next()); digit < 16; digit = hexValue(next())) {
    if (++digits > maxDigits) return false;
    number = number << 4 | digit;
    ++place_;
  }
  return digits != 0;
}

// --- the whole text ---------------------------------------------------------------------------

bool RegistryTextReader::decode(std::string_view bytes) {
  StoredText decoded = decodeStored(bytes);
  text_ = std::move(decoded.text);
  if (decoded.encoding.codePage == CodePage::windows1252) {
    problem_ = {0, u"the text is neither UTF-16 nor UTF-8"};
    return false;
  }
  if (decoded.firstInvalid != StoredText::none || !decoded.halfUnit.empty()) {
    problem_ = {0, u"the file holds bytes that are no text in its encoding"};
    return false;
  }
  return true;
}

bool RegistryTextReader::read(std::string_view bytes) {
  problem_ = {};
  if (!decode(bytes) || !readHeader()) return false;
  for (;;) {
    passBlanks();
    if (atEnd()) return true;
    if (passLineEnd()) continue;
    bool isRight = true;
    switch (next()) {
      case u';':
        passLine();
        continue;
      case u'[':
        isRight = readKey();
        break;
      case u'@':
      case u'"':
        isRight = readValue();
        break;
      default:
        return fail(u"this is neither a key in brackets nor a value with its name in quotes");
    }
    if (!isRight) return false;
    passBlanks();
    if (next() == u';') passLine();
    if (!isAtLineEnd()) return fail(u"something follows behind the end of the value");
  }
}

bool RegistryTextReader::readHeader() {
  passLine();
  const std::u16string_view line = withoutBlanksAtEnd(std::u16string_view(text_).substr(0, place_));
  if (line == registryTextHeader) return true;
  if (line == u"REGEDIT4") {
    return fail(u"this is the old form of version 4; export it again as version 5.00");
  }
  return fail(u"the first line has to be \"Windows Registry Editor Version 5.00\"");
}

// --- keys -------------------------------------------------------------------------------------

bool RegistryTextReader::readKey() {
  const std::size_t start = place_;
  passLine();
  std::u16string_view key =
      withoutBlanksAtEnd(std::u16string_view(text_).substr(start, place_ - start));
  // Names may hold the bracket too, so the last one counts.
  const std::size_t end = key.rfind(u']');
  if (end == key.npos) return fail(u"the bracket at the end of the key is missing");
  const std::u16string_view behind = key.substr(end + 1);
  if (behind.find_first_not_of(u" \t") != behind.npos &&
      behind[behind.find_first_not_of(u" \t")] != u';') {
    return fail(u"something follows behind the bracket of the key");
  }
  key = key.substr(1, end - 1);
  const bool removes = key.starts_with(u'-');
  if (removes) key.remove_prefix(1);
  CString path;
  if (!parseRegistryKey(CString(key), root_, path)) {
    return fail(u"the key does not begin with HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE");
  }
  key_ = std::move(path);
  std::vector<std::u16string_view> names;
  if (!splitKeyPath(key_, names)) {
    return fail(u"a name in the key is empty or too long, or there are too many of them");
  }
  if (removes && names.empty()) return fail(u"a root cannot be removed");
  RegistryStep step;
  step.root = root_;
  step.change.kind = removes ? Kind::removeTree : Kind::createKey;
  step.change.key = key_;
  step.line = line_;
  if (sink_) sink_(std::move(step));
  inKey_ = !removes;
  return true;
}

// --- values -----------------------------------------------------------------------------------

bool RegistryTextReader::readValue() {
  if (!inKey_) return fail(u"a value stands where no key is open for it");
  RegistryStep step;
  step.root = root_;
  step.change.key = key_;
  step.line = line_;
  if (next() == u'@') {
    ++place_;
  } else if (!readQuoted(step.change.name)) {
    return false;
  }
  const CString& name = step.change.name;
  if (name.view().size() > Registry::maxValueName || name.Find(u'\0') != -1) {
    return fail(u"that is no name that a value can have");
  }
  passBlanks();
  if (next() != u'=') return fail(u"\"=\" is missing behind the name of the value");
  ++place_;
  passBlanks();

  RegistryValue& value = step.change.value;
  step.change.kind = Kind::write;
  if (next() == u'-') {
    ++place_;
    step.change.kind = Kind::removeValue;
  } else if (next() == u'"') {
    CString text;
    if (!readQuoted(text)) return false;
    value = RegistryValue::ofText(text);
  } else if (passWord(u"dword:")) {
    if (!readNumber(value)) return false;
  } else if (passWord(u"hex")) {
    if (!readBytes(value)) return false;
  } else {
    return fail(u"the value is neither a text in quotes nor dword:, hex: or -");
  }
  if (value.bytes.size() > Registry::maxValueBytes) return fail(u"the value is too large");
  if (sink_) sink_(std::move(step));
  return true;
}

bool RegistryTextReader::readQuoted(CString& text) {
  const int begin = line_;
  ++place_;
  while (!atEnd()) {
    char16_t unit = next();
    if (unit == u'"') {
      ++place_;
      return true;
    }
    if (unit == u'\\') {
      ++place_;
      unit = next();
      if (unit != u'\\' && unit != u'"') {
        return fail(u"a backslash in quotes stands only before a backslash or a quote");
      }
    } else if (unit == u'\n' || (unit == u'\r' && text_.compare(place_, 2, u"\r\n") != 0)) {
      ++line_;
    }
    text += unit;
    ++place_;
  }
  line_ = begin;
  return fail(u"the quote that begins here has no end");
}

bool RegistryTextReader::readNumber(RegistryValue& value) {
  std::uint32_t number = 0;
  passBlanks();
  if (!passHex(8, number)) return fail(u"behind dword: belong one to eight hexadecimal digits");
  value = RegistryValue::ofNumber(number);
  return true;
}

bool RegistryTextReader::readBytes(RegistryValue& value) {
  std::uint32_t type = static_cast<std::uint32_t>(RegistryType::binary);
  if (next() == u'(') {
    ++place_;
    if (!passHex(8, type) || next() != u')') {
      return fail(u"between the brackets of hex( ) belongs the number of the type");
    }
    ++place_;
  }
  if (next() != u':') return fail(u"\":\" is missing behind hex");
  ++place_;
  value.type = static_cast<RegistryType>(type);
  if (!readBytesBehindColon(value.bytes)) return false;
  // The editor writes the 0 that ends a text in the system's store.
  std::string& bytes = value.bytes;
  if (isText(value.type) && bytes.size() >= 2 && bytes.size() % 2 == 0 &&
      bytes[bytes.size() - 2] == '\0' && bytes.back() == '\0') {
    bytes.resize(bytes.size() - 2);
  }
  return true;
}

bool RegistryTextReader::readBytesBehindColon(std::string& bytes) {
  passBlanks();
  while (passContinuation()) {
  }
  if (isAtLineEnd() || next() == u';') return true;
  for (;;) {
    std::uint32_t byte = 0;
    if (!passHex(2, byte)) return fail(u"one or two hexadecimal digits for a byte are missing");
    bytes += static_cast<char>(byte);
    if (bytes.size() > Registry::maxValueBytes + 2) return fail(u"the value is too large");
    passBlanks();
    if (next() != u',') return true;
    ++place_;
    passBlanks();
    while (passContinuation()) {
    }
  }
}

/// A backslash at the end of a line, with the blanks in front of what the next line has.
bool RegistryTextReader::passContinuation() {
  if (next() != u'\\') return false;
  const std::size_t place = place_++;
  passBlanks();
  if (!passLineEnd()) {
    place_ = place;
    return false;
  }
  passBlanks();
  return true;
}

}  // namespace kpx::detail
