// SPDX-License-Identifier: MIT

#include "platform/window/window.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <unordered_set>

#include "platform/window/dialog.h"
#include "platform/window/focus.h"
#include "platform/window/font.h"
#include "platform/window/key_input.h"
#include "platform/window/text_codec.h"
#include "threading/mutex.h"

namespace vt63x::ui {
namespace {

// Main thread.
struct WindowTable {
  std::vector<Window*> living;
  std::vector<Window*> destroyed;
  std::unordered_map<const QObject*, Window*> of_widget;
  std::uintptr_t last_handle = 0x10000;
  int sends = 0;  // that are on the stack
};

WindowTable& Table() {
  static WindowTable* const table = new WindowTable;
  return *table;
}

// Handles of living windows, for any thread.
struct HandleSet {
  Mutex mutex;
  std::unordered_set<HWND> handles GUARDED_BY(mutex);
};

HandleSet& Handles() {
  static HandleSet* const set = new HandleSet;  // as long as any thread lives
  return *set;
}

}  // namespace

Window::Window(QWidget* widget, Window* parent, int id, DWORD style)
    : handle_(reinterpret_cast<HWND>(Table().last_handle += 2)),
      widget_(widget),
      parent_(parent),
      id_(id),
      style_(style) {
  Table().living.push_back(this);
  AddWidget(widget);
  const LockGuard lock(Handles().mutex);
  Handles().handles.insert(handle_);
}

Window::~Window() {
  Retire();
  std::erase(Table().destroyed, this);
  std::erase_if(Table().of_widget, [this](const auto& entry) { return entry.second == this; });
  delete widget_.data();
}

void Window::AddWidget(QWidget* widget) { Table().of_widget[widget] = this; }

void Window::Retire() {
  destroyed_ = true;
  std::erase(Table().living, this);
  if (widget_ != nullptr) HideWidget(*widget_);
  const LockGuard lock(Handles().mutex);
  Handles().handles.erase(handle_);
}

Dialog* Window::dialog() { return dynamic_cast<Dialog*>(is_control() ? parent_ : this); }

Window* Window::Find(HWND handle) {
  const auto& living = Table().living;
  const auto found = std::find_if(living.begin(), living.end(),
                                  [&](const Window* w) { return w->handle() == handle; });
  return found == living.end() ? nullptr : *found;
}

Window* Window::Need(HWND handle) {
  Window* const window = Find(handle);
  if (window == nullptr) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
  return window;
}

bool Window::Exists(HWND handle) {
  const LockGuard lock(Handles().mutex);
  return Handles().handles.contains(handle);
}

Window* Window::OfWidget(const QObject* object) {
  const auto& of_widget = Table().of_widget;
  for (; object != nullptr; object = object->parent()) {
    const auto found = of_widget.find(object);
    if (found != of_widget.end()) return found->second->destroyed() ? nullptr : found->second;
  }
  return nullptr;
}

const std::vector<Window*>& Window::All() { return Table().living; }

WNDPROC Window::set_procedure(WNDPROC next) { return std::exchange(procedure_, next); }

LRESULT CALLBACK Window::ClassProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  Window* const target = Need(window);
  return target == nullptr ? 0 : target->Handle(message, wparam, lparam);
}

LRESULT Window::Send(UINT message, WPARAM wparam, LPARAM lparam) {
  if (destroyed_) return 0;
  ++Table().sends;
  const LRESULT result = procedure_(handle_, message, wparam, lparam);
  --Table().sends;
  return result;
}

LRESULT Window::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_SETTEXT:
      SetText(lparam == 0 ? "" : reinterpret_cast<const char*>(lparam));
      return TRUE;
    case WM_GETTEXT:
      return CopyText(reinterpret_cast<char*>(lparam), wparam);
    case WM_GETTEXTLENGTH:
      return TextLength();
    case WM_SETFONT:
      font_ = reinterpret_cast<HFONT>(wparam);
      if (const QFont* const font = FontOf(font_)) SetFont(*font);
      return 0;
    case WM_GETFONT:
      return reinterpret_cast<LRESULT>(font_);
    case WM_KEYDOWN:
    case WM_KEYUP:
    case WM_CHAR:
      KeyToWidget(*this, message, wparam);
      return 0;
    default:
      return 0;
  }
}

LRESULT Window::CopyText(char* buffer, std::size_t size) const {
  if (buffer == nullptr || size == 0) return 0;
  const std::string text = Text();
  const std::size_t length = std::min(text.size(), size - 1);
  std::memcpy(buffer, text.data(), length);
  buffer[length] = '\0';
  return static_cast<LRESULT>(length);
}

void Window::Destroy() {
  if (destroyed_) return;
  FocusWindowGone(*this);
  Send(WM_DESTROY, 0, 0);
  Finish();
}

void Window::Finish() {
  if (destroyed_) return;
  Send(WM_NCDESTROY, 0, 0);
  if (destroyed_) return;
  Retire();
  // A dialog frees its controls, and is freed itself when nothing is on the stack.
  if (!is_control()) Table().destroyed.push_back(this);
}

void Window::FreeDestroyed() {
  if (Table().sends > 0) return;
  const std::vector<Window*> windows = Table().destroyed;
  for (Window* const window : windows) {
    if (std::find(Table().destroyed.begin(), Table().destroyed.end(), window) !=
        Table().destroyed.end()) {
      delete window;
    }
  }
}

std::string Window::Text() const { return ToProgram(widget_->windowTitle()); }

void Window::SetText(const char* text) { widget_->setWindowTitle(FromProgram(text)); }

void Window::Enable(bool enable) {
  if (enable == enabled_) return;
  enabled_ = enable;
  ChangeStyle(enable ? style_ & ~static_cast<DWORD>(WS_DISABLED)
                     : style_ | static_cast<DWORD>(WS_DISABLED));
  if (is_control()) EnableWidget(*this, enable);
  Send(WM_ENABLE, enable ? TRUE : FALSE, 0);
}

void Window::SetFont(const QFont& font) { widget_->setFont(font); }

void Window::Notify(int code) {
  if (parent_ == nullptr || destroyed_) return;
  parent_->Send(WM_COMMAND, MAKEWPARAM(id_, code), reinterpret_cast<LPARAM>(handle_));
}

}  // namespace vt63x::ui
