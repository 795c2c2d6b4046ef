// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_SESSION_H
#define VT63X_CLI_SESSION_H

// One call of wcf: the component stack over a port or over the simulated chip, the program's
// state, and the view that prints. Single-threaded, but for the end from outside (cli/break_off.h).
//
// The chip's byte protocol and a program that died: a chip that has got the address of a register
// write waits for its data without limit, and whatever byte comes next is that data. wcf never
// leaves it so while it can end by itself; one that is killed (SIGKILL, power) or whose line takes
// no more may. The next program cannot bring such a chip back into step without changing a
// register. Both states look the same from outside until a byte is sent; any byte sent to find out
// is the data of the unknown register, whose old value cannot be read first; no byte is harmless in
// every register; and the answer, the register's address, may as well be the value of the register
// that was asked for. So nothing is sent that the user did not ask for, the first access of the run
// is the one that suffers (a read gives the address of the register that it spoiled, a write an
// access that failed), and the chip is in step behind a first access that was a read. What can be
// cleared without a byte is: answers on their way when the port is opened are thrown away.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/break_gate.h"
#include "cli/break_off.h"
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
  bool script = false;            // a run of lines, which ends with a verdict
  std::vector<CardOption> cards;  // in the simulated chip's field
  bool objects_only = false;      // standard output is for objects: no log lines there
  std::string log_file;           // also write the log here, appending; empty: do not
};

class Session : private BreakTarget {
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
  // The verdict of a run, also of one that could not begin, as a last line; of other commands the
  // news that they were broken off.
  ExitCode Conclude();
  // The chip's registers into the log.
  ExitCode Dump();

  // For commands that are not scripts.
  const action_param* action() const { return &action_; }
  void Print(const std::string& line);          // a line of the log
  void PrintObject(const std::string& object);  // a line of standard output and of nothing else
  void Complain(const std::string& message);    // to standard error
  // The same, and EXIT_FAILED; nothing when the failure is but that the program is to end.
  void Fail(const std::string& message);
  bool interrupted() const;  // the program is to end
  ExitCode exit_code();

 private:
  bool OpenLogFile();
  bool OpenField();
  bool OpenLine();
  void StartRun(std::int32_t resume_line);
  void BreakOff() override;
  std::string LastWords() override;

  SessionOptions options_;
  AppState state_;
  std::vector<char> log_buffer_;
  Chip chip_;
  SimulatedBus simulated_bus_{chip_};
  ComponentStack stack_;
  std::optional<BreakGate> gate_;  // below the stack, for operations of many accesses
  HeadlessView view_;
  action_param action_{};
  std::FILE* log_file_ = nullptr;
};

}  // namespace vt63x

#endif
