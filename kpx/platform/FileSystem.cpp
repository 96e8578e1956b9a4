#include "kpx/platform/FileSystem.h"

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>

namespace kpx {

namespace {

std::atomic<FileSystem*> installedFiles{nullptr};

constexpr std::u16string_view separators =
#ifdef _WIN32
    u"/\\";
#else
    u"/";
#endif

// What a file's name follows: also the drive, whose current folder is meant without a separator.
constexpr std::u16string_view folderEnds =
#ifdef _WIN32
    u"/\\:";
#else
    separators;
#endif

// The folder of a path with its separator; empty for a bare name.
std::u16string_view folderOf(std::u16string_view path) noexcept {
  return path.substr(0, path.find_last_of(folderEnds) + 1);
}

// The root keeps its separator.
std::u16string_view withoutLastSeparators(std::u16string_view path) noexcept {
  while (path.size() > 1 && separators.find(path.back()) != separators.npos) path.remove_suffix(1);
  return path;
}

/// Counts what is written for the version that the file has afterwards.
class DigestedFile final : public OutputFile {
 public:
  explicit DigestedFile(OutputFile& file) noexcept : file_(file) {}
  FileResult write(std::string_view bytes) override {
    digest_.add(bytes);
    return file_.write(bytes);
  }
  FileResult flush() override { return file_.flush(); }
  FileResult close() override { return file_.close(); }
  std::uint64_t digest() const noexcept { return digest_.value(); }

