// SPDX-License-Identifier: MIT

#include "platform/window/dialog_keys.h"

#include <QApplication>
#include <cctype>
#include <cstddef>

#include "platform/window/focus.h"

namespace vt63x::ui {
namespace {

LRESULT CodeOf(const Window& window) {
  return const_cast<Window&>(window).Send(WM_GETDLGCODE, 0, 0);
}

bool Usable(const Window& control) {
  return !control.destroyed() && control.enabled() && !control.widget()->isHidden();
}

bool IsTabStop(const Window& control) {
  return Usable(control) && (control.style() & static_cast<DWORD>(WS_TABSTOP)) != 0;
}

// Position of the control in template order; -1 for none.
std::ptrdiff_t PositionOf(const Dialog& dialog, const Window* control) {
  const auto& controls = dialog.controls();
  for (std::size_t i = 0; i < controls.size(); ++i) {
    if (controls[i].get() == control) return static_cast<std::ptrdiff_t>(i);
  }
  return -1;
}

// The first control after `from` in the direction, going round, that `wanted` takes; `from` itself
// comes last.
template <typename Wanted>
Window* NextControl(const Dialog& dialog, const Window* from, bool back, const Wanted& wanted) {
  const auto& controls = dialog.controls();
  const auto count = static_cast<std::ptrdiff_t>(controls.size());
  std::ptrdiff_t start = PositionOf(dialog, from);
  if (start < 0) start = back ? 0 : -1;
  for (std::ptrdiff_t step = 1; step <= count; ++step) {
    const std::ptrdiff_t position = ((start + (back ? -step : step)) % count + count) % count;
    Window* const control = controls[static_cast<std::size_t>(position)].get();
    if (wanted(*control)) return control;
  }
  return nullptr;
}

// The letter after a single ampersand, in capitals; 0 for none.
int MnemonicOf(const std::string& caption) {
  for (std::size_t i = 0; i + 1 < caption.size(); ++i) {
    if (caption[i] != '&') continue;
    if (caption[i + 1] != '&') return std::toupper(static_cast<unsigned char>(caption[i + 1]));
    ++i;
  }
  return 0;
}

void Press(Dialog& dialog, Window& button) {
  dialog.Send(WM_COMMAND, MAKEWPARAM(button.id(), BN_CLICKED),
              reinterpret_cast<LPARAM>(button.handle()));
}

void PressDefault(Dialog& dialog, Window& target) {
  if ((CodeOf(target) & DLGC_DEFPUSHBUTTON) != 0) {
    Press(dialog, target);
    return;
  }
  const LRESULT answer = dialog.Send(DM_GETDEFID, 0, 0);
  if (HIWORD(answer) != DC_HASDEFID) {
    dialog.Send(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    return;
  }
  Window* const button = dialog.Control(LOWORD(answer));
  if (button == nullptr) {
    dialog.Send(WM_COMMAND, MAKEWPARAM(LOWORD(answer), BN_CLICKED), 0);
  } else if (button->enabled()) {
    Press(dialog, *button);
  } else {
    QApplication::beep();
  }
}

// Arrows go round among the controls of a group, which begins at a control with WS_GROUP.
void MoveInGroup(Dialog& dialog, Window& target, bool back) {
  const auto& controls = dialog.controls();
  const std::ptrdiff_t position = PositionOf(dialog, &target);
  if (position < 0) return;
  const auto begins = [&](std::size_t i) {
    return (controls[i]->style() & static_cast<DWORD>(WS_GROUP)) != 0;
  };
  auto first = static_cast<std::size_t>(position);
  while (first > 0 && !begins(first)) --first;
  auto end = static_cast<std::size_t>(position) + 1;
  while (end < controls.size() && !begins(end)) ++end;
  Window* const next = NextControl(dialog, &target, back, [&](const Window& control) {
    const auto i = static_cast<std::size_t>(PositionOf(dialog, &control));
    return i >= first && i < end && Usable(control) && (CodeOf(control) & DLGC_STATIC) == 0;
  });
  if (next != nullptr && next != &target) FocusControl(dialog, *next);
}

}  // namespace

Window* NextTabStop(const Dialog& dialog, const Window* from, bool back) {
  return NextControl(dialog, from, back, IsTabStop);
}

void FocusControl(Dialog& dialog, Window& control) {
  const HWND handle = control.handle();
  MoveFocus(&control);
  if (Window::Find(handle) == nullptr || FocusWindow() != &control) return;
  if ((CodeOf(control) & DLGC_HASSETSEL) != 0) control.Send(EM_SETSEL, 0, -1);
  dialog.MarkDefaultButton(&control);
}

bool KeyIsForDialog(Dialog& dialog, Window& target, WPARAM virtual_key, bool shift) {
  const LRESULT code = CodeOf(target);
  if ((code & DLGC_WANTALLKEYS) != 0 && target.enabled()) return false;
  switch (virtual_key) {
    case VK_TAB:
      if ((code & DLGC_WANTTAB) != 0) return false;
      dialog.Send(WM_NEXTDLGCTL, shift ? 1 : 0, FALSE);
      return true;
    case VK_LEFT:
    case VK_UP:
    case VK_RIGHT:
    case VK_DOWN:
      if ((code & DLGC_WANTARROWS) != 0) return false;
      MoveInGroup(dialog, target, virtual_key == VK_LEFT || virtual_key == VK_UP);
      return true;
    case VK_ESCAPE:
      dialog.Send(WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
      return true;
    case VK_RETURN:
      PressDefault(dialog, target);
      return true;
    default:
      return false;
  }
}

bool CharacterIsForDialog(Dialog& dialog, Window& target, WPARAM character) {
  if ((CodeOf(target) & (DLGC_WANTCHARS | DLGC_WANTALLKEYS)) != 0) return false;
  return character < 0x80 && std::isalnum(static_cast<int>(character)) != 0 &&
         PressMnemonic(dialog, target, character);
}

bool PressMnemonic(Dialog& dialog, Window& from, WPARAM character) {
  if (character >= 0x80) return false;
  const int wanted = std::toupper(static_cast<int>(character));
  Window* const control = NextControl(dialog, &from, false, [&](const Window& candidate) {
    return Usable(candidate) && (CodeOf(candidate) & (DLGC_STATIC | DLGC_BUTTON)) != 0 &&
           MnemonicOf(candidate.Text()) == wanted;
  });
  if (control == nullptr) return false;
  if ((CodeOf(*control) & DLGC_STATIC) == 0) {
    control->Send(BM_CLICK, 0, 0);
    return true;
  }
  Window* const next = NextTabStop(dialog, control, false);
  if (next != nullptr) FocusControl(dialog, *next);
  return true;
}

}  // namespace vt63x::ui
