// SPDX-License-Identifier: MIT

// wcf as its users run it: exit codes, what stands on which output, and the line that goes away.

#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>

#include <algorithm>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "cli/error_text.h"
#include "cli/output.h"
#include "script/command_file.h"
#include "simulator/unique_fd.h"
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

// The simulated chip as vt63x-sim serves it.
class Sim {
 public:
  explicit Sim(const Arguments& options = {}) : program_(SIM_PROGRAM, options) {
    EXPECT_TRUE(program_.WaitForOutput("\n"));
    line_ = program_.Out().substr(0, program_.Out().find('\n'));
  }
  const std::string& line() const { return line_; }
  void Kill() { program_.Finish(SIGKILL); }

 private:
  RunningProgram program_;
  std::string line_;
};

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
  const std::string file = directory.Write("test.wcf", "\n//> 2\nBRK\n\n// 5\n\n//> 7\n");
  const ProgramResult first = Wcf({"run", file, "--sim"});
  EXPECT_EQ(first.out, "Processing " + file + "\n//< 2\n");
  EXPECT_NE(first.err.find("stopped by BRK; --resume 3 goes on behind it"), std::string::npos);
  EXPECT_TRUE(LastLine(first.err).starts_with("wcf: ok: 3 lines run")) << first.err;
  const ProgramResult second = Wcf({"run", file, "--sim", "--resume", "4"});
  EXPECT_EQ(second.out, "Processing " + file + "\n//< 7\n");
  EXPECT_TRUE(LastLine(second.err).starts_with("wcf: ok: 3 lines run")) << second.err;
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
  const char* const no_port =
      "it is no serial port and no rfc2217://host:port with a port of 1 to 65535 (error 87)";
  for (const auto& [port, words] :
       {Case{directory.File("missing"), "there is no such port (error 2)"},
        Case{directory.Write("file", "x"), no_port}, Case{"/dev/null", no_port},
        Case{"rfc2217://127.0.0.1:65536", no_port}, Case{"rfc2217://127.0.0.1:0", no_port}}) {
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

// On the chip's line, which takes nothing while its output is stopped.
TEST(WcfTest, SignalsEndWhateverWaitsAndTheVerdictFollows) {
  const TempDirectory directory;
  const std::string fifo = directory.File("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  Sim sim;
  struct Case {
    Arguments arguments;
    int signal;
    bool by_itself = true;  // does it end, and the log tells of it
    bool stopped = false;
  };
  for (const Case& c : {Case{{"exec", "//> now", "SLP 60000", "//> never"}, SIGTERM},
                        Case{{"exec", "//> now", "WIL 1 60000", "//> never"}, SIGHUP},
                        Case{{"exec", "//> now", "WIE 60000", "//> never"}, SIGINT},
                        Case{{"exec", "//> now", "SR 01 00"}, SIGTERM, false, true},
                        Case{{"run", fifo}, SIGHUP, false}}) {
    const UniqueFd line(open(sim.line().c_str(), O_RDWR | O_NOCTTY));
    tcflow(line.get(), c.stopped ? TCOOFF : TCOON);
    Arguments arguments = c.arguments;
    arguments.insert(arguments.end(), {"--port", sim.line()});
    RunningProgram wcf(WCF_PROGRAM, arguments);
    ASSERT_TRUE(wcf.WaitForOutput("\n"));
    wcf.Signal(c.signal);
    const ProgramResult result = wcf.Finish();
    EXPECT_EQ(result.exit_code, 128 + c.signal) << arguments[1] << arguments[2] << result.err;
    EXPECT_TRUE(LastLine(result.err).starts_with("wcf: broken off: ")) << result.err;
    EXPECT_EQ(result.out.ends_with("User Break recognised.\n"), c.by_itself) << result.out;
  }
}

TEST(WcfTest, SignalEndsARunWhoseOutputNobodyReads) {
  const TempDirectory directory;
  const std::string fifo = directory.File("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const UniqueFd reader(open(fifo.c_str(), O_RDWR));
  for (const char* where : {" >\"$1\"", " --log \"$1\" >/dev/null"}) {
    const std::string command = "exec \"$0\" exec --sim '::: L' 'GR 37' 'JMP L'";
    RunningProgram wcf("/bin/sh", {"-c", command + where, WCF_PROGRAM, fifo});
    const int nearly_full = fcntl(reader.get(), F_GETPIPE_SZ) - 4096;
    int waiting = 0;
    for (int i = 0; i < 10000 && waiting < nearly_full; ++i) {
      ioctl(reader.get(), FIONREAD, &waiting);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    wcf.Signal(SIGTERM);
    const ProgramResult result = wcf.Finish();
    EXPECT_EQ(result.exit_code, 143);
    EXPECT_TRUE(LastLine(result.err).starts_with("wcf: broken off: ")) << result.err;
    char bytes[4096];
    for (; waiting > 0; ioctl(reader.get(), FIONREAD, &waiting)) {
      ASSERT_GT(read(reader.get(), bytes, sizeof bytes), 0);
    }
  }
}

TEST(WcfTest, RunsThatAreKilledLeaveTheChipInStep) {
  Sim sim;
  for (int i = 0; i < 12; ++i) {
    RunningProgram wcf(WCF_PROGRAM, {"exec", "//> now", "::: L", "SR 2B 5A", "MR 2B 0F 1", "JMP L",
                                     "--port", sim.line()});
    ASSERT_TRUE(wcf.WaitForOutput("//< now"));
    wcf.Signal(SIGHUP);
    EXPECT_EQ(wcf.Finish().exit_code, 129);
    const ProgramResult next = Wcf({"exec", "RE 37 91", "--port", sim.line()});
    ASSERT_EQ(next.exit_code, 0) << next.out;
  }
}

TEST(WcfTest, LineThatGoesAwayEndsEveryRunWithCode5) {
  for (const Arguments& server : {Arguments{}, Arguments{"--rfc2217", "127.0.0.1:0"}}) {
    for (const Arguments& loop :
         {Arguments{"WIL 1 60000"}, Arguments{"::: L", "WIE 60000", "JMP L"},
          Arguments{"::: L", "CHB 9600", "JMP L"}, Arguments{"::: L", "INC ML0", "JMP L"},
          Arguments{"SLP 60000"}, Arguments{"SLP 500"}, Arguments{"::: L", "GR 37", "JMP L"}}) {
      Sim sim(server);
      Arguments arguments = {"exec", "GR 37", "--port", sim.line()};
      arguments.insert(arguments.begin() + 2, loop.begin(), loop.end());
      RunningProgram wcf(WCF_PROGRAM, arguments);
      ASSERT_TRUE(wcf.WaitForOutput("data == 91"));
      sim.Kill();
      const ProgramResult result = wcf.Finish();
      EXPECT_EQ(result.exit_code, 5) << loop.back() << result.err;
      EXPECT_NE(result.err.find("wcf: the line went away\n"), std::string::npos);
      EXPECT_EQ(result.out.find("User Break"), std::string::npos) << result.out;
    }
  }
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

TEST(WcfTest, BusyPortAndMissingRightSayWhatToDo) {
  Sim sim;
  RunningProgram first(WCF_PROGRAM, {"exec", "GR 37", "SLP 60000", "--port", sim.line()});
  ASSERT_TRUE(first.WaitForOutput("data == 91"));
  const ProgramResult second = Wcf({"exec", "GR 37", "--port", sim.line()});
  EXPECT_EQ(second.exit_code, 3);
  EXPECT_NE(second.err.find("in use by another program"), std::string::npos);
  EXPECT_NE(PortErrorText(ERROR_PRIVILEGE_NOT_HELD).find("usermod -aG dialout"), std::string::npos);
}

// The program's calls on the line, by a library between it and the system.
ProgramResult WcfOnRefusingCalls(const std::string& what, const Arguments& arguments) {
  Sim sim;
  Arguments all = arguments;
  all.insert(all.end(), {"--port", sim.line()});
  return RunningProgram(WCF_PROGRAM, all,
                        {{"LD_PRELOAD", REFUSING_CALLS},
                         {"REFUSE", what},
                         {"ASAN_OPTIONS", "verify_asan_link_order=0"}})
      .Finish();
}

TEST(WcfTest, SignalsDuringOpeningAndSettingChangeNothing) {
  const ProgramResult result = WcfOnRefusingCalls("interrupt", {"exec", "CHB 9600", "RE 37 91"});
  EXPECT_EQ(result.exit_code, 0) << result.err;
}

TEST(WcfTest, BitRateThatThePortRefusesFailsTheRun) {
  const ProgramResult result =
      WcfOnRefusingCalls("256000", {"exec", "CHB 256000", "CHB 9600", "RE 37 91"});
  EXPECT_EQ(result.exit_code, 1) << result.err;
  EXPECT_TRUE(result.out.starts_with("CHB  256000     // Baudrate = 256000\nCHB    9600 "));
  EXPECT_NE(result.err.find("wcf: line:1: the port does not take the bit rate 256000 (error 87)\n"),
            std::string::npos);
  EXPECT_EQ(WcfOnRefusingCalls("9600", {"exec", "GR 37"}).exit_code, 1);
}

TEST(WcfTest, PipeThatIsClosedEndsTheRunWithCode3) {
  const ProgramResult result =
      RunningProgram("/bin/bash", {"-c",
                                   "\"$0\" exec --sim '::: L' 'GR 37' 'JMP L' | head -n 1; "
                                   "exit ${PIPESTATUS[0]}",
                                   WCF_PROGRAM})
          .Finish();
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_NE(result.err.find("wcf: standard output: Broken pipe\n"), std::string::npos);
}

// From now on SIGUSR1 breaks off the system call that it meets.
void TakeSignals() {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, nullptr);
}

// The thread waits in a system call as a rule.
void Interrupt(std::thread& thread) {
  for (int i = 0; i < 50; ++i) {
    pthread_kill(thread.native_handle(), SIGUSR1);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

// While a FIFO waits for its writer, and for more of its bytes.
TEST(ReadWholeFileTest, SignalsChangeNothing) {
  TakeSignals();
  const TempDirectory directory;
  const std::string fifo = directory.File("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::string content;
  int error = -1;
  std::thread reader([&] { error = ReadWholeFile(fifo.c_str(), content); });
  Interrupt(reader);
  const int writer = open(fifo.c_str(), O_RDWR);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(write(writer, "GR 37\n", 6), 6);
    Interrupt(reader);
  }
  close(writer);
  reader.join();
  EXPECT_EQ(error, 0);
  EXPECT_EQ(content, "GR 37\nGR 37\nGR 37\n");
}

// A pipe that is full again and again, not waiting and waiting with signals.
TEST(OutputTest, WritesThatAreRefusedOrBrokenOffLoseNothing) {
  TakeSignals();
  std::string text;
  for (int i = 0; i < 100000; ++i) text += std::to_string(i) + '\n';
  for (const int flags : {O_NONBLOCK, 0}) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    fcntl(ends[1], F_SETFL, flags);
    std::FILE* const stream = fdopen(ends[1], "w");
    MakeUnbuffered(stream);
    std::thread writer([&] {
      EXPECT_EQ(WriteAll(stream, text), 0);
      std::fclose(stream);
    });
    Interrupt(writer);
    const UniqueFd reader(ends[0]);
    std::string arrived;
    char bytes[4096];
    for (ssize_t count; (count = read(reader.get(), bytes, sizeof bytes)) > 0;) {
      arrived.append(bytes, static_cast<std::size_t>(count));
    }
    writer.join();
    EXPECT_TRUE(arrived == text) << arrived.size();
  }
}

}  // namespace
}  // namespace vt63x
