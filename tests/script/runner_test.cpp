// SPDX-License-Identifier: MIT

#include "script/runner.h"

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>

#include "frontend/register_control.h"
#include "script/interpreter.h"
#include "tests/support/program_state.h"
#include "tests/support/register_bus.h"
#include "tests/support/temp_directory.h"

namespace vt63x {
namespace {

class RunnerTest : public testing::Test {
 protected:
  RunnerTest() {
    registers.Init(RegisterControlOpen, &bus);
    program.state.component_ptrs.register_control = &registers;
  }

  // What a run of a file with this content logs behind its "Processing" line.
  std::string Run(const std::string& content) {
    path = directory.Write("test.wcf", content);
    return RunSelected();
  }
  std::string RunSelected() {
    std::snprintf(program.state.wcf_path, sizeof program.state.wcf_path, "%s", path.c_str());
    program.view.shown.clear();
    program.state.script_running = 1;
    EXPECT_EQ(RunCommandFile(&program.action), 0u);
    EXPECT_EQ(program.state.script_running, 0);
    const std::string heading = "Processing " + path + "\n";
    EXPECT_EQ(program.view.shown.substr(0, heading.size()), heading);
    return program.view.shown.substr(heading.size());
  }

  TempDirectory directory;
  std::string path;
  ProgramState program;
  RegisterBus bus;
  RegisterControlWrapper registers;
};

TEST_F(RunnerTest, LinesRunInOrderAndBadOnesDoNotStopIt) {
  EXPECT_EQ(Run("//> a\nFOO\nGR\n\n//> b"),
            "//< a\nERROR: Unknown Command - \"FOO\" (length = 3).\n"
            "Error: Invalid numeric format / parameter identifier.\n//< b\n");
  EXPECT_EQ(program.view.ended, 1);
  EXPECT_EQ(program.view.end, ScriptEnd::kEndOfFile);
  EXPECT_EQ(program.view.totals.lines, 5u);
  ASSERT_EQ(program.view.faults.size(), 2u);
  EXPECT_EQ(program.view.faults[0].line, 2u);
  EXPECT_EQ(program.view.faults[1].line, 3u);
}

TEST_F(RunnerTest, JumpsBreaksAndLaterRunsLogWhatTheyShould) {
  struct Case {
    const char* content;
    std::vector<std::string> logs;  // of as many runs
    int resume_line;                // after the last of them
    ScriptEnd end = ScriptEnd::kEndOfFile;
  };
  for (const Case& c : {
           Case{"::: loop\ninc ml0\njne ml0 05 LOOP\n//# ml0\n", {"Value = 0x05\n"}, 0},
           // Registers start at zero.
           Case{"//# ML0\nMOV ML0 77\n", {"Value = 0x00\n", "Value = 0x00\n"}, 0},
           // The first label of a name wins, also forwards.
           Case{"JMP x\n//> skipped\n::: x\n//> first\nJNE ML1 00 out\nINC ML1\nJMP x\n"
                "::: x\n//> second\n::: out\n",
                {"//< first\n//< first\n"},
                0},
           Case{"//> 1\n//> 2\nBRK\n//> 4\n", {"//< 1\n//< 2\n"}, 3, ScriptEnd::kBreakCommand},
           Case{"//> 1\n//> 2\nBRK\n//> 4\n", {"//< 1\n//< 2\n", "//< 4\n"}, 0},
           Case{"//> 1\n//> 2\nBRK\n//> 4\n",
                {"//< 1\n//< 2\n", "//< 4\n", "//< 1\n//< 2\n"},
                3,
                ScriptEnd::kBreakCommand},
           Case{"JMP x\n//> 2\n::: x\nBRK\n//> 5\n", {""}, 4, ScriptEnd::kBreakCommand},
           Case{"JMP x\n//> 2\n::: x\nBRK\n//> 5\n", {"", "//< 5\n"}, 0},
           // A break as the last line leaves every further run empty.
           Case{"//> 1\nBRK\n", {"//< 1\n", "", ""}, 2},
       }) {
    program.state.resume_line = 0;
    path = directory.Write("test.wcf", c.content);
    for (const std::string& log : c.logs) EXPECT_EQ(RunSelected(), log) << c.content;
    EXPECT_EQ(program.state.resume_line, c.resume_line) << c.content;
    EXPECT_EQ(program.view.end, c.end) << c.content;
  }
}

TEST_F(RunnerTest, JumpToNoLabelEndsTheRunWithoutALine) {
  EXPECT_EQ(Run("JMP nowhere\nFOO\nBRK\n//> not reached\n"), "");
  EXPECT_EQ(program.view.end, ScriptEnd::kEndOfFile);
  ASSERT_EQ(program.view.faults.size(), 1u);
  EXPECT_EQ(program.view.faults[0].kind, ScriptFaultKind::kNoSuchLabel);
  EXPECT_EQ(program.view.faults[0].text, "NOWHERE");
  EXPECT_EQ(program.view.faults[0].line, 1u);
}

TEST_F(RunnerTest, ResumePastTheEndOrBelowZeroDoesNoHarm) {
  program.state.resume_line = 1000000;
  EXPECT_EQ(Run("//> 1\n"), "");
  EXPECT_EQ(program.state.resume_line, 1000000);
  program.state.resume_line = -5;
  EXPECT_EQ(RunSelected(), "//< 1\n");
  program.state.resume_line = 2;  // in front of which it may jump
  EXPECT_EQ(Run("::: top\n//> once\nJNE ML0 00 end\nINC ML0\nJMP top\n::: end\n"), "//< once\n");
}

TEST_F(RunnerTest, UserBreakIsSeenBeforeTheNextLineAndKeepsTheResumePoint) {
  program.view.on_log = [&](std::string_view text) {
    if (text == "//< stop") program.state.script_running = 0;
  };
  EXPECT_EQ(Run("//> stop\n//> not reached\n"), "//< stop\nUser Break recognised.\n");
  EXPECT_EQ(program.view.end, ScriptEnd::kUserBreak);
  EXPECT_EQ(program.state.resume_line, 0);
  EXPECT_EQ(Run("//> stop"), "//< stop\n") << "on the last line it leaves no message";
}

TEST_F(RunnerTest, EndlessLoopIsBrokenOffFromAnotherThread) {
  path = directory.Write("test.wcf", "//> runs\n::: TOP\nJMP TOP\n");
  std::snprintf(program.state.wcf_path, sizeof program.state.wcf_path, "%s", path.c_str());
  std::promise<void> loop_is_near;
  program.view.on_log = [&](std::string_view text) {
    if (text == "//< runs") loop_is_near.set_value();
  };
  program.state.script_running = 1;
  std::thread runner([&] { RunCommandFile(&program.action); });
  loop_is_near.get_future().wait();
  program.state.script_running = 0;
  runner.join();
  EXPECT_EQ(program.view.end, ScriptEnd::kUserBreak);
}

TEST_F(RunnerTest, FileThatCannotBeReadIsReported) {
  path = directory.File("missing.wcf");
  EXPECT_EQ(RunSelected(), "Error. Could not read file.\n");
  EXPECT_EQ(program.view.end, ScriptEnd::kUnreadable);
  path = directory.path().string();
  EXPECT_EQ(RunSelected(), "Error. Could not read file.\n");
}

// The decoded run against the plain reading of the language: every line tokenized anew, jumps
// searching from the top. False when the file does not end within `most_lines` lines.
bool RunByTheLetter(ProgramState& program, const std::string& content, int most_lines) {
  LineParser parser(&program.action);
  std::size_t position = 0;
  while (position < content.size()) {
    if (--most_lines < 0) return false;
    const std::size_t end = content.find('\n', position);
    std::string line = content.substr(position, end - position);
    position = end + 1;
    const int result = ExecuteLine(parser, line.data());
    if (result == LINE_JUMP) position = 0;
    if (result == LINE_BREAK) return true;
  }
  return true;
}

TEST_F(RunnerTest, RandomFilesRunAsIfReadAnewEachTime) {
  const char* const pool[] = {
      "::: A",       "::: b",      "JMP A",   "jmp B",       "JNE ML0 03 A", "JNE ML1 02 b",
      "INC ML0",     "INC ML1",    "DEC ML0", "MOV ML0 ML1", "//# ML0",      "//> text",
      "FOO",         "GR",         "JMP",     "SR 10 ML0",   "GR 10",        "RE 10 ML1",
      "MOV ML1 IOR", "// nothing", "JMP C",   "BRK"};
  unsigned seed = 12345;
  const auto random = [&](unsigned below) {
    seed = seed * 1664525U + 1013904223U;
    return (seed >> 16U) % below;
  };
  const auto reset = [&] {
    std::fill(std::begin(bus.registers), std::end(bus.registers), std::uint8_t{0});
    program.view.shown.clear();
  };
  int compared = 0;
  for (int round = 0; round < 1000; ++round) {
    std::string content;
    const unsigned lines = 1 + random(12);
    for (unsigned i = 0; i < lines; ++i) content += std::string(pool[random(22)]) + "\n";
    reset();
    if (!RunByTheLetter(program, content, 4000)) continue;
    const std::string expected = program.view.shown;
    reset();
    LineParser parser(&program.action);
    program.state.script_running = 1;
    program.state.resume_line = 0;
    RunLines(parser, CommandFile(content));
    EXPECT_EQ(program.view.shown, expected) << content;
    ++compared;
  }
  EXPECT_GT(compared, 500);
}

}  // namespace
}  // namespace vt63x
