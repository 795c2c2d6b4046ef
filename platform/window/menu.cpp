// SPDX-License-Identifier: MIT

#include "platform/window/menu.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <algorithm>
#include <map>
#include <memory>
#include <vector>

#include "platform/window/dialog.h"
#include "platform/window/main_thread.h"
#include "platform/window/menu_template.h"
#include "platform/window/message_queue.h"
#include "platform/window/modal_loop.h"
#include "platform/window/text_codec.h"

namespace ui = vt63x::ui;

namespace vt63x::ui {
namespace {

constexpr WORD kMenuResource = 4;

struct menu_item {
  UINT id;  // of a command
  UINT flags;
  HMENU submenu;
  QAction* action;  // owned by the toolkit's menu
};

struct Menu {
  std::vector<menu_item> items;
  std::unique_ptr<QMenu> popup;  // of a menu that the program made
};

struct MenuTable {
  std::map<HMENU, Menu> menus;
  std::uintptr_t last_handle = 0x30000;

  HMENU Add() {
    const auto handle = reinterpret_cast<HMENU>(last_handle += 2);
    menus.try_emplace(handle);
    return handle;
  }
};

MenuTable& Table() {
  static MenuTable* const table = new MenuTable;
  return *table;
}

Menu* Find(HMENU handle) {
  const auto found = Table().menus.find(handle);
  if (found == Table().menus.end()) {
    SetLastError(ERROR_INVALID_MENU_HANDLE);
    return nullptr;
  }
  return &found->second;
}

void Choose(HWND target, UINT id) {
  if (Window* const window = Window::Find(target)) window->Send(WM_COMMAND, MAKEWPARAM(id, 0), 0);
}

QAction* AddItem(QMenu& menu, const menu_template_item& item, HWND target) {
  if ((item.flags & MF_SEPARATOR) != 0) return menu.addSeparator();
  QAction* const action = menu.addAction(FromProgram(item.text));
  action->setEnabled((item.flags & MF_GRAYED) == 0);
  const UINT id = item.id;
  QObject::connect(action, &QAction::triggered, [target, id] { Choose(target, id); });
  return action;
}

HMENU Fill(QMenu& menu, const std::vector<menu_template_item>& items, HWND target) {
  const HMENU handle = Table().Add();
  for (const menu_template_item& item : items) {
    menu_item entry{item.id, item.flags, nullptr, nullptr};
    if ((item.flags & MF_POPUP) != 0) {
      QMenu* const submenu = menu.addMenu(FromProgram(item.text));
      entry.submenu = Fill(*submenu, item.children, target);
      entry.action = submenu->menuAction();
    } else {
      entry.action = AddItem(menu, item, target);
    }
    Table().menus.at(handle).items.push_back(entry);
  }
  return handle;
}

// The menu at the right end of the bar lives in a bar of its own there.
QMenuBar& BarFor(QMenuBar& bar, UINT flags) {
  if ((flags & MF_HELP) == 0) return bar;
  auto* const corner = new QMenuBar(&bar);
  corner->setNativeMenuBar(false);
  bar.setCornerWidget(corner, Qt::TopRightCorner);
  return *corner;
}

menu_item* FindCommand(HMENU handle, UINT id) {
  Menu* const menu = Find(handle);
  if (menu == nullptr) return nullptr;
  for (menu_item& item : menu->items) {
    if (item.submenu != nullptr) {
      if (menu_item* const found = FindCommand(item.submenu, id)) return found;
    } else if (item.id == id && (item.flags & MF_SEPARATOR) == 0) {
      return &item;
    }
  }
  return nullptr;
}

menu_item* FindItem(HMENU handle, UINT item, UINT flags) {
  if ((flags & MF_BYPOSITION) == 0) return FindCommand(handle, item);
  Menu* const menu = Find(handle);
  return menu == nullptr || item >= menu->items.size() ? nullptr : &menu->items[item];
}

QAction* FirstChoice(const QMenu& menu) {
  for (QAction* const action : menu.actions()) {
    if (action->isEnabled() && !action->isSeparator()) return action;
  }
  return nullptr;
}

// Until an item is chosen, the menu is left, or the program wants to quit. -1 for none.
int Track(QMenu& popup, const Menu& menu, const QPoint& place) {
  const QPointer<QMenu> guard(&popup);
  ModalLoop loop([guard] {
    if (guard != nullptr) guard->close();
  });
  const QAction* const chosen = popup.exec(place);
  for (const menu_item& item : menu.items) {
    if (chosen != nullptr && item.action == chosen) return static_cast<int>(item.id);
  }
  return -1;
}

}  // namespace

HMENU FillMenuBar(QMenuBar& bar, WORD resource, HWND target) {
  const auto items = ParseMenuTemplate(FindResource(kMenuResource, resource));
  if (!items) return nullptr;
  const HMENU handle = Table().Add();
  for (const menu_template_item& item : *items) {
    QMenu* const menu = BarFor(bar, item.flags).addMenu(FromProgram(item.text));
    const HMENU submenu = Fill(*menu, item.children, target);
    Table().menus.at(handle).items.push_back({item.id, item.flags, submenu, menu->menuAction()});
  }
  return handle;
}

bool OpenMenu(QMenuBar& bar, int letter) {
  const QKeySequence wanted(Qt::ALT | static_cast<Qt::Key>(letter));
  for (QAction* const action : bar.actions()) {
    if (!action->isEnabled() || QKeySequence::mnemonic(action->text()) != wanted) continue;
    bar.setActiveAction(action);
    if (QMenu* const menu = action->menu()) menu->setActiveAction(FirstChoice(*menu));
    return true;
  }
  auto* const corner = qobject_cast<QMenuBar*>(bar.cornerWidget(Qt::TopRightCorner));
  return corner != nullptr && OpenMenu(*corner, letter);
}

void SwitchMenuBar(QMenuBar& bar) {
  QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
  if (bar.hasFocus()) {
    QCoreApplication::sendEvent(&bar, &escape);
    return;
  }
  // The toolkit has no call for it: its bar has the keyboard once one of the menus was left.
  QAction* const first = bar.actions().isEmpty() ? nullptr : bar.actions().constFirst();
  QMenu* const menu = first == nullptr ? nullptr : first->menu();
  if (menu == nullptr) return;
  menu->setAttribute(Qt::WA_DontShowOnScreen);
  bar.setActiveAction(first);
  QCoreApplication::sendEvent(menu, &escape);
  menu->setAttribute(Qt::WA_DontShowOnScreen, false);
}

void FreeMenu(HMENU handle) {
  const auto found = Table().menus.find(handle);
  if (found == Table().menus.end()) return;
  const Menu menu = std::move(found->second);
  Table().menus.erase(found);
  for (const menu_item& item : menu.items) {
    if (item.submenu != nullptr) FreeMenu(item.submenu);
  }
}

}  // namespace vt63x::ui

