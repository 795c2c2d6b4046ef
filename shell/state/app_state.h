// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_STATE_APP_STATE_H
#define VT63X_SHELL_STATE_APP_STATE_H

// The state of the program that nearly every folder shares, the record with which a message or a
// thread hands it on, and the seam to the main window.

#include <windows.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "shell/state/port_handle.h"
#include "shell/state/stack_lock.h"
#include "threading/mutex.h"

namespace vt63x {

class CardMemoryWrapper;
class ExchangeWrapper;
class Iso14443AWrapper;
class OperationControlWrapper;
class RegisterControlWrapper;
class SerialBusWrapper;
class MainView;
struct AppState;

// Every window procedure builds one for the message it received and hands it to one handler; a run
// of a command file gets a copy of its own, which its threads only read.
struct action_param {
  HWND main_wnd;
  HWND dialog_wnd;  // whose procedure received the message; the main window's own: main_wnd again
  HINSTANCE instance;
  LPARAM lparam;
  WPARAM wparam;
  AppState* app_state;
};

// The wrappers of the component stack; start-up owns them, and none is null while the program runs.
struct component_pointers {
  CardMemoryWrapper* card_memory = nullptr;
  Iso14443AWrapper* iso14443a = nullptr;
  OperationControlWrapper* operation_control = nullptr;
  ExchangeWrapper* exchange = nullptr;
  RegisterControlWrapper* register_control = nullptr;
  SerialBusWrapper* serial_bus = nullptr;
};

// One typed command line: at most 127 characters and a terminator.
using history_entry = std::array<char, 128>;

// Size of the buffer behind `log_buf` in bytes, terminator included.
inline constexpr std::size_t LOG_CAPACITY = 100'000;

// One record for the whole run of the program. Fields without a remark belong to the main thread.
// A run of a command file (the runner thread) also reads wcf_path and view, which do not change
// while it lasts.
struct AppState {
  AppState();
  AppState(const AppState&) = delete;
  AppState& operator=(const AppState&) = delete;

  HINSTANCE instance = nullptr;
  WNDPROC cmdline_old_proc = nullptr;
  WNDPROC logview_old_proc = nullptr;
  HWND main_wnd = nullptr;
  std::atomic<HWND> processing_dlg = nullptr;  // any thread
  HWND register_dlg = nullptr;
  char port_names[16][10];     // "COM1:" to "COM16:"
  char baudrate_texts[3][10];  // "9600", "19200", "115200"
  char wcf_path[MAX_PATH];     // the selected command file, or "NULL"
  std::uint8_t port_index = 0;
  std::uint8_t baudrate_index = 0;
  PortHandle port_handle;  // null: closed. Any thread
  HANDLE runner_thread = nullptr;
  HANDLE processing_thread = nullptr;
  // LOG_CAPACITY bytes, NUL-terminated text. The pointer is set at start-up.
  char* log_buf PT_GUARDED_BY(log_lock) = nullptr;
  std::uint8_t reg_log_enabled = 0;
  char reg_addr_text[20];
  char reg_value_text[20];
  HFONT log_font = nullptr;
  HMENU pi_menu = nullptr;
  std::atomic<std::uint8_t> script_running = 0;  // any thread; cleared to break off a run
  std::int32_t init_width = 0;
  std::int32_t init_height = 0;
  std::uint8_t pi_hidden = 1;
  std::uint32_t history_index = 0;
  std::int32_t history_browse = 0;
  std::vector<history_entry> cmd_history;  // oldest first, at most 16, no two equal
  std::uint32_t ignore_close = 0;
  char config_path[MAX_PATH];
  // Lines that the next run skips before it executes anything. Main thread and runner thread.
  std::atomic<std::int32_t> resume_line = 0;
  component_pointers component_ptrs GUARDED_BY(stack_lock);

  // Length of the text in log_buf, so that an append need not walk over it.
  std::size_t log_length GUARDED_BY(log_lock) = 0;
  // Counts the times that the text began anew: who shows the log needs only what was added as long
  // as it stays.
  std::uint32_t log_generation GUARDED_BY(log_lock) = 0;

  // Neither is held across a call that may wait for the main thread.
  Mutex log_lock;        // the text in log_buf
  StackLock stack_lock;  // the component stack and the port: one chip access sequence at a time

