#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <set>

#include "kpx/context/ErrorReport.h"
#include "kpx/context/Trace.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

using std::chrono::milliseconds;

/// A file that another program has open, sharing no more than it says.
class OtherProgram {
 public:
  OtherProgram(const CString& path, DWORD sharing)
      : handle_(::CreateFileW(path, GENERIC_WRITE, sharing, nullptr, OPEN_ALWAYS, 0, nullptr)) {}
  ~OtherProgram() { end(); }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  bool has() const { return handle_ != INVALID_HANDLE_VALUE; }
  void end() {
    if (has()) ::CloseHandle(handle_);
    handle_ = INVALID_HANDLE_VALUE;
  }

 private:
  HANDLE handle_;
};

TEST(SharedLog, LockedLogIsSkippedAfterTheTimeThatWasSet) {
  ContextScope scope;
  setLogPatience(milliseconds(50));
  OtherProgram other(scope.systemFolder() + u"\\Error.log", 0);
  ASSERT_TRUE(other.has());
  const auto begin = std::chrono::steady_clock::now();
  kpxError(7);
  const auto waited = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(waited, milliseconds(45)) << "clocks may differ a little between processors";
  EXPECT_LT(waited, milliseconds(1000));
  EXPECT_EQ(scope.log("project").size(), 1u);
  other.end();
  EXPECT_TRUE(scope.log("system").empty());
  kpxError(7);
  EXPECT_EQ(scope.log("system").size(), 1u);
}

TEST(SharedLog, ReadersHoldNobodyUp) {
  ContextScope scope;
  kpxError(7);
  const HANDLE reader =
      ::CreateFileW(scope.systemFolder() + u"\\Error.log", GENERIC_READ,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(reader, INVALID_HANDLE_VALUE);
  kpxError(8);
  ::CloseHandle(reader);
  EXPECT_EQ(scope.log("system").size(), 2u);
}

TEST(SharedLog, WriteProtectedLogIsSkipped) {
  ContextScope scope;
  const CString log = scope.systemFolder() + u"\\Error.log";
  scope.folder.write("system/Error.log", "old\r\n");
  ASSERT_TRUE(::SetFileAttributesW(log, FILE_ATTRIBUTE_READONLY));
  if (OtherProgram(log, FILE_SHARE_READ).has()) GTEST_SKIP() << "this user may write everything";
  kpxError(7);
  ::SetFileAttributesW(log, FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(scope.log("system"), std::vector<std::string>{"old"});
  EXPECT_EQ(scope.log("project").size(), 1u);
}

TEST(TraceFile, OneFileIsWrittenByOneProgram) {
  ContextScope scope;
  const CString trace = scope.folder / "trace";
  scope.folder.write("trace", "of another");
  {
    const OtherProgram other(trace, FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_TRUE(other.has());
    EXPECT_FALSE(openTrace(trace));
  }
  EXPECT_EQ(scope.folder.read("trace"), "of another");
  EXPECT_TRUE(openTrace(trace));
  EXPECT_FALSE(OtherProgram(trace, FILE_SHARE_READ | FILE_SHARE_WRITE).has());
  closeTrace();
}

// --- several processes --------------------------------------------------------------------------

constexpr int processes = 4;
constexpr int reports = 250;

/// What each process of the test below does.
TEST(SharedLogWriter, DISABLED_Reports) {
  ContextScope scope;
  setLogPatience(std::chrono::minutes(2));
  kpxSetSystemPath(environmentVariable(u"KPX_TEST_SYSTEM"));
  const int first = environmentVariable(u"KPX_TEST_FIRST").GetLength() * 100000;
  for (int i = 0; i < reports; ++i) kpxError(first + i);
}

TEST(SharedLog, ProcessesLoseAndMixUpNoLine) {
  ContextScope scope;
  setVariable("KPX_TEST_SYSTEM", scope.systemFolder());
  std::vector<HANDLE> started;
  for (int process = 1; process <= processes; ++process) {
    setVariable("KPX_TEST_FIRST", CString(u'x', process));
    wchar_t program[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring line = L"\"" + std::wstring(program) +
                        L"\" --gtest_also_run_disabled_tests --gtest_filter=SharedLogWriter.* "
                        L"--gtest_brief=1";
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION made{};
    ASSERT_TRUE(::CreateProcessW(program, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                 &start, &made));
    ::CloseHandle(made.hThread);
    started.push_back(made.hProcess);
  }
  for (const HANDLE process : started) {
    EXPECT_EQ(::WaitForSingleObject(process, 60000), WAIT_OBJECT_0);
    DWORD code = 99;
    ::GetExitCodeProcess(process, &code);
    EXPECT_EQ(code, 0u);
    ::CloseHandle(process);
  }
  removeVariable("KPX_TEST_SYSTEM");
  removeVariable("KPX_TEST_FIRST");
  std::set<int> numbers;
  const auto lines = scope.log("system");
  for (const std::string& line : lines) {
    const std::string head = "Projekt: Aue    Job: Tag 1    Fehler: ";
    ASSERT_TRUE(line.starts_with(head) && line.ends_with(ContextScope::userField())) << line;
    numbers.insert(std::stoi(line.substr(head.size())));
  }
  EXPECT_EQ(lines.size(), std::size_t{processes * reports});
  EXPECT_EQ(numbers.size(), lines.size());
}

}  // namespace
}  // namespace kpx
