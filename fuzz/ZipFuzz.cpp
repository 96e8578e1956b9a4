#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "fuzz/Check.h"
#include "kpx/support/zip/Unzip.h"

using namespace kpx;

namespace {

constexpr std::u16string_view archivePath = u"archive.zip";
constexpr std::u16string_view root = u"out/";

/// A file system in memory that knows the archive and what is unpacked, and checks every path.
class MemoryFiles final : public FileSystem {
 public:
  explicit MemoryFiles(std::string_view archive) : archive_(archive) {}

  std::map<CString, std::string> files;
  std::set<CString> folders;

  FileResult openInput(const CString& path, std::unique_ptr<InputFile>& file) override {
    FUZZ_CHECK(path == archivePath);
    file = std::make_unique<Input>(archive_);
    return {};
  }
  FileResult info(const CString& path, FileInfo& info) override {
    info = {FileKind::folder, 0, true};
    if (folders.contains(checked(path))) return {};
    info.kind = FileKind::file;
    return {files.contains(path) ? FileStatus::ok : FileStatus::notFound, 0};
  }
  FileResult openReplacement(const CString& path, const ReplaceOptions&,
                             std::unique_ptr<ReplacementFile>& file) override {
    if (folders.contains(checked(path))) return {FileStatus::isFolder, 0};
    file = std::make_unique<Replacement>(files, path);
    return {};
  }
  FileResult remove(const CString& path) override {
    files.erase(path);
    return {};
  }
  FileResult createFolder(const CString& path) override {
    if (files.contains(checked(path))) return {FileStatus::exists, 0};
    return {folders.insert(path).second ? FileStatus::ok : FileStatus::exists, 0};
  }
  FileResult followLinks(const CString& path, CString& target) override {
    target = checked(path);
    return {};
  }

 private:
  class Input final : public InputFile {
   public:
    explicit Input(std::string_view bytes) : bytes_(bytes) {}
    std::uint64_t size() const noexcept override { return bytes_.size(); }
    FileResult readAt(std::uint64_t offset, char* to, std::size_t count,
                      std::size_t& done) override {
      done = offset < bytes_.size() ? bytes_.copy(to, count, static_cast<std::size_t>(offset)) : 0;
      return {};
    }

   private:
    std::string_view bytes_;
  };

  class Replacement final : public ReplacementFile {
   public:
    Replacement(std::map<CString, std::string>& files, const CString& path)
        : files_(files), path_(path) {}
    FileResult write(std::string_view bytes) override {
      bytes_ += bytes;
      return {};
    }
    FileResult takeAttributes() override { return {}; }
    FileResult flush() override { return {}; }
    FileResult close() override { return {}; }
    FileResult putInPlace(FileVersion*) override {
      files_[path_] = std::move(bytes_);
      return {};
    }

   private:
    std::map<CString, std::string>& files_;
    CString path_;
    std::string bytes_;
  };

  static FileResult failure() { return {FileStatus::failed, 0}; }

  /// Nothing may be touched outside the destination, on any system.
  static const CString& checked(const CString& path) {
    FUZZ_CHECK(path.StartsWith(root) || path == u"out");
    FUZZ_CHECK(path.FindOneOf(u"\\:*?\"<>|") == -1 && path.Find(u'\0') == -1);
    FUZZ_CHECK(path.Find(u"/../") == -1 && path.Find(u"//") == -1 && !path.EndsWith(u"/.."));
    return path;
  }

  std::string_view archive_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  MemoryFiles files({reinterpret_cast<const char*>(data), size});
  FileSystem* const before = setFileSystem(&files);
  UnzipOptions options;
  options.limits.totalBytes = 1 << 22;
  options.limits.entries = 1000;
  std::uint64_t reported = 0;
  options.progress = [&](const Progress& progress) {
    FUZZ_CHECK(progress.done >= reported && progress.done <= progress.total);
    reported = progress.done;
    return true;
  };
  const UnzipResult result = unzip(archivePath, u"out", options);
  FUZZ_CHECK(result.entries.size() <= options.limits.entries);
  std::uint64_t bytes = 0;
  std::size_t done = 0;
  for (const UnzipReceipt& receipt : result.entries) {
    FUZZ_CHECK(receipt.status == ZipStatus::done || isRefusal(receipt.status));
    FUZZ_CHECK(receipt.status == ZipStatus::done || !receipt.message().IsEmpty());
    bytes += receipt.bytes;
    done += receipt.status == ZipStatus::done ? 1 : 0;
  }
  FUZZ_CHECK(bytes <= options.limits.totalBytes);
  // What was written is what the receipts say, and nothing unfinished is left.
  std::uint64_t written = 0;
  for (const auto& [path, content] : files.files) {
    FUZZ_CHECK(path.Find(u".kpx-") == -1);
    written += content.size();
  }
  FUZZ_CHECK(written == bytes && files.files.size() <= done);

  options.testOnly = true;
  reported = 0;
  const std::size_t count = files.files.size();
  const UnzipResult tested = unzip(archivePath, u"", options);
  FUZZ_CHECK(tested.entries.size() == result.entries.size() && files.files.size() == count);
  setFileSystem(before);
  return 0;
}
