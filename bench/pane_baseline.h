// SPDX-License-Identifier: MIT

#ifndef VT63X_BENCH_PANE_BASELINE_H
#define VT63X_BENCH_PANE_BASELINE_H

// The simplest ways to show a growing log with the toolkit's own text widget, emptied whenever it
// would pass LOG_CAPACITY, as the log is.

namespace vt63x {

// Processor time in microseconds a line of `line` shown, `lines` of them, with the widget painted
// in between: once for every `batch` lines that are appended together, `pause_ms` apart, into a
// text of `fill` bytes.
double MicrosecondsPerAppendedLine(const char* line, int lines, int batch, int pause_ms, int fill);

// The same with the whole text put in anew at each line, `lines` times, with the log `fill` bytes
// long.
double MicrosecondsPerReplacedText(const char* line, int lines, int fill);

}  // namespace vt63x

#endif
