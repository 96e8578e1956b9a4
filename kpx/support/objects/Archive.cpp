#include "kpx/support/objects/Archive.h"

#include <bit>
#include <cstring>
#include <limits>
#include <type_traits>

#include "kpx/report/Exceptions.h"
#include "kpx/text/CodePage.h"
#include "kpx/text/SingleByte.h"

namespace kpx {
namespace {

constexpr std::uint8_t longerThanByte = 0xFF;
constexpr std::uint16_t longerThanWord = 0xFFFF;
constexpr std::uint16_t wideMark = 0xFFFE;

/// Reads on and moves `position`. Apart from the class, whose functions other modules may replace
/// and which the compiler therefore does not merge: a language file has thousands of texts.
struct Cursor {
  std::string_view bytes;
  std::size_t& position;

  std::string_view take(std::size_t count) {
    if (count > bytes.size() - position) throw ArchiveEndException();
    position += count;
    return {bytes.data() + position - count, count};
  }

  // Put together by shifts, so that it is the same whatever order the processor has.
  template <class Number>
  Number number() {
    std::uint64_t bits = 0;
    int shift = 0;
    for (const char byte : take(sizeof(Number))) {
      bits |= std::uint64_t{static_cast<std::uint8_t>(byte)} << shift;
      shift += 8;
    }
    return static_cast<Number>(bits);
  }

