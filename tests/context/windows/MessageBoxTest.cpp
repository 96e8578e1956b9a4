#include <gtest/gtest.h>

#include "kpx/context/ErrorReport.h"
#include "kpx/context/WindowTitle.h"
#include "tests/common/TextPrinter.h"
#include "tests/common/windows/BoxPresser.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

TEST(MessageBoxWindow, AnswersTheButtonThatWasPressed) {
  const struct {
    int style;
    int button;
  } cases[] = {{MB_OK | MB_ICONERROR, IDOK},
               {MB_OKCANCEL, IDCANCEL},
               {MB_YESNOCANCEL | MB_ICONWARNING, IDNO},
               {MB_YESNO, IDYES},
               {MB_RETRYCANCEL, IDRETRY},
               {MB_ABORTRETRYIGNORE, IDIGNORE}};
  for (const auto& each : cases) {
    BoxPresser presser(each.button);
    EXPECT_EQ(utlMessageBox(each.style, u"%d Punkte in %s", 3, CString(u"Größe \x20AC")),
              each.button);
    presser.wait();
    ASSERT_TRUE(presser.hasPressed());
    EXPECT_EQ(presser.text(), L"3 Punkte in Größe \x20AC");
  }
}

TEST(MessageBoxWindow, ReportShowsOneWithTheSwitch) {
  ContextScope scope;
  scope.switchOn(u"ErrorMessage");
  BoxPresser presser(IDOK);
  kpxError(4711);
  presser.wait();
  ASSERT_TRUE(presser.hasPressed());
  EXPECT_EQ(presser.caption(), L"Kiebitz");
  EXPECT_EQ(presser.text(),
            L"In Kiebitz ist ein Fehler aufgetreten.\n\nFehler 4711\n\n"
            L"Bitte wenden Sie sich an die Kiebitz-Hotline.");
  EXPECT_EQ(scope.log("system").size(), 1u);
}

TEST(MessageBoxWindow, SystemsMessageIsShown) {
  BoxPresser presser(IDOK);
  kpxShowSoccetErrorMessage(u"Empfang", 2UL);
  presser.wait();
  ASSERT_TRUE(presser.hasPressed());
  EXPECT_FALSE(systemMessage(2).IsEmpty());
  EXPECT_EQ(CString(presser.text()), u"Empfang (Fehler:2)\n\n" + systemMessage(2));
}

TEST(WindowTitle, IsThatOfTheWindow) {
  ContextScope scope;
  const HWND window = ::CreateWindowExW(0, L"STATIC", L"before", WS_OVERLAPPEDWINDOW, 0, 0, 100,
                                        100, nullptr, nullptr, nullptr, nullptr);
  ASSERT_NE(window, nullptr);
  kpxSetCurrentAppHWnd(window);
  EXPECT_EQ(kpxSetWindowTitleProject(), 1);
  wchar_t title[100] = {};
  ::GetWindowTextW(window, title, 100);
  EXPECT_EQ(std::wstring(title), L"Kiebitz - Aue");
  ::DestroyWindow(window);
  EXPECT_EQ(kpxSetWindowTitle(), 0) << "the window is gone";
}

}  // namespace
}  // namespace kpx
