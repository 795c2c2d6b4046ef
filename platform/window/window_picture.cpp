// SPDX-License-Identifier: MIT

#include "platform/window/window_picture.h"

#include <QPixmap>

#include "platform/window/main_thread.h"
#include "platform/window/window.h"

namespace vt63x::ui {

bool SaveWindowPicture(HWND window, const char* path) {
  return CallOnMain(false, [&] {
    Window* const shown = Window::Need(window);
    return shown != nullptr && shown->widget()->grab().save(QString::fromUtf8(path), "PNG");
  });
}

}  // namespace vt63x::ui
