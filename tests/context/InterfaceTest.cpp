// What compiles at a caller's and what must not. Most of it is decided by the compiler, on Windows
// with wide characters of 16 bits, elsewhere with those of 32.

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "KpxBaseObjects.h"

namespace {

// Whether statements compile in which Text is CString. They have to depend on Text: what does not
// is an error at once.
#define COMPILES(...)                                                 \
  ([]<class Text>(Text*) {                                            \
    return requires(Text text, const Text constant) { __VA_ARGS__; }; \
  }(static_cast<CString*>(nullptr)))

/// For functions in whose arguments there is no Text.
template <class Text>
inline constexpr std::nullptr_t null = nullptr;
template <class Text>
inline constexpr int number = 5;
template <class Text>
inline constexpr const char* narrow = "a";

// --- texts of every kind are taken, and literals of every kind of character ---------------------

static_assert(COMPILES(Text(u"a"), Text(L"a"), Text(u'a'), Text(L'a'), Text('a', 3), Text(U'a')));
static_assert(COMPILES(Text(u"ab", 1), Text(L"ab", 1), Text(std::u16string()),
                       Text(std::wstring())));
static_assert(COMPILES(text = u"a", text = L"a", text = u'a', text = L'a', text = 'a'));
static_assert(COMPILES(text = std::u16string(), text = std::wstring(), text = constant.view()));
static_assert(COMPILES(text += u"a", text += L"a", text += u'a', text += L'a', text += 'a'));
static_assert(COMPILES(text += std::u16string(), text += std::wstring(), text += constant));
static_assert(COMPILES(text + u"a", text + L"a", text + u'a', text + L'a', text + constant));
static_assert(COMPILES(u"a" + text, L"a" + text, u'a' + text, L'a' + text, constant + text));
static_assert(COMPILES(text + std::u16string(), std::u16string() + text, std::wstring() + text));
static_assert(COMPILES(text == u"a", text == L"a", text == u'a', u"a" == text, L"a" == text));
static_assert(COMPILES(text == std::u16string(), std::u16string() == text, text == constant));
static_assert(COMPILES(text == constant.view(), constant.view() == text, L'a' != text));
static_assert(COMPILES(text == std::wstring(), std::wstring_view() == text));
static_assert(COMPILES(text < u"a", L"a" < text, text >= std::u16string(), constant.view() < text));
static_assert(COMPILES(std::u16string(text), std::u16string_view(text), text == CKpxString(L"a")));
static_assert(COMPILES(text.Find(u"a"), text.Find(L"a", 1), text.Find(L'a'), text.Find('a')));
static_assert(COMPILES(text.ReverseFind(L'a'), text.FindOneOf(L"ab"), text.StartsWith(L"a")));
static_assert(COMPILES(text.Compare(L"a"), text.CompareNoCase(L"a"), text.EndsWith(L'a')));
static_assert(COMPILES(text.Replace(L"a", L"b"), text.Replace(L'a', L'b'), text.Remove(L'a')));
static_assert(COMPILES(text.Insert(0, L"a"), text.Insert(0, L'a'), text.Insert(0, constant)));
static_assert(COMPILES(text.Trim(L" "), text.TrimLeft(L'0'), text.TrimRight(std::wstring())));
static_assert(COMPILES(text.SpanIncluding(L"a"), text.SpanExcluding(L"a"), text.Append(L"a")));
static_assert(COMPILES(text.Format(L"%s", L"a"), text.Format(u"%s", L"a"), text.Format(constant)));
static_assert(COMPILES(text.AppendFormat(std::u16string(), L'a', 5, 0.5, "a", constant)));
static_assert(COMPILES(text.AppendChar(u'0' + 5), text.SetAt(0, text[0] - 1),
                       text.AppendChar(L'a')));

// --- numbers are no characters, narrow texts no texts, literal null pointers nothing at all ------

static_assert(!COMPILES(Text(5)) && !COMPILES(Text(5, 3)) && !COMPILES(Text(true)));
static_assert(!COMPILES(Text("a")) && !COMPILES(Text(std::string())));
static_assert(!COMPILES(Text(0)) && !COMPILES(Text(NULL)) && !COMPILES(Text(nullptr)));
static_assert(!COMPILES(Text(nullptr, 1)) && !COMPILES(Text(0, 1)));
static_assert(!COMPILES(text = 5) && !COMPILES(text = 0) && !COMPILES(text = nullptr));
static_assert(!COMPILES(text = "a") && !COMPILES(text = 5.0) && !COMPILES(text = false));
static_assert(!COMPILES(text += 5) && !COMPILES(text += 0) && !COMPILES(text += nullptr));
static_assert(!COMPILES(text += "a") && !COMPILES(text += text[0] + 1));
static_assert(!COMPILES(text += std::uint8_t{5}) && !COMPILES(text += std::uint16_t{5}));
static_assert(!COMPILES(text + 5) && !COMPILES(text + 0) && !COMPILES(5 + text));
static_assert(!COMPILES(text + nullptr) && !COMPILES(text + "a") && !COMPILES("a" + text));
static_assert(!COMPILES(text == 0) && !COMPILES(text == nullptr) && !COMPILES(nullptr != text));
static_assert(!COMPILES(text == 5) && !COMPILES(text == "a") && !COMPILES(text < 5));
static_assert(!COMPILES(text.Find(5)) && !COMPILES(text.Find(0)) && !COMPILES(text.Find(nullptr)));
static_assert(!COMPILES(text.Insert(0, 5)) && !COMPILES(text.Insert(0, 0)));
static_assert(!COMPILES(text.Replace(L"a", nullptr)) && !COMPILES(text.Replace(L"a", 0)));
static_assert(!COMPILES(text.Compare(nullptr)) && !COMPILES(text.Trim(0)));
static_assert(!COMPILES(text.Format(nullptr)) && !COMPILES(text.Format(5, 5)));
static_assert(!COMPILES(text.Format("%d", 5)) && !COMPILES(FormatArg(null<Text>)));
static_assert(!COMPILES(utlMessageBox(16, null<Text>)) &&
              !COMPILES(utlMessageBox(16, narrow<Text>)));
static_assert(!COMPILES(kpxErrorText(null<Text>)) && !COMPILES(kpxErrorText(number<Text>)));
static_assert(!COMPILES(kpxatof(null<Text>)) && !COMPILES(kpxwtof(null<Text>)));
static_assert(!COMPILES(kpxstrlen(null<Text>)) && !COMPILES(kpxwcstod(null<Text>, nullptr)));
static_assert(!COMPILES(kpxwprintf(null<Text>)) && !COMPILES(kpxprintf(null<Text>)));
static_assert(!COMPILES(std::declval<CArchive&>() << null<Text>));
static_assert(!COMPILES(std::declval<CArchive&>() << narrow<Text>));
// A conversion that only Windows has must not make a condition or a sum of addresses.
static_assert(!COMPILES(text ? 1 : 2) && !COMPILES(!text) && !COMPILES(text - 1));

#undef COMPILES

// --- every other interface that takes a text takes a wide literal --------------------------------

/// Compiled, but never called.
[[maybe_unused]] void passWideLiterals(CIniEx& ini, CRegistry& registry, CUtf16StdioFile& file,
                                       CFGConfig& config, CNAS_Punktobjekt& point,
                                       CFCFieldInfos& fields, CAaaAreaCalcResultCache& cache) {
  CString text;
  utlMessageBox(16L, L"%s %d%% %hs %S %c", L"wide", 5, "narrow", "narrow", L'x');
  kpxErrorText(L"a");
  kpxShowSoccetErrorMessage(L"a", 5);
  kpxShowSoccetErrorMessage(L"a", 5L);
  kpxShowSoccetErrorMessage(L"a", 5UL);
  kpxShowSystemErrorMessage(L"a");
  kpxShowSystemErrorMessage(L"a", 5L);
  kpxSetAppName(L"a");
  kpxSetProgPath(L"a");
  kpxSetDataToRegistry(L"key", L"name", L"a");
  kpxGetKPXSettingFromRegistry(L"name", L"missing");
  kpxGetHGS(L"D", true);
  CProject project;
  project.Name = L"a";
  AddMLT(1, L"a");
  LoadMLTFile(L"a");
  kpx::initTexts(L"a");
  ini.ReadFile(L"a");
  ini.GetKeyData(L"section", L"key", text);
  ini.AddNewKey(L"section", L"key", L"value");
  ini.UpdateKey(L"section", L"key", L"value");
  registry.OpenReadOnly(L"key");
  registry.WriteString(L"name", L"value");
  file.Open(L"a", CUtf16StdioFile::modeRead);
  file.WriteString(L"a");
  wchar_t line[80];
  file.ReadString(line, 80);
  GetTimerFactory().getTimer(L"a");
  GetTimerFactory()->dumpSamples(L"a", L"file");
  kpxUnzip(L"archive", L"folder");
  CKpxBaseObjectsUtil::Str2TimeDouble(L"05.03.2021");
  CKpxBaseObjectsUtil::CatPathFile(L"folder", L"file");
  config.AddSetting(L"1", L"key", L"group", 1, L"caption", 1, 0, 0);
  config.Class.ColAt(L"key") = {L"1", L"key", L"group", 1, L"caption", 1, 0, 0, 0, 0, 1};
  point.OID = L"a";
  point.sonstigeEigenschaftenAdd(L"a");
  fields.Add(L"kind", {});
  cache.add(L"key", 1, 2, 3);
  GetNASObjektart(L"a");
  if (MakeUuidString(nullptr) == L"") text = L'x';
}

TEST(Interface, WideLiteralsMeanWhatTheySay) {
  EXPECT_EQ(utlCompStrNoCase(L"HÖHE", L"höhe"), 0);
  EXPECT_EQ(kpxMatchWildcardString(L"Punkt 1", L"P*?"), 1);
  EXPECT_EQ(kpxHasWildcard(L"a?"), 1);
  EXPECT_EQ(kpxChangeFormat(L"a.b", L".", L","), L"a,b");
  EXPECT_EQ(utlTextAsDoubleDecimal(L"1;5", L';'), 1.5);
  EXPECT_EQ(utlDoubleAsText(1.5, 1, L','), L"1,5");
  std::int32_t count = 0;
  kpx::VariableTable table;
  table.add(L"Count", count);
  EXPECT_EQ(utlStringToVar(L"Count", L"42", table), 1);
  EXPECT_EQ(count, 42);
}

}  // namespace
