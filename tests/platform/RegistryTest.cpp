#include "kpx/platform/Registry.h"

#include <gtest/gtest.h>

#include <new>

#include "tests/common/FailingAllocations.h"
#include "tests/common/TestEnvironment.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

constexpr auto user = RegistryRoot::currentUser;
constexpr auto machine = RegistryRoot::localMachine;
using Key = std::unique_ptr<RegistryKey>;
using Names = std::vector<CString>;
using Kind = RegistryChange::Kind;

class RegistryTest : public testing::Test {
 protected:
  static RegistryStatus open(const CString& path, Key& key,
                             RegistryAccess access = RegistryAccess::readWrite) {
    return registry().open(user, path, access, key).status;
  }
  static Key created(const CString& path) {
    Key key;
    EXPECT_TRUE(registry().create(user, path, RegistryAccess::readWrite, key));
    return key;
  }

  TemporaryRegistry temporary_;
};

TEST_F(RegistryTest, ReadingCreatesNothing) {
  Key key;
  Names names{u"before"};
  EXPECT_EQ(open(u"Software\\KPX", key), RegistryStatus::notFound);
  EXPECT_EQ(open(u"Software", key, RegistryAccess::read), RegistryStatus::notFound);
  EXPECT_EQ(registry().remove(user, u"Software").status, RegistryStatus::notFound);
  ASSERT_EQ(open(u"", key, RegistryAccess::read), RegistryStatus::ok);
  EXPECT_TRUE(key->keyNames(names));
  EXPECT_TRUE(names.empty());
}

TEST_F(RegistryTest, ValuesComeBackAsTheyWere) {
  const std::u16string_view texts[] = {u"", u"Grün €\r\n", std::u16string_view(u"a\0b", 3),
                                       u"\xD800 alone", u"\U0001D11E"};
  std::vector<std::pair<CString, RegistryValue>> values;
  for (const std::u16string_view text : texts) {
    values.emplace_back(CString(text).Left(1) == u"a" ? u"a" : text, RegistryValue::ofText(text));
  }
  values.emplace_back(u"low", RegistryValue::ofNumber(0));
  values.emplace_back(u"high", RegistryValue::ofNumber(0xFFFFFFFF));
  values.emplace_back(u"bytes", RegistryValue::ofBytes(std::string_view("\0\xFF\x80", 3)));
  values.emplace_back(u"no bytes", RegistryValue::ofBytes({}));
  values.emplace_back(u"odd text", RegistryValue{RegistryType::string, "abc"});
  values.emplace_back(u"short number", RegistryValue{RegistryType::dword, "abc"});
  values.emplace_back(u"foreign", RegistryValue{static_cast<RegistryType>(11), "12345678"});
  const Key writer = created(u"A\\B");
  for (const auto& [name, value] : values) ASSERT_TRUE(writer->write(name, value)) << name.utf8();
  Key reader;
  ASSERT_EQ(open(u"a\\b", reader, RegistryAccess::read), RegistryStatus::ok);
  for (const auto& [name, value] : values) {
    RegistryValue read;
    EXPECT_TRUE(reader->read(name, read)) << name.utf8();
    EXPECT_EQ(read, value) << name.utf8();
  }
  Names names;
  ASSERT_TRUE(reader->valueNames(names));
  EXPECT_EQ(names.size(), values.size());
  EXPECT_EQ(reader->write(u"x", values[0].second).status, RegistryStatus::noPermission);
}

TEST_F(RegistryTest, NamesFoldCaseAndKeepIt) {
  const Key key = created(u"Größe\\ÄÖ");
  ASSERT_TRUE(key->write(u"Maß Δ", RegistryValue::ofNumber(1)));
  ASSERT_TRUE(key->write(u"MAß δ", RegistryValue::ofNumber(2)));
  created(u"GRÖßE\\äö\\Ж");
  Key again;
  ASSERT_EQ(open(u"größe\\Äö", again), RegistryStatus::ok);
  Names names;
  ASSERT_TRUE(again->valueNames(names));
  EXPECT_EQ(names, Names{u"Maß Δ"});
  RegistryValue value;
  std::uint32_t number = 0;
  ASSERT_TRUE(again->read(u"maß δ", value) && value.asNumber(number));
  EXPECT_EQ(number, 2u);
  ASSERT_EQ(open(u"", again), RegistryStatus::ok);
  ASSERT_TRUE(again->keyNames(names));
  EXPECT_EQ(names, Names{u"Größe"});
}

