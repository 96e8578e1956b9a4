#include <gtest/gtest.h>

#include <cmath>

#include "kpx/support/objects/Archive.h"
#include "kpx/support/objects/CObject.h"
#include "kpx/support/registry/CRegistry.h"
#include "tests/common/TestEnvironment.h"
#include "tests/common/TextPrinter.h"

class CWnd {
 public:
  kpx::WindowPlacement placement;
};

namespace kpx {
namespace {

const CString settings = u"Software\\KPX\\Settings";
using Names = std::vector<CString>;

class RegistryClassTest : public testing::Test {
 protected:
  TemporaryRegistry temporary_;
};

struct Station final : CObject {
  CString name;
  double height = 0;

  void Serialize(CArchive& archive) override {
    CObject::Serialize(archive);
    if (archive.IsStoring()) {
      archive << name << height;
    } else {
      archive >> name >> height;
    }
  }
};

TEST_F(RegistryClassTest, KeysAndValues) {
  CRegistry registry(HKEY_CURRENT_USER);
  CString text = u"before";
  std::uint32_t number = 17;
  Names names;
  EXPECT_EQ(registry.Open(settings), 0);
  EXPECT_EQ(registry.lastResult().status, RegistryStatus::notFound);
  EXPECT_EQ(registry.VerifyKey(settings), 0);

  ASSERT_NE(registry.CreateKey(HKEY_CURRENT_USER, settings, KEY_ALL_ACCESS), 0);
  EXPECT_NE(registry.WriteString(u"Language", u"Englisch [ENG.LNG]"), 0);
  EXPECT_NE(registry.WriteDWORD(u"Tracing", 0xFFFFFFFE), 0);
  EXPECT_EQ(registry.ReadDWORD(u"Language", number), 0);
  EXPECT_EQ(registry.lastResult().status, RegistryStatus::wrongType);
  EXPECT_EQ(registry.ReadString(u"Tracing", text), 0);
  EXPECT_EQ(registry.ReadString(u"Missing", text), 0);
  EXPECT_EQ(text, u"before");
  EXPECT_EQ(number, 17u);
  EXPECT_NE(registry.VerifyValue(u"LANGUAGE"), 0);
  EXPECT_NE(registry.ReadKeyValues(names), 0);
  EXPECT_EQ(names, (Names{u"Language", u"Tracing"}));

  CRegistry reader;
  ASSERT_NE(reader.OpenReadOnly(settings), 0);
  EXPECT_NE(reader.ReadString(u"language", text), 0);
  EXPECT_EQ(text, u"Englisch [ENG.LNG]");
  EXPECT_NE(reader.ReadDWORD(u"Tracing", number), 0);
  EXPECT_EQ(number, 0xFFFFFFFE);
  unsigned long systemNumber = 17;
  EXPECT_EQ(reader.ReadDWORD(u"Language", systemNumber), 0);
  EXPECT_EQ(systemNumber, 17u);
  EXPECT_NE(reader.ReadDWORD(u"Tracing", systemNumber), 0);
  EXPECT_EQ(systemNumber, 0xFFFFFFFE);
  EXPECT_EQ(reader.WriteDWORD(u"Tracing", 1), 0);
  EXPECT_EQ(reader.DeleteValue(u"Tracing"), 0);
  EXPECT_NE(registry.DeleteValue(u"Tracing"), 0);
  EXPECT_EQ(registry.VerifyValue(u"Tracing"), 0);
  ASSERT_NE(reader.CreateKey(HKEY_CURRENT_USER, settings, KEY_READ), 0);
  EXPECT_EQ(reader.WriteDWORD(u"Tracing", 1), 0);

  EXPECT_NE(registry.Open(u"Software\\KPX"), 0);
  EXPECT_NE(registry.ReadKeyKeys(names), 0);
  EXPECT_EQ(names, Names{u"Settings"});
  EXPECT_EQ(registry.DeleteKey(HKEY_CURRENT_USER, u"Software\\KPX"), 0);
  EXPECT_EQ(registry.lastResult().status, RegistryStatus::hasSubkeys);
  EXPECT_NE(registry.DeleteKey(HKEY_CURRENT_USER, settings), 0);
  EXPECT_EQ(registry.VerifyKey(settings), 0);
  EXPECT_EQ(registry.VerifyKey(HKEY_LOCAL_MACHINE, u"Software"), 0);
}

TEST_F(RegistryClassTest, WithoutAnOpenKeyOrWithAnotherRoot) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): that is what these handles are
  CRegistry registry(reinterpret_cast<HKEY>(std::intptr_t{5}));
  CString text = u"before";
  const auto before = errorCounts().reported;
  EXPECT_EQ(registry.ReadString(u"x", text), 0);
  EXPECT_EQ(registry.WriteDWORD(u"x", 1), 0);
  EXPECT_EQ(registry.Open(settings), 0);
  EXPECT_EQ(registry.lastResult().status, RegistryStatus::badName);
  ASSERT_NE(registry.CreateKey(HKEY_LOCAL_MACHINE, settings, KEY_WRITE), 0);
  EXPECT_EQ(registry.Open(HKEY_LOCAL_MACHINE, u"Missing"), 0);
  EXPECT_EQ(registry.WriteDWORD(u"x", 1), 0);
  EXPECT_NE(registry.Open(HKEY_LOCAL_MACHINE, settings), 0);
  registry.Close();
  EXPECT_EQ(registry.VerifyValue(u"x"), 0);
  EXPECT_EQ(errorCounts().reported, before);
}

