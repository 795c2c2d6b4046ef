// SPDX-License-Identifier: MIT

// Command files: checked, run on a simulated chip, and typed line by line.

#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string>

#include "cli/check.h"
#include "script/interpreter.h"
#include "script/runner.h"
#include "shell/component_stack.h"
#include "simulator/chip.h"
#include "simulator/simulated_bus.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/program_state.h"

namespace vt63x {
namespace {

std::atomic<std::uint8_t>* running = nullptr;

extern "C" void BreakOff(int) { *running = 0; }

// Breaks the run off after 10 ms of computing: a file may well loop for ever.
void StartRun(AppState& state) {
  running = &state.script_running;
  state.script_running = 1;
  std::signal(SIGVTALRM, BreakOff);
  constexpr itimerval kLimit{{0, 0}, {0, 10'000}};
  ::setitimer(ITIMER_VIRTUAL, &kLimit, nullptr);
}

void StopTimer() {
  constexpr itimerval kNever{};
  ::setitimer(ITIMER_VIRTUAL, &kNever, nullptr);
}

void RunTyped(action_param* action, std::string_view text) {
  LineParser parser(action);
  while (!text.empty() && action->app_state->script_running != 0) {
    const std::string_view line = text.substr(0, std::min(text.find('\n'), LONGEST_LINE));
    char buffer[LONGEST_LINE + 1] = {};
    line.copy(buffer, LONGEST_LINE);
    ExecuteLine(parser, buffer);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
}

// A directory that is not there any more, so that SAV leaves nothing behind.
void GoNowhere() {
  char folder[] = "/tmp/vt63x-fuzz-XXXXXX";
  Require(::mkdtemp(folder) != nullptr && ::chdir(folder) == 0 && ::rmdir(folder) == 0,
          "there is a temporary directory");
}

}  // namespace
}  // namespace vt63x

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vt63x;
  [[maybe_unused]] static const bool gone = (GoNowhere(), true);
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const CommandFile file(text);
  CheckCommandFile(file);
  Chip chip;
  SimulatedBus bus(chip);
  ProgramState program;
  const ComponentStack stack(program.state, &bus);
  StartRun(program.state);
  LineParser parser(&program.action);
  RunLines(parser, file);
  StartRun(program.state);
  RunTyped(&program.action, text);
  StopTimer();
  return 0;
}
