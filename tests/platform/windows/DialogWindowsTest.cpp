#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>

#include "kpx/platform/InputDialog.h"
#include "kpx/platform/ProgressDialog.h"
#include "tests/common/TextPrinter.h"
#include "tests/common/windows/BoxPresser.h"
#include "tests/platform/ManualClock.h"

namespace kpx {

using namespace literals;

namespace {

/// The dialog that this thread shows, or nullptr.
HWND shownDialog() {
  HWND found = nullptr;
  const auto look = [](HWND window, LPARAM result) -> BOOL {
    wchar_t name[20];
    ::GetClassNameW(window, name, std::size(name));
    if (std::wstring_view(name) != L"#32770" || !::IsWindowVisible(window)) return TRUE;
    *reinterpret_cast<HWND*>(result) = window;
    return FALSE;
  };
  ::EnumThreadWindows(::GetCurrentThreadId(), look, reinterpret_cast<LPARAM>(&found));
  return found;
}

CString textOf(HWND window) {
  wchar_t text[300];
  ::GetWindowTextW(window, text, std::size(text));
  return text;
}

HWND childOf(HWND dialog, const wchar_t* className) {
  return ::FindWindowExW(dialog, nullptr, className, nullptr);
}

/// A main window with one child, which the modules give as the owner.
class Owner {
 public:
  Owner()
      : window_(::CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW, 0, 0, 90, 90, nullptr,
                                  nullptr, nullptr, nullptr)),
        child_(::CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 9, 9, window_, nullptr, nullptr,
                                 nullptr)) {}
  ~Owner() { close(); }
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;

  void close() const { ::DestroyWindow(window_); }
  HWND child() const { return child_; }
  HWND window() const { return window_; }
  bool takesInput() const { return ::IsWindowEnabled(window_) != 0; }

 private:
  HWND window_;
  HWND child_;
};

/// The code of the message to end the program that waits in the queue, which it leaves; -1: none.
int takeQuitCode() {
  MSG message;
  while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) return static_cast<int>(message.wParam);
  }
  return -1;
}

void press(HWND window, WPARAM key) { ::PostMessageW(window, WM_KEYDOWN, key, 0); }

// --- the input dialog -------------------------------------------------------------------------

std::function<void(HWND dialog, HWND line)> person;

void CALLBACK whenShown(HWND, UINT, UINT_PTR timer, DWORD) {
  const HWND dialog = shownDialog();
  if (!dialog) return;
  ::KillTimer(nullptr, timer);
  person(dialog, childOf(dialog, L"EDIT"));
}

/// Asks, and acts as the person as soon as the dialog is there.
std::optional<CString> ask(const InputDialogRequest& request,
                           std::function<void(HWND dialog, HWND line)> act) {
  person = std::move(act);
  ::SetTimer(nullptr, 0, 10, whenShown);
  return showInputDialog(request);
}

TEST(InputWindowTest, ShowsTheRequestAndTakesWhatIsTyped) {
  const Owner owner;
  const InputDialogRequest request{.caption = u"Punkt & Linie",
                                   .prompt = u"Nummer & Art\nC:\\a\\b:",
                                   .initialText = u"1234567",
                                   .maximumLength = 6,
                                   .okText = u"Gut & schön",
                                   .owner = owner.child()};
  const auto answer = ask(request, [&](HWND dialog, HWND line) {
    EXPECT_FALSE(owner.takesInput());
    EXPECT_EQ(textOf(dialog), u"Punkt & Linie");
    EXPECT_EQ(textOf(childOf(dialog, L"STATIC")), u"Nummer & Art\nC:\\a\\b:");
    EXPECT_EQ(textOf(line), u"123456");
    EXPECT_EQ(textOf(::GetDlgItem(dialog, IDOK)), u"Gut && schön");
    EXPECT_FALSE(textOf(::GetDlgItem(dialog, IDCANCEL)).IsEmpty());
    // The initial text is selected, so typing replaces it, and typing ends at the limit.
    for (const wchar_t unit : {L'ß', L'2', L'3', L'4', L'5', L'6', L'7'}) {
      ::PostMessageW(line, WM_CHAR, unit, 0);
    }
    press(line, VK_RETURN);
  });
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(*answer, u"ß23456");
  EXPECT_TRUE(owner.takesInput());
}

