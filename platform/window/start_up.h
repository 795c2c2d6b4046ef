// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_START_UP_H
#define VT63X_PLATFORM_WINDOW_START_UP_H

// What a program meets before its first window. Main thread.

#include <QtGlobal>

namespace vt63x::ui {

// For as long as the toolkit's application is being made: when there is no display, a line says so
// on standard error and the process ends with exit code 3, instead of a core dump.
class DisplayNeeded {
 public:
  DisplayNeeded();
  ~DisplayNeeded();
  DisplayNeeded(const DisplayNeeded&) = delete;
  DisplayNeeded& operator=(const DisplayNeeded&) = delete;

 private:
  QtMessageHandler before_;
};

// SIGTERM, SIGINT and SIGHUP ask to quit (PostQuitMessage) from now on, each of them once: a second
// one before the loops have ended ends the process. A signal that was ignored stays so.
void CatchEndSignals();

}  // namespace vt63x::ui

#endif
