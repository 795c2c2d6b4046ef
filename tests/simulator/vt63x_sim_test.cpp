// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <string>

#include "sim_process.h"
#include "simulator/pty_server.h"
#include "simulator/unique_fd.h"
#include "test_reader.h"
#include "tests/support/program.h"

namespace vt63x {
namespace {

// A command that reads register 0x37 once and shows the answer.
const char* const kReadVersion =
    "exec 3<>$VT63X_COM1; printf '\\267' >&3; dd bs=1 count=1 <&3 2>/dev/null | od -An -tx1";

TEST(Vt63xSim, PrintsThePathServesItAndEndsOnASignal) {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    Sim sim({});
    const UniqueFd client(::open(sim.Line().c_str(), O_RDWR | O_NOCTTY));
    ASSERT_TRUE(client);
    std::uint8_t byte = 0xB7;
    ASSERT_EQ(::write(client.get(), &byte, 1), 1);
    ASSERT_EQ(::read(client.get(), &byte, 1), 1);
    EXPECT_EQ(byte, 0x91);
    sim.Signal(number);
    EXPECT_EQ(sim.Exit(), 0);
  }
}

TEST(Vt63xSim, ReturnsWhatTheCommandReturns) {
  EXPECT_EQ(ExitOf({"--", "sh", "-c", "exit 7"}), 7);
  EXPECT_EQ(ExitOf({"--", "true"}), 0);
  EXPECT_EQ(ExitOf({"--", "sh", "-c", "kill -TERM $$"}), 128 + SIGTERM);
  EXPECT_EQ(ExitOf({"--", "no-such-command-here"}), 127);
  EXPECT_EQ(ExitOf({"--", "/"}), 126);
}

TEST(Vt63xSim, WrongOptionsGiveTwoAndFilesThatCannotBeUsedThree) {
  using Case = std::pair<Texts, int>;
  for (const auto& [arguments, exit_code] :
       {Case{{"stray"}, 2}, Case{{"--"}, 2}, Case{{"--fault", "nonsense"}, 2},
        Case{{"--register", "40=00"}, 2}, Case{{"--register", "3F=100"}, 2},
        Case{{"--register", "37"}, 2}, Case{{"--register", "37="}, 2},
        Case{{"--card", "0102030"}, 2}, Case{{"--air", "nonsense"}, 2},
        Case{{"--control", "--", "true"}, 2},
        Case{{"--card", "01020304=/dev/null", "--", "true"}, 3},
        Case{{"--card", "01020304", "--card", "01020304:plain", "--", "true"}, 3},
        Case{{"--trace", "/nowhere/trace", "--", "true"}, 3}}) {
    EXPECT_EQ(ExitOf(arguments), exit_code) << testing::PrintToString(arguments);
  }
}

TEST(Vt63xSim, CommandFindsThePresetChip) {
  Sim sim({"--register", "37=92", "--register", "0x3F=0xFF", "--", "sh", "-c", kReadVersion});
  EXPECT_EQ(sim.Rest(), " 92\n");  // and no device path
  EXPECT_EQ(sim.Exit(), 0);
}

TEST(Vt63xSim, EndsWhenTheLineHasHungUp) {
  Sim sim({"--fault", "hang-up"});
  const UniqueFd client(::open(sim.Line().c_str(), O_RDWR | O_NOCTTY));
  const std::uint8_t byte = 0xB7;
  ASSERT_EQ(::write(client.get(), &byte, 1), 1);
  EXPECT_EQ(sim.Exit(), 0);
}

TEST(Vt63xSim, SignalReachesTheCommandWhoseExitCodeCounts) {
  Sim sim({"--", "sh", "-c", "trap 'exit 9' TERM; echo ready; while :; do sleep 0.02; done"});
  ASSERT_EQ(sim.Line(), "ready");
  sim.Signal(SIGTERM);
  EXPECT_EQ(sim.Exit(), 9);
}

TEST(Vt63xSim, InterruptAtTheTerminalIsTheCommandsBusiness) {
  Sim sim({"--", "sh", "-c", "trap 'exit 5' INT; echo ready; while :; do sleep 0.02; done"}, true);
  ASSERT_EQ(sim.Line(), "ready");
  sim.Type('\x03');
  EXPECT_EQ(sim.Exit(), 5);
}

// The command holds the test's pipe open for as long as it lives.
TEST(Vt63xSim, CommandDoesNotOutliveAKilledSimulator) {
  Sim sim({"--", "sh", "-c", "echo ready; exec sleep 1000"});
  ASSERT_EQ(sim.Line(), "ready");
  sim.Signal(SIGKILL);
  EXPECT_EQ(sim.Rest(), "");
  EXPECT_EQ(sim.Exit(), -SIGKILL);
}

TEST(Vt63xSimFiles, LinkLeadsToTheDeviceAndGoesWithIt) {
  const TempDirectory folder;
  const std::string link = folder.File("reader");
  std::filesystem::create_symlink("/dev/no-such-device", link);  // left by an earlier run
  Sim sim({"--link", link, "--", "sh", "-c", "readlink $0; echo $VT63X_COM1", link});
  const std::string target = sim.Line();
  EXPECT_NE(target, "");
  EXPECT_EQ(target, sim.Line());
  EXPECT_EQ(sim.Exit(), 0);
  EXPECT_FALSE(std::filesystem::is_symlink(link));
}

TEST(Vt63xSimFiles, WhatIsInTheLinksPlaceIsNamedAndLeftAlone) {
  const TempDirectory folder;
  const std::string link = folder.File("reader");
  RunningProgram other(VT63X_SIM_PROGRAM, {"--link", folder.File("served")});
  ASSERT_TRUE(other.WaitForOutput("/dev/"));
  const std::string served = std::filesystem::read_symlink(folder.File("served"));
  for (const std::string& target : {folder.Write("precious", "text"), served,
                                    std::string("/dev/null"), std::string("unmounted/file")}) {
    std::filesystem::create_symlink(target, link);
    const ProgramResult result =
        RunningProgram(VT63X_SIM_PROGRAM, {"--link", link, "--", "true"}).Finish();
    EXPECT_EQ(result.exit_code, 3) << target;
    EXPECT_NE(result.err.find(link + ": is a link to " + target), std::string::npos) << result.err;
    EXPECT_EQ(std::filesystem::read_symlink(link), target);
    std::filesystem::remove(link);
  }
  EXPECT_EQ(ExitOf({"--link", folder.File("precious"), "--", "true"}), 3);
  EXPECT_EQ(folder.Read("precious"), "text");
}

TEST(Vt63xSimFiles, TraceOnAFullDiskIsComplainedOfOnce) {
  const char* const script =
      R"(exec 3<>$VT63X_COM1; printf '\267\267' >&3; dd bs=1 count=2 <&3 2>/dev/null | od -An -tx1)";
  const ProgramResult result =
      RunningProgram(VT63X_SIM_PROGRAM, {"--trace", "/dev/full", "--", "sh", "-c", script})
          .Finish();
  EXPECT_EQ(result.out, " 91 91\n");
  EXPECT_EQ(result.err, "vt63x-sim: /dev/full: No space left on device; the trace ends here\n");
}

TEST(Vt63xSimFiles, TraceHasOneLineForEachAccess) {
  const TempDirectory folder;
  const char* const script =
      R"(exec 3<>$VT63X_COM1; printf '\001\017\267' >&3; dd bs=1 count=2 <&3 >/dev/null 2>&1)";
  EXPECT_EQ(
      ExitOf({"--trace", folder.File("trace"), "--fault", "wrong-echo", "--", "sh", "-c", script}),
      0);
  const std::string text = folder.Read("trace");
  EXPECT_TRUE(std::regex_match(text, std::regex("\\d+ W 01 0F -> 00\n\\d+ R 37 91 -> 91\n")))
      << text;
}

// The line of a running simulator, register by register, and a reader at its end.
class Line {
 public:
  explicit Line(const std::string& path) : device_(::open(path.c_str(), O_RDWR | O_NOCTTY)) {}

