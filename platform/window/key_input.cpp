// SPDX-License-Identifier: MIT

#include "platform/window/key_input.h"

#include <QApplication>
#include <QKeyEvent>
#include <algorithm>
#include <iterator>

#include "platform/window/dialog.h"
#include "platform/window/dialog_keys.h"
#include "platform/window/focus.h"
#include "platform/window/menu.h"

namespace vt63x::ui {
namespace {

struct key_name {
  int toolkit;
  WPARAM virtual_key;
  char character;  // that follows it, 0 for none
};

constexpr key_name kKeys[] = {
    {Qt::Key_Backspace, VK_BACK, '\b'},
    {Qt::Key_Tab, VK_TAB, '\t'},
    {Qt::Key_Backtab, VK_TAB, '\t'},
    {Qt::Key_Return, VK_RETURN, '\r'},
    {Qt::Key_Enter, VK_RETURN, '\r'},
    {Qt::Key_Escape, VK_ESCAPE, '\x1b'},
    {Qt::Key_Space, VK_SPACE, ' '},
    {Qt::Key_PageUp, VK_PRIOR, 0},
    {Qt::Key_PageDown, VK_NEXT, 0},
    {Qt::Key_End, VK_END, 0},
    {Qt::Key_Home, VK_HOME, 0},
    {Qt::Key_Left, VK_LEFT, 0},
    {Qt::Key_Up, VK_UP, 0},
    {Qt::Key_Right, VK_RIGHT, 0},
    {Qt::Key_Down, VK_DOWN, 0},
    {Qt::Key_Insert, VK_INSERT, 0},
    {Qt::Key_Delete, VK_DELETE, 0},
    {Qt::Key_F4, VK_F4, 0},
};

// Characters that a key with Ctrl sends to an edit, and what they mean there.
struct control_character {
  WPARAM character;
  UINT message;
  WPARAM wparam;
  LPARAM lparam;
};

constexpr control_character kControlCharacters[] = {
    {1, EM_SETSEL, 0, -1}, {3, WM_COPY, 0, 0},  {22, WM_PASTE, 0, 0},
    {24, WM_CUT, 0, 0},    {26, WM_UNDO, 0, 0},
};

constexpr int kToolkitKeys[] = {Qt::Key_Alt,     Qt::Key_AltGr, Qt::Key_Meta, Qt::Key_Shift,
                                Qt::Key_Control, Qt::Key_Menu,  Qt::Key_Print};

struct key_state {
  const QKeyEvent* current = nullptr;  // the user's key that is being handled
  bool on_its_way = false;
  int last_pressed = 0;
};

key_state state;

template <typename Table, typename Matches>
const auto* FindIn(const Table& table, const Matches& matches) {
  const auto found = std::find_if(std::begin(table), std::end(table), matches);
  return found == std::end(table) ? nullptr : &*found;
}

bool IsLetterOrDigit(int key) {
  return (key >= Qt::Key_A && key <= Qt::Key_Z) || (key >= Qt::Key_0 && key <= Qt::Key_9);
}

// 0 for a key without a number of its own.
WPARAM VirtualKey(const QKeyEvent& event) {
  const key_name* const key =
      FindIn(kKeys, [&](const key_name& k) { return k.toolkit == event.key(); });
  if (key != nullptr) return key->virtual_key;
  return IsLetterOrDigit(event.key()) ? static_cast<WPARAM>(event.key()) : 0;
}

int ToolkitKey(WPARAM virtual_key) {
  const key_name* const key =
      FindIn(kKeys, [&](const key_name& k) { return k.virtual_key == virtual_key; });
  if (key != nullptr) return key->toolkit;
  return IsLetterOrDigit(static_cast<int>(virtual_key)) ? static_cast<int>(virtual_key) : 0;
}

Window& Target(Dialog& dialog) {
  Window* const focus = FocusWindow();
  return focus != nullptr && focus->dialog() == &dialog ? *focus : static_cast<Window&>(dialog);
}

void HandOver(QWidget& widget, QEvent::Type type, int key, Qt::KeyboardModifiers modifiers,
              const QString& text) {
  QKeyEvent event(type, key, modifiers, text);
  const bool before = std::exchange(state.on_its_way, true);
  QCoreApplication::sendEvent(&widget, &event);
  state.on_its_way = before;
}

// Where typed keys go inside a window: the widget itself or its part that takes the keyboard.
QWidget* KeyWidget(Window& window) {
  QWidget* const widget = window.widget();
  return widget->focusProxy() != nullptr ? widget->focusProxy() : widget;
}

Qt::KeyboardModifiers Modifiers() {
  return state.current == nullptr ? Qt::NoModifier : state.current->modifiers();
}

bool IsEdit(Window& window) { return (window.Send(WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) != 0; }

// The character to WM_CHAR's receivers; false when the dialog took it as a mnemonic.
void Character(Dialog* dialog, HWND target, WPARAM character) {
  Window* const window = Window::Find(target);
  if (window == nullptr || !window->enabled()) return;
  if (dialog != nullptr && CharacterIsForDialog(*dialog, *window, character)) return;
  window->Send(WM_CHAR, character, 1);
}

// Text beyond what WM_CHAR carries goes to the widget as it is.
void Text(Dialog& dialog, HWND target, const QString& text) {
  for (const QChar c : text) {
    if (c.unicode() > 0xff) {
      Window* const window = Window::Find(target);
      if (window == nullptr || !window->enabled() || !IsEdit(*window)) return;
      HandOver(*KeyWidget(*window), QEvent::KeyPress, 0, Qt::NoModifier, text);
      return;
    }
    Character(&dialog, target, c.unicode());
  }
}

void Pressed(Dialog& dialog, const QKeyEvent& event) {
  Window& target = Target(dialog);
  const HWND handle = target.handle();
  const WPARAM key = VirtualKey(event);
  const bool back = event.key() == Qt::Key_Backtab || event.modifiers().testFlag(Qt::ShiftModifier);
  if (key != 0 && KeyIsForDialog(dialog, target, key, back)) return;
  if (!target.enabled()) return;
  if (key != 0) target.Send(WM_KEYDOWN, key, 1);
  if (event.key() == Qt::Key_Delete) return;  // its text is no character here
  const bool new_line = key == VK_RETURN && ControlDown();
  Text(dialog, handle, new_line ? QStringLiteral("\n") : event.text());
}

class Current {
 public:
  explicit Current(const QKeyEvent* event) : before_(std::exchange(state.current, event)) {}
  ~Current() { state.current = before_; }
  Current(const Current&) = delete;
  Current& operator=(const Current&) = delete;

 private:
  const QKeyEvent* before_;
};

bool IsAltCharacter(const QKeyEvent& event) {
  return event.modifiers().testFlag(Qt::AltModifier) &&
         !event.modifiers().testFlag(Qt::ControlModifier) && IsLetterOrDigit(event.key());
}

// F10, or Alt pressed and released with nothing in between.
bool IsMenuBarKey(const QKeyEvent& event) {
  if (event.key() == Qt::Key_F10) {
    return event.type() == QEvent::KeyPress && event.modifiers() == Qt::NoModifier;
  }
  return event.key() == Qt::Key_Alt && event.type() == QEvent::KeyRelease &&
         state.last_pressed == Qt::Key_Alt;
}

// A control of the dialog comes before a menu.
void PressAltCharacter(Dialog& dialog, int key) {
  if (PressMnemonic(dialog, Target(dialog), static_cast<WPARAM>(key))) return;
  if (dialog.menu_bar() != nullptr) OpenMenu(*dialog.menu_bar(), key);
}

}  // namespace

bool KeyOnItsWay() { return state.on_its_way; }

bool ShiftDown() {
  return Modifiers().testFlag(Qt::ShiftModifier) ||
         (state.current != nullptr && state.current->key() == Qt::Key_Backtab);
}

bool ControlDown() { return Modifiers().testFlag(Qt::ControlModifier); }

bool KeyForMenuBar(Dialog& dialog, const QKeyEvent& event) {
  const bool switches = IsMenuBarKey(event);
  if (event.type() == QEvent::KeyPress) state.last_pressed = event.key();
  if (switches && dialog.menu_bar() != nullptr) SwitchMenuBar(*dialog.menu_bar());
  return switches;
}

bool KeyFromUser(Dialog& dialog, const QKeyEvent& event) {
  if (event.type() == QEvent::KeyPress) dialog.ShowFocusCues();
  if (KeyForMenuBar(dialog, event)) return true;
  if (FindIn(kToolkitKeys, [&](int key) { return key == event.key(); }) != nullptr) return false;
  const Current current_key(&event);
  if (IsAltCharacter(event)) {
    if (event.type() == QEvent::KeyPress) PressAltCharacter(dialog, event.key());
    return true;
  }
  if (event.modifiers().testFlag(Qt::AltModifier)) return false;
  if (event.type() == QEvent::KeyPress) {
    Pressed(dialog, event);
    return true;
  }
  Window& target = Target(dialog);
  const WPARAM key = VirtualKey(event);
  if (key != 0 && target.enabled() && !event.isAutoRepeat()) target.Send(WM_KEYUP, key, 1);
  return true;
}

bool KeyFromQueue(Window& window, UINT message, WPARAM wparam, LPARAM lparam) {
  const HWND handle = window.handle();
  Dialog* const dialog = window.dialog();
  if (dialog == nullptr || !dialog->TakesInput())
    return message == WM_KEYDOWN || message == WM_CHAR;
  switch (message) {
    case WM_KEYDOWN: {
      if (KeyIsForDialog(*dialog, window, wparam, false)) return true;
      if (window.enabled()) window.Send(message, wparam, lparam);
      const key_name* const key =
          FindIn(kKeys, [&](const key_name& k) { return k.virtual_key == wparam; });
      if (key != nullptr && key->character != 0) {
        Character(dialog, handle, static_cast<WPARAM>(key->character));
      }
      return true;
    }
    case WM_CHAR:
      Character(dialog, handle, wparam);
      return true;
    case WM_SYSCHAR:
      PressMnemonic(*dialog, window, wparam);
      return true;
    default:
      return false;
  }
}

void KeyToWidget(Window& window, UINT message, WPARAM wparam) {
  QWidget* const widget = KeyWidget(window);
  const bool edit = IsEdit(window);
  if (message == WM_CHAR && edit) {
    const control_character* const control = FindIn(
        kControlCharacters, [&](const control_character& c) { return c.character == wparam; });
    if (control != nullptr) {
      window.Send(control->message, control->wparam, control->lparam);
    } else if (wparam == VK_BACK) {
      HandOver(*widget, QEvent::KeyPress, Qt::Key_Backspace, Modifiers(), {});
    } else if (wparam >= ' ' && wparam != 0x7f) {
      HandOver(*widget, QEvent::KeyPress, 0, Qt::NoModifier,
               QString(QChar(static_cast<ushort>(wparam))));
    }
    return;
  }
  if (message == WM_CHAR) {
    if (wparam > ' ') {
      HandOver(*widget, QEvent::KeyPress, 0, Qt::NoModifier,
               QString(QChar(static_cast<ushort>(wparam))));
    }
    return;
  }
  const bool has_character =
      wparam == VK_BACK || wparam == VK_SPACE || IsLetterOrDigit(static_cast<int>(wparam));
  if ((edit && has_character) || IsLetterOrDigit(static_cast<int>(wparam))) return;
  const int key = ToolkitKey(wparam);
  if (key == 0 || wparam == VK_TAB || wparam == VK_ESCAPE || wparam == VK_RETURN) return;
  HandOver(*widget, message == WM_KEYUP ? QEvent::KeyRelease : QEvent::KeyPress, key, Modifiers(),
           key == Qt::Key_Space ? QStringLiteral(" ") : QString());
}

}  // namespace vt63x::ui
