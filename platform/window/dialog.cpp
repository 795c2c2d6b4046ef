// SPDX-License-Identifier: MIT

#include "platform/window/dialog.h"

#include <QApplication>
#include <QIcon>
#include <QMenuBar>
#include <QScreen>
#include <algorithm>

#include "platform/window/accessible_names.h"
#include "platform/window/control.h"
#include "platform/window/dialog_keys.h"
#include "platform/window/focus.h"
#include "platform/window/font.h"
#include "platform/window/icon.h"
#include "platform/window/main_thread.h"
#include "platform/window/menu.h"
#include "platform/window/message_queue.h"
#include "platform/window/modal_loop.h"
#include "platform/window/text_codec.h"

namespace vt63x::ui {
namespace {

// Room that a caption may need above a window, in pixels.
constexpr int kCaptionRoom = 40;

constexpr DWORD kKnownStyles = DS_SETFONT | DS_MODALFRAME | DS_CENTER | WS_VISIBLE | WS_CAPTION |
                               WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX |
                               static_cast<DWORD>(WS_POPUP);

bool Has(DWORD style, long bit) {
  return (style & static_cast<DWORD>(bit)) == static_cast<DWORD>(bit);
}

Qt::WindowFlags FlagsOf(DWORD style) {
  Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint;
  if (Has(style, WS_CAPTION)) flags |= Qt::WindowTitleHint;
  if (Has(style, WS_SYSMENU)) flags |= Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
  if (Has(style, WS_THICKFRAME)) {
    flags &= ~Qt::WindowFlags(Qt::Dialog);
    flags |= Qt::Window;
    if (Has(style, WS_MINIMIZEBOX)) flags |= Qt::WindowMinimizeButtonHint;
    if (Has(style, WS_MAXIMIZEBOX)) flags |= Qt::WindowMaximizeButtonHint;
  }
  return flags;
}

bool IsPushButton(LRESULT code) {
  return (code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0;
}

}  // namespace

Dialog* Dialog::Make(const dialog_template& source, Dialog* owner, DLGPROC dialog_procedure) {
  if (source.ex_style != 0 || (source.style & ~kKnownStyles) != 0) return nullptr;
  auto* const frame =
      new QWidget(owner == nullptr ? nullptr : owner->frame(), FlagsOf(source.style));
  auto* const dialog = new Dialog(source, frame, owner, dialog_procedure);
  const QFont font = DialogFont(source.font_name, source.font_points);
  frame->setWindowTitle(FromProgram(source.caption.c_str()));
  frame->setFont(font);
  if (!dialog->MakeControls(source, font)) {
    delete dialog;
    return nullptr;
  }
  if (source.menu != 0) dialog->MakeMenu(source.menu);
  dialog->PlaceFirst(source);
  return dialog;
}

Dialog::Dialog(const dialog_template& source, QWidget* frame, Dialog* owner,
               DLGPROC dialog_procedure)
    : Window(frame, owner, 0, source.style & ~static_cast<DWORD>(WS_VISIBLE)),
      dialog_procedure_(dialog_procedure),
      client_(new QWidget(frame)),
      units_(UnitsOf(DialogFont(source.font_name, source.font_points))),
      shown_by_template_(Has(source.style, WS_VISIBLE)) {
  AddWidget(client_);
}

Dialog::~Dialog() {
  controls_.clear();
  if (menu_ != nullptr) FreeMenu(menu_);
}

bool Dialog::MakeControls(const dialog_template& source, const QFont& font) {
  std::vector<Window*> in_order;
  for (const dialog_item& item : source.items) {
    std::unique_ptr<Window> control =
        MakeControl(item, *this, units_.ToPixels(item.position), font);
    if (control == nullptr) return false;
    control->widget()->setVisible(Has(item.style, WS_VISIBLE));
    if (Has(item.style, WS_DISABLED)) control->Enable(false);
    const LRESULT code = control->Send(WM_GETDLGCODE, 0, 0);
    if ((code & DLGC_DEFPUSHBUTTON) != 0 && default_id_ == 0) {
      default_id_ = item.id;
      marked_default_ = control->handle();
    }
    in_order.push_back(control.get());
    controls_.push_back(std::move(control));
  }
  NameControls(in_order);
  return true;
}

void Dialog::MakeMenu(WORD resource) {
  menu_bar_ = new QMenuBar(frame());
  menu_bar_->setNativeMenuBar(false);
  menu_ = FillMenuBar(*menu_bar_, resource, handle());
}

int Dialog::MenuHeight() const {
  if (menu_bar_ == nullptr) return 0;
  return std::max(menu_bar_->sizeHint().height(), menu_bar_->heightForWidth(Place().width()));
}

void Dialog::PlaceFirst(const dialog_template& source) {
  const QRect wanted = units_.ToPixels(source.rect);
  frame()->resize(wanted.width(), wanted.height() + MenuHeight());
  const QScreen* const screen =
      parent() != nullptr ? parent()->widget()->screen() : QGuiApplication::primaryScreen();
  const QRect area = screen->availableGeometry();
  QRect place(wanted.topLeft() + area.topLeft(), frame()->size());
  if (Has(source.style, DS_CENTER)) {
    place.moveCenter(area.center());
  } else if (parent() != nullptr) {
    place.moveTopLeft(wanted.topLeft() +
                      static_cast<Dialog*>(parent())->client()->mapToGlobal(QPoint()));
  }
  place.moveRight(std::min(place.right(), area.right()));
  place.moveBottom(std::min(place.bottom(), area.bottom()));
  place.moveLeft(std::max(place.left(), area.left()));
  place.moveTop(std::max(place.top(), area.top()));
  MoveTo(place);
  // How high the caption is only the window manager knows: it puts the frame to the edge itself.
  if (place.top() < area.top() + kCaptionRoom) frame()->move(place.left(), area.top());
}

QRect Dialog::Place() const {
  // Some window managers do not care for limits; what is too much stays empty.
  const QSize size =
      frame()->size().expandedTo(frame()->minimumSize()).boundedTo(frame()->maximumSize());
  return {frame()->geometry().topLeft(), size};
}

void Dialog::AskLimits() {
  if (!Has(style(), WS_THICKFRAME)) return;
  constexpr POINT kLargest{QWIDGETSIZE_MAX, QWIDGETSIZE_MAX};
  MINMAXINFO limits{{}, kLargest, {}, {}, kLargest};
  Send(WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
  const auto size = [](const POINT& point) {
    return QSize(point.x, point.y).boundedTo({QWIDGETSIZE_MAX, QWIDGETSIZE_MAX});
  };
  frame()->setMinimumSize(size(limits.ptMinTrackSize));
  frame()->setMaximumSize(size(limits.ptMaxTrackSize));
}

void Dialog::MoveTo(const QRect& rect) {
  if (frame()->isMaximized())
    frame()->setWindowState(frame()->windowState() & ~Qt::WindowMaximized);
  if (!Has(style(), WS_THICKFRAME)) frame()->setFixedSize(rect.size());
  if (frame()->geometry().topLeft() == rect.topLeft()) {
    frame()->resize(rect.size());
  } else {
    frame()->setGeometry(rect);
  }
  SizeMayHaveChanged();
}

UINT Dialog::SizeState() const {
  if (frame()->isMinimized()) return SIZE_MINIMIZED;
  return frame()->isMaximized() ? SIZE_MAXIMIZED : SIZE_RESTORED;
}

void Dialog::SizeMayHaveChanged() {
  if (destroyed()) return;
  const int top = MenuHeight();
  const QSize whole = Place().size();
  const QSize size(whole.width(), std::max(0, whole.height() - top));
  if (menu_bar_ != nullptr) menu_bar_->setGeometry(0, 0, whole.width(), top);
  client_->setGeometry(QRect(QPoint(0, top), size));
  const UINT state = SizeState();
  if (size == told_size_ && state == told_state_) return;
  told_size_ = size;
  told_state_ = state;
  // While the window is made its procedure does not hear of sizes.
  if (initialised_) Send(WM_SIZE, state, MAKELPARAM(size.width(), size.height()));
}

void Dialog::Initialise(LPARAM parameter) {
  initialised_ = true;
  Window* const first = NextTabStop(*this, nullptr, false);
  const auto wanted = reinterpret_cast<WPARAM>(first == nullptr ? nullptr : first->handle());
  const INT_PTR answer = dialog_procedure_(handle(), WM_INITDIALOG, wanted, parameter);
  if (destroyed() || answer == FALSE) return;
  Window* const now = NextTabStop(*this, nullptr, false);
  if (now != nullptr) FocusControl(*this, *now);
}

void Dialog::Show(bool show) {
  ChangeStyle(show ? style() | static_cast<DWORD>(WS_VISIBLE)
                   : style() & ~static_cast<DWORD>(WS_VISIBLE));
  if (!show) {
    FocusWindowGone(*this);
    HideWidget(*frame());
    return;
  }
  AskLimits();
  frame()->show();
  // The toolkit forgets them in show.
  if (parent() != nullptr && parent()->widget()->testAttribute(Qt::WA_KeyboardFocusChange)) {
    ShowFocusCues();
  }
  frame()->activateWindow();
  SizeMayHaveChanged();
  Window* const holder = FocusWindow();
  if (holder == nullptr || holder->dialog() != this) {
    Window* const remembered = Window::Find(remembered_focus_);
    MoveFocus(remembered != nullptr ? remembered : this);
  }
}

void Dialog::ShowFocusCues() {
  if (frame()->testAttribute(Qt::WA_KeyboardFocusChange)) return;
  frame()->setAttribute(Qt::WA_KeyboardFocusChange);
  for (const auto& control : controls_) control->widget()->update();
}

bool Dialog::TakesInput() const { return enabled() && (loop == nullptr || !loop->ended()); }

Window* Dialog::Control(int id) const {
  const auto found = std::find_if(controls_.begin(), controls_.end(),
                                  [&](const auto& c) { return !c->destroyed() && c->id() == id; });
  return found == controls_.end() ? nullptr : found->get();
}

LRESULT Dialog::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
  const INT_PTR answer = dialog_procedure_(handle(), message, wparam, lparam);
  if (destroyed()) return 0;
  return answer != FALSE ? answer : Default(message, wparam, lparam);
}

LRESULT Dialog::Default(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_CLOSE:
      PostToWindow(handle(), WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
      return 0;
    case DM_GETDEFID:
      return default_id_ == 0 ? 0 : MAKELONG(default_id_, DC_HASDEFID);
    case DM_SETDEFID:
      default_id_ = static_cast<int>(wparam);
      MarkDefaultButton(Control(default_id_));
      return TRUE;
    case WM_NEXTDLGCTL:
      NextControl(wparam, LOWORD(lparam) != 0);
      return 0;
    case WM_SETICON:
      frame()->setWindowIcon(IconOf(reinterpret_cast<HICON>(lparam)));
      return 0;
    case WM_KEYDOWN:
    case WM_KEYUP:
    case WM_CHAR:
      return 0;  // a dialog has no use for keys of its own
    default:
      return Window::Handle(message, wparam, lparam);
  }
}

void Dialog::NextControl(WPARAM wparam, bool handle) {
  Window* const focus = FocusWindow();
  Window* const next = handle ? Window::Find(reinterpret_cast<HWND>(wparam))
                              : NextTabStop(*this, focus, wparam != 0);
  if (next != nullptr) FocusControl(*this, *next);
}

void Dialog::FocusReached(Window& window, bool by_user) {
  if (window.handle() != marked_default_) MarkDefaultButton(by_user ? &window : nullptr);
}

void Dialog::MarkDefaultButton(Window* focus) {
  Window* next = focus;
  if (next == nullptr || !IsPushButton(next->Send(WM_GETDLGCODE, 0, 0)))
    next = Control(default_id_);
  Window* const before = Window::Find(marked_default_);
  if (next == before) return;
  if (before != nullptr) before->Send(BM_SETSTYLE, static_cast<WPARAM>(BS_PUSHBUTTON), TRUE);
  marked_default_ = next == nullptr ? nullptr : next->handle();
  if (next != nullptr) next->Send(BM_SETSTYLE, static_cast<WPARAM>(BS_DEFPUSHBUTTON), TRUE);
}

void Dialog::Destroy() {
  if (destroyed()) return;
  const std::vector<Window*> all = All();
  for (Window* const window : all) {
    if (!window->destroyed() && !window->is_control() && window->parent() == this)
      window->Destroy();
  }
  FocusWindowGone(*this);
  Send(WM_DESTROY, 0, 0);
  if (destroyed()) return;
  for (const auto& control : controls_) control->Destroy();
  if (loop != nullptr) loop->End();
  loop = nullptr;
  Finish();
}

}  // namespace vt63x::ui
