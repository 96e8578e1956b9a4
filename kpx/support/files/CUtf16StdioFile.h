#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "kpx/platform/FileSystem.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// A text file that is read and written line by line: UTF-16 with a byte-order mark, or ANSI text,
/// which is Windows-1252 on every system. One thread at a time may use it.
///
/// What is written may stay in memory until `Close`, `Seek` or a read; only when `Close` answers 1
/// has everything reached the system. `problem` tells why an operation failed. Nothing throws;
/// unexpected failures are reported with the number given.
class KPX_API CUtf16StdioFile {
 public:
  /// Flags of `Open`, with the framework's values. Exactly one of the first three.
  enum OpenFlags : std::uint32_t {
    modeRead = 0x0000,
    modeWrite = 0x0001,
    modeReadWrite = 0x0002,
    modeCreate = 0x1000,      // a new file; one that exists is emptied
    modeNoTruncate = 0x2000,  // with modeCreate: one that exists is kept; writing begins at 0
    typeText = 0x4000,        // the default
    typeBinary = 0x8000,      // ANSI text: no translation of line ends
  };
  /// Places that `Seek` counts from.
  enum SeekPosition : std::uint32_t { begin = 0, current = 1, end = 2 };

  CUtf16StdioFile() noexcept = default;
  CUtf16StdioFile(const CUtf16StdioFile&) = delete;
  CUtf16StdioFile& operator=(const CUtf16StdioFile&) = delete;
  virtual ~CUtf16StdioFile();

  /// Opens a file, and closes the one open before. Other flags, such as those for sharing, are
  /// passed over. When the file is opened for reading and begins with FF FE or FE FF, it is a
  /// Unicode file and reading starts behind the mark; any other is an ANSI file. 1, or 0 with the
  /// reason in `exception` if that is given. Error 910221.
  int Open(const CString& path, std::uint32_t flags, FileResult* exception = nullptr);
  /// 0 when anything that was written since `Open` may be missing in the file. Error 910222.
  int Close();
  bool IsOpen() const noexcept { return input_ != nullptr || update_ != nullptr; }

  bool IsUnicodeFile() const noexcept { return isUnicode_; }
  /// To be set before the first line is written to a new Unicode file.
  void setUnicodeFile(bool isUnicode) noexcept;

  /// Reads a line without its end; 0 at the end of the file and after a failure, with the text
  /// empty.
  ///
  /// In a Unicode file carriage return and line feed each end a line, and one of them right
  /// behind a line end belongs to it: so CR LF is one line end, and so are LF LF and CR CR, which
  /// swallow an empty line. In an ANSI file lines end with LF, in text mode with CR LF too.
  /// Error 910223.
  int ReadString(CString& text);
  /// Reads a line into a buffer, at most `size` - 1 characters and a 0; the rest of a longer line
  /// comes with the next calls. As the standard text file does it, the line feed of an ANSI file is
  /// part of what is read. The buffer, or nullptr at the end of the file, after a failure and for a
  /// size below 2. Error 910224.
  char16_t* ReadString(char16_t* buffer, unsigned size);
  wchar_t* ReadString(wchar_t* buffer, unsigned size);

  /// Writes a text; line ends are the caller's. A Unicode file gets its mark when the position is
  /// 0, and is little-endian unless it was opened as a big-endian one. In an ANSI file a LF becomes
  /// CR LF in text mode unless a CR stands in front of it; a text with a character that
  /// Windows-1252 does not have is refused as a whole. 1, or 0 after a failure. Error 910225.
  int WriteString(const CString& text);

  /// Moves to a byte; the answer is the new position, or -1, with the old one kept, for places in
  /// front of the file and after a failure. Error 910226.
  std::int64_t Seek(std::int64_t offset, std::uint32_t from);
  std::int64_t SeekToBegin() { return Seek(0, begin); }
  std::int64_t SeekToEnd() { return Seek(0, end); }
  /// The byte that is read or written next.
  std::uint64_t GetPosition() const noexcept { return position_; }

  /// What came of the last operation; `ok` at the end of the file too.
  const FileResult& problem() const noexcept { return problem_; }

 private:
  static constexpr std::size_t blockSize = 4096;

  KPX_LOCAL FileResult openFile(const CString& path, std::uint32_t flags);
  KPX_LOCAL FileResult readMark();
  KPX_LOCAL FileResult readAt(std::uint64_t offset, char* to, std::size_t count, std::size_t& done);
  KPX_LOCAL FileResult writePending();
  KPX_LOCAL bool LoadAccumulator();
  KPX_LOCAL bool hasMore();
  KPX_LOCAL char16_t take() noexcept;
  KPX_LOCAL void dropAccumulator() noexcept;
  std::size_t unitBytes() const noexcept { return isUnicode_ ? 2 : 1; }

  template <class Unit>
  Unit* readInto(Unit* buffer, unsigned size);
  KPX_LOCAL bool ReadUnicodeString(CString& text, std::size_t most);
  KPX_LOCAL bool ReadANSIString(CString& text, std::size_t most, bool keepsEnd);
  KPX_LOCAL FileResult WriteUnicodeString(std::u16string_view text);
  KPX_LOCAL FileResult WriteANSIString(std::u16string_view text);
  KPX_LOCAL FileResult append(std::string_view bytes);

  std::unique_ptr<InputFile> input_;    // when it is open for reading only
  std::unique_ptr<UpdateFile> update_;  // otherwise
  bool canRead_ = false;
  bool canWrite_ = false;
  bool isBinary_ = false;
  bool isUnicode_ = false;
  bool isBigEndian_ = false;
  bool hasLost_ = false;  // something that was written did not get into the file

  std::uint64_t position_ = 0;  // of the next character, in bytes
  std::u16string accumulator_;  // characters from position_ on
  std::size_t next_ = 0;        // the first of them that is not yet read
  std::string pending_;         // bytes that end at position_ and are not yet written
  char16_t lastWritten_ = 0;
  FileResult problem_;
};

}  // namespace kpx
