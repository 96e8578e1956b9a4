#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/Check.h"
#include "kpx/support/files/CUtf16StdioFile.h"

using namespace kpx;

namespace {

/// One file in memory, whatever it is called.
class MemoryFile final : public FileSystem {
 public:
  std::string content;

  FileResult openInput(const CString&, std::unique_ptr<InputFile>& file) override {
    file = std::make_unique<Input>(content);
    return {};
  }
  FileResult openUpdate(const CString&, UpdateMode mode,
                        std::unique_ptr<UpdateFile>& file) override {
    if (mode == UpdateMode::emptied) content.clear();
    file = std::make_unique<Update>(content);
    return {};
  }

 private:
  static FileResult copy(const std::string& from, std::uint64_t offset, char* to, std::size_t count,
                         std::size_t& done) {
    done = offset < from.size() ? from.copy(to, count, static_cast<std::size_t>(offset)) : 0;
    return {};
  }

  class Input final : public InputFile {
   public:
    explicit Input(std::string& bytes) : bytes_(bytes) {}
    std::uint64_t size() const noexcept override { return bytes_.size(); }
    FileResult readAt(std::uint64_t offset, char* to, std::size_t count,
                      std::size_t& done) override {
      return copy(bytes_, offset, to, count, done);
    }

   private:
    std::string& bytes_;
  };

  class Update final : public UpdateFile {
   public:
    explicit Update(std::string& bytes) : bytes_(bytes) {}
    FileResult size(std::uint64_t& bytes) override {
      bytes = bytes_.size();
      return {};
    }
    FileResult readAt(std::uint64_t offset, char* to, std::size_t count,
                      std::size_t& done) override {
      return copy(bytes_, offset, to, count, done);
    }
    FileResult writeAt(std::uint64_t offset, std::string_view bytes) override {
      const auto place = static_cast<std::size_t>(offset);
      if (bytes_.size() < place + bytes.size()) bytes_.resize(place + bytes.size());
      bytes_.replace(place, bytes.size(), bytes);
      return {};
    }
    FileResult close() override { return {}; }

   private:
    std::string& bytes_;
  };
};

/// All lines, whole or in pieces through a buffer.
std::vector<CString> linesOf(std::uint32_t flags, unsigned bufferSize) {
  CUtf16StdioFile file;
  FUZZ_CHECK(file.Open(u"a", flags) != 0);
  std::vector<CString> lines;
  std::vector<char16_t> buffer(bufferSize);
  CString line;
  while (bufferSize != 0 ? file.ReadString(buffer.data(), bufferSize) != nullptr
                         : file.ReadString(line) != 0) {
    lines.push_back(bufferSize != 0 ? CString(buffer.data()) : line);
  }
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  MemoryFile memory;
  setFileSystem(&memory);
  memory.content.assign(reinterpret_cast<const char*>(data), size);
  const std::vector<CString> lines = linesOf(CUtf16StdioFile::modeRead, 0);
  FUZZ_CHECK(linesOf(CUtf16StdioFile::modeReadWrite, 0) == lines);
  FUZZ_CHECK(memory.content.size() == size);

  // In pieces the lines of a Unicode file have the same characters.
  CUtf16StdioFile file;
  FUZZ_CHECK(file.Open(u"a", CUtf16StdioFile::modeRead) != 0);
  if (file.IsUnicodeFile()) {
    std::u16string whole;
    std::u16string pieces;
    for (const CString& line : lines) whole += CString(line.GetString()).view();
    const bool hasZero = std::any_of(lines.begin(), lines.end(),
                                     [](const CString& line) { return line.Find(u'\0') != -1; });
    for (const CString& piece : linesOf(CUtf16StdioFile::modeRead, 4)) pieces += piece.view();
    FUZZ_CHECK(hasZero || whole == pieces);
  }
  file.Close();

  // Written with line ends that the reader takes for one, they come back.
  file.setUnicodeFile(true);
  FUZZ_CHECK(file.Open(u"a", CUtf16StdioFile::modeCreate | CUtf16StdioFile::modeWrite) != 0);
  for (const CString& line : lines) {
    CString text = line;
    text.Replace(u'\r', u' ');
    text.Replace(u'\n', u' ');
    FUZZ_CHECK(file.WriteString(text + u"\r\n") != 0);
  }
  FUZZ_CHECK(file.Close() != 0);
  const std::vector<CString> again = linesOf(CUtf16StdioFile::modeRead, 0);
  FUZZ_CHECK(again.size() == lines.size());
  setFileSystem(nullptr);
  return 0;
}