TEST(InputWindowTest, ATextWithoutLineBreaksOrNothing) {
  const Owner owner;
  const InputDialogRequest request{.initialText = u"1", .owner = owner.window()};
  EXPECT_EQ(ask(request, [](HWND, HWND line) { press(line, VK_ESCAPE); }), std::nullopt);
  EXPECT_EQ(ask(request, [](HWND dialog, HWND) { ::PostMessageW(dialog, WM_CLOSE, 0, 0); }),
            std::nullopt);
  EXPECT_EQ(ask(request, [](HWND, HWND line) { press(line, VK_RETURN); }), u"1"_cs);
  const auto enter = [](const wchar_t* text) {
    return [text](HWND dialog, HWND line) {
      ::SetWindowTextW(line, text);
      ::PostMessageW(::GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
    };
  };
  EXPECT_EQ(ask(request, enter(L"")), u""_cs);
  EXPECT_EQ(ask(request, enter(L"a\r\nb")), u"a b"_cs);
  const std::wstring longText(40000, L'x');
  EXPECT_EQ(ask(request, enter(longText.c_str())), CString(longText));
  EXPECT_TRUE(owner.takesInput());
}

TEST(InputWindowTest, TheEndOfTheProgramCancelsAndIsKept) {
  const Owner owner;
  EXPECT_EQ(ask({.owner = owner.window()}, [](HWND, HWND) { ::PostQuitMessage(7); }), std::nullopt);
  EXPECT_EQ(takeQuitCode(), 7);
  EXPECT_TRUE(owner.takesInput());
}

TEST(InputWindowTest, AClosedOwnerIsNone) {
  const Owner owner;
  owner.close();
  EXPECT_EQ(ask({.initialText = u"1", .owner = owner.window()},
                [](HWND, HWND line) { press(line, VK_RETURN); }),
            u"1"_cs);
}

TEST(InputWindowTest, LongPromptsGetTheRoomTheyNeed) {
  RECT none = {};
  RECT one = {};
  RECT many = {};
  RECT huge = {};
  const auto measure = [](RECT& place) {
    return [&place](HWND dialog, HWND line) {
      ::GetWindowRect(dialog, &place);
      RECT prompt = {};
      RECT text = {};
      ::GetWindowRect(childOf(dialog, L"STATIC"), &prompt);
      ::GetWindowRect(line, &text);
      EXPECT_LE(prompt.bottom, text.top);
      EXPECT_LT(text.bottom, place.bottom);
      press(line, VK_ESCAPE);
    };
  };
  ask({}, measure(none));
  ask({.prompt = u"a"}, measure(one));
  ask({.prompt = u"a\nb\nc\nd"}, measure(many));
  ask({.prompt = CString(u'\n', 1000)}, measure(huge));
  EXPECT_LT(none.bottom - none.top, one.bottom - one.top);
  EXPECT_GT(many.bottom - many.top, one.bottom - one.top + 20);
  EXPECT_LE(huge.bottom - huge.top, ::GetSystemMetrics(SM_CYSCREEN));
}

// --- the progress dialog ----------------------------------------------------------------------

class ProgressWindowTest : public testing::Test {
 protected:
  HWND bar() const { return childOf(shownDialog(), PROGRESS_CLASSW); }
  int position() const { return static_cast<int>(::SendMessageW(bar(), PBM_GETPOS, 0, 0)); }
  bool marquee() const { return (::GetWindowLongPtrW(bar(), GWL_STYLE) & PBS_MARQUEE) != 0; }

  ManualClock clock_{100};
  Owner owner_;
};

TEST_F(ProgressWindowTest, ShowsTextsAndTheWholeRangeOfCounts) {
  {
    ProgressDialog dialog({.caption = u"Auspacken", .text = u"A & B", .owner = owner_.child()});
    const HWND window = shownDialog();
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(owner_.takesInput());
    EXPECT_EQ(textOf(window), u"Auspacken");
    const HWND text = childOf(window, L"STATIC");
    EXPECT_EQ(textOf(text), u"A & B");
    EXPECT_EQ(position(), 0);
    EXPECT_TRUE(dialog.show({.done = ~0ull / 4, .total = ~0ull, .text = u"a\nb"}));
    EXPECT_EQ(textOf(::FindWindowExW(window, text, L"STATIC", nullptr)), u"a b");
    EXPECT_EQ(position(), 250);
    EXPECT_FALSE(marquee());
    EXPECT_TRUE(dialog.show({.done = 5}));
    EXPECT_TRUE(marquee());
    EXPECT_TRUE(dialog.show({.done = 3, .total = 3}));
    EXPECT_EQ(position(), 1000);
    EXPECT_FALSE(marquee());
  }
  EXPECT_EQ(shownDialog(), nullptr);
  EXPECT_TRUE(owner_.takesInput());
}

TEST_F(ProgressWindowTest, OnlyTheWishToCancelCancels) {
  const std::function<void(HWND)> wishes[] = {
      [](HWND window) { press(window, VK_ESCAPE); },
      [](HWND window) { ::PostMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0); },
      [](HWND window) { ::PostMessageW(::GetDlgItem(window, IDCANCEL), BM_CLICK, 0, 0); },
      [](HWND window) {
        press(::GetDlgItem(window, IDCANCEL), VK_SPACE),
            ::PostMessageW(::GetDlgItem(window, IDCANCEL), WM_KEYUP, VK_SPACE, 0);
      },
  };
  for (const auto& wish : wishes) {
    ProgressDialog dialog({.owner = owner_.window()});
    const HWND window = shownDialog();
    press(::GetDlgItem(window, IDCANCEL), VK_RETURN);
    press(window, VK_RETURN);
    EXPECT_TRUE(dialog.show({.done = 1, .total = 2}));
    wish(window);
    EXPECT_FALSE(dialog.show({.done = 1, .total = 2}));
    EXPECT_FALSE(dialog.show({.done = 2, .total = 2}));
    EXPECT_FALSE(::IsWindowEnabled(::GetDlgItem(window, IDCANCEL)));
  }
  EXPECT_TRUE(owner_.takesInput());
}

