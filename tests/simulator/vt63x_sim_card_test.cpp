// Cards in front of the simulated chip, reached as a program would: by bytes on the line.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "sim_process.h"
#include "simulator/pty_server.h"

namespace vt63x {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The line of a running simulator, register by register.
class Line {
 public:
  explicit Line(const std::string& path) : device_(::open(path.c_str(), O_RDWR | O_NOCTTY)) {
    EXPECT_TRUE(device_);
  }

  void Write(std::uint8_t address, std::uint8_t value) {
    EXPECT_EQ(Exchange({address, value}), address);
  }
  std::uint8_t Read(std::uint8_t address) {
    return Exchange({static_cast<std::uint8_t>(address | 0x80)});
  }

  void SwitchOn() {
    Write(0x14, 0x83);
    Write(0x01, 0x00);
    Write(0x2A, 0x80);
    Write(0x2B, 0x43);
    Write(0x2D, 0x64);
  }

  // What comes back, or nothing when the timer has run out.
  Bytes Transceive(const Bytes& data, std::uint8_t framing = 0) {
    Write(0x01, 0x0C);
    Write(0x04, 0x7F);
    Write(0x0A, 0x80);
    for (const std::uint8_t byte : data) Write(0x09, byte);
    Write(0x0D, static_cast<std::uint8_t>(framing | 0x80));
    std::uint8_t requests = 0;
    while ((requests & 0x21) == 0) requests = Read(0x04);
    Bytes answer(Read(0x0A));
    for (std::uint8_t& byte : answer) byte = Read(0x09);
    return answer;
  }
  Bytes Request() { return Transceive({0x26}, 0x07); }

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
};

TEST(Vt63xSimCards, CardIsFoundSelectedAndReadOverTheLine) {
  Sim sim({"--card", "01020304:ostrel-page"});
  Line line(sim.Line());
  line.SwitchOn();
  EXPECT_EQ(line.Request(), Bytes({0x10, 0x00}));
  EXPECT_EQ(line.Transceive({0x93, 0x20}), Bytes({1, 2, 3, 4, 4}));
  line.Write(0x12, 0x80);
  line.Write(0x13, 0x80);
  EXPECT_EQ(line.Transceive({0x93, 0x70, 1, 2, 3, 4, 4}), Bytes({0x00}));
  EXPECT_EQ(line.Transceive({0x30, 0x00}), Bytes({1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(Vt63xSimCards, CardsAndFaultsChangeWhileTheLineIsServed) {
  Sim sim({"--control"});
  Line line(sim.Line());
  line.SwitchOn();
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
  sim.Signal(SIGTERM);
  EXPECT_EQ(sim.Exit(), 0);
}

TEST(Vt63xSimCards, RepliesThatNobodyReadsHoldNothingUp) {
  Sim sim({"--control", "--card", "01020304"});
  Line line(sim.Line());
  line.SwitchOn();
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
  for (const Texts& arguments : {
           Texts{"--card", "0102030"},
           Texts{"--card", "01020304:gold"},
           Texts{"--card"},
           Texts{"--air", "nonsense"},
           Texts{"--control", "--", "true"},
       }) {
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
  ASSERT_EQ(server.error(), "");
  Line line(server.path());
  line.SwitchOn();
  EXPECT_EQ(line.Request(), Bytes({0x04, 0x00}));
  EXPECT_EQ(line.Request(), Bytes());
  EXPECT_EQ(line.Request(), Bytes({0x04}));

  options.cards.push_back(options.cards[0]);
  const PtyServer refused(options);
  EXPECT_NE(refused.error(), "");
}

}  // namespace
}  // namespace vt63x
