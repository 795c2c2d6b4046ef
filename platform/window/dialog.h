// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_DIALOG_H
#define VT63X_PLATFORM_WINDOW_DIALOG_H

// A dialog: a top-level window made from a template, with an optional menu bar above the client
// area that holds its controls. Its class procedure asks the program's dialog procedure first and
// does what is left for the message otherwise. Main thread only.

#include <memory>
#include <vector>

#include "platform/window/dialog_template.h"
#include "platform/window/dialog_units.h"
#include "platform/window/window.h"

class QMenuBar;

namespace vt63x::ui {

class ModalLoop;

class Dialog : public Window {
 public:
  // Makes the window with its controls, hidden. Null for a template that holds something outside
  // the list.
  static Dialog* Make(const dialog_template& source, Dialog* owner, DLGPROC dialog_procedure);
  ~Dialog() override;

  QWidget* frame() const { return widget(); }
  QWidget* client() const { return client_; }
  const std::vector<std::unique_ptr<Window>>& controls() const { return controls_; }
  HMENU menu() const { return menu_; }
  QMenuBar* menu_bar() const { return menu_bar_; }  // null for a dialog without menu
  const dialog_units& units() const { return units_; }
  Window* Control(int id) const;

  // WM_INITDIALOG, and the focus that follows from its answer.
  void Initialise(LPARAM parameter);
  void Show(bool show);
  void MoveTo(const QRect& rect);
  // On the screen, without the window manager's frame, within the limits of its size.
  QRect Place() const;

  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam) override;
  void Destroy() override;

  // Lays the frame out anew and sends WM_SIZE if the client area or the state has changed.
  void SizeMayHaveChanged();

  HWND remembered_focus() const { return remembered_focus_; }
  void RememberFocus(HWND control) { remembered_focus_ = control; }
  // The focus is at `window` now. A button that the user brought it to is the one that Enter
  // presses until it moves on; one that the program brought it to is not.
  void FocusReached(Window& window, bool by_user);

  // From the first key on it is seen who has the focus, also in dialogs that this one owns.
  void ShowFocusCues();

  bool shown_by_template() const { return shown_by_template_; }
  // Gives the default look to the button `focus`, or back to the default button if it is none.
  void MarkDefaultButton(Window* focus);

  ModalLoop* loop = nullptr;  // of a modal dialog while it runs
  // False while it is disabled, and when its end was asked for.
  bool TakesInput() const;

 private:
  Dialog(const dialog_template& source, QWidget* frame, Dialog* owner, DLGPROC dialog_procedure);
  bool MakeControls(const dialog_template& source, const QFont& font);
  void MakeMenu(WORD resource);
  void PlaceFirst(const dialog_template& source);
  LRESULT Default(UINT message, WPARAM wparam, LPARAM lparam);
  void NextControl(WPARAM wparam, bool handle);
  void AskLimits();
  int MenuHeight() const;
  UINT SizeState() const;

  DLGPROC dialog_procedure_;
  QWidget* client_;
  QMenuBar* menu_bar_ = nullptr;
  HMENU menu_ = nullptr;
  dialog_units units_;
  std::vector<std::unique_ptr<Window>> controls_;
  HWND remembered_focus_ = nullptr;
  HWND marked_default_ = nullptr;
  int default_id_ = 0;
  bool shown_by_template_;
  bool initialised_ = false;
  QSize told_size_;
  UINT told_state_ = SIZE_RESTORED;
};

}  // namespace vt63x::ui

#endif