TEST_F(ProgressWindowTest, TheEndOfTheProgramCancelsAndIsKept) {
  ProgressDialog dialog({});
  ::PostQuitMessage(7);
  EXPECT_FALSE(dialog.show({.done = 1, .total = 2}));
  EXPECT_FALSE(dialog.show({.done = 2, .total = 2}));
  EXPECT_EQ(takeQuitCode(), 7);
}

TEST_F(ProgressWindowTest, AWindowThatIsNeverPaintedDoesNotHoldTheOperationUp) {
  const WNDPROC neverPaints = [](HWND window, UINT message, WPARAM first,
                                 LPARAM second) -> LRESULT {
    return message == WM_PAINT ? 0 : ::DefWindowProcW(window, message, first, second);
  };
  ::SetWindowLongPtrW(owner_.window(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(neverPaints));
  ::ShowWindow(owner_.window(), SW_SHOW);
  ::InvalidateRect(owner_.window(), nullptr, TRUE);
  ProgressDialog dialog({});
  EXPECT_TRUE(dialog.show({.done = 1, .total = 2}));
  EXPECT_NE(::GetUpdateRect(owner_.window(), nullptr, FALSE), 0);
}

TEST_F(ProgressWindowTest, AnOwnerThatGoesTakesItAlong) {
  ProgressDialog dialog({.owner = owner_.window()});
  owner_.close();
  EXPECT_EQ(shownDialog(), nullptr);
  EXPECT_FALSE(dialog.show({.done = 1, .total = 2}));
}

TEST_F(ProgressWindowTest, TheOwnerIsLeftAsItWas) {
  try {
    ProgressDialog dialog({.owner = owner_.window()});
    EXPECT_FALSE(owner_.takesInput());
    throw std::runtime_error("the operation failed");
  } catch (const std::runtime_error&) {
    EXPECT_TRUE(owner_.takesInput());
  }
  ::EnableWindow(owner_.window(), FALSE);
  { ProgressDialog dialog({.owner = owner_.window()}); }
  EXPECT_FALSE(owner_.takesInput());
}

// --- as a person at the keyboard: from outside the thread of the dialog ------------------------

TEST(DialogPersonTest, PressesCancelWhileTheOperationRuns) {
  BoxPresser presser(IDCANCEL);
  ProgressDialog dialog({.caption = u"Auspacken"});
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  std::uint64_t done = 0;
  while (dialog.show({.done = ++done, .total = ~0ull})) {
    ASSERT_LT(std::chrono::steady_clock::now(), end);
  }
  presser.wait();
  EXPECT_TRUE(presser.hasPressed());
  EXPECT_EQ(presser.caption(), L"Auspacken");
}

TEST(DialogPersonTest, AnswersTheQuestion) {
  BoxPresser presser(IDOK);
  EXPECT_EQ(showInputDialog({.caption = u"Punktnummer", .initialText = u"Größe 12"}),
            u"Größe 12"_cs);
  presser.wait();
  EXPECT_TRUE(presser.hasPressed());
  EXPECT_EQ(presser.caption(), L"Punktnummer");
}

}  // namespace
}  // namespace kpx
