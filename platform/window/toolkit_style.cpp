// SPDX-License-Identifier: MIT

#include "platform/window/toolkit_style.h"

#include <QMenuBar>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>

namespace vt63x::ui {
namespace {

constexpr int kFocusInset = 4;  // pixels from a button's edge

bool ShowsFocus(const QStyleOption& option) {
  constexpr QStyle::State kFocus = QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange;
  return (option.state & kFocus) == kFocus;
}

class ToolkitStyle : public QProxyStyle {
 public:
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* result) const override {
    return hint == SH_ComboBox_Popup ? 0 : QProxyStyle::styleHint(hint, option, widget, result);
  }

  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override {
    const auto* const item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    const auto* const bar = qobject_cast<const QMenuBar*>(widget);
    if (element == CE_MenuBarItem && item != nullptr && bar != nullptr && bar->hasFocus()) {
      QStyleOptionMenuItem marked(*item);
      if ((marked.state & State_Selected) != 0) marked.state |= State_Sunken;
      QProxyStyle::drawControl(element, &marked, painter, widget);
      return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
    if (!ShowsFocus(*option)) return;
    if (element == CE_PushButton) DrawFocusInside(*option, *painter, widget);
    if (element == CE_ShapedFrame) {
      painter->setPen(option->palette.color(QPalette::Highlight));
      painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    }
  }

 private:
  void DrawFocusInside(const QStyleOption& button, QPainter& painter, const QWidget* widget) const {
    QStyleOptionFocusRect focus;
    focus.QStyleOption::operator=(button);
    focus.rect = button.rect.adjusted(kFocusInset, kFocusInset, -kFocusInset, -kFocusInset);
    drawPrimitive(PE_FrameFocusRect, &focus, &painter, widget);
  }
};

}  // namespace

QStyle* MakeToolkitStyle() { return new ToolkitStyle; }

}  // namespace vt63x::ui
