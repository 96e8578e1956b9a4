#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "kpx/capi/ErrorTable.h"
#include "kpx/platform/Processes.h"
#include "kpx/settings/Catalogue.h"
#include "kpx/xml/MarkupValidator.h"
#include "KpxBaseObjects.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

// Every exported operation that can fail, called without memory. That none is missing here,
// check_guards.py finds out; names in guards.txt let exceptions pass on purpose.

struct Call {
  std::string name;
  std::function<void()> run;
  bool changesMarkup = false;  // the same document for each try, which a failure leaves as it was
  bool readsMarkup = false;    // a document that may be another one after a failure
  int number = 0;              // of a setting
};

std::string_view withoutParameters(std::string_view operation) {
  return operation.substr(0, operation.find('('));
}

/// Whether a failure was reported under the call's own number, where it has one, or under that of a
/// step which answers its own failures.
bool isOwnReport(const Call& call, int number) {
  if (call.number != 0) return number == call.number;
  constexpr std::string_view steps[] = {
      "CIniEx::ReadFile", "CMarkup::x_ParseDoc", "CProject::CProject", "CUser::CUser",
      "kpxGetProgPath",   "languageFilePath",    "textFolder",         "utlMessageBox"};
  const std::string_view operation = withoutParameters(operationOf(number));
  const auto isCall = [&](const ErrorEntry& entry) {
    return withoutParameters(entry.operation) == call.name;
  };
  return operation == call.name || operation.ends_with("::GetElementName") ||
         std::ranges::count(steps, operation) > 0 || std::ranges::none_of(errorTable(), isCall);
}

int lastReport = 0;

class Derived : public CIniEx {
 public:
  using CIniEx::BracketsContents;
  using CIniEx::DeleteTail;
  using CIniEx::GetToken;
  using CIniEx::ReplaceFrom0xD_0xA;
  using CIniEx::ReplaceTo0xD_0xA;
};

/// A subject with a mark, and an object of nothing but a text.
class Subject : public CObservable {
 public:
  Subject() { setChanged(); }
};
class Stored : public CObject {
 public:
  void Serialize(CArchive& stream) override {
    if (stream.IsStoring()) {
      stream << content;
    } else {
      stream >> content;
    }
  }
  CString content{u"a text that needs memory"};
};

bool formatted(CKpxString& text, std::u16string_view format, ...) {
  std::va_list list;
  va_start(list, format);
  const bool done = text.FormatV_l(format, nullptr, list);
  va_end(list);
  return done;
}

