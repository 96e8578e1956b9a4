#include "kpx/platform/windows/DialogTemplate.h"

#include <algorithm>
#include <iterator>

namespace kpx::detail {
namespace {

constexpr std::size_t countIndex = 8;  // in words: where the number of controls stands

struct MessageFont {
  WORD points = 8;
  WORD weight = FW_NORMAL;
  BYTE italic = FALSE;
  BYTE charset = DEFAULT_CHARSET;
  wchar_t face[LF_FACESIZE] = L"MS Shell Dlg";
};

MessageFont messageFont() noexcept {
  MessageFont font;
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof metrics;
  if (!::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0)) return font;
  const LOGFONTW& system = metrics.lfMessageFont;
  const HDC screen = ::GetDC(nullptr);
  const int perInch = screen ? ::GetDeviceCaps(screen, LOGPIXELSY) : 0;
  if (screen) ::ReleaseDC(nullptr, screen);
  const LONG height = system.lfHeight < 0 ? -system.lfHeight : system.lfHeight;
  if (height == 0 || perInch <= 0) return font;
  font.points = static_cast<WORD>(::MulDiv(height, 72, perInch));
  font.weight = static_cast<WORD>(system.lfWeight);
  font.italic = system.lfItalic;
  font.charset = system.lfCharSet;
  std::copy(std::begin(system.lfFaceName), std::end(system.lfFaceName), font.face);
  return font;
}

int widthOf(const RECT& box) noexcept { return box.right - box.left; }
int heightOf(const RECT& box) noexcept { return box.bottom - box.top; }

RECT placeOf(HWND window) noexcept {
  RECT box = {};
  ::GetWindowRect(window, &box);
  return box;
}

/// The part of a window's screen that programs may use.
RECT screenOf(HWND window) noexcept {
  MONITORINFO screen = {};
  screen.cbSize = sizeof screen;
  ::GetMonitorInfoW(::MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &screen);
  return screen.rcWork;
}

int neededHeight(HWND control, const CString& text, int width) noexcept {
  const HDC context = ::GetDC(control);
  if (!context) return 0;
  const auto font = reinterpret_cast<HFONT>(::SendMessageW(control, WM_GETFONT, 0, 0));
  const HGDIOBJ before = font ? ::SelectObject(context, font) : nullptr;
  RECT needed = {0, 0, width, 0};
  ::DrawTextW(context, text, text.GetLength(), &needed,
              DT_CALCRECT | DT_WORDBREAK | DT_EDITCONTROL | DT_NOPREFIX | DT_EXPANDTABS);
  if (before) ::SelectObject(context, before);
  ::ReleaseDC(control, context);
  return heightOf(needed);
}

CString systemWord(int id) {
  // The system keeps the words of its boxes here, in the user's language.
  constexpr UINT okWord = 800;
  constexpr UINT cancelWord = 801;
  wchar_t word[40];
  const int length = ::LoadStringW(::GetModuleHandleW(L"user32.dll"),
                                   id == IDOK ? okWord : cancelWord, word, std::size(word));
  CString text = std::wstring_view(word, static_cast<std::size_t>(std::max(length, 0)));
  text.Remove(u'&');
  if (text.IsEmpty()) text = id == IDOK ? u"OK" : u"Abbrechen";
  return text;
}

}  // namespace

DialogTemplate::DialogTemplate(WORD width, WORD height) {
  words_ = {1, 0xFFFF};  // the extended form
  addDouble(0);          // help id
  addDouble(0);          // extended style
  addDouble(DS_MODALFRAME | DS_SETFONT | WS_POPUP | WS_CAPTION | WS_SYSMENU);
  words_.push_back(0);
  addBox({0, 0, width, height});
  addString(L"");  // no menu
  addString(L"");  // the system's class
  addString(L"");
  const MessageFont font = messageFont();
  words_.push_back(font.points);
  words_.push_back(font.weight);
  words_.push_back(static_cast<WORD>(font.italic | font.charset << 8));
  addString(font.face);
}

