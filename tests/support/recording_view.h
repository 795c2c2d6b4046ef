// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SUPPORT_RECORDING_VIEW_H
#define VT63X_TESTS_SUPPORT_RECORDING_VIEW_H

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "shell/state/app_state.h"

namespace vt63x {

// A main window that keeps what it is told.
class RecordingView final : public MainView {
 public:
  struct Fault {
    ScriptFaultKind kind;
    std::uint32_t line;
    std::string text;
  };

  void LogAppended(std::string_view text, bool newline) override {
    shown.append(text);
    if (newline) shown += "\n";
    if (on_log) on_log(text);
  }
  void LogCleared() override { shown += "<cleared>"; }
  bool ReadLogPane(char* buffer, std::size_t size) override {
    if (pane.empty()) return false;
    std::strncpy(buffer, pane.c_str(), size - 1);
    buffer[size - 1] = '\0';
    return true;
  }
  bool AskLogFile(char (&path)[MAX_PATH]) override {
    asked_with = path;
    if (log_file.empty()) return false;
    std::strcpy(path, log_file.c_str());
    return true;
  }
  void LogNotSaved(const char* path, int error) override {
    not_saved = path;
    save_error = error;
  }
  void ShowBitRate(const char* text) override { bit_rates.push_back(text); }
  void ShowPortOpen(bool open) override { port_states.push_back(open); }
  void PortOpenFailed(const char* name, DWORD error) override {
    failed_port = name;
    port_error = error;
  }
  void ScriptFault(const script_fault& fault) override {
    faults.push_back({fault.kind, fault.line, std::string(fault.text)});
  }
  void ScriptEnded(ScriptEnd script_end, const script_totals& script_totals) override {
    end = script_end;
    totals = script_totals;
    ++ended;
  }

  std::string shown;
  std::function<void(std::string_view)> on_log;
  std::string pane;
  std::string log_file;
  std::string asked_with;
  std::string not_saved;
  int save_error = 0;
  std::vector<std::string> bit_rates;
  std::vector<bool> port_states;
  std::string failed_port;
  DWORD port_error = 0;
  std::vector<Fault> faults;
  ScriptEnd end = ScriptEnd::kEndOfFile;
  script_totals totals;
  int ended = 0;
};

}  // namespace vt63x

#endif
