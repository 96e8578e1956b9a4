// A module as its developers build it, against the shared library: names of its own beside those
// that the library brings, and what the header's inline functions need is exported.

#include "KpxBaseObjects.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>

struct Progress {
  int done;
};
struct Clock {
  int hour;
};
struct Registry {
  int keys;
};
struct Selection {
  int first;
};
struct FileSystem {
  int files;
};
struct Problems {
  int count;
};
struct ConfigDocument {
  int parts;
};
struct ErrorEntry {
  int line;
};
enum class Trace { off, on };
inline constexpr int element = 5;
int describe(int value) { return value + 1; }
int report(Trace trace) { return trace == Trace::on ? 1 : 0; }
int storedText(int number) { return number; }

int countWithOwnText();

namespace {

int failures = 0;

void expect(bool isRight, const char* what) {
  if (isRight) return;
  std::fprintf(stderr, "%s\n", what);
  ++failures;
}

}  // namespace

int main() {
  const Progress progress{1};
  const Clock clock{2};
  const Registry registry{3};
  const Selection selection{4};
  const FileSystem fileSystem{5};
  const Problems problems{6};
  const ConfigDocument document{7};
  const ErrorEntry entry{8};
  expect(progress.done + clock.hour + registry.keys + selection.first + fileSystem.files +
                 problems.count + document.parts + entry.line + element ==
             41,
         "names of the module's own");
  expect(describe(1) + report(Trace::on) + storedText(3) == 6, "functions of the module's own");

  std::string bytes;
  CArchive archive(&bytes);
  archive << std::int32_t{5} << u'x' << CString(u"text");
  std::int32_t number = 0;
  CArchive(std::string_view(bytes)) >> number;
  expect(number == 5, "numbers of an archive");

  CString text;
  text.Format(u"%d %s", 3, u"points");
  CMarkup markup(u"<a/>");
  char narrow[4] = {};
  expect(text == u"3 points" && markup.IsWellFormed() && CMarkup::FindErrorLine(L"a\nb", 2) == 1 &&
             CMarkup::UTF16To8(narrow, L"a", 4) == 1,
         "texts and documents");
  CMarkup copy(markup);
  copy = std::move(markup);
  expect(CMarkup::x_EncodeCDATASection(u"a") == u"<![CDATA[a]]>", "CDATA sections");

  CIniEx ini;
  ini.AddNewSection(u"A");
  CSection* section = nullptr;
  expect(ini.GetSection(u"A", section) == 1 && section->comment().IsEmpty(), "sections");
  kpx::VariableTable table;
  table.add(u"n", number);
  expect(table.has(u"n"), "variables");
  CFGGeneralSettings settings;
  const kpx::ConfigDocument stored;
  expect(settings.serializeXML(&copy) == 1 && kpx::operationOf(71472) == "InitMLT", "settings");
  expect(countWithOwnText() == 4, "a text of the host's own");
  return failures == 0 ? 0 : 1;
}
