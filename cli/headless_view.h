// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_HEADLESS_VIEW_H
#define VT63X_CLI_HEADLESS_VIEW_H

// The main window's place in a program without windows: log lines go to standard output as they
// come, everything else that a user should know to standard error. Never asks anything.

#include <chrono>
#include <cstdio>
#include <string>

#include "cli/exit_code.h"
#include "shell/state/app_state.h"
#include "simulator/simulated_bus.h"
#include "threading/mutex.h"

namespace vt63x {

class HeadlessView final : public MainView {
 public:
  // Breaks off a run on `state` when the line goes away.
  explicit HeadlessView(AppState& state) : state_(state) {}

  // Names the source of the lines in messages: the command file.
  void SetSource(std::string source) { source_ = std::move(source); }
  // The simulated chip's host side, which follows the bit rate.
  void SetSimulatedBus(SimulatedBus* bus) { bus_ = bus; }
  // Log lines stay off standard output, where PrintObject writes.
  void SetObjectsOnly(bool objects_only) { objects_only_ = objects_only; }
  void PrintObject(const std::string& object);
  // Log lines are also written here, with CR LF. Unbuffered; not owned.
  void SetLogFile(std::FILE* file, std::string name);

  // "wcf: " and the message, to standard error.
  void Complain(const std::string& message) const;
  void Raise(ExitCode code) { vt63x::Raise(exit_code_, code); }
  // True, with EXIT_LINE_LOST, when the open port's line has gone away.
  bool NoteIfLineIsGone();
  ExitCode exit_code() const { return exit_code_; }
  ScriptEnd end() const { return end_; }
  // Of the run that goes on, or of the last. Any thread.
  script_totals totals() const;

  void LogAppended(std::string_view text, bool newline) override;
  bool AskLogFile(char (&path)[MAX_PATH]) override;
  void LogNotSaved(const char* path, int error) override;
  void ShowBitRate(const char* text) override;
  void PortOpenFailed(const char* port_name, DWORD error) override;
  void PortSettingsRefused(const char* port_name, DWORD error) override;
  void CommandFileNotRead(const char* path, int error) override;
  void ScriptBegins(const script_totals& totals) override;
  // Every wait ends when the program is to end, or within 0.1 s of the line's loss.
  bool BreaksOff() override;
  ScriptEnd BreakReason() const override { return break_reason_; }
  void ScriptFault(const script_fault& fault) override;
  void ScriptEnded(ScriptEnd end, const script_totals& totals) override;

 private:
  bool Write(std::FILE* file, std::string_view text, const char* line_end, const std::string& name);
  void BreakOffRun();

  AppState& state_;
  std::string source_;
  SimulatedBus* bus_ = nullptr;
  std::FILE* log_file_ = nullptr;
  std::string log_name_;
  bool objects_only_ = false;
  bool output_failed_ = false;
  std::string buffer_;                                 // a line and its end
  std::chrono::steady_clock::time_point next_look_{};  // at the line
  ExitCode exit_code_ = EXIT_ALL_DONE;
  ScriptEnd end_ = ScriptEnd::kEndOfFile;
  ScriptEnd break_reason_ = ScriptEnd::kUserBreak;
  mutable Mutex totals_lock_;
  const script_totals* live_totals_ GUARDED_BY(totals_lock_) = nullptr;
  script_totals totals_ GUARDED_BY(totals_lock_);
};

// What a message says of a fault, and the exit code it causes.
std::string FaultText(const script_fault& fault);
ExitCode FaultExitCode(ScriptFaultKind kind);

}  // namespace vt63x

#endif
