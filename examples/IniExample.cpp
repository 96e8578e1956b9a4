// Reads and changes an INI file whose comments stay, tells whoever wants to know, and measures it.

#include <cstdio>

#include "KpxBaseObjects.h"

namespace {

class Settings final : public CObservable {
 public:
  CIniEx file;

  void setPath(const CString& path) {
    file.AddNewSection(u"KPX");
    if (file.AddNewKey(u"KPX", u"SYSTEM_PATH", path) == 0) {
      file.UpdateKey(u"KPX", u"SYSTEM_PATH", path);
    }
    setChanged();
    notifyObservers();
  }
};

class PathPrinter final : public IObserver {
 public:
  void update(CObservable* subject) override {
    CString path;
    static_cast<Settings*>(subject)->file.GetKeyData(u"KPX", u"SYSTEM_PATH", path);
    std::printf("the path is %s now\n", path.utf8().c_str());
  }
};

}  // namespace

int main(int argc, char** argv) {
  const CString file = CString::fromUtf8(argc > 1 ? argv[1] : "example.ini");
  Settings settings;
  PathPrinter printer;
  settings.addObserver(&printer);
  {
    const CTimerProxy scope(GetTimerFactory().getTimer(u"changing the file"));
    settings.file.ReadFile(file);  // a missing one begins empty
    settings.setPath(u"D:/data");
    if (settings.file.SaveFile(file) == 0) {
      std::fprintf(stderr, "the file could not be written\n");
      return 1;
    }
  }
  std::fputs(GetTimerFactory().report(timerDestType::text, timersort).utf8().c_str(), stdout);
  return 0;
}
