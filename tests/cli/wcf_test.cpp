// SPDX-License-Identifier: MIT

// wcf as its users run it: exit codes, what stands on which output, and the line that goes away.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "tests/support/program.h"

namespace vt63x {
namespace {

using Arguments = std::vector<std::string>;

ProgramResult Wcf(const Arguments& arguments, const std::string& directory = "") {
  return RunningProgram(WCF_PROGRAM, arguments, {}, directory).Finish();
}

std::string LastLine(const std::string& text) {
  const std::size_t end = text.find_last_not_of('\n');
  return text.substr(text.rfind('\n', end) + 1, end - text.rfind('\n', end));
}

TEST(WcfTest, TourRunsOnTheSimulatedChip) {
  const ProgramResult result = Wcf({"run", TOUR_FILE, "--sim"});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_TRUE(result.out.starts_with("Processing " TOUR_FILE "\n//< A tour"));
  EXPECT_TRUE(result.out.ends_with("//< Done\n")) << result.out;
  EXPECT_EQ(LastLine(result.err),
            "wcf: ok: 38 lines run, 3 comparisons made, 0 failed, 10 accesses, 0 failed");
}

TEST(WcfTest, TourRunsTheSameOverAPseudoTerminal) {
  const ProgramResult in_process = Wcf({"run", TOUR_FILE, "--sim"});
  const ProgramResult over_line =
      RunningProgram(SIM_PROGRAM, {"--", WCF_PROGRAM, "run", TOUR_FILE, "--port", "COM1"}).Finish();
  EXPECT_EQ(over_line.exit_code, 0) << over_line.err;
  EXPECT_EQ(over_line.out, in_process.out);
  EXPECT_EQ(over_line.err, in_process.err);
}

TEST(WcfTest, FirstExampleRunsAsTheReadmeShowsIt) {
  const ProgramResult result = Wcf({"run", FIRST_FILE, "--sim"});
  EXPECT_EQ(result.out, "Processing " FIRST_FILE
                        "\n//< Version and a register\n"
                        "GR  37          // data == 91  // (Status: 0x0000)\n"
                        "SR  2B  A6                     // (Status: 0x0000)\n"
                        "RE  2B  A6      // data == A6  // (Status: 0x0000)\n"
                        "Value = 0x03\n");
  EXPECT_EQ(result.err,
            "wcf: ok: 14 lines run, 1 comparison made, 0 failed, 3 accesses, 0 failed\n");
}

TEST(WcfTest, ExitCodeIsTheHighestThatApplies) {
  const TempDirectory directory;
  using Case = std::tuple<const char*, int>;
  for (const auto& [lines, exit_code] :
       {Case{"GR 37\n", 0}, Case{"RE 37 90\n", 1}, Case{"RF 37 00 01\n", 1},
        Case{"FOO\nRE 37 90\n", 4}, Case{"GR\n", 4}, Case{"JMP\n", 4}, Case{"JMP X\n", 4},
        Case{"CHB 4800\n", 4}, Case{"SAV\n", 3}, Case{"SAV x\n", 0}, Case{"WIL 1 1\nWIE 1\n", 0},
        Case{"", 0}}) {
    const std::string file = directory.Write("test.wcf", lines);
    const ProgramResult result = Wcf({"run", file, "--sim"}, directory.path().string());
    EXPECT_EQ(result.exit_code, exit_code) << lines << result.err;
  }
}

TEST(WcfTest, VerdictSaysWhenNothingWasCompared) {
  const ProgramResult result = Wcf({"exec", "GR 37", "--sim"});
  EXPECT_EQ(result.out, "GR  37          // data == 91  // (Status: 0x0000)\n");
  EXPECT_EQ(result.err, "wcf: ok: 1 line run, nothing was compared, 1 access, 0 failed\n");
}

TEST(WcfTest, ExecLinesFormOneScript) {
  const ProgramResult result =
      Wcf({"exec", "--sim", "::: L", "INC ML0", "JNE ML0 03 L", "//# ML0", "FOO", "// x"});
  EXPECT_EQ(result.out, "Value = 0x03\nERROR: Unknown Command - \"FOO\" (length = 3).\n");
  EXPECT_EQ(result.exit_code, 4);
  EXPECT_NE(result.err.find("wcf: line:5: error: unknown command 'FOO'\n"), std::string::npos);
}

TEST(WcfTest, DiagnosticsNameFileAndLine) {
  const TempDirectory directory;
  const std::string file = directory.Write("test.wcf", "// one\nRE 37 90\nJMP NOWHERE\n");
  const ProgramResult result = Wcf({"run", file, "--sim"});
  EXPECT_NE(result.err.find("wcf: " + file + ":2: difference: RE  37  90 "), std::string::npos);
  EXPECT_NE(result.err.find("wcf: " + file + ":3: error: there is no label 'NOWHERE'\n"),
            std::string::npos);
  EXPECT_EQ(LastLine(result.err),
            "wcf: failed: 3 lines run, 1 comparison made, 1 failed, 1 access, 0 failed");
}

TEST(WcfTest, ResumeSkipsLinesAsAfterABreak) {
  const TempDirectory directory;
  const std::string file = directory.Write("test.wcf", "//> 1\nBRK\n//> 3\n");
  const ProgramResult first = Wcf({"run", file, "--sim"});
  EXPECT_EQ(first.out, "Processing " + file + "\n//< 1\n");
  EXPECT_NE(first.err.find("stopped by BRK; --resume 2 goes on behind it"), std::string::npos);
  const ProgramResult second = Wcf({"run", file, "--sim", "--resume", "2"});
  EXPECT_EQ(second.out, "Processing " + file + "\n//< 3\n");
}

TEST(WcfTest, ReferenceNeedsNoLine) {
  const ProgramResult result = Wcf({"commands"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 143);
}

TEST(WcfTest, WrongCallsAreRefusedWithCode2) {
  for (const Arguments& arguments :
       {Arguments{}, Arguments{"frob"}, Arguments{"run"}, Arguments{"run", "x.wcf"},
        Arguments{"run", "x.wcf", "--sim", "--port", "COM1"}, Arguments{"exec", "--sim"},
        Arguments{"run", "x.wcf", "--sim", "--resume", "-1"},
        Arguments{"run", "x.wcf", "--sim", "--resume", "x"}, Arguments{"check"},
        Arguments{"run", "x.wcf", "--sim", "--frob"}, Arguments{"exec", "GR 37", "--port", ""},
        Arguments{"exec", "GR 37", "--port", "COM17"},
        Arguments{"exec", "GR 37", "--port", "ttyUSB0"}}) {
    const ProgramResult result = Wcf(arguments);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_NE(result.err, "");
  }
  EXPECT_EQ(Wcf({"--help"}).exit_code, 0);
  EXPECT_EQ(Wcf({"run", "--help"}).exit_code, 0);
}

TEST(WcfTest, FilesThatCannotBeReadAreNamedWithCode3) {
  const TempDirectory directory;
  const std::string missing = directory.File("missing.wcf");
  const ProgramResult result = Wcf({"run", missing, "--sim"});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_EQ(result.out, "Processing " + missing + "\nError. Could not read file.\n");
  EXPECT_NE(result.err.find("wcf: " + missing + ": No such file or directory\n"),
            std::string::npos);
  const ProgramResult a_directory = Wcf({"run", directory.path().string(), "--sim"});
  EXPECT_EQ(a_directory.exit_code, 3);
  EXPECT_NE(a_directory.err.find("Is a directory"), std::string::npos);
  EXPECT_EQ(Wcf({"run", std::string(300, 'p'), "--sim"}).exit_code, 3);
  EXPECT_EQ(Wcf({"check", missing}).exit_code, 3);
}

TEST(WcfTest, PortsThatCannotBeOpenedAreNamedWithCode3) {
  const TempDirectory directory;
  using Case = std::tuple<std::string, const char*>;
  for (const auto& [port, words] :
       {Case{directory.File("missing"), "there is no such port (error 2)"},
        Case{directory.Write("file", "x"),
             "it is no serial port and no rfc2217://host:port (error 87)"},
        Case{"/dev/null", "it is no serial port and no rfc2217://host:port (error 87)"}}) {
    const ProgramResult result = Wcf({"exec", "GR 37", "--port", port});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_EQ(result.out, "Error opening port - Check and verify (!) settings.\n");
    EXPECT_NE(result.err.find(port + ": " + words), std::string::npos) << result.err;
  }
}

TEST(WcfTest, LogFileGetsTheLogAndKeepsWhatItHeld) {
  const TempDirectory directory;
  const std::string log = directory.Write("run.log", "before\r\n");
  Wcf({"exec", "//> a", "CLL", "//> b", "--sim", "--log", log});
  EXPECT_EQ(directory.Read("run.log"), "before\r\n//< a\r\n//< b\r\n");
  EXPECT_EQ(Wcf({"exec", "//> a", "--sim", "--log", "/dev/full"}).exit_code, 3);
  EXPECT_EQ(Wcf({"exec", "//> a", "--sim", "--log", directory.path().string()}).exit_code, 3);
}

TEST(WcfTest, SaveIntoADirectoryThatCannotBeWrittenIsTold) {
  const TempDirectory directory;
  mkdir(directory.File("RUN.txt").c_str(), 0700);
  const ProgramResult result = Wcf({"exec", "SAV run", "--sim"}, directory.path().string());
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_NE(result.err.find("RUN.txt: Is a directory"), std::string::npos);
}

TEST(WcfTest, CtrlCBreaksAnEndlessLoopOffBetweenTwoLines) {
  const TempDirectory directory;
  const std::string file = directory.Write("loop.wcf", "//> started\n::: TOP\nJMP TOP\n");
  RunningProgram wcf(WCF_PROGRAM, {"run", file, "--sim"});
  ASSERT_TRUE(wcf.WaitForOutput("//< started"));
  wcf.Signal(SIGINT);
  const ProgramResult result = wcf.Finish();
  EXPECT_EQ(result.exit_code, 130);
  EXPECT_TRUE(result.out.ends_with("//< started\nUser Break recognised.\n"));
  EXPECT_NE(LastLine(result.err).find("wcf: broken off: "), std::string::npos);
}

TEST(WcfTest, SecondCtrlCEndsALongWait) {
  RunningProgram wcf(WCF_PROGRAM, {"exec", "//> started", "SLP 60000", "--sim"});
  ASSERT_TRUE(wcf.WaitForOutput("//< started"));
  EXPECT_EQ(wcf.Finish(SIGINT).exit_code, 128 + SIGINT);
}

TEST(WcfTest, LineThatGoesAwayEndsTheRunWithCode5) {
  const TempDirectory directory;
  const std::string file =
      directory.Write("wait.wcf", "::: WAIT\nGR 05\nJNE IOR 80 WAIT\n//> never\n");
  const ProgramResult result =
      RunningProgram(SIM_PROGRAM,
                     {"--fault", "hang-up@20", "--", WCF_PROGRAM, "run", file, "--port", "COM1"})
          .Finish();
  EXPECT_EQ(result.exit_code, 5) << result.err;
  EXPECT_NE(result.err.find("the line went away"), std::string::npos);
  EXPECT_TRUE(result.out.ends_with("(Status: 0x0104)\nUser Break recognised.\n")) << result.out;
}

TEST(WcfTest, LineThatGoesAwayBesideTheAccessesIsNoticedAtTheEnd) {
  RunningProgram sim(SIM_PROGRAM, {});
  ASSERT_TRUE(sim.WaitForOutput("\n"));
  const std::string device = sim.Out().substr(0, sim.Out().find('\n'));
  RunningProgram wcf(WCF_PROGRAM, {"exec", "GR 37", "SLP 1000", "CHB 19200", "--port", device});
  ASSERT_TRUE(wcf.WaitForOutput("data == 91"));
  sim.Signal(SIGKILL);
  sim.Finish();
  const ProgramResult result = wcf.Finish();
  EXPECT_EQ(result.exit_code, 5) << result.err;
  EXPECT_NE(result.err.find("the line went away"), std::string::npos);
}

// Opening a FIFO as the log blocks until somebody reads it: a run that has not begun.
TEST(WcfTest, CtrlCBeforeTheFirstLineKeepsTheRunFromBeginning) {
  const TempDirectory directory;
  const std::string fifo = directory.File("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  RunningProgram wcf(WCF_PROGRAM, {"exec", "//> a", "--sim", "--log", fifo});
  ASSERT_TRUE(wcf.WaitUntilItSleeps("wcf"));
  wcf.Signal(SIGINT);
  const int reader = open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
  const ProgramResult result = wcf.Finish();
  close(reader);
  EXPECT_EQ(result.exit_code, 130) << result.err;
  EXPECT_EQ(result.out, "User Break recognised.\n");
}

TEST(WcfTest, SilentChipGivesItsStatusAndCode1) {
  const ProgramResult result =
      RunningProgram(SIM_PROGRAM, {"--fault", "silence@2", "--", WCF_PROGRAM, "exec", "GR 37",
                                   "SR 01 02", "--port", "COM1"})
          .Finish();
  EXPECT_EQ(result.exit_code, 1) << result.err;
  EXPECT_EQ(result.out,
            "GR  37          // data == 91  // (Status: 0x0000)\n"
            "SR  01  02                     // (Status: 0x0104)\n");
}

TEST(WcfTest, HostAtAnotherBitRateThanTheChipFails) {
  const ProgramResult result = RunningProgram(SIM_PROGRAM, {"--", WCF_PROGRAM, "exec", "CHB 115200",
                                                            "GR 37", "CHB 9600", "--port", "COM1"})
                                   .Finish();
  EXPECT_EQ(result.exit_code, 1) << result.out;
}

TEST(WcfTest, BusyPortIsRefused) {
  RunningProgram sim(SIM_PROGRAM, {});
  ASSERT_TRUE(sim.WaitForOutput("\n"));
  const std::string device = sim.Out().substr(0, sim.Out().find('\n'));
  RunningProgram first(WCF_PROGRAM, {"exec", "GR 37", "SLP 60000", "--port", device});
  ASSERT_TRUE(first.WaitForOutput("data == 91"));
  const ProgramResult second = Wcf({"exec", "GR 37", "--port", device});
  EXPECT_EQ(second.exit_code, 3);
  EXPECT_NE(second.err.find("in use by another program"), std::string::npos);
}

}  // namespace
}  // namespace vt63x
