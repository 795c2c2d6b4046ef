// SPDX-License-Identifier: MIT

// The chip on a port that is there already; the test holds the far end of the line.

#include "simulator/com_line.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "simulator/chip.h"
#include "tests/platform/pseudo_terminal.h"

namespace vt63x {
namespace {

class ComLineTest : public testing::Test {
 protected:
  // Serves `line` while `client` runs; what the service ended with.
  ComLine::End Serve(ComLine& line, const std::function<void()>& client) {
    std::atomic<bool> stop = false;
    ComLine::End end = ComLine::End::kStopped;
    std::thread server([&] { end = line.Serve(stop); });
    client();
    stop = true;
    server.join();
    return end;
  }

  PseudoTerminal host;
  RealClock clock;
  Chip chip{clock};
  std::string error;
};

TEST_F(ComLineTest, AnswersReadsAndWritesUntilItIsStopped) {
  ChipSerialPort port(chip);
  ComLine line(port, nullptr);
  ASSERT_TRUE(line.Open("COM7", error)) << error;
  EXPECT_EQ(host.Settings().c_ospeed, 9600u);
  const ComLine::End end = Serve(line, [&] {
    host.Send("\xB7");
    EXPECT_EQ(host.Receive(1), "\x91");
    host.Send("\x2B\x5A\xAB");
    EXPECT_EQ(host.Receive(2), "\x2B\x5A");
    host.Send("\x1F\x79");  // the port follows the chip's rate behind the echo
    EXPECT_EQ(host.Receive(1), "\x1F");
    host.Send("\xB7");
    EXPECT_EQ(host.Receive(1), "\x91");
    EXPECT_EQ(host.Settings().c_ospeed, 115200u);
  });
  EXPECT_EQ(end, ComLine::End::kStopped);
}

TEST_F(ComLineTest, LineThatGoesAwayEndsTheService) {
  ChipSerialPort port(chip);
  ComLine line(port, nullptr);
  ASSERT_TRUE(line.Open("COM7", error)) << error;
  std::atomic<bool> never = false;
  std::thread unplug([&] { host.HangUp(); });
  EXPECT_EQ(line.Serve(never), ComLine::End::kFailed);
  unplug.join();
}

TEST_F(ComLineTest, FaultTakesTheLineAway) {
  std::string ignored;
  ChipSerialPort port(chip, {*ParseFault("hang-up@2", ignored)});
  ComLine line(port, nullptr);
  ASSERT_TRUE(line.Open("COM7", error)) << error;
  std::atomic<bool> never = false;
  host.Send("\xB7\xB7");
  EXPECT_EQ(line.Serve(never), ComLine::End::kHungUp);
  EXPECT_EQ(host.Receive(1), "\x91");
}

TEST_F(ComLineTest, PortThatCannotBeHadIsNamed) {
  ChipSerialPort port(chip);
  for (const char* name : {"COM99", "/nonexistent/tty", "/dev/null", ""}) {
    ComLine line(port, nullptr);
    EXPECT_FALSE(line.Open(name, error)) << name;
    EXPECT_EQ(error.find(std::string(name) + ": "), 0u) << error;
  }
}

}  // namespace
}  // namespace vt63x
