// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_LIST_TEXT_H
#define VT63X_PLATFORM_WINDOW_LIST_TEXT_H

#include <windows.h>

#include <cstring>
#include <string>

#include "platform/window/text_codec.h"

namespace vt63x::ui {

// The length of a list entry, and with `copy` the entry itself with its terminator into the
// program's buffer: the program has asked for its length and made room.
inline LRESULT ListText(const QString& entry, bool copy, LPARAM buffer) {
  const std::string text = ToProgram(entry);
  if (copy && buffer != 0) {
    std::memcpy(reinterpret_cast<char*>(buffer), text.c_str(), text.size() + 1);
  }
  return static_cast<LRESULT>(text.size());
}

}  // namespace vt63x::ui

#endif
