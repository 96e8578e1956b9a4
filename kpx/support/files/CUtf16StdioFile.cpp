#include "kpx/support/files/CUtf16StdioFile.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "kpx/report/Error.h"
#include "kpx/support/Operations.h"
#include "kpx/text/ByteOrderMark.h"
#include "kpx/text/CodePage.h"
#include "kpx/text/SingleByte.h"
#include "kpx/text/Utf.h"

namespace kpx {
namespace {

constexpr FileResult notOpen{FileStatus::notOpen, 0};
constexpr std::size_t wholeLine = std::numeric_limits<std::size_t>::max();

bool isLineEnd(char16_t unit) noexcept { return unit == u'\r' || unit == u'\n'; }

}  // namespace

CUtf16StdioFile::~CUtf16StdioFile() { Close(); }

// --- opening and closing ----------------------------------------------------------------------

int CUtf16StdioFile::Open(const CString& path, std::uint32_t flags, FileResult* exception) {
  const int opened = Guarded("CUtf16StdioFile::Open"_support, 0, [&] {
    if (!Close()) return 0;
    problem_ = notOpen;
    problem_ = openFile(path, flags);
    if (problem_ && canRead_) problem_ = readMark();
    if (problem_) return 1;
    input_.reset();
    update_.reset();
    return 0;
  });
  if (exception) *exception = problem_;
  return opened;
}

FileResult CUtf16StdioFile::openFile(const CString& path, std::uint32_t flags) {
  position_ = 0;
  hasLost_ = false;
  isBigEndian_ = false;
  lastWritten_ = 0;
  dropAccumulator();
  canWrite_ = (flags & (modeWrite | modeReadWrite)) != 0;
  canRead_ = (flags & modeWrite) == 0;
  isBinary_ = (flags & typeBinary) != 0;
  if (!canWrite_ && (flags & modeCreate) == 0) return fileSystem().openInput(path, input_);
  const UpdateMode mode = (flags & modeCreate) == 0       ? UpdateMode::existing
                          : (flags & modeNoTruncate) != 0 ? UpdateMode::existingOrNew
                                                          : UpdateMode::emptied;
  return fileSystem().openUpdate(path, mode, update_);
}

FileResult CUtf16StdioFile::readMark() {
  // A file that is created now has no mark that could speak against what the caller has set.
  std::uint64_t size = input_ ? input_->size() : 0;
  if (update_) {
    if (const FileResult result = update_->size(size); !result) return result;
    if (size == 0) return {};
  }
  isUnicode_ = false;
  char bytes[2];
  std::size_t done = 0;
  if (const FileResult result = readAt(0, bytes, sizeof bytes, done); !result) return result;
  const std::string_view start(bytes, done);
  isBigEndian_ = start == markOf(CodePage::utf16BigEndian);
  isUnicode_ = isBigEndian_ || start == markOf(CodePage::utf16LittleEndian);
  if (isUnicode_) position_ = sizeof bytes;
  return {};
}

int CUtf16StdioFile::Close() {
  if (!IsOpen()) {
    problem_ = {};
    return 1;
  }
  const int closed = Guarded("CUtf16StdioFile::Close"_support, 0, [&] {
    FileResult result = writePending();
    if (update_) {
      const FileResult atEnd = update_->close();
      if (result) result = atEnd;
    }
    if (result && hasLost_) result = {FileStatus::failed, 0};
    problem_ = result;
    return result ? 1 : 0;
  });
  input_.reset();
  update_.reset();
  pending_.clear();
  dropAccumulator();
  position_ = 0;
  return closed;
}

void CUtf16StdioFile::setUnicodeFile(bool isUnicode) noexcept {
  if (isUnicode != isUnicode_) dropAccumulator();
  isUnicode_ = isUnicode;
}

// --- reading ----------------------------------------------------------------------------------

FileResult CUtf16StdioFile::readAt(std::uint64_t offset, char* to, std::size_t count,
                                   std::size_t& done) {
  return input_ ? input_->readAt(offset, to, count, done)
                : update_->readAt(offset, to, count, done);
}

void CUtf16StdioFile::dropAccumulator() noexcept {
  accumulator_.clear();
  next_ = 0;
}

/// Reads the next block of the file; false at its end and after a failure.
bool CUtf16StdioFile::LoadAccumulator() {
  accumulator_.erase(0, next_);
  next_ = 0;
  char block[blockSize];
  std::size_t done = 0;
  problem_ = readAt(position_ + accumulator_.size() * unitBytes(), block, sizeof block, done);
  if (!problem_) return false;
  if (!isUnicode_) {
    decodeSingleByte(CodePage::windows1252, {block, done}, accumulator_);
    return done != 0;
  }
  // An odd byte at the end of the file is half a character.
  for (std::size_t i = 0; i + 1 < done; i += 2) {
    const auto low = static_cast<unsigned char>(block[isBigEndian_ ? i + 1 : i]);
    const auto high = static_cast<unsigned char>(block[isBigEndian_ ? i : i + 1]);
    accumulator_ += static_cast<char16_t>(high << 8 | low);
  }
  return done > 1;
}

bool CUtf16StdioFile::hasMore() { return next_ < accumulator_.size() || LoadAccumulator(); }

char16_t CUtf16StdioFile::take() noexcept {
  position_ += unitBytes();
  return accumulator_[next_++];
}

bool CUtf16StdioFile::ReadUnicodeString(CString& text, std::size_t most) {
  text.Empty();
  if (!hasMore()) return false;
  for (; hasMore();) {
    const auto from = accumulator_.begin() + static_cast<std::ptrdiff_t>(next_);
    const auto room = most - static_cast<std::size_t>(text.GetLength());
    const auto reach = std::min(room, accumulator_.size() - next_);
    const auto until = std::find_if(from, from + static_cast<std::ptrdiff_t>(reach), isLineEnd);
    const auto count = static_cast<std::size_t>(until - from);
    text.Append(std::u16string_view(accumulator_).substr(next_, count));
    next_ += count;
    position_ += count * 2;
    if (!hasMore()) break;
    if (isLineEnd(accumulator_[next_])) {
      take();
      // Kept: any second one of the two is taken, as files that were read so far expect it.
      if (hasMore() && isLineEnd(accumulator_[next_])) take();
      break;
    }
    if (static_cast<std::size_t>(text.GetLength()) == most) break;
  }
  return problem_.ok();
}

bool CUtf16StdioFile::ReadANSIString(CString& text, std::size_t most, bool keepsEnd) {
  text.Empty();
  if (!hasMore()) return false;
  while (static_cast<std::size_t>(text.GetLength()) < most && hasMore()) {
    char16_t unit = take();
    if (unit == u'\r' && !isBinary_ && hasMore() && accumulator_[next_] == u'\n') unit = take();
    if (unit != u'\n') {
      text += unit;
      continue;
    }
    if (keepsEnd) text += unit;
    break;
  }
  return problem_.ok();
}

int CUtf16StdioFile::ReadString(CString& text) {
  text.Empty();
  problem_ = notOpen;
  if (!canRead_ || !IsOpen()) return 0;
  return Guarded("CUtf16StdioFile::ReadString(CString&)"_support, 0, [&] {
    problem_ = writePending();
    if (!problem_) return 0;
    const bool read =
        isUnicode_ ? ReadUnicodeString(text, wholeLine) : ReadANSIString(text, wholeLine, false);
    if (!read) text.Empty();
    return read ? 1 : 0;
  });
}

template <class Unit>
Unit* CUtf16StdioFile::readInto(Unit* buffer, unsigned size) {
  problem_ = notOpen;
  if (!buffer || size < 2 || !canRead_ || !IsOpen()) return nullptr;
  constexpr OperationNumber operation = "CUtf16StdioFile::ReadString(char16_t*)"_support;
  return Guarded(operation, static_cast<Unit*>(nullptr), [&] {
    problem_ = writePending();
    if (!problem_) return static_cast<Unit*>(nullptr);
    CString text;
    const std::uint64_t start = position_;
    const bool read =
        isUnicode_ ? ReadUnicodeString(text, size - 1) : ReadANSIString(text, size - 1, true);
    if (!read) return static_cast<Unit*>(nullptr);
    if constexpr (sizeof(Unit) == sizeof(char16_t)) {
      *std::copy(text.begin(), text.end(), buffer) = 0;
    } else {
      // A character that the buffer would cut in halves comes whole with the next call.
      const int last = text.GetLength() - 1;
      const bool isCut = position_ - start == text.view().size() * unitBytes();
      if (isCut && last > 0 && isHighSurrogate(text[last]) && hasMore() &&
          isLowSurrogate(accumulator_[next_])) {
        accumulator_.replace(0, next_, 1, text[last]);
        next_ = 0;
        position_ -= unitBytes();
        text.Truncate(last);
      }
      const std::wstring wide = text.wide();
      *std::copy(wide.begin(), wide.end(), buffer) = 0;
    }
    return buffer;
  });
}

char16_t* CUtf16StdioFile::ReadString(char16_t* buffer, unsigned size) {
  return readInto(buffer, size);
}
wchar_t* CUtf16StdioFile::ReadString(wchar_t* buffer, unsigned size) {
  return readInto(buffer, size);
}

// --- writing ----------------------------------------------------------------------------------

FileResult CUtf16StdioFile::writePending() {
  if (pending_.empty()) return {};
  const FileResult result = update_->writeAt(position_ - pending_.size(), pending_);
  if (!result) hasLost_ = true;
  // What was not written stays missing; later lines keep their place behind it.
  pending_.clear();
  return result;
}

FileResult CUtf16StdioFile::append(std::string_view bytes) {
  dropAccumulator();
  pending_ += bytes;
  position_ += bytes.size();
  return pending_.size() >= blockSize ? writePending() : FileResult{};
}

FileResult CUtf16StdioFile::WriteUnicodeString(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size() * 2 + 2);
  if (position_ == 0) {
    bytes = markOf(isBigEndian_ ? CodePage::utf16BigEndian : CodePage::utf16LittleEndian);
  }
  for (const char16_t unit : text) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    bytes += isBigEndian_ ? high : low;
    bytes += isBigEndian_ ? low : high;
  }
  return append(bytes);
}

