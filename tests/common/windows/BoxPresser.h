#pragma once

#include <windows.h>

#include <chrono>
#include <string>
#include <thread>

namespace kpx {

/// Waits in a thread of its own for a message box of this process, notes what it shows and presses
/// one of its buttons.
class BoxPresser {
 public:
  /// The button by its number, such as IDOK.
  explicit BoxPresser(int button) : thread_([this, button] { run(button); }) {}
  ~BoxPresser() { wait(); }
  BoxPresser(const BoxPresser&) = delete;
  BoxPresser& operator=(const BoxPresser&) = delete;

  void wait() {
    if (thread_.joinable()) thread_.join();
  }
  bool hasPressed() const { return pressed_; }
  const std::wstring& caption() const { return caption_; }
  const std::wstring& text() const { return text_; }

 private:
  static std::wstring textOf(HWND window) {
    std::wstring text(1024, L'\0');
    text.resize(static_cast<std::size_t>(
        ::SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
  }

  static HWND findBox() {
    for (HWND box = nullptr;
         (box = ::FindWindowExW(nullptr, box, L"#32770", nullptr)) != nullptr;) {
      DWORD process = 0;
      ::GetWindowThreadProcessId(box, &process);
      if (process == ::GetCurrentProcessId() && ::IsWindowVisible(box)) return box;
    }
    return nullptr;
  }

  void run(int button) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < end) {
      const HWND box = findBox();
      if (box && ::GetDlgItem(box, button)) {
        caption_ = textOf(box);
        constexpr int textItem = 0xFFFF;
        text_ = textOf(::GetDlgItem(box, textItem));
        pressed_ = ::PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0) != 0;
        return;
      }
      ::Sleep(2);
    }
  }

  std::wstring caption_;
  std::wstring text_;
  bool pressed_ = false;
  std::thread thread_;  // begins when all of the above is there
};

}  // namespace kpx
