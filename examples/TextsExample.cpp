// Starts the texts as an application does, lays a small translation over them, and formats one: a
// translation whose placeholders are wrong is left out.

#include <cstdio>

#include "kpx/platform/FileSystem.h"
#include "KpxBaseObjects.h"

namespace {

void say(const CString& text) { std::printf("%s\n", text.utf8().c_str()); }

int writeTranslation(const CString& path) {
  const kpx::TextList danish{
      0, u"Dansk", {{614, u"Fejl"}, {541, u"Fejl %d i %s"}, {70001, u"Ny tekst"}}};
  return kpx::fileSystem().replaceFile(path, kpx::languageFileBytes(danish)) ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  kpxSetAppName(u"Example");
  if (InitMLT() == 0) std::fprintf(stderr, "a language file could not be read to its end\n");
  say(GetMLT(1581));

  const CString file = CString::fromUtf8(argc > 1 ? argv[1] : "DAN.LNG");
  if (writeTranslation(file) == 0 || LoadMLTFile(file) == 0) {
    std::fprintf(stderr, "the language file could not be written or read\n");
    return 1;
  }
  say(GetMLT(614));
  say(GetMLT(70001));

  CString message;
  message.Format(kpx::templateText(541), kpxGetAppName(), 42886, kpxGetAppName());
  say(message);  // German: the translation takes other values
  return 0;
}
