#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/Check.h"
#include "kpx/platform/FileSystem.h"
#include "kpx/report/Exceptions.h"
#include "kpx/support/texts/internal/BuiltInTexts.h"
#include "kpx/support/texts/LanguageFile.h"
#include "kpx/support/texts/TextCheck.h"
#include "kpx/support/texts/TextStore.h"
#include "kpx/support/texts/TextTable.h"

using namespace kpx;

namespace {

/// A file system that has one file.
class OneFile final : public FileSystem {
 public:
  explicit OneFile(std::string_view content) : content_(content), before_(setFileSystem(this)) {}
  ~OneFile() override { setFileSystem(before_); }

  FileResult read(const CString&, FileBytes& bytes, std::uint64_t, FileVersion*) override {
    bytes.reserve(content_.size());
    content_.copy(bytes.data(), content_.size());
    bytes.setSize(content_.size());
    return {};
  }

 private:
  std::string_view content_;
  FileSystem* before_;
};

/// The store holds what the entries say, up to an early end.
void checkStore(const TextList& list, bool isWhole, std::string_view bytes) {
  const OneFile files(bytes);
  bool endedEarly = false;
  try {
    FUZZ_CHECK(LoadMLTFile(u"X.LNG") == 1);
  } catch (const ArchiveEndException&) {
    endedEarly = true;
  }
  FUZZ_CHECK(endedEarly != isWhole);
  for (const TextDifference& each : differencesOf(TextList(), list)) {
    CString text = each.after;
    text.Replace(u"\r\n", u"\n");
    FUZZ_CHECK(GetMLT(each.id) == text);
  }
  detail::clearTexts();
}

void checkTable(std::string_view bytes) {
  TextList list;
  readTextTable(bytes, list);
  TextList again;
  FUZZ_CHECK(readTextTable(textTableBytes(list), again).empty());
  FUZZ_CHECK(again == list);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  TextList list;
  const LanguageFileResult result = readLanguageFile(bytes, list);
  FUZZ_CHECK(result.end <= size);
  FUZZ_CHECK(list.entries.size() <= size / 5);
  checkStore(list, result.isWhole, bytes);

  // What was read is written, and read again the same, as a language file and as a list.
  TextList again;
  const std::string written = languageFileBytes(list);
  const LanguageFileResult second = readLanguageFile(written, again);
  FUZZ_CHECK(second.isWhole && second.end == written.size() && again == list);
  FUZZ_CHECK(readTextTable(textTableBytes(list), again).empty() && again == list);
  const TextList german = builtInTexts();
  for (const TextFinding& finding : checkTexts(list, german)) {
    FUZZ_CHECK(finding.index < list.entries.size());
    FUZZ_CHECK(list.entries[finding.index].id == finding.id);
  }
  FUZZ_CHECK(differencesOf(list, list).empty());
  const TextCoverage coverage = coverageOf(list, german);
  FUZZ_CHECK(coverage.translated + coverage.missing.size() == coverage.germanIds);
  checkTable(bytes);
  return 0;
}
