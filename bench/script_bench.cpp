// SPDX-License-Identifier: MIT

// Command language lines a second, beside the same loop and the same statements in Lua, Python and
// Tcl, all in this process. One pass of the loop is what INC ML0 and JNE ML0 00 LOOP do.

#include <cstdio>
#include <string>

#include "bench/languages.h"
#include "bench/measure.h"
#include "script/runner.h"

namespace {

constexpr int kRounds = 7;
constexpr int kPasses = 255 * 256 * 15;
constexpr int kLines = 200'000;

class Program {
 public:
  Program() : log_(vt63x::LOG_CAPACITY, '\0') {
    state_.log_buf = log_.data();
    action_.app_state = &state_;
  }

  // Lines executed, or 0 when the file did not run to its end.
  std::uint64_t Run(const vt63x::CommandFile& file) {
    vt63x::LineParser parser(&action_);
    state_.script_running = 1;
    state_.resume_line = 0;
    if (vt63x::RunLines(parser, file) != vt63x::ScriptEnd::kEndOfFile) return 0;
    return parser.totals.lines;
  }

 private:
  std::vector<char> log_;
  vt63x::AppState state_;
  vt63x::action_param action_{};
};

void Row(const char* what, double nanoseconds, double reference) {
  std::printf("%-34s %10.1f ns  %6.2f\n", what, nanoseconds, nanoseconds / reference);
}

// Three nested counters: ML0 counts to 0 (256 passes) 255 * 15 times over.
std::string LoopFile() {
  return "MOV ML2 F1\n::: OUTER\nMOV ML1 01\n::: MIDDLE\n::: LOOP\nINC ML0\nJNE ML0 00 LOOP\n"
         "INC ML1\nJNE ML1 00 MIDDLE\nINC ML2\nJNE ML2 00 OUTER\n";
}

bool BenchLoop() {
  Program program;
  const vt63x::CommandFile file(LoopFile());
  bool ran = true;
  const double own = vt63x::NanosecondsPerUnit(
      kRounds, kPasses, [&] { ran = program.Run(file) > 2ULL * kPasses && ran; });
  const auto other = [&](bool (*loop)(int)) {
    return vt63x::NanosecondsPerUnit(kRounds, kPasses, [&] { ran = loop(kPasses) && ran; });
  };
  const double lua = other(vt63x::LuaLoop);
  std::printf("a pass of the loop                       time   to Lua\n");
  Row("INC ML0 / JNE ML0 00 LOOP", own, lua);
  Row("Lua, table element", lua, lua);
  Row("Python, list element", other(vt63x::PythonLoop), lua);
  Row("Tcl, array element", other(vt63x::TclLoop), lua);
  return ran;
}

bool BenchLines() {
  Program program;
  std::string content;
  for (int i = 0; i < kLines; ++i) content += "MOV ML0 5A\n";
  bool ran = true;
  const auto read_and_run = [&] {
    const vt63x::CommandFile file(content);
    ran = program.Run(file) == kLines && ran;
  };
  const auto other = [&](bool (*lines)(int)) {
    return vt63x::NanosecondsPerUnit(kRounds, kLines, [&] { ran = lines(kLines) && ran; });
  };
  const double own = vt63x::NanosecondsPerUnit(kRounds, kLines, read_and_run);
  const double lua = other(vt63x::LuaLines);
  std::printf("a plain line, decoded and run once       time   to Lua\n");
  Row("MOV ML0 5A", own, lua);
  Row("Lua, ml[0] = 0x5A", lua, lua);
  Row("Python, ml[0] = 0x5A", other(vt63x::PythonLines), lua);
  Row("Tcl, set ml(0) 0x5A", other(vt63x::TclLines), lua);
  const vt63x::CommandFile file(content);
  Row("MOV ML0 5A, decoded before",
      vt63x::NanosecondsPerUnit(kRounds, kLines, [&] { ran = program.Run(file) == kLines && ran; }),
      lua);
  return ran;
}

}  // namespace

int main() {
  if (BenchLoop() && BenchLines()) return 0;
  std::fprintf(stderr, "script_bench: something did not run\n");
  return 1;
}
