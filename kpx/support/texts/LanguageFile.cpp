#include "kpx/support/texts/LanguageFile.h"

#include <algorithm>
#include <new>
#include <utility>

#include "kpx/platform/FileSystem.h"
#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"
#include "kpx/support/objects/Archive.h"
#include "kpx/support/Operations.h"
#include "kpx/support/texts/internal/BuiltInTexts.h"

namespace kpx {
namespace {

/// Reads a language file front to back. Raises what the archive raises.
class EntryReader {
 public:
  explicit EntryReader(std::string_view bytes) noexcept : archive_(bytes) {}

  void readHead(TextList& list) { archive_ >> list.header >> list.title >> count_; }
  std::int32_t count() const noexcept { return count_; }
  std::size_t position() const noexcept { return archive_.position(); }
  /// No file holds more texts than this, whatever its count says.
  std::size_t mostEntries() const noexcept {
    constexpr std::size_t smallestEntry = 5;
    const std::size_t most = archive_.remaining() / smallestEntry;
    return count_ <= 0 ? 0 : std::min(most, static_cast<std::size_t>(count_));
  }

  /// False behind the last text.
  bool next(std::int32_t& id, ArchivedText& text) {
    if (done_ >= count_) return false;
    archive_ >> id;
    text = archive_.readText();
    ++done_;
    return true;
  }

 private:
  CArchive archive_;
  std::int32_t count_ = 0;
  std::int32_t done_ = 0;
};

void apply(std::int32_t id, const ArchivedText& text) {
  if (text.bytes.empty()) return;
  if (text.bytes.find('\r') == text.bytes.npos) {
    text.assignTo(detail::textPlace(id));
    return;
  }
  CString withLineFeeds;
  text.assignTo(withLineFeeds);
  withLineFeeds.Replace(u"\r\n", u"\n");
  detail::textPlace(id) = std::move(withLineFeeds);
}

void readInto(TextList& list, std::string_view bytes, LanguageFileResult& result) {
  EntryReader reader(bytes);
  try {
    reader.readHead(list);
    result.announced = reader.count();
    list.entries.reserve(reader.mostEntries());
    for (;;) {
      result.end = reader.position();
      std::int32_t id = 0;
      ArchivedText text;
      if (!reader.next(id, text)) break;
      text.assignTo(list.entries.emplace_back(TextEntry{id, CString()}).text);
    }
  } catch (const ArchiveEndException&) {
    result.isWhole = false;
  } catch (const InvalidArgException&) {  // a text longer than any can be
    result.isWhole = false;
  }
}

}  // namespace

int LoadMLTFile(const CString& path) {
  FileBytes bytes;
  const FileResult result = fileSystem().read(path, bytes);
  if (result.status == FileStatus::noMemory) throw std::bad_alloc();
  if (!result) return 0;
  EntryReader reader(bytes);
  TextList head;
  reader.readHead(head);
  std::int32_t id = 0;
  for (ArchivedText text; reader.next(id, text);) apply(id, text);
  return 1;
}

LanguageFileResult readLanguageFile(std::string_view bytes, TextList& list) {
  list = TextList();
  LanguageFileResult result;
  result.hasFailed = !Guarded("readLanguageFile"_support, false, [&] {
    readInto(list, bytes, result);
    return true;
  });
  if (result.hasFailed) result.isWhole = false;
  return result;
}

std::string languageFileBytes(const TextList& list) {
  std::string bytes;
  CArchive archive(&bytes);
  archive << list.header << list.title << static_cast<std::int32_t>(list.entries.size());
  for (const TextEntry& entry : list.entries) archive << entry.id << entry.text;
  return bytes;
}

}  // namespace kpx