  MainView* view = nullptr;  // what shows all this; null when nothing does
};

// Something in a script that did not do its work. The log has a line for most of them; this names
// the place and the kind for whoever counts.
enum class ScriptFaultKind {
  kUnknownCommand,    // text: the command word
  kBadOperand,        // text: the command word and the operand's number, from 1
  kBadBitRate,        // text: the bit rate
  kJumpWithoutLabel,  // text: empty
  kNoSuchLabel,       // text: the label
  kBitRateRefused,    // text: the bit rate and the port's Win32 error
  kDifference,        // text: the log line; RE or RF found a difference
  kAccessFailed,      // text: the log line; a chip access returned a status other than 0
};

struct script_fault {
  ScriptFaultKind kind;
  std::uint32_t line;  // in the command file, counted from 1; 0 for a typed line
  std::string_view text;
};

// Why a run of a command file ended; kBrokenOff: the view broke it off, and has told why.
enum class ScriptEnd { kEndOfFile, kBreakCommand, kUserBreak, kBrokenOff, kUnreadable };

// A count that one thread keeps and any thread may read.
class RunCount {
 public:
  RunCount() = default;
  RunCount(const RunCount& other) : value_(other) {}
  RunCount& operator=(const RunCount& other) {
    value_.store(other, std::memory_order_relaxed);
    return *this;
  }
  operator std::uint64_t() const { return value_.load(std::memory_order_relaxed); }
  void Add(std::uint64_t more) { value_.store(*this + more, std::memory_order_relaxed); }
  void operator++() { Add(1); }

 private:
  std::atomic<std::uint64_t> value_ = 0;
};

struct script_totals {
  RunCount lines;        // executed, empty ones included
  RunCount comparisons;  // RE and RF
  RunCount differences;
  RunCount accesses;  // SR, GR, MR, RE and RF
  RunCount access_failures;
};

// All that the layers below the windows know of the main window. A view shows what it can: every
// call has an empty default. Calls marked "any thread" come from the runner thread during a run
// and must not wait for the main thread for long; the others come from the main thread, unless a
// script command makes them.
class MainView {
 public:
  virtual ~MainView() = default;

  // The log has grown by `text`, and by a line end if `newline`. Any thread.
  virtual void LogAppended(std::string_view text, bool newline) {
    static_cast<void>(text);
    static_cast<void>(newline);
  }
  // The log is empty. Any thread.
  virtual void LogCleared() {}
  // Copies the log as the user sees and may have edited it into `buffer`, at most `size` bytes with
  // the terminator. False when the view holds no copy of its own.
  virtual bool ReadLogPane(char* buffer, std::size_t size) {
    static_cast<void>(buffer);
    static_cast<void>(size);
    return false;
  }
  // Asks for the text file to append the log to; false when the user cancels. `path` comes in with
  // the pattern to start from.
  virtual bool AskLogFile(char (&path)[MAX_PATH]) {
    static_cast<void>(path);
    return false;
  }
  // The log could not be written to `path`; `error` is an errno value. Any thread.
  virtual void LogNotSaved(const char* path, int error) {
    static_cast<void>(path);
    static_cast<void>(error);
  }

  // The host's bit rate, in bits per second as decimal text. Any thread.
  virtual void ShowBitRate(const char* text) { static_cast<void>(text); }
  virtual void ShowPortOpen(bool open) { static_cast<void>(open); }
  // `error` is the Win32 error with which the port refused to open.
  virtual void PortOpenFailed(const char* port_name, DWORD error) {
    static_cast<void>(port_name);
    static_cast<void>(error);
  }
  // The open port does not take its settings; `error` is the Win32 error.
  virtual void PortSettingsRefused(const char* port_name, DWORD error) {
    static_cast<void>(port_name);
    static_cast<void>(error);
  }

  // The command file could not be read; `error` is an errno value. Any thread.
  virtual void CommandFileNotRead(const char* path, int error) {
    static_cast<void>(path);
    static_cast<void>(error);
  }
  // A run begins; its counts may be read until ScriptEnded. Any thread.
  virtual void ScriptBegins(const script_totals& totals) { static_cast<void>(totals); }
  // Asked every few lines of a run and every 50 ms while a line waits (SLP, WIE, WIL). A view that
  // does not let a wait come to its end says true, having cleared script_running. Any thread.
  virtual bool BreaksOff() { return false; }
  // Who cleared script_running, kUserBreak or kBrokenOff; the log tells of the user alone. Any
  // thread.
  virtual ScriptEnd BreakReason() const { return ScriptEnd::kUserBreak; }
  // Any thread, both.
  virtual void ScriptFault(const script_fault& fault) { static_cast<void>(fault); }
  virtual void ScriptEnded(ScriptEnd end, const script_totals& totals) {
    static_cast<void>(end);
    static_cast<void>(totals);
  }
};

}  // namespace vt63x

#endif
