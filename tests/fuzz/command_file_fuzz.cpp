// SPDX-License-Identifier: MIT

// Command files: checked, run on a simulated chip, and typed line by line.

#include <time.h>
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

// Clears a flag after a while: a file may well loop for ever.
class BreakSoon {
 public:
  explicit BreakSoon(std::atomic<std::uint8_t>& flag) {
    flag = 1;
    running = &flag;
    std::signal(SIGUSR1, BreakOff);
    sigevent event{};
    event.sigev_notify = SIGEV_THREAD_ID;  // this thread, which outlives no timer
    event._sigev_un._tid = ::gettid();
    event.sigev_signo = SIGUSR1;
    Require(::timer_create(CLOCK_MONOTONIC, &event, &timer_) == 0, "there is a timer");
    constexpr itimerspec kSoon{{0, 0}, {0, 3'000'000}};
    ::timer_settime(timer_, 0, &kSoon, nullptr);
  }
  ~BreakSoon() { ::timer_delete(timer_); }
  BreakSoon(const BreakSoon&) = delete;
  BreakSoon& operator=(const BreakSoon&) = delete;

 private:
  timer_t timer_{};
};

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
  const BreakSoon limit(program.state.script_running);
  LineParser parser(&program.action);
  RunLines(parser, file);
  RunTyped(&program.action, text);
  return 0;
}