void DialogTemplate::add(const wchar_t* className, WORD id, DWORD style, DialogBox box) {
  if (words_.size() % 2 != 0) words_.push_back(0);
  addDouble(0);  // help id
  addDouble(0);  // extended style
  addDouble(style | WS_CHILD | WS_VISIBLE);
  addBox(box);
  addDouble(id);
  addString(className);
  addString(L"");
  words_.push_back(0);  // no data of its own
  ++words_[countIndex];
}

void DialogTemplate::addText(WORD id, DialogBox box) {
  add(L"STATIC", id, SS_LEFT | SS_NOPREFIX | SS_EDITCONTROL, box);
}

void DialogTemplate::addButton(WORD id, DWORD style, DialogBox box) {
  add(L"BUTTON", id, style | WS_TABSTOP, box);
}

const DLGTEMPLATE* DialogTemplate::get() const noexcept {
  return reinterpret_cast<const DLGTEMPLATE*>(words_.data());
}

void DialogTemplate::addDouble(DWORD value) {
  words_.push_back(LOWORD(value));
  words_.push_back(HIWORD(value));
}

void DialogTemplate::addBox(const DialogBox& box) {
  words_.insert(words_.end(), {box.left, box.top, box.width, box.height});
}

void DialogTemplate::addString(const wchar_t* text) {
  do {
    words_.push_back(static_cast<WORD>(*text));
  } while (*text++ != L'\0');
}

void fitText(HWND dialog, int id, const CString& text) {
  const HWND control = ::GetDlgItem(dialog, id);
  ::SetWindowTextW(control, text);
  const RECT box = placeOf(control);
  const RECT whole = placeOf(dialog);
  std::vector<HWND> below;
  LONG next = whole.bottom;
  for (HWND other = ::GetWindow(dialog, GW_CHILD); other; other = ::GetWindow(other, GW_HWNDNEXT)) {
    const LONG top = placeOf(other).top;
    if (top < box.bottom) continue;
    below.push_back(other);
    next = std::min(next, top);
  }
  // What has no text needs no distance to the next control either.
  const int height = text.IsEmpty() ? static_cast<int>(box.bottom - next)
                                    : neededHeight(control, text, widthOf(box));
  const int room = heightOf(screenOf(dialog)) - heightOf(whole);
  const int growth = std::min(height - heightOf(box), room);
  for (const HWND other : below) {
    RECT place = placeOf(other);
    ::MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
    ::SetWindowPos(other, nullptr, place.left, place.top + growth, 0, 0,
                   SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  }
  constexpr UINT resize = SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE;
  ::SetWindowPos(control, nullptr, 0, 0, widthOf(box), std::max(0, heightOf(box) + growth), resize);
  ::SetWindowPos(dialog, nullptr, 0, 0, widthOf(whole), heightOf(whole) + growth, resize);
}

void centreDialog(HWND dialog) noexcept {
  const HWND owner = ::GetWindow(dialog, GW_OWNER);
  const bool isOverOwner = owner && ::IsWindowVisible(owner) && !::IsIconic(owner);
  const RECT screen = screenOf(owner ? owner : dialog);
  const RECT around = isOverOwner ? placeOf(owner) : screen;
  const RECT box = placeOf(dialog);
  const LONG width = widthOf(box);
  const LONG height = heightOf(box);
  // The left and upper edge win where the dialog is larger than the screen.
  const LONG left = std::max(
      screen.left, std::min((around.left + around.right - width) / 2, screen.right - width));
  const LONG top = std::max(
      screen.top, std::min((around.top + around.bottom - height) / 2, screen.bottom - height));
  ::SetWindowPos(dialog, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void setButtonText(HWND dialog, int id, const CString& text) {
  CString shown = text.IsEmpty() ? systemWord(id) : text;
  shown.Replace(u"&", u"&&");
  ::SetDlgItemTextW(dialog, id, shown);
}

DialogOwner::DialogOwner(HWND window) noexcept
    : window_(window && ::IsWindow(window) ? ::GetAncestor(window, GA_ROOT) : nullptr),
      tookInput_(window_ && ::IsWindowEnabled(window_)) {}

void DialogOwner::disable() const noexcept {
  if (tookInput_) ::EnableWindow(window_, FALSE);
}

void DialogOwner::restore() const noexcept {
  if (tookInput_) ::EnableWindow(window_, TRUE);
}

}  // namespace kpx::detail