  void Write(std::uint8_t address, std::uint8_t value) {
    EXPECT_EQ(Exchange({address, value}), address);
  }
  std::uint8_t Read(std::uint8_t address) {
    return Exchange({static_cast<std::uint8_t>(address | 0x80)});
  }
  Bytes Request() { return reader.Request().bytes; }

 private:
  // One byte comes back for each access.
  std::uint8_t Exchange(const Bytes& bytes) {
    EXPECT_EQ(::write(device_.get(), bytes.data(), bytes.size()),
              static_cast<ssize_t>(bytes.size()));
    std::uint8_t answer = 0;
    EXPECT_EQ(::read(device_.get(), &answer, 1), 1);
    return answer;
  }

  UniqueFd device_;

 public:
  ReaderOf<Line> reader{*this};
};

TEST(Vt63xSimCards, CardsAndFaultsChangeWhileTheLineIsServed) {
  Sim sim({"--control"});
  Line line(sim.Line());
  EXPECT_EQ(line.Request(), Bytes());
  sim.Say("card add 01020304\n");
  ASSERT_EQ(sim.Line(), "ok");
  EXPECT_EQ(line.Request(), Bytes({0x04, 0x00}));
  EXPECT_EQ(line.Request(), Bytes());  // back to idle
  sim.Say("air short@1+1\nfield li");
  ASSERT_EQ(sim.Line(), "ok");
  EXPECT_EQ(line.Request(), Bytes({0x04}));
  sim.Say("st\nnonsense\n" + std::string(5000, 'x') + "\n");
  EXPECT_EQ(sim.Line(), "01020304 ostrel64 ready");
  EXPECT_EQ(sim.Line(), "ok");
  EXPECT_TRUE(sim.Line().starts_with("error: unknown command"));
  EXPECT_EQ(sim.Line(), "error: the line is too long");
  sim.Say("card remove 01020304");
  sim.EndInput();  // ends the line too, and not the program
  EXPECT_EQ(sim.Line(), "ok");
  EXPECT_EQ(line.Request(), Bytes());
}

TEST(Vt63xSimCards, RepliesThatNobodyReadsHoldNothingUp) {
  Sim sim({"--control", "--card", "01020304"});
  Line line(sim.Line());
  for (int round = 0; round < 5000; ++round) sim.Say("field list\n");  // beyond any pipe's size
  EXPECT_EQ(line.Request(), Bytes({0x04, 0x00}));
  sim.StopReading();
  sim.Say("field list\n");
  EXPECT_EQ(line.Request(), Bytes());
  EXPECT_EQ(line.Request(), Bytes({0x04, 0x00}));
  sim.Signal(SIGTERM);
  EXPECT_EQ(sim.Exit(), 0);
}

TEST(PtyServerAir, FaultsAreThereWhenItServes) {
  std::string error;
  PtyServer::Options options;
  options.cards.push_back(*ParseCardOption("01020304", error));
  options.air_faults.push_back(*ParseAirFault("short@2+1", error));
  PtyServer server(options);
  Line line(server.path());
  for (const Bytes& answer : {Bytes{0x04, 0x00}, Bytes{}, Bytes{0x04}}) {
    EXPECT_EQ(line.Request(), answer);
  }
}

}  // namespace
}  // namespace vt63x
