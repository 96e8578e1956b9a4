// Settings from a module's side: makes a settings object, changes a value through its typed
// accessor, writes it as XML, reads it back and compares.
//
//     SettingsExample [FILE-TO-READ [FILE-TO-WRITE]]

#include <cstdlib>
#include <iostream>

#include "kpx/settings/document/ConfigDifference.h"
#include "KpxBaseObjects.h"

int main(int argc, char** argv) {
  // Captions and groups that are texts of the suite come from the store of texts.
  kpx::addBuiltInTexts();

  // A new object is complete: every setting has its default.
  CFGGeneralSettings settings;
  std::cout << "default tolerance: " << settings.getCA2TTolXY() << "\n";

  // Read a file over the defaults. The object reads itself from the document's child element, at
  // first the root. Settings that the file lacks keep their values; unknown ones are passed over.
  if (argc > 1) {
    CMarkup document;
    if (!document.Load(CString::fromUtf8(argv[1])) || !document.FindChildElem() ||
        settings.loadByXML(&document) != 1) {
      std::cerr << argv[1] << ": no general settings\n" << document.GetError().utf8() << "\n";
      return EXIT_FAILURE;
    }
    std::cout << "in the file: " << settings.getCA2TTolXY() << "\n";
  }

  // Accessors take and give values; what is stored is text, in one form on every system.
  settings.setCA2TTolXY(0.0254);
  std::cout << "stored as: " << settings.Class.find(u"CA2T_Tol_XY")->Value.Value.utf8() << "\n";

  // Write it: one element with everything in it. Here it is the root; several objects need a root
  // around them (AddElem, then IntoElem).
  CMarkup document;
  settings.serializeXML(&document);
  if (argc > 2 && !document.Save(CString::fromUtf8(argv[2]))) {
    std::cerr << argv[2] << ": could not be written\n";
    return EXIT_FAILURE;
  }

  // Read it back into a fresh object: both hold the same values now.
  CFGGeneralSettings fresh;
  document.ResetPos();
  document.FindChildElem();
  fresh.loadByXML(&document);
  const bool same = compareConfigurations(settings, fresh).none();
  std::cout << "read back: " << fresh.getCA2TTolXY() << (same ? ", equal" : ", different") << "\n";

  // And against a new object: exactly what was changed.
  for (const kpx::ChangedValue& each : compareConfigurations(CFGGeneralSettings(), fresh).changed) {
    std::cout << each.key.utf8() << ": " << each.valueA.utf8() << " -> " << each.valueB.utf8()
              << "\n";
  }
  return same ? EXIT_SUCCESS : EXIT_FAILURE;
}
