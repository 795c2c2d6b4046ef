// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_MODAL_LOOP_H
#define VT63X_PLATFORM_WINDOW_MODAL_LOOP_H

// The event loop of a modal dialog. Loops nest; each ends when its own dialog is ended, but returns
// only after those that began later. Main thread only.

#include <windows.h>

#include <QEventLoop>
#include <functional>

namespace vt63x::ui {

class Dialog;

// Disables a window for as long as a modal dialog that it owns runs.
class OwnerDisabled {
 public:
  explicit OwnerDisabled(HWND owner);
  ~OwnerDisabled() { Enable(); }
  OwnerDisabled(const OwnerDisabled&) = delete;
  OwnerDisabled& operator=(const OwnerDisabled&) = delete;

  // Before the dialog goes, so that its owner can take the focus over.
  void Enable();

 private:
  HWND owner_;
};

class ModalLoop {
 public:
  ModalLoop();
  ~ModalLoop();
  ModalLoop(const ModalLoop&) = delete;
  ModalLoop& operator=(const ModalLoop&) = delete;

  // Until End.
  void Run();
  void End();
  bool ended() const { return ended_; }
  INT_PTR result = 0;
  OwnerDisabled* owner = nullptr;  // of a modal dialog

  // Somebody wants to quit: the innermost ends, and then the one around it.
  static void EndInnermost();
  static bool InnermostEnded();
  // How many loops are nested.
  static std::size_t Depth();
  // For a loop of the toolkit's own (a menu, a file dialog): `end` breaks it off.
  explicit ModalLoop(std::function<void()> end);

 private:
  QEventLoop loop_;
  std::function<void()> end_;
  bool ended_ = false;
};

// Shows the dialog, which disables its owner, runs it until EndDialog, its destruction or the
// request to quit, destroys it, and returns its result.
INT_PTR RunModalDialog(Dialog& dialog, OwnerDisabled& owner, LPARAM parameter);

// Asks the dialog's loop to end with `result`. For the user the dialog is gone at once, whatever
// its loop has still on the stack: it is hidden, and its owner enabled and has the focus. Nothing
// for a dialog that is not modal.
void EndModalDialog(Dialog& dialog, INT_PTR result);

}  // namespace vt63x::ui

#endif