TEST_F(RegistryClassTest, ObjectsComeBackOrAreReported) {
  CRegistry registry;
  ASSERT_NE(registry.CreateKey(HKEY_CURRENT_USER, settings, KEY_ALL_ACCESS), 0);
  Station station;
  station.name = CString(u'ß', 300);
  station.height = -0.0;
  ASSERT_NE(registry.Write(u"Station", station), 0);
  Station read;
  ASSERT_NE(registry.Read(u"Station", read), 0);
  EXPECT_EQ(read.name, station.name);
  EXPECT_TRUE(std::signbit(read.height));

  static int reported;
  reported = 0;
  const ErrorSink sink = setErrorSink([](int number) noexcept { reported = number; });
  std::unique_ptr<RegistryKey> key;
  ASSERT_TRUE(
      kpx::registry().open(RegistryRoot::currentUser, settings, RegistryAccess::readWrite, key));
  RegistryValue value;
  ASSERT_TRUE(key->read(u"Station", value));
  value.bytes.pop_back();
  ASSERT_TRUE(key->write(u"Station", value));
  EXPECT_EQ(registry.Read(u"Station", read), 0);
  EXPECT_EQ(reported, 910214);
  reported = 0;
  ASSERT_NE(registry.WriteString(u"Text", u"abc"), 0);
  EXPECT_EQ(registry.Read(u"Text", read), 0);
  EXPECT_EQ(registry.Read(u"Missing", read), 0);
  EXPECT_EQ(reported, 0);
  setErrorSink(sink);
}

class Windows final : public WindowPlacementHandler {
 public:
  bool get(const CWnd& window, WindowPlacement& placement) override {
    placement = window.placement;
    return works;
  }
  bool set(CWnd& window, const WindowPlacement& placement) override {
    window.placement = placement;
    return works;
  }
  bool works = true;
};

TEST_F(RegistryClassTest, WindowsGoBackToTheirPlace) {
  CRegistry registry;
  ASSERT_NE(registry.CreateKey(HKEY_CURRENT_USER, settings, KEY_ALL_ACCESS), 0);
  CWnd window;
  window.placement.bottomRight = {800, 600};
  EXPECT_EQ(registry.Write(u"Main", &window), 0);
  Windows windows;
  setWindowPlacementHandler(&windows);
  EXPECT_NE(registry.Write(u"Main", &window), 0);
  CWnd other;
  EXPECT_NE(registry.Read(u"Main", &other), 0);
  EXPECT_EQ(other.placement, window.placement);
  ASSERT_NE(registry.WriteString(u"Text", CString(u'x', 22)), 0);  // 44 bytes, but no record
  EXPECT_EQ(registry.Read(u"Text", &other), 0);
  EXPECT_EQ(registry.Read(u"Main", static_cast<CWnd*>(nullptr)), 0);
  windows.works = false;
  EXPECT_EQ(registry.Write(u"Main", &window), 0);
  setWindowPlacementHandler(nullptr);
}

}  // namespace
}  // namespace kpx
