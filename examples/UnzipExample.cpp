// Unpacking a zip archive: UnzipExample ARCHIVE FOLDER. Shows how far it is and says of every
// entry that could not be unpacked why.

#include <iostream>

#include "kpx/support/zip/Unzip.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: UnzipExample ARCHIVE FOLDER\n";
    return 2;
  }
  kpx::UnzipOptions options;
  options.limits.totalBytes = 1'000'000'000;  // no delivery is larger
  options.progress = [](const kpx::Progress& progress) {
    std::cerr << progress.done << " of " << progress.total << " bytes\r";
    return true;  // false would cancel
  };
  const kpx::UnzipResult result =
      kpx::unzip(kpx::CString::fromUtf8(argv[1]), kpx::CString::fromUtf8(argv[2]), options);
  for (const kpx::UnzipReceipt& entry : result.entries) {
    if (!kpx::isRefusal(entry.status)) continue;
    std::cout << entry.name.utf8() << ": " << entry.message().utf8() << "\n";
  }
  if (result.complete()) return 0;
  std::cout << result.message().utf8() << "\n";
  return 1;
}
