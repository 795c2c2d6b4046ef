// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_SESSION_H
#define VT63X_CLI_SESSION_H

// One call of wcf: the component stack over a port or over the simulated chip, the program's
// state, and the view that prints. Single-threaded; a run may be broken off from a signal handler.

#include <cstdint>
#include <string>
#include <vector>

#include "cli/headless_view.h"
#include "shell/component_stack.h"
#include "shell/state/app_state.h"
#include "simulator/card_options.h"
#include "simulator/chip.h"
#include "simulator/simulated_bus.h"

namespace vt63x {

struct SessionOptions {
  std::string port;               // "COM3", or a device that the system knows by another name
  bool simulate = false;          // the simulated chip instead of a port
  std::vector<CardOption> cards;  // in the simulated chip's field
  bool objects_only = false;      // standard output is for objects: no log lines there
  std::string log_file;           // also write the log here, appending; empty: do not
};

class Session {
 public:
  explicit Session(const SessionOptions& options);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Opens the log file, the cards' files and the port; false when one of them refuses, which has
  // been said.
  bool Open();

  // Runs a command file, skipping its first `resume_line` lines.
  ExitCode Run(const std::string& path, std::int32_t resume_line);
  // Runs the lines as a command file would, labels and jumps included.
  ExitCode Execute(const std::vector<std::string>& lines);
  // The verdict of a run, also of one that could not begin, as a last line.
  ExitCode Conclude();
  // The chip's registers into the log.
  ExitCode Dump();

  // For commands that are not scripts.
  const action_param* action() const { return &action_; }
  void Print(const std::string& line);          // a line of the log
  void PrintObject(const std::string& object);  // a line of standard output and of nothing else
  void Complain(const std::string& message);    // to standard error
  void Fail(const std::string& message);        // the same, and EXIT_FAILED
  bool interrupted() const;                     // Ctrl-C was pressed
  ExitCode exit_code();

 private:
  bool OpenLogFile();
  bool OpenField();
  bool OpenLine();
  void StartRun(std::int32_t resume_line);

  SessionOptions options_;
  AppState state_;
  std::vector<char> log_buffer_;
  Chip chip_;
  SimulatedBus simulated_bus_{chip_};
  ComponentStack stack_;
  HeadlessView view_;
  action_param action_{};
  std::FILE* log_file_ = nullptr;
};

}  // namespace vt63x

#endif
