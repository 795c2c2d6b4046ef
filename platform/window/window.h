// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_WINDOW_H
#define VT63X_PLATFORM_WINDOW_WINDOW_H

// One window: a dialog or a control. It pairs the handle and the message procedure that the
// program knows with the widget that shows it. Main thread only, but for Exists.

#include <windows.h>

#include <QFont>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <string>
#include <vector>

namespace vt63x::ui {

class Dialog;

class Window {
 public:
  // Takes a handle and owns `widget`. `parent` is a control's dialog or a dialog's owner, or null.
  Window(QWidget* widget, Window* parent, int id, DWORD style);
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  virtual ~Window();

  HWND handle() const { return handle_; }
  QWidget* widget() const { return widget_; }
  Window* parent() const { return parent_; }
  int id() const { return id_; }
  DWORD style() const { return style_; }
  bool is_control() const { return (style_ & static_cast<DWORD>(WS_CHILD)) != 0; }
  // The dialog itself or the control's.
  Dialog* dialog();

  // Null when the handle is stale.
  static Window* Find(HWND handle);
  // The same, and ERROR_INVALID_WINDOW_HANDLE for the caller.
  static Window* Need(HWND handle);
  // Any thread.
  static bool Exists(HWND handle);
  // The window that `object` shows or is a part of, null for anything else.
  static Window* OfWidget(const QObject* object);
  // All that live, oldest first.
  static const std::vector<Window*>& All();

  // The head of the procedure chain; subclassing replaces it. At first ClassProcedure, which ends
  // every chain in Handle.
  WNDPROC procedure() const { return procedure_; }
  WNDPROC set_procedure(WNDPROC next);
  static LRESULT CALLBACK ClassProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

  // Through the procedure chain. The window may be destroyed afterwards, but its object lives until
  // nothing is being sent.
  LRESULT Send(UINT message, WPARAM wparam, LPARAM lparam);

  // What the class itself does with a message. This one answers the messages that every window
  // has: text, font, key forwarding; 0 for what it does not know.
  virtual LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam);

  // WM_DESTROY and WM_NCDESTROY, the handle stale, the widget hidden. The object is freed later.
  virtual void Destroy();
  bool destroyed() const { return destroyed_; }
  // Frees what was destroyed, unless a message is being sent.
  static void FreeDestroyed();

  // The text in UTF-8 (text_codec.h).
  virtual std::string Text() const;
  virtual void SetText(const char* text);
  virtual int TextLength() const { return static_cast<int>(Text().size()); }

  // A window that is disabled gets no input. A dialog's controls do not look disabled with it.
  bool enabled() const { return enabled_; }
  virtual void Enable(bool enable);

 protected:
  virtual void SetFont(const QFont& font);
  // Sends WM_COMMAND with a notification code to the parent.
  void Notify(int code);
  void ChangeStyle(DWORD style) { style_ = style; }
  // Another widget that belongs to this window (OfWidget), for as long as it lives.
  void AddWidget(QWidget* widget);
  // Takes the handle away and hides the widget.
  void Retire();
  // The end of Destroy: WM_NCDESTROY, and the window is no more.
  void Finish();

 private:
  LRESULT CopyText(char* buffer, std::size_t size) const;

  HWND handle_;
  QPointer<QWidget> widget_;
  Window* parent_;
  int id_;
  DWORD style_;
  WNDPROC procedure_ = &Window::ClassProcedure;
  HFONT font_ = nullptr;
  bool enabled_ = true;
  bool destroyed_ = false;
};

}  // namespace vt63x::ui

#endif
