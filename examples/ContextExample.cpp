// What an application does at start-up, and what becomes of a failure: sets the folders, the
// project and the user, has an operation of its own fail, and shows the error log.
//
//     ContextExample FOLDER

#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include "KpxBaseObjects.h"

namespace {

// An own way of showing message boxes, for example without a desktop.
int showOnConsole(const kpx::MessageBoxRequest& request) {
  std::cout << "[" << request.caption.utf8() << "] " << request.text.utf8() << "\n";
  return kpx::MessageBoxAnswer::ok;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: ContextExample FOLDER\n";
    return EXIT_FAILURE;
  }
  const CString folder = CString::fromUtf8(argv[1]);

  // On the main thread, before other threads read it.
  kpx::setMessageBoxHandler(&showOnConsole);
  kpxSetAppName(u"Beispiel");
  kpxSetSystemPath(folder);
  CUser user;
  user.Name = u"Möller";
  kpxSetCurrentSysUser(user);
  CProject project;
  project.Name = u"Aue";
  project.Path = folder;
  kpxSetCurrentProject(project);  // a copy

  // Operations of the library report failures by themselves. A module reports its own by number, or
  // with a text; either is one line in the logs of the system folder and of the project.
  try {
    throw std::runtime_error("no more points");
  } catch (...) {
    kpxError(120001);
  }
  kpxErrorText(u"3 Punkte ausgelassen");
  utlMessageBox(kpx::MessageBoxStyle::information, u"%d Punkte in %s", 17,
                kpxGetCurrentProject().Name);

  std::cout << kpxGetFileSize(CKpxBaseObjectsUtil::CatPathFile(folder, u"Error.log"))
            << " bytes in the log\n";
  return EXIT_SUCCESS;
}
