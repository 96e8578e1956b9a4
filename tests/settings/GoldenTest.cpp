// New objects as files of customers hold them: every byte of the stored form. A file in
// data/golden is a case; `kpx config defaults CLASS` prints it.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "kpx/settings/Catalogue.h"
#include "kpx/support/texts/TextStore.h"
#include "kpx/xml/CMarkup.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(Golden, NewObjectsHaveTheBytesOfTheirFiles) {
  addBuiltInTexts();
  const TemporaryFolder folder;
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(KPX_TEST_DATA "/golden")) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const SettingsClass* const settingsClass =
        findSettingsClass(CString::fromUtf8(entry.path().stem().string()));
    ASSERT_NE(settingsClass, nullptr) << entry.path();
    CMarkup document;
    document.SetDoc(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n");
    ASSERT_EQ(settingsClass->create()->serializeXML(&document), 1);
    ASSERT_TRUE(document.Save(folder / "saved.xml"));
    EXPECT_EQ(folder.read("saved.xml"), bytes) << entry.path();
    ++files;
  }
  EXPECT_GE(files, 7);
}

}  // namespace
}  // namespace kpx