HMENU WINAPI GetMenu(HWND window) {
  return ui::CallOnMain<HMENU>(nullptr, [&]() -> HMENU {
    ui::Window* const found = ui::Window::Need(window);
    return found == nullptr || found->is_control() ? nullptr : found->dialog()->menu();
  });
}

HMENU WINAPI GetSubMenu(HMENU menu, int position) {
  return ui::CallOnMain<HMENU>(nullptr, [&]() -> HMENU {
    const ui::menu_item* const item =
        ui::FindItem(menu, static_cast<UINT>(position), MF_BYPOSITION);
    return item == nullptr ? nullptr : item->submenu;
  });
}

HMENU WINAPI CreatePopupMenu() {
  ui::NeedApplication();
  return ui::CallOnMain<HMENU>(nullptr, [] {
    const HMENU handle = ui::Table().Add();
    ui::Table().menus.at(handle).popup = std::make_unique<QMenu>();
    return handle;
  });
}

BOOL WINAPI DestroyMenu(HMENU menu) {
  return ui::CallOnMain<BOOL>(FALSE, [&]() -> BOOL {
    if (ui::Find(menu) == nullptr) return FALSE;
    ui::FreeMenu(menu);
    return TRUE;
  });
}

BOOL WINAPI InsertMenuA(HMENU handle, UINT position, UINT flags, UINT_PTR id, LPCSTR text) {
  return ui::CallOnMain<BOOL>(FALSE, [&]() -> BOOL {
    ui::Menu* const menu = ui::Find(handle);
    if (menu == nullptr) return FALSE;
    if (menu->popup == nullptr || flags != (MF_BYPOSITION | MF_STRING) || text == nullptr) {
      SetLastError(ERROR_INVALID_PARAMETER);
      return FALSE;
    }
    const auto place = std::min<std::size_t>(position, menu->items.size());
    auto* const action = new QAction(ui::FromProgram(text), menu->popup.get());
    menu->popup->insertAction(place < menu->items.size() ? menu->items[place].action : nullptr,
                              action);
    menu->items.insert(menu->items.begin() + static_cast<std::ptrdiff_t>(place),
                       {static_cast<UINT>(id), MF_STRING, nullptr, action});
    return TRUE;
  });
}

