#include "kpx/platform/Registry.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "tests/common/TestEnvironment.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

/// The registry as other programs see it.
class SystemsRegistry : public testing::Test {
 protected:
  SystemsRegistry() {
    ::RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\KPX\\Settings", 0, nullptr, 0, KEY_ALL_ACCESS,
                      nullptr, &theirs_, nullptr);
    EXPECT_TRUE(registry().open(RegistryRoot::currentUser, u"software\\kpx\\settings",
                                RegistryAccess::readWrite, ours_));
  }
  ~SystemsRegistry() override { ::RegCloseKey(theirs_); }

  TemporaryRegistry temporary_;
  HKEY theirs_ = nullptr;
  std::unique_ptr<RegistryKey> ours_;
};

TEST_F(SystemsRegistry, TextsOfOtherProgramsNeedNoTerminator) {
  const struct {
    std::wstring stored;
    std::u16string_view read;
  } cases[] = {
      {std::wstring(L"Englisch\0", 9), u"Englisch"},
      {L"Größe", u"Größe"},
      {L"", u""},
      {std::wstring(1, L'\0'), u""},
      {std::wstring(L"a\0b\0", 4), u"a\0b"},
  };
  for (const auto& each : cases) {
    ASSERT_EQ(::RegSetValueExW(theirs_, L"Language", 0, REG_SZ,
                               reinterpret_cast<const BYTE*>(each.stored.data()),
                               static_cast<DWORD>(each.stored.size() * sizeof(wchar_t))),
              ERROR_SUCCESS);
    RegistryValue value;
    CString text(u"before");
    ASSERT_TRUE(ours_->read(u"language", value) && value.asText(text));
    EXPECT_EQ(text.Left(text.GetLength()), CString(each.read).Left(text.GetLength()));
    EXPECT_EQ(text.IsEmpty(), each.read.empty());
  }
}

TEST_F(SystemsRegistry, WhatIsWrittenOthersRead) {
  ASSERT_TRUE(ours_->write(u"Text", RegistryValue::ofText(u"Grün")));
  ASSERT_TRUE(ours_->write(u"Number", RegistryValue::ofNumber(0xFFFFFFFE)));
  ASSERT_TRUE(ours_->write(u"Bytes", RegistryValue::ofBytes(std::string(1 << 20, 'x'))));
  wchar_t text[16] = {};
  DWORD type = 0;
  DWORD size = sizeof text;
  ASSERT_EQ(
      ::RegQueryValueExW(theirs_, L"Text", nullptr, &type, reinterpret_cast<BYTE*>(text), &size),
      ERROR_SUCCESS);
  EXPECT_EQ(type, DWORD{REG_SZ});
  EXPECT_EQ(size, 5 * sizeof(wchar_t)) << "with its terminator";
  EXPECT_EQ(std::wstring(text), L"Grün");
  DWORD number = 0;
  size = sizeof number;
  ASSERT_EQ(::RegQueryValueExW(theirs_, L"Number", nullptr, &type, reinterpret_cast<BYTE*>(&number),
                               &size),
            ERROR_SUCCESS);
  EXPECT_EQ(type, DWORD{REG_DWORD});
  EXPECT_EQ(number, 0xFFFFFFFE);
  size = 0;
  ASSERT_EQ(::RegQueryValueExW(theirs_, L"Bytes", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(type, DWORD{REG_BINARY});
  EXPECT_EQ(size, DWORD{1 << 20});
}

TEST_F(SystemsRegistry, BothRootsAreDifferentOnes) {
  std::unique_ptr<RegistryKey> key;
  EXPECT_EQ(registry()
                .open(RegistryRoot::localMachine, u"Software\\KPX", RegistryAccess::read, key)
                .status,
            RegistryStatus::notFound);
  ASSERT_TRUE(registry().create(RegistryRoot::localMachine, u"Software\\KPX",
                                RegistryAccess::readWrite, key));
  HKEY theirs = nullptr;
  ASSERT_EQ(::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\KPX", 0, KEY_READ, &theirs),
            ERROR_SUCCESS);
  ::RegCloseKey(theirs);
}

}  // namespace
}  // namespace kpx
