// SPDX-License-Identifier: MIT

// Cards in front of the simulated chip, reached as a program would: by bytes on the line.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "sim_process.h"
#include "simulator/pty_server.h"
#include "test_reader.h"

namespace vt63x {
namespace {

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

TEST(Vt63xSimCards, CardIsFoundSelectedAndReadOverTheLine) {
  Sim sim({"--card", "01020304:ostrel-page"});
  Line line(sim.Line());
  EXPECT_EQ(line.reader.Activate(), Bytes({1, 2, 3, 4}));
  EXPECT_TRUE(
      line.reader.Transceive({0x30, 0x00}).Is({1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

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

TEST(Vt63xSimCards, WrongOptionsGiveTwoAndAWrongFileThree) {
  for (const Texts& arguments :
       {Texts{"--card", "0102030"}, Texts{"--air", "nonsense"}, Texts{"--control", "--", "true"}}) {
    EXPECT_EQ(ExitOf(arguments), 2) << arguments.back();
  }
  EXPECT_EQ(ExitOf({"--card", "01020304=/dev/null", "--", "true"}), 3);
  EXPECT_EQ(ExitOf({"--card", "01020304", "--card", "01020304:plain", "--", "true"}), 3);
}

TEST(PtyServerCards, AreThereWhenItServes) {
  std::string error;
  PtyServer::Options options;
  options.cards.push_back(*ParseCardOption("01020304", error));
  options.air_faults.push_back(*ParseAirFault("short@2+1", error));
  PtyServer server(options);
  Line line(server.path());
  EXPECT_EQ(line.Request(), Bytes({0x04, 0x00}));
  EXPECT_EQ(line.Request(), Bytes());
  EXPECT_EQ(line.Request(), Bytes({0x04}));
}

}  // namespace
}  // namespace vt63x
