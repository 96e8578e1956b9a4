#pragma once

#include <windows.h>

#include <vector>

#include "kpx/text/CString.h"

namespace kpx::detail {

/// A place in a dialog, in dialog units.
struct DialogBox {
  WORD left;
  WORD top;
  WORD width;
  WORD height;
};

/// A dialog described in memory as resources describe one, so that the library needs none: a
/// window with caption and system menu in the font of the system's messages. Its texts are set
/// when it is made. Controls follow each other in the order of the Tab key.
class DialogTemplate {
 public:
  DialogTemplate(WORD width, WORD height);

  /// Adds a visible control.
  void add(const wchar_t* className, WORD id, DWORD style, DialogBox box);
  /// Adds a text of several lines, which `fitText` gives the height it needs.
  void addText(WORD id, DialogBox box);
  void addButton(WORD id, DWORD style, DialogBox box);

  /// Valid until the next change.
  const DLGTEMPLATE* get() const noexcept;

 private:
  void addDouble(DWORD value);
  void addBox(const DialogBox& box);
  void addString(const wchar_t* text);

  std::vector<WORD> words_;
};

/// Sets a text that `addText` made and moves what lies below it, so that its lines have room; the
/// dialog grows or, without a text, shrinks, and stays within the screen.
void fitText(HWND dialog, int id, const CString& text);

/// Moves the dialog over the middle of its owner, or of the screen, and whole onto the screen.
void centreDialog(HWND dialog) noexcept;

/// Sets the text of a button; an empty one is the word that the system's own boxes show on IDOK and
/// IDCANCEL, else "OK" and "Abbrechen". "&" is an ordinary character.
void setButtonText(HWND dialog, int id, const CString& text);

/// The owner of a dialog: the window of the program that a given window lies in. It takes input
/// again at the end if it did before, whatever happens meanwhile.
class DialogOwner {
 public:
  /// What is no window, or no longer, gives no owner.
  explicit DialogOwner(HWND window) noexcept;
  ~DialogOwner() { restore(); }
  DialogOwner(const DialogOwner&) = delete;
  DialogOwner& operator=(const DialogOwner&) = delete;

  HWND get() const noexcept { return window_; }
  void disable() const noexcept;
  void restore() const noexcept;

 private:
  HWND window_;
  bool tookInput_;
};

}  // namespace kpx::detail
