#include "kpx/platform/FileSystem.h"

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>

namespace kpx {

namespace {

std::atomic<FileSystem*> installed{nullptr};

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

CString temporaryName(std::u16string_view folder) {
  static std::atomic<std::uint64_t> counter{0};
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  std::uint64_t number = (static_cast<std::uint64_t>(now) << 8) + counter.fetch_add(1);
  CString name(folder);
  name += u".kpx-";
  for (int digit = 0; digit < 16; ++digit, number >>= 4) {
    name += u"0123456789abcdef"[number & 15];
  }
  return name += u".tmp";
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
    case FileStatus::failed:
      break;
  }
  return CString::fromUtf8("the system reports error " + std::to_string(systemCode));
}

OutputFile::~OutputFile() = default;
InputFile::~InputFile() = default;
UpdateFile::~UpdateFile() = default;
FileSystem::~FileSystem() = default;

FileResult FileSystem::openUpdate(const CString&, UpdateMode, std::unique_ptr<UpdateFile>&) {
  return {FileStatus::failed, 0};
}

FileResult FileSystem::renameUnflushed(const CString& from, const CString& to) {
  return rename(from, to);
}

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

FileResult FileSystem::openTemporary(const CString& target, unsigned permissions, CString& path,
                                     std::unique_ptr<OutputFile>& file) {
  FileResult result;
  for (int attempt = 0; attempt < 16; ++attempt) {
    path = temporaryName(folderOf(target));
    result = open(path, OpenMode::create, file, permissions);
    if (result.status != FileStatus::exists) break;
  }
  return result;
}

FileResult FileSystem::replaceFile(const CString& path, const ContentWriter& writeContent,
                                   Durability durability) {
  CString target;
  if (const FileResult result = followLinks(path, target); !result) return result;
  FileInfo old;
  const FileResult found = info(target, old);
  if (!found && found.status != FileStatus::notFound) return found;
  if (found) {
    if (old.kind == FileKind::folder) return {FileStatus::isFolder, 0};
    if (old.kind == FileKind::other) return {FileStatus::notRegularFile, 0};
    if (!old.writable) return {FileStatus::noPermission, 0};
  }

  const bool flushed = durability == Durability::flushed;
  CString temporary;
  std::unique_ptr<OutputFile> file;
  // Readable by nobody else until it has the old file's permissions.
  constexpr unsigned ownerOnly = 0600;
  FileResult result = openTemporary(target, found ? ownerOnly : 0, temporary, file);
  if (!result) return result;

  const auto giveUp = [&] {
    file.reset();
    remove(temporary);
  };
  try {
    result = writeContent(*file);
    if (result && flushed) result = file->flush();
    if (result) result = file->close();
    file.reset();
    if (result && found) result = copyPermissions(target, temporary);
    if (result) {
      result = flushed ? rename(temporary, target) : renameUnflushed(temporary, target);
    }
  } catch (...) {
    giveUp();
    throw;
  }
  if (!result) giveUp();
  return result;
}

FileResult FileSystem::replaceFile(const CString& path, std::string_view bytes) {
  return replaceFile(path, [&](OutputFile& file) { return file.write(bytes); });
}

FileSystem& fileSystem() noexcept {
  FileSystem* const other = installed.load(std::memory_order_acquire);
  return other != nullptr ? *other : detail::systemFiles();
}

FileSystem* setFileSystem(FileSystem* other) noexcept {
  return installed.exchange(other, std::memory_order_acq_rel);
}

}  // namespace kpx