TEST_F(RegistryTest, DeletingTakesNoKeysAlong) {
  const Key upper = created(u"A");
  const Key lower = created(u"A\\B");
  ASSERT_TRUE(lower->write(u"x", RegistryValue::ofNumber(7)));
  EXPECT_EQ(registry().remove(user, u"A").status, RegistryStatus::hasSubkeys);
  RegistryValue value;
  EXPECT_TRUE(lower->read(u"x", value));
  ASSERT_TRUE(registry().remove(user, u"a\\b"));
  // A key of the same name is another one: the handle must not come back to life with it.
  const Key again = created(u"A\\B");
  EXPECT_EQ(lower->read(u"x", value).status, RegistryStatus::keyDeleted);
  EXPECT_EQ(lower->write(u"x", value).status, RegistryStatus::keyDeleted);
  Names names;
  EXPECT_EQ(lower->valueNames(names).status, RegistryStatus::keyDeleted);
  EXPECT_EQ(again->read(u"x", value).status, RegistryStatus::notFound);
  created(u"Other");
  ASSERT_TRUE(registry().removeTree(user, u"A"));
  EXPECT_EQ(again->valueNames(names).status, RegistryStatus::keyDeleted);
  Key other;
  EXPECT_EQ(open(u"Other", other), RegistryStatus::ok);
  EXPECT_EQ(registry().removeTree(user, u"\\").status, RegistryStatus::badName);
  EXPECT_EQ(registry().removeTree(user, u"A").status, RegistryStatus::notFound);
}

TEST_F(RegistryTest, PathsAndLimits) {
  CString deep;
  for (std::size_t level = 0; level < Registry::maxLevels; ++level) deep += u"\\k";
  const struct {
    CString path;
    bool usable;
  } paths[] = {
      {u"\\A\\B\\", true},
      {u"A\\\\B", false},
      {CString(u'n', 255), true},
      {CString(u'n', 256), false},
      {CString(std::u16string_view(u"a\0b", 3)), false},
      {deep, true},
      {deep + u"\\k", false},
  };
  for (const auto& [path, usable] : paths) {
    Key key;
    EXPECT_EQ(registry().create(user, path, RegistryAccess::read, key).status,
              usable ? RegistryStatus::ok : RegistryStatus::badName)
        << path.utf8();
  }
  const Key key = created(u"A");
  const RegistryValue small = RegistryValue::ofNumber(1);
  EXPECT_TRUE(key->write(CString(u'v', 16383), small));
  EXPECT_EQ(key->write(CString(u'v', 16384), small).status, RegistryStatus::badName);
  RegistryValue value = RegistryValue::ofBytes(std::string(Registry::maxValueBytes, 'x'));
  EXPECT_TRUE(key->write(u"big", value));
  RegistryValue read;
  EXPECT_TRUE(key->read(u"big", read));
  EXPECT_TRUE(read == value);
  value.bytes += 'x';
  EXPECT_EQ(key->write(u"big", value).status, RegistryStatus::tooLarge);
}

TEST_F(RegistryTest, ChangeStoresAllStepsOrNone) {
  const RegistryValue one = RegistryValue::ofNumber(1);
  std::vector<RegistryChange> steps{{Kind::write, u"A\\B", u"x", one},
                                    {Kind::createKey, u"A\\C", {}, {}},
                                    {Kind::removeValue, u"A\\B", u"missing", {}},
                                    {Kind::removeTree, u"Missing", {}, {}},
                                    {Kind::write, u"bad\\\\path", u"x", one}};
  std::size_t reached = 0;
  EXPECT_EQ(registry().change(user, steps, reached).status, RegistryStatus::badName);
  EXPECT_EQ(reached, 4u);
  Key key;
  EXPECT_EQ(open(u"A", key), RegistryStatus::notFound);
  steps.pop_back();
  EXPECT_TRUE(registry().change(user, steps, reached));
  EXPECT_EQ(open(u"A\\C", key), RegistryStatus::ok);
  EXPECT_EQ(registry().open(machine, u"A", RegistryAccess::read, key).status,
            RegistryStatus::notFound);
}

TEST_F(RegistryTest, LackOfMemoryLosesNothing) {
  const Key key = created(u"A");
  ASSERT_TRUE(key->write(u"x", RegistryValue::ofText(u"old")));
  int failures = 0;
  for (int count = 0; count < 40; ++count) {
    const CString text = CString(u'n', 64 + count);
    bool written = false;
    try {
      const RegistryValue value = RegistryValue::ofText(text);
      const FailingAllocations failing(count);
      written = key->write(u"x", value).ok();
    } catch (const std::bad_alloc&) {
      ++failures;
    }
    RegistryValue value;
    CString read;
    ASSERT_TRUE(key->read(u"x", value) && value.asText(read));
    EXPECT_EQ(written, read == text);
  }
  EXPECT_GT(failures, 0);
}

}  // namespace
}  // namespace kpx