  std::uint64_t textLength(bool& isWide) {
    auto byte = number<std::uint8_t>();
    if (byte != longerThanByte) return byte;
    auto word = number<std::uint16_t>();
    if (word == wideMark) {
      isWide = true;
      byte = number<std::uint8_t>();
      if (byte != longerThanByte) return byte;
      word = number<std::uint16_t>();
    }
    return word != longerThanWord ? word : number<std::uint32_t>();
  }
};

}  // namespace

std::string_view CArchive::readBytes(std::size_t count) {
  if (IsStoring()) throw InvalidArgException();
  return Cursor{bytes_, position_}.take(count);
}

void CArchive::writeBytes(std::string_view bytes) {
  if (IsLoading()) throw InvalidArgException();
  target_->append(bytes);
}

template <class Number>
CArchive& CArchive::readNumber(Number& value) {
  if (IsStoring()) throw InvalidArgException();
  value = Cursor{bytes_, position_}.number<Number>();
  return *this;
}

template <class Number>
CArchive& CArchive::writeNumber(Number value) {
  const std::uint64_t bits = static_cast<std::make_unsigned_t<Number>>(value);
  char bytes[sizeof(Number)];
  int shift = 0;
  for (char& byte : bytes) {
    byte = static_cast<char>(bits >> shift);
    shift += 8;
  }
  writeBytes({bytes, sizeof bytes});
  return *this;
}

CArchive& CArchive::operator>>(std::int8_t& value) { return readNumber(value); }
CArchive& CArchive::operator<<(std::int8_t value) { return writeNumber(value); }
CArchive& CArchive::operator>>(std::uint8_t& value) { return readNumber(value); }
CArchive& CArchive::operator<<(std::uint8_t value) { return writeNumber(value); }
CArchive& CArchive::operator>>(std::int16_t& value) { return readNumber(value); }
CArchive& CArchive::operator<<(std::int16_t value) { return writeNumber(value); }
CArchive& CArchive::operator>>(std::uint16_t& value) { return readNumber(value); }
CArchive& CArchive::operator<<(std::uint16_t value) { return writeNumber(value); }
CArchive& CArchive::operator>>(std::int32_t& value) { return readNumber(value); }
CArchive& CArchive::operator<<(std::int32_t value) { return writeNumber(value); }
CArchive& CArchive::operator>>(std::uint32_t& value) { return readNumber(value); }
CArchive& CArchive::operator<<(std::uint32_t value) { return writeNumber(value); }
CArchive& CArchive::operator>>(std::int64_t& value) { return readNumber(value); }
CArchive& CArchive::operator<<(std::int64_t value) { return writeNumber(value); }
CArchive& CArchive::operator>>(std::uint64_t& value) { return readNumber(value); }
CArchive& CArchive::operator<<(std::uint64_t value) { return writeNumber(value); }
CArchive& CArchive::operator>>(char& value) { return readNumber(value); }
CArchive& CArchive::operator<<(char value) { return writeNumber(value); }
CArchive& CArchive::operator>>(char16_t& value) { return readNumber(value); }
CArchive& CArchive::operator<<(char16_t value) { return writeNumber(value); }

CArchive& CArchive::operator>>(wchar_t& value) {
  char16_t unit = 0;
  *this >> unit;
  value = static_cast<wchar_t>(unit);
  return *this;
}
CArchive& CArchive::operator<<(wchar_t value) {
  const auto unit = static_cast<char16_t>(value);
  if (static_cast<wchar_t>(unit) != value) throw InvalidArgException();
  return *this << unit;
}

CArchive& CArchive::operator>>(bool& value) {
  std::uint8_t byte = 0;
  *this >> byte;
  value = byte != 0;
  return *this;
}
CArchive& CArchive::operator>>(float& value) {
  std::uint32_t bits = 0;
  *this >> bits;
  value = std::bit_cast<float>(bits);
  return *this;
}
CArchive& CArchive::operator>>(double& value) {
  std::uint64_t bits = 0;
  *this >> bits;
  value = std::bit_cast<double>(bits);
  return *this;
}

CArchive& CArchive::operator<<(bool value) {
  return *this << static_cast<std::uint8_t>(value ? 1 : 0);
}
CArchive& CArchive::operator<<(float value) { return *this << std::bit_cast<std::uint32_t>(value); }
CArchive& CArchive::operator<<(double value) {
  return *this << std::bit_cast<std::uint64_t>(value);
}

void CArchive::writeTextLength(std::size_t length) {
  if (length < longerThanByte) {
    *this << static_cast<std::uint8_t>(length);
    return;
  }
  *this << longerThanByte;
  // The word of the mark itself is no length to readers of texts without one, so nobody writes it.
  if (length < wideMark) {
    *this << static_cast<std::uint16_t>(length);
    return;
  }
  *this << longerThanWord << static_cast<std::uint32_t>(length);
}

ArchivedText CArchive::readText() {
  if (IsStoring()) throw InvalidArgException();
  std::size_t position = position_;
  Cursor cursor{bytes_, position};
  ArchivedText text;
  const std::uint64_t length = cursor.textLength(text.isWide);
  const std::size_t unitBytes = text.isWide ? sizeof(char16_t) : 1;
  if (length > (bytes_.size() - position) / unitBytes) throw ArchiveEndException();
  if (length > static_cast<std::uint64_t>(std::numeric_limits<int>::max())) {
    throw InvalidArgException();
  }
  text.bytes = cursor.take(static_cast<std::size_t>(length) * unitBytes);
  position_ = position;
  return text;
}

void ArchivedText::assignTo(CString& text) const {
  std::u16string& units = text.units();
  const std::size_t count = isWide ? bytes.size() / sizeof(char16_t) : bytes.size();
  units.reserve(count);  // what may fail comes before the old text goes
  if (!isWide) {
    units.clear();
    decodeSingleByte(CodePage::windows1252, bytes, units);
    return;
  }
  units.resize(count);
  if constexpr (std::endian::native == std::endian::little) {
    if (count != 0) std::memcpy(units.data(), bytes.data(), bytes.size());
  } else {
    for (std::size_t i = 0; i < count; ++i) {
      const auto low = static_cast<std::uint8_t>(bytes[i * 2]);
      const auto high = static_cast<std::uint8_t>(bytes[i * 2 + 1]);
      units[i] = static_cast<char16_t>(low | high << 8);
    }
  }
}

CArchive& CArchive::operator>>(CString& text) {
  const std::size_t start = position_;
  try {
    readText().assignTo(text);
  } catch (...) {
    position_ = start;
    throw;
  }
  return *this;
}

CArchive& CArchive::operator<<(const CString& text) {
  const std::u16string_view units = text;
  *this << longerThanByte << wideMark;
  writeTextLength(units.size());
  std::size_t end = target_->size();
  target_->append(units.size() * 2, '\0');
  for (const char16_t unit : units) {
    (*target_)[end++] = static_cast<char>(unit);
    (*target_)[end++] = static_cast<char>(unit >> 8);
  }
  return *this;
}

}  // namespace kpx
