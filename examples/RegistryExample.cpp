// Keeps a setting in the registry of the user, and writes it to a text file with UTF-16.

#include <cstdio>

#include "KpxBaseObjects.h"

int main(int argc, char** argv) {
  CRegistry registry(HKEY_CURRENT_USER);
  if (registry.CreateKey(HKEY_CURRENT_USER, u"Software\\KPX\\Example", KEY_ALL_ACCESS) == 0) {
    std::fprintf(stderr, "%s\n", registry.lastResult().message().utf8().c_str());
    return 1;
  }
  std::uint32_t starts = 0;
  registry.ReadDWORD(u"Starts", starts);  // stays 0 when it is not there yet
  registry.WriteDWORD(u"Starts", ++starts);

  CUtf16StdioFile file;
  file.setUnicodeFile(true);
  kpx::FileResult problem;
  const CString path = CString::fromUtf8(argc > 1 ? argv[1] : "example.txt");
  const std::uint32_t flags = CUtf16StdioFile::modeCreate | CUtf16StdioFile::modeWrite;
  if (file.Open(path, flags, &problem) == 0) {
    std::fprintf(stderr, "%s\n", problem.message().utf8().c_str());
    return 1;
  }
  CString line;
  line.Format(u"%u starts, this one as %s\r\n", starts, MakeUuidString(nullptr));
  file.WriteString(line);
  if (file.Close() == 0) {
    std::fprintf(stderr, "%s\n", file.problem().message().utf8().c_str());
    return 1;
  }
  return 0;
}