 private:
  OutputFile& file_;
  ContentDigest digest_;
};

FileResult fill(ReplacementFile& file, const FileSystem::ContentWriter& writeContent,
                FileVersion* version) {
  if (version == nullptr) return writeContent(file);
  DigestedFile digested(file);
  const FileResult result = writeContent(digested);
  version->digest = digested.digest();
  return result;
}

}  // namespace

CString FileResult::message() const {
  switch (status) {
    case FileStatus::ok:
      return {};
    case FileStatus::notFound:
      return u"there is no such file or folder";
    case FileStatus::noPermission:
      return u"permission is missing";
    case FileStatus::exists:
      return u"something of that name exists already";
    case FileStatus::isFolder:
      return u"that is a folder";
    case FileStatus::notFolder:
      return u"a folder is needed, and an empty one to remove it";
    case FileStatus::notRegularFile:
      return u"that is no regular file";
    case FileStatus::badName:
      return u"the system does not take that name";
    case FileStatus::tooLarge:
      return u"the file is too large";
    case FileStatus::noSpace:
      return u"there is no space left";
    case FileStatus::noMemory:
      return u"there is not enough memory";
    case FileStatus::notOpen:
      return u"no file is open for that";
    case FileStatus::notEncodable:
      return u"the file's encoding does not have one of the characters";
    case FileStatus::locked:
      return u"another program is changing it";
    case FileStatus::changed:
      return u"another program has changed it since it was read";
    case FileStatus::displaced:
      return u"another program put something else in its place";
    case FileStatus::failed:
      break;
  }
  return CString::fromUtf8("the system reports error " + std::to_string(systemCode));
}

OutputFile::~OutputFile() = default;
InputFile::~InputFile() = default;
UpdateFile::~UpdateFile() = default;
FileSystem::~FileSystem() = default;

// What a file system does not do.
namespace {
constexpr FileResult notHere{FileStatus::failed, 0};
}
FileResult FileSystem::read(const CString&, FileBytes&, std::uint64_t, FileVersion*) {
  return notHere;
}
FileResult FileSystem::openInput(const CString&, std::unique_ptr<InputFile>&) { return notHere; }
FileResult FileSystem::info(const CString&, FileInfo&) { return notHere; }
FileResult FileSystem::version(const CString&, FileVersion&) { return notHere; }
FileResult FileSystem::openAppend(const CString&, std::unique_ptr<OutputFile>&) { return notHere; }
FileResult FileSystem::openUpdate(const CString&, UpdateMode, std::unique_ptr<UpdateFile>&) {
  return notHere;
}
FileResult FileSystem::openReplacement(const CString&, const ReplaceOptions&,
                                       std::unique_ptr<ReplacementFile>&) {
  return notHere;
}
FileResult FileSystem::lock(const CString&, std::unique_ptr<FileLock>&, std::chrono::milliseconds) {
  return notHere;
}
FileResult FileSystem::remove(const CString&) { return notHere; }
FileResult FileSystem::createFolder(const CString&) { return notHere; }
FileResult FileSystem::list(const CString&, std::vector<CString>&) { return notHere; }
FileResult FileSystem::followLinks(const CString&, CString&) { return notHere; }

bool FileSystem::exists(const CString& path) {
  FileInfo found;
  return info(path, found).ok();
}

FileResult FileSystem::createFolders(const CString& path) {
  // Upward to the first folder that exists or can be created, then down again.
  std::vector<std::u16string_view> missing{withoutLastSeparators(path)};
  FileResult result = createFolder(missing.back());
  while (result.status == FileStatus::notFound) {
    const std::u16string_view above = withoutLastSeparators(folderOf(missing.back()));
    if (above.empty() || above == missing.back()) return result;
    missing.push_back(above);
    result = createFolder(above);
  }
  missing.pop_back();
  while ((result || result.status == FileStatus::exists) && !missing.empty()) {
    result = createFolder(missing.back());
    missing.pop_back();
  }
  if (result.status != FileStatus::exists) return result;
  FileInfo found;
  result = info(path, found);
  return result && found.kind != FileKind::folder ? FileResult{FileStatus::notFolder, 0} : result;
}

FileResult FileSystem::replaceFile(const CString& path, const ContentWriter& writeContent,
                                   const ReplaceOptions& options) {
  std::unique_ptr<ReplacementFile> file;
  FileVersion version;
  FileVersion* const written = options.written != nullptr ? &version : nullptr;
  FileResult result = openReplacement(path, options, file);
  if (result) result = fill(*file, writeContent, written);
  if (result) result = file->takeAttributes();
  if (result && options.durability == Durability::flushed) result = file->flush();
  if (result) result = file->close();
  if (result && options.expected != nullptr) result = compareVersion(path, *options.expected);
  if (result) result = file->putInPlace(written);
  if (result && written != nullptr) *options.written = version;
  return result;
}

FileResult FileSystem::replaceFile(const CString& path, std::string_view bytes,
                                   const ReplaceOptions& options) {
  return replaceFile(
      path, [&](OutputFile& file) { return file.write(bytes); }, options);
}

FileResult FileSystem::replaceUnchanged(const CString& path, const ContentWriter& writeContent,
                                        FileVersion& version, std::chrono::milliseconds patience) {
  std::unique_ptr<FileLock> held;
  if (const FileResult result = lock(path, held, patience); !result) return result;
  // Told before the work of writing and, since not every program asks for the lock, after it.
  if (const FileResult result = compareVersion(path, version); !result) return result;
  ReplaceOptions options;
  options.expected = &version;
  options.written = &version;
  return replaceFile(path, writeContent, options);
}

FileResult FileSystem::changeFile(const CString& path, const ContentChange& change,
                                  std::chrono::milliseconds patience) {
  std::unique_ptr<FileLock> held;
  FileResult result = lock(path, held, patience);
  FileBytes bytes;
  FileVersion version;
  if (result) result = read(path, bytes, maxReadBytes, &version);
  if (result.status == FileStatus::notFound && held) result = {};
  std::string now;
  if (result) result = change(bytes.view(), version, now);
  if (!result || now == bytes.view()) return result;
  bytes = FileBytes();
  // Not every program asks for the lock.
  ReplaceOptions options;
  options.expected = &version;
  return replaceFile(path, now, options);
}

FileResult FileSystem::compareVersion(const CString& path, const FileVersion& expected) {
  FileVersion now;
  const FileResult result = version(path, now);
  if (!result) return result;
  // What is the same but for the digest may still have been changed within a tick of the clock.
  now.digest = expected.digest;
  if (now != expected) return {FileStatus::changed, 0};
  if (expected.digest == 0) return {};
  FileBytes bytes;
  if (const FileResult reading = read(path, bytes); !reading) return reading;
  ContentDigest digest;
  digest.add(bytes.view());
  return digest.value() == expected.digest ? FileResult{} : FileResult{FileStatus::changed, 0};
}

FileSystem& fileSystem() noexcept {
  FileSystem* const other = installedFiles.load(std::memory_order_acquire);
  return other != nullptr ? *other : detail::systemFiles();
}

FileSystem* setFileSystem(FileSystem* other) noexcept {
  return installedFiles.exchange(other, std::memory_order_acq_rel);
}

}  // namespace kpx