BOOL WINAPI EnableMenuItem(HMENU menu, UINT id, UINT state) {
  return ui::CallOnMain<BOOL>(-1, [&]() -> BOOL {
    ui::menu_item* const item = ui::FindItem(menu, id, state);
    if (item == nullptr) return -1;
    const UINT before = item->flags & MF_GRAYED;
    item->flags = (item->flags & ~MF_GRAYED) | (state & MF_GRAYED);
    item->action->setEnabled((state & MF_GRAYED) == 0);
    return static_cast<BOOL>(before);
  });
}

int WINAPI GetMenuItemCount(HMENU menu) {
  return ui::CallOnMain<int>(-1, [&] {
    const ui::Menu* const found = ui::Find(menu);
    return found == nullptr ? -1 : static_cast<int>(found->items.size());
  });
}

UINT WINAPI GetMenuItemID(HMENU menu, int position) {
  constexpr UINT kNone = 0xffffffffU;
  return ui::CallOnMain<UINT>(kNone, [&] {
    const ui::menu_item* const item =
        ui::FindItem(menu, static_cast<UINT>(position), MF_BYPOSITION);
    return item == nullptr || item->submenu != nullptr ? kNone : item->id;
  });
}

UINT WINAPI GetMenuState(HMENU menu, UINT item, UINT flags) {
  constexpr UINT kNone = 0xffffffffU;
  return ui::CallOnMain<UINT>(kNone, [&] {
    const ui::menu_item* const found = ui::FindItem(menu, item, flags);
    if (found == nullptr) return kNone;
    const ui::Menu* const submenu = found->submenu == nullptr ? nullptr : ui::Find(found->submenu);
    const auto count = submenu == nullptr ? 0U : static_cast<UINT>(submenu->items.size());
    return found->flags | (count << 8);
  });
}

int WINAPI GetMenuStringA(HMENU menu, UINT item, LPSTR buffer, int size, UINT flags) {
  return ui::CallOnMain<int>(0, [&] {
    const ui::menu_item* const found = ui::FindItem(menu, item, flags);
    if (found == nullptr) return 0;
    const std::string text = ui::ToProgram(found->action->text());
    if (buffer == nullptr || size <= 0) return static_cast<int>(text.size());
    const std::size_t length = text.copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[length] = '\0';
    return static_cast<int>(length);
  });
}

BOOL WINAPI TrackPopupMenu(HMENU menu, UINT flags, int x, int y, int, HWND window, const RECT*) {
  return ui::CallOnMain<BOOL>(FALSE, [&]() -> BOOL {
    const ui::Menu* const found = ui::Find(menu);
    if (found == nullptr || ui::Window::Need(window) == nullptr) return FALSE;
    if (flags != 0 || found->popup == nullptr) {
      SetLastError(ERROR_INVALID_PARAMETER);
      return FALSE;
    }
    // The menu may be destroyed while it is shown: what was chosen is looked up in a copy.
    ui::Menu shown;
    shown.items = found->items;
    const int chosen = ui::Track(*found->popup, shown, QPoint(x, y));
    if (chosen >= 0) ui::PostToWindow(window, WM_COMMAND, MAKEWPARAM(chosen, 0), 0);
    return TRUE;
  });
}