FileResult CUtf16StdioFile::WriteANSIString(std::u16string_view text) {
  std::string encoded;
  if (encodeSingleByte(CodePage::windows1252, text, encoded) != text.size()) {
    return {FileStatus::notEncodable, 0};
  }
  std::string bytes;
  bytes.reserve(encoded.size() + encoded.size() / 16);
  for (const char byte : encoded) {
    if (byte == '\n' && !isBinary_ && lastWritten_ != u'\r') bytes += '\r';
    bytes += byte;
    lastWritten_ = static_cast<unsigned char>(byte);
  }
  return append(bytes);
}

int CUtf16StdioFile::WriteString(const CString& text) {
  problem_ = notOpen;
  if (!canWrite_ || !update_) return 0;
  return Guarded("CUtf16StdioFile::WriteString"_support, 0, [&] {
    // Until the text is in the buffer, a failure of the memory has lost it.
    const bool hadLost = std::exchange(hasLost_, true);
    problem_ = isUnicode_ ? WriteUnicodeString(text) : WriteANSIString(text);
    if (problem_) hasLost_ = hadLost;
    return problem_ ? 1 : 0;
  });
}

std::int64_t CUtf16StdioFile::Seek(std::int64_t offset, std::uint32_t from) {
  problem_ = notOpen;
  if (!IsOpen()) return -1;
  return Guarded("CUtf16StdioFile::Seek"_support, std::int64_t{-1}, [&]() -> std::int64_t {
    problem_ = writePending();
    if (!problem_) return -1;
    std::uint64_t base = from == current ? position_ : 0;
    if (from == end) {
      if (input_) {
        base = input_->size();
      } else if (problem_ = update_->size(base); !problem_) {
        return -1;
      }
    }
    constexpr auto last = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const auto start = static_cast<std::int64_t>(std::min(base, last));
    if (from > end ||
        (offset < 0 ? -(offset + 1) >= start : static_cast<std::uint64_t>(offset) > last - base)) {
      problem_ = {FileStatus::failed, 0};
      return -1;
    }
    position_ = static_cast<std::uint64_t>(start + offset);
    dropAccumulator();
    lastWritten_ = 0;
    return static_cast<std::int64_t>(position_);
  });
}

}  // namespace kpx
