// SPDX-License-Identifier: MIT

#ifndef VT63X_BENCH_LANGUAGES_H
#define VT63X_BENCH_LANGUAGES_H

namespace vt63x {

// The same work in other languages' interpreters, linked in. Each runs `passes` passes of the loop,
// or `lines` statements that stand in a row, and returns false when its interpreter refuses.

// A counter in a table, an array or a list goes up and is compared: INC ML0 / JNE ML0 00 LOOP.
bool LuaLoop(int passes);
bool TclLoop(int passes);
bool PythonLoop(int passes);

// Straight-line text, read and run once: `lines` assignments.
bool LuaLines(int lines);
bool TclLines(int lines);
bool PythonLines(int lines);

}  // namespace vt63x

#endif