/// Calls of several functions with the same arguments, and of a member.
#define EACH(arguments, ...) \
  addEach(                   \
      #__VA_ARGS__, [&](auto function) { function arguments; }, __VA_ARGS__)
#define MEMBER(type, name, object, ...)                                      \
  Call {                                                                     \
#type "::" #name, [&] { static_cast<void>((object).name(__VA_ARGS__)); } \
  }

class Exports : public testing::Test {
 protected:
  Exports() : sink_(setErrorSink([](int report) noexcept { lastReport = report; })) {
    setMessageBoxHandler([](const MessageBoxRequest& request) {
      const MessageBoxRequest copy = request;
      return copy.style;
    });
    setWindowTitleHandler(
        [](WindowHandle, const CString& title) { return CString(title).IsEmpty(); });
    addBuiltInTexts();
    kpxSetProgPath(text);
    kpxSetProjectsFolder(text);
    kpxSetProjectSubPath(text);
    CUser user;
    user.Name = text;
    kpxSetCurrentPrjUser(user);
    scope.folder.write("a.ini", "[A]\n; comment\nkey=value that is longer than others\n");
    scope.folder.write("a.txt", std::string(5000, 'x'));
    scope.folder.write("a.zip", "PK\5\6" + std::string(18, '\0'));
    const CString settings = u"Software\\KPX\\Settings";
    for (const char16_t* const name : {u"Language", u"name that is long enough", u"Tracing"}) {
      ContextScope::store(RegistryRoot::currentUser, settings, name, RegistryValue::ofText(text));
    }
    key.CreateKey(HKEY_CURRENT_USER, u"Software\\Test key of its own", KEY_ALL_ACCESS);
    key.WriteString(text, text);
    ini.ReadFile(path);
    ini.AddKeyToKeyTypeSection(text, text, text, number);
    GetTimerFactory().getTimer(text)->startTimer();
    GetTimerFactory().getTimer(text)->stopTimer();
    table.add(text, content);
    infos.Add(text, {});
    for (int i = 0; i < 20; ++i) point.sonstigeEigenschaftenAdd(text + detail::longAsText(i));
  }
  ~Exports() override {
    GetTimerFactory().clearTimers();
    setWindowTitleHandler(nullptr);
    setErrorSink(sink_);
  }

  /// Lets each allocation of a call fail in its turn, of many only some, until none does.
  void expectGuarded(const Call& call) {
    for (int count = 0; count < 1'000'000; count += 1 + count / 64) {
      if (call.changesMarkup || call.readsMarkup) markup = original;
      const GuardWatch watch;
      bool hasThrown = false;
      bool hasFailed = false;
      {
        const FailingAllocations failing(count);
        try {
          call.run();
        } catch (...) {
          hasThrown = true;
        }
        hasFailed = failing.hasFailed();
      }
      EXPECT_FALSE(hasThrown) << call.name << " lets an exception pass";
      EXPECT_EQ(watch.hasCaught(), hasFailed)
          << call.name << " reports something else than allocation " << count;
      if (!hasFailed || hasThrown) return;
      EXPECT_TRUE(isOwnReport(call, lastReport))
          << call.name << " fails as " << operationOf(lastReport) << ' ' << lastReport;
      if (call.changesMarkup) {
        EXPECT_EQ(markup.GetDoc(), original.GetDoc()) << call.name;
        EXPECT_EQ(MarkupValidator::check(markup), "") << call.name;
      }
    }
    ADD_FAILURE() << call.name << " does not come to its end";
  }

  /// Writing, reading and naming of a persistent object.
  template <class Object>
  void addObject(const std::string& name) {
    struct Documents {
      Object object;
      CMarkup from;
      CMarkup to;
    };
    const auto held = std::make_shared<Documents>();
    held->object.serializeXML(&held->from);
    held->from.ResetPos();
    held->from.FindChildElem();
    held->to.AddElem(u"root");
    if constexpr (!std::is_same_v<Object, CNAS_Punktobjekt>) held->to.IntoElem();
    add({{name + "::GetElementName", [=] { held->object.GetElementName(); }},
         {name + "::serializeXML", [=] { held->object.serializeXML(&held->to); }},
         {name + "::loadByXML", [=] { held->object.loadByXML(&held->from); }}});
  }

  void add(std::initializer_list<Call> calls) { calls_.insert(calls_.end(), calls); }
  /// Functions by their names, as they stand between commas.
  template <class Run, class... Function>
  void addEach(std::string_view list, Run run, Function... function) {
    const auto addNext = [&](auto each) {
      const std::size_t length = std::min(list.find(','), list.size());
      calls_.push_back({std::string(list.substr(0, length)), [=] { run(each); }});
      list.remove_prefix(std::min(length + 2, list.size()));
    };
    (addNext(function), ...);
  }
  void addMarkup();
  void addConfigurations();
  void addTextsAndFiles();
  void addContext();

  ContextScope scope;
  const CString text = CString(u"a text that needs memory, as every copy of it does");
  const CString path = scope.folder / "a.ini";
  const CString textPath = scope.folder / "a.txt";
  const CString archive = scope.folder / "a.zip";
  const CString folder = scope.systemFolder();
  CString content = text;
  CString other = text;
  std::vector<CString> names;
  std::vector<std::int32_t> numbers;
  int number = 0;
  std::uint32_t dword = 0;
  CRegistry key;
  Derived ini;
  CUtf16StdioFile file;
  VariableTable table;
  Subject subject;
  Stored stored;
  CKpxString printed;
  TextList texts;
  const std::string languageFile = languageFileBytes({0, text, {{1, text}}});
  CFCFieldInfos infos;
  CNAS_Punktobjekt point;
  CMarkup original;
  CMarkup markup;
  CFGConfig config;
  CFGTable rows;
  CFGRow row;
  CFGHeader header;
  CFGCol column{text, text, text, ColumnType::text, text};
  CAaaAreaCalcResultCache cache;
  std::vector<Call> calls_;

 private:
  ErrorSink sink_;
};

void Exports::addMarkup() {
  static const CString name = u"aNameOfAnElementThatIsLong";
  static const CString longer = name + u"AndLonger";
  static const CString document =
      u"<!DOCTYPE aNameOfAnElementThatIsLong><aNameOfAnElementThatIsLong Name='a value'>"
      u"<aNameOfAnElementThatIsLong Name='a value'>a text that is long enough"
      u"</aNameOfAnElementThatIsLong></aNameOfAnElementThatIsLong></alone>";
  original.SetDoc(document);
  original.FindElem();
  original.FindChildElem();
  const auto addCall = [&](Call call, bool readsMarkup = false) {
    call.changesMarkup = !readsMarkup;
    call.readsMarkup = readsMarkup;
    calls_.push_back(std::move(call));
  };
#define MARKUP(operation, ...) addCall({MEMBER(CMarkup, operation, markup, __VA_ARGS__)})
#define READ(operation, ...) addCall({MEMBER(CMarkup, operation, markup, __VA_ARGS__)}, true)
  MARKUP(GetError);
  MARKUP(GetTagName);
  MARKUP(GetChildTagName);
  MARKUP(GetData);
  MARKUP(GetChildData);
  MARKUP(GetAttrib, u"Name");
  MARKUP(GetChildAttrib, u"Name");
  MARKUP(GetNthAttrib, 0, content, other);
  MARKUP(GetNthChildAttrib, 0, content, other);
  MARKUP(GetSubDoc);
  MARKUP(GetChildSubDoc);
  MARKUP(GetElemContent);
  MARKUP(SavePos, text);
  MARKUP(SetTagName, longer);
  MARKUP(SetChildTagName, longer);
  MARKUP(SetChildData, text);
  MARKUP(SetAttrib, name, text);
  MARKUP(SetChildAttrib, name, text);
  MARKUP(RemoveAttrib, u"Name");
  MARKUP(RemoveChildAttrib, u"Name");
  MARKUP(AddNode, MarkupNode::comment, text);
  MARKUP(InsertNode, MarkupNode::comment, text);
  MARKUP(AddElem, name, text);
  MARKUP(InsertElem, name, text);
  MARKUP(AddChildElem, name, text);
  MARKUP(InsertChildElem, name, text);
  MARKUP(AddSubDoc, u"<x b='&lt;'><y/><z>t</z></x>");
  MARKUP(InsertSubDoc, u"<x b='&lt;'><y/><z/></x>");
  MARKUP(AddChildSubDoc, u"<x><y/><y/><y/><y/><y/><y/><y/><y/><y/><z><y>t</y></z></x>");
  MARKUP(InsertChildSubDoc, u"<x b='&lt;'><y/></x>");
  addCall(
      {"CMarkup::SetData", [&] { static_cast<void>(markup.IntoElem() && markup.SetData(text)); }});
  addCall({"CMarkup::RemoveNode", [&] {
             markup.ResetPos();
             markup.FindNode(MarkupNode::documentType);
             markup.RemoveNode();
           }});
  MARKUP(EscapeText, text);
  MARKUP(x_EncodeCDATASection, text);
  MARKUP(UnescapeText, text);
  MARKUP(EncodeBase64, reinterpret_cast<const unsigned char*>("some bytes"), 10);
  MARKUP(GetDeclaredEncoding, u"<?xml encoding='a-long-name'?>");
  MARKUP(Save, path);
  READ(Load, textPath);
  READ(SetDoc, document);
  READ(SetDoc, u"<aNameOfAnElementThatIsLong/>");
#undef MARKUP
#undef READ
}

void Exports::addConfigurations() {
  EACH((1, CAaaPunktortUUID()), kpxCoordAndHeightIDs2POIDsSetAt);
  add({MEMBER(CFGConfig, AddSetting, config, text, text, text, 4, text, 1, 0, 0),
       MEMBER(CFGConfig, AddColumn, config, column),
       MEMBER(CFGConfig, ResetPos, config),
       MEMBER(CFGTable, AddColDef, rows, text, text, text, 4, text),
       MEMBER(CFGTable, AddColumn, rows, column),
       MEMBER(CFGTable, ResetPos, rows),
       MEMBER(CFGRow, AddCell, row, text, text, text, 4, text),
       MEMBER(CFGHeader, ResetPos, header),
       MEMBER(CNAS_Punktobjekt, getClassName, point),
       MEMBER(CNAS_Punktobjekt, sonstigeEigenschaftenAdd, point, text),
       MEMBER(CNAS_Punktobjekt, sonstigeEigenschaftenCopy, point, &point),
       MEMBER(CNAS_Punktobjekt, sonstigeEigenschaftenGetAsText, point),
       MEMBER(CNAS_Punktobjekt, sonstigeEigenschaftenGetAt, point, 0),
       MEMBER(CNAS_Punktobjekt, sonstigeEigenschaftenSetAt, point, 0, text),
       MEMBER(CFCFieldInfos, Add, infos, text, {}),
       MEMBER(CAaaAreaCalcResultCache, add, cache, text, 1, 2, 3),
       {"CAaaPunktortUUID::text", [] { CAaaPunktortUUID(1, 2).text(); }}});
  addObject<CFGValue>("CFGValue");
  addObject<CFGCodedValue>("CFGCodedValue");
  addObject<CFGRange>("CFGRange");
  addObject<CFGCommand>("CFGCommand");
  addObject<CFGCol>("CFGCol");
  addObject<CFGClass>("CFGClass");
  addObject<CFGHeader>("CFGConfig");
  addObject<CFGRow>("CFGRow");
  addObject<CFGTable>("CFGTable");
  addObject<CProject>("CProject");
  addObject<CUser>("CUser");
  addObject<CJob>("CJob");
  addObject<CNAS_Punktobjekt>("CNAS_Punktobjekt");
}

void Exports::addTextsAndFiles() {
  static const CString token = u"the name of a key that is long enough = and a value, too";
  static const CString line = u"[a section with a name]";
  EACH((text), findProcesses, endProcesses, CKpxBaseObjectsUtil::TrimLeft,
       CKpxBaseObjectsUtil::TrimRight, CKpxBaseObjectsUtil::Trim,
       CKpxBaseObjectsUtil::CutSystemPath, CKpxBaseObjectsUtil::CutProjectPath);
  EACH((TIME()), CKpxBaseObjectsUtil::Date2Str, CKpxBaseObjectsUtil::Time2Str);
  EACH((2e13), CKpxBaseObjectsUtil::TimeDouble2Str,
       CKpxBaseObjectsUtil::LocalTimeDouble2UTCTimeDouble,
       CKpxBaseObjectsUtil::UTCTimeDouble2LocalTimeDouble);
  EACH((text, text), CKpxBaseObjectsUtil::CatPathFile);
  EACH((1, text), AddMLT);
  EACH((languageFile, texts), readLanguageFile);
  EACH((123456.789, 3, u'.'), utlDoubleAsText);
  EACH((-2147483647), utlLongAsText);
  EACH((text, u'.'), utlTextAsDoubleDecimal);
  EACH((text, text, table), utlStringToVar);
  EACH((text, other, table), utlVarToString);
  EACH((content, u"*?*?h*"), kpxMatchWildcardString);
  EACH((other = u"äöü"), kpxRtfEncode, kpxUTF8Encode);
  EACH((text, text, text), kpxChangeFormat);
  EACH((archive, folder), kpxUnzip);
  add({{"UTF8to16", [] { UTF8to16("a text that needs memory"); }},
       {"UTF8to16", [] { UTF8to16("a text that needs memory", 24); }},
       {"MakeUuidString", [] { MakeUuidString(static_cast<const Guid*>(nullptr)); }},
       {"CKpxString::FormatV_l", [&] { formatted(printed, u"%d and nothing more", 1); }},
       MEMBER(CObservable, addObserver, subject, nullptr),
       MEMBER(CObservable, notifyObservers, subject),
       MEMBER(CIniEx, ReadFile, ini, path),
       MEMBER(CIniEx, readBytes, ini, "[A]\nkey=a value that is longer than others\n"),
       MEMBER(CIniEx, SaveFile, ini, path),
       {"CIniEx::ChangeFile",
        [&] {
          CIniEx::ChangeFile(path, [&](CIniEx& read) { return read.AddNewSection(text) == 1; });
        }},
       MEMBER(CIniEx, GetKeyData, ini, u"A", u"key"),
       MEMBER(CIniEx, GetKeyData, ini, u"A", u"key", content),
       MEMBER(CIniEx, GetKeyData, ini, u"A", u"key", content, other),
       {"CIniEx::GetSection",
        [&] {
          CSection* found;
          ini.GetSection(u"A", found);
        }},
       {"CIniEx::GetSectionAll",
        [&] {
          CObArray all;
          ini.GetSectionAll(all);
        }},
       MEMBER(CIniEx, AddNewSection, ini, text),
       MEMBER(CIniEx, AddNewSection, ini, text, text, number),
       MEMBER(CIniEx, AddNewKey, ini, text, text, text),
       MEMBER(CIniEx, UpdateKey, ini, text, text, content),
       MEMBER(CIniEx, UpdateSection, ini, text, text, content),
       MEMBER(CIniEx, DeleteKey, ini, text, text),
       MEMBER(CIniEx, DeleteKeyfromSection, ini, text, text),
       MEMBER(CIniEx, DeleteSection, ini, text),
       MEMBER(CIniEx, DeleteSectionfromSections, ini, text),
       MEMBER(CIniEx, AddKeyTypeSection, ini, text),
       MEMBER(CIniEx, AddKeyToKeyTypeSection, ini, text, text, text, number),
       {"CIniEx::GetDataFromKeyTypeSection",
        [&] {
          KEYTYPE_STRUCT found;
          ini.GetDataFromKeyTypeSection(text, found);
        }},
       MEMBER(CIniEx, DeleteIndexFromKeyTypeSection, ini, 0),
       MEMBER(CIniEx, GetToken, ini, token, u'=', content, other),
       MEMBER(CIniEx, BracketsContents, ini, line, content),
       MEMBER(CIniEx, ReplaceTo0xD_0xA, ini, content),
       MEMBER(CIniEx, ReplaceFrom0xD_0xA, ini, content),
       MEMBER(CIniEx, DeleteTail, ini, content),
       MEMBER(CTimerFactory, getTimerChecked, GetTimerFactory(), path),
       MEMBER(CTimerFactory, getTimerName, GetTimerFactory(), GetTimerFactory().getTimer(text)),
       MEMBER(CTimerFactory, report, GetTimerFactory(), timerDestType::text, timersort),
       MEMBER(CTimerFactory, sampleReport, GetTimerFactory(), timerDestType::text,
              *GetTimerFactory().getTimer(text)),
       MEMBER(CTimerFactory, dump, GetTimerFactory(), path),
       MEMBER(CTimerFactory, dumpCsv, GetTimerFactory(), path),
       MEMBER(CTimerFactory, dumpSamples, GetTimerFactory(), text, path),
       MEMBER(CTimerFactory, dumpSamplesCsv, GetTimerFactory(), text, path),
       MEMBER(CUtf16StdioFile, Open, file, textPath, CUtf16StdioFile::modeReadWrite),
       MEMBER(CUtf16StdioFile, WriteString, file, text),
       MEMBER(CUtf16StdioFile, Seek, file, 0, CUtf16StdioFile::begin),
       MEMBER(CUtf16StdioFile, ReadString, file, content),
       MEMBER(CUtf16StdioFile, Close, file),
       MEMBER(CRegistry, CreateKey, key, HKEY_CURRENT_USER, text, KEY_ALL_ACCESS),
       MEMBER(CRegistry, OpenReadOnly, key, HKEY_CURRENT_USER, text),
       MEMBER(CRegistry, Open, key, HKEY_CURRENT_USER, text),
       MEMBER(CRegistry, VerifyKey, key, HKEY_CURRENT_USER, text),
       MEMBER(CRegistry, WriteString, key, text, text),
       MEMBER(CRegistry, ReadString, key, text, content),
       MEMBER(CRegistry, WriteDWORD, key, u"number", 1),
       MEMBER(CRegistry, ReadDWORD, key, u"number", dword),
       MEMBER(CRegistry, Write, key, u"object", stored),
       MEMBER(CRegistry, Read, key, u"object", stored),
       MEMBER(CRegistry, VerifyValue, key, text),
       MEMBER(CRegistry, ReadKeyKeys, key, names),
       MEMBER(CRegistry, ReadKeyValues, key, names),
       MEMBER(CRegistry, DeleteValue, key, text),
       MEMBER(CRegistry, DeleteKey, key, HKEY_CURRENT_USER, text)});
}

void Exports::addContext() {
  static const CString language = u"English [ENG.LNG]";
  EACH((), InitMLT, chosenLanguage, textFolder, traceFilePath, kpxGetAppName, kpxGetProgPath,
       kpxGetSystemPath, kpxGetSystemPathFromRegistryOrIniFile, kpxGetProjectsFolder,
       kpxGetProjectSubPath, kpxGetCurrentProjectPath, kpxGetCurrentProject, kpxGetCurrentJob,
       kpxGetCurrentSysUser, kpxGetCurrentPrjUser, kpxGetComputerName, kpxGetUserName,
       kpxGetUserHomePath, kpxGetUserAppDataPath, kpxGetCommonAppDataPath, kpxIsTracing,
       kpxIsTestMode, kpxShowKPXErrorMessages, kpxShowConnectingPointsAsHelp,
       kpxGetKPXSettingAskOverwriteCells, kpxSetWindowTitle, kpxSetWindowTitleProject);
  EACH((language), initTexts, languageFileName, languageFilePath, languageFiles);
  EACH((text), kpxSetAppName, kpxSetProgPath, kpxSetSystemPath, kpxSetProjectsFolder,
       kpxSetProjectSubPath, setHelpFile, setBinFolderApplication);
  EACH((nullptr), kpxSetCurrentPrjSettings, kpxSetCurrentPrjSettingsIntern,
       kpxSetCurrentSysSettings, kpxSetCurrentNASPointSettings, kpxSetCurrentFrameWnd,
       kpxSetCurrentAppHWnd, kpxSetCurrentMainParentHWnd, kpxSetCurrentDetailDlgHWnd,
       kpxSetCurrentLineEditDlgHWnd);
  EACH((1), useProjectWording, kpxSetAutoSaveEditSession, kpxSetAutoSaveEditSessionIntervall);
  EACH((kpxGetCurrentSysUser()), kpxSetCurrentSysUser, kpxSetCurrentPrjUser);
  EACH((kpxGetCurrentProject()), kpxSetCurrentProject);
  EACH((kpxGetCurrentJob()), kpxSetCurrentJob);
  EACH((path), kpxGetFileSize);
  EACH((text, text), kpxGetKPXSettingFromRegistry);
  EACH((text, text, text), kpxGetDataFromRegistry, kpxSetDataToRegistry);
  EACH((names, numbers, true, 0), kpxInitHGS, kpxInitLGS);
  EACH((1, true, 0), kpxSetHGS, kpxSetLGS);
  add({{"kpxShowSystemErrorMessage", [&] { kpxShowSystemErrorMessage(text); }},
       {"kpxShowSystemErrorMessage", [&] { kpxShowSystemErrorMessage(text, 2); }},
       {"kpxShowSoccetErrorMessage", [&] { kpxShowSoccetErrorMessage(text, 2); }}});
}

TEST_F(Exports, ReportFailuresAndLetNoneOut) {
  std::set<std::string> called;
  addMarkup();
  addConfigurations();
  addTextsAndFiles();
  addContext();
  for (const Call& call : calls_) {
    called.insert(call.name);
    expectGuarded(call);
  }
  // For check_guards.py.
  if (const char* const listing = std::getenv("KPX_CALLED")) {
    std::ofstream out(listing);
    for (const std::string& each : called) out << each << '\n';
  }
}

// What the schema gives a number to is guarded; all other accessors let exceptions pass.
TEST_F(Exports, SettingsReportFailuresUnderTheirNumbers) {
  for (const SettingsClass* const each : settingsClasses()) {
    const std::unique_ptr<CDBObject> object = each->make();
    for (const SettingAccess& access : each->settings) {
      const std::string name = CString(each->name).utf8() + '.' + CString(access.key()).utf8();
      SettingValue value = std::int32_t{-1234567890};
      if (access.setting->kind == ValueKind::real) value = 1.0 / 3.0;
      if (access.setting->kind == ValueKind::text) value = text;
      if (access.set) access.set(*object, value);
      if (access.get && access.setting->getterError != 0) {
        expectGuarded(
            {name, [&] { access.get(*object); }, false, false, access.setting->getterError});
      }
      if (access.set && access.setting->setterError != 0) {
        if (access.setting->kind == ValueKind::text) value = CString(text + text);
        expectGuarded(
            {name, [&] { access.set(*object, value); }, false, false, access.setting->setterError});
      }
    }
    if (each->resetError != 0) {
      expectGuarded({"ResetPos", [&] { static_cast<CFGConfig&>(*object).ResetPos(); }, false, false,
                     each->resetError});
    }
  }
}

}  // namespace
}  // namespace kpx
