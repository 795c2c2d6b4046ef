// SPDX-License-Identifier: MIT

// What the sanitizers report of the window toolkit's own libraries, in every test that has windows.
// The sanitizers call these functions when a program starts.

extern "C" {

const char* __lsan_default_suppressions();
const char* __lsan_default_options();
const char* __tsan_default_suppressions();

// The font library keeps a pattern that it drops when the program ends.
const char* __lsan_default_suppressions() { return "leak:libfontconfig\n"; }

const char* __lsan_default_options() { return "print_suppressions=0"; }

// These libraries are not instrumented: their pool of painting threads hands work over by means
// that ThreadSanitizer does not see. What our code does stays watched, on every thread.
const char* __tsan_default_suppressions() {
  return "called_from_lib:libQt6Core.so.6\n"
         "called_from_lib:libQt6Gui.so.6\n"
         "called_from_lib:libQt6Widgets.so.6\n";
}

}  // extern "C"
