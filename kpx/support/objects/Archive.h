#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// A text as it lies in an archive.
struct ArchivedText {
  std::string_view bytes;  // of the characters; part of what the archive reads from
  bool isWide = false;     // UTF-16, else Windows-1252

  /// Makes it a text, in the memory of the old one where that is enough. Throws std::bad_alloc,
  /// with the old text as it was.
  KPX_API void assignTo(CString& text) const;
};

/// Values one after the other as bytes, in the framing that language files and binary registry
/// values carry: numbers little-endian in their own width, texts with their length in front.
///
/// An archive either reads from bytes that remain the caller's, or appends to a byte string of the
/// caller. Reading behind the end raises ArchiveEndException, and the archive stays in front of the
/// value that was not there whole; a stored length is compared with the bytes that remain before
/// any memory is taken. Reading from an archive that writes, and the other way round, raises
/// InvalidArgException.
///
/// Use the types with a stated width: a `long` has 32 bits in stored data, but not on every system.
class KPX_API CArchive {
 public:
  /// Reads from bytes that must outlive the archive.
  explicit CArchive(std::string_view bytes) noexcept : bytes_(bytes) {}
  /// Appends to a byte string, which must outlive the archive; not nullptr.
  explicit CArchive(std::string* target) noexcept : target_(target) {}
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  bool IsStoring() const noexcept { return target_ != nullptr; }
  bool IsLoading() const noexcept { return target_ == nullptr; }

  /// Of an archive that reads: bytes from its beginning to the next value, and from there to the
  /// end.
  std::size_t position() const noexcept { return position_; }
  std::size_t remaining() const noexcept { return bytes_.size() - position_; }

  // --- numbers; a bool takes one byte -------------------------------------------------------

  CArchive& operator>>(std::int8_t& value);
  CArchive& operator>>(std::uint8_t& value);
  CArchive& operator>>(std::int16_t& value);
  CArchive& operator>>(std::uint16_t& value);
  CArchive& operator>>(std::int32_t& value);
  CArchive& operator>>(std::uint32_t& value);
  CArchive& operator>>(std::int64_t& value);
  CArchive& operator>>(std::uint64_t& value);
  CArchive& operator>>(char& value);
  CArchive& operator>>(char16_t& value);
  /// As one UTF-16 unit on every system; a character that takes two raises InvalidArgException.
  CArchive& operator>>(wchar_t& value);
  CArchive& operator>>(bool& value);
  CArchive& operator>>(float& value);
  CArchive& operator>>(double& value);

  CArchive& operator<<(std::int8_t value);
  CArchive& operator<<(std::uint8_t value);
  CArchive& operator<<(std::int16_t value);
  CArchive& operator<<(std::uint16_t value);
  CArchive& operator<<(std::int32_t value);
  CArchive& operator<<(std::uint32_t value);
  CArchive& operator<<(std::int64_t value);
  CArchive& operator<<(std::uint64_t value);
  CArchive& operator<<(char value);
  CArchive& operator<<(char16_t value);
  CArchive& operator<<(wchar_t value);
  CArchive& operator<<(bool value);
  CArchive& operator<<(float value);
  CArchive& operator<<(double value);

  // --- texts --------------------------------------------------------------------------------

  /// An optional mark (byte FF, word FFFE) that the characters are UTF-16; the length in
  /// characters as a byte, or FF and a word, or FF, FFFF and 32 bits; the characters. Those of one
  /// byte are Windows-1252. A text longer than a CString can be raises InvalidArgException.
  CArchive& operator>>(CString& text);
  /// Always written as UTF-16, with the shortest form of the length.
  CArchive& operator<<(const CString& text);
  template <detail::TextOperand Text>
  requires(TextLike<Text>) CArchive& operator<<(const Text& text) {
    CString copy;
    copy = text;
    return *this << copy;
  }
  /// A narrow text has no known encoding, and an address is nothing to store.
  CArchive& operator<<(const void* pointer) = delete;

  /// A text without a copy of it.
  ArchivedText readText();

  // --- bytes as they are --------------------------------------------------------------------

  /// The next `count` bytes; valid as long as the bytes that are read from.
  std::string_view readBytes(std::size_t count);
  void writeBytes(std::string_view bytes);

 private:
  template <class Number>
  KPX_LOCAL CArchive& readNumber(Number& value);
  template <class Number>
  KPX_LOCAL CArchive& writeNumber(Number value);
  KPX_LOCAL void writeTextLength(std::size_t length);

  std::string_view bytes_;
  std::size_t position_ = 0;
  std::string* target_ = nullptr;
};

}  // namespace kpx
