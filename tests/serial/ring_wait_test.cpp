// SPDX-License-Identifier: MIT

#include "serial/ring_wait.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <thread>

#include "serial/port_control.h"
#include "serial/serial_bus.h"
#include "tests/platform/scripted_line.h"
#include "tests/support/program_state.h"

namespace vt63x {
namespace {

class RingWaitTest : public testing::Test {
 protected:
  RingWaitTest() {
    bus.Init(SerialBusOpen);
    program.state.component_ptrs.serial_bus = &bus;
    program.state.port_handle = port.handle;
  }

  void SetRing(bool on) {
    port.script->Do([on](Script& s) {
      s.modem_status = on ? MS_RING_ON : MS_CTS_ON;
      s.ring.on = on;
    });
  }
  // The line after it has been asked for its state once more, on another thread.
  template <typename Change>
  std::thread OnNextQuestion(Change change) {
    std::size_t asked = 0;
    port.script->Do([&](Script& s) { asked = s.calls.size(); });
    return std::thread([this, asked, change] {
      port.script->AwaitCalls(asked + 2);
      port.script->Do(change);
    });
  }

  ProgramState program;
  SerialBusWrapper bus;
  ScriptedPort port;
};

double ElapsedMs(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

TEST_F(RingWaitTest, TimeoutOfZeroIsOneSampleWhateverTheLevel) {
  for (const std::uint8_t level : {std::uint8_t{0}, std::uint8_t{1}, std::uint8_t{255}}) {
    SetRing(true);
    EXPECT_EQ(WaitRingLevel(&program.action, level, 0), 1u);
    SetRing(false);
    EXPECT_EQ(WaitRingLevel(&program.action, level, 0), 0u);
  }
}

TEST_F(RingWaitTest, LevelThatIsThereIsSeenWithOneSample) {
  SetRing(true);
  EXPECT_EQ(WaitRingLevel(&program.action, 1, 60000), 1u);
  SetRing(false);
  EXPECT_EQ(WaitRingLevel(&program.action, 0, 60000), 1u);
  EXPECT_EQ(port.script->calls.size(), 2u);
}

TEST_F(RingWaitTest, LevelThatDoesNotComeTimesOutNotBefore) {
  SetRing(true);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(WaitRingLevel(&program.action, 0, 50), 0u);
  EXPECT_GT(ElapsedMs(start), 50.0);
  EXPECT_GT(port.script->calls.size(), 2u);
}

TEST_F(RingWaitTest, LevelThatComesDuringTheWaitIsSeen) {
  SetRing(false);
  std::thread board = OnNextQuestion([](Script& s) { s.modem_status = MS_RING_ON; });
  EXPECT_EQ(WaitRingLevel(&program.action, 1, 60000), 1u);
  board.join();
}

TEST_F(RingWaitTest, ClosedPortReadsAsOffAndHasNoEdges) {
  program.state.port_handle = nullptr;
  EXPECT_EQ(WaitRingLevel(&program.action, 1, 3), 0u);
  EXPECT_EQ(WaitRingLevel(&program.action, 0, 3), 1u);
  EXPECT_EQ(WaitRingEdge(&program.action, 60000), 0u);
}

TEST_F(RingWaitTest, EdgeDuringTheWaitIsSeen) {
  std::thread board = OnNextQuestion([](Script& s) { s.ring.on = true; });
  EXPECT_EQ(WaitRingEdge(&program.action, 60000), 1u);
  board.join();
}

TEST_F(RingWaitTest, PulseShorterThanTheSamplingIsCaughtByTheDriversCounter) {
  std::thread board = OnNextQuestion([](Script& s) { ++s.ring.rings; });
  EXPECT_EQ(WaitRingEdge(&program.action, 60000), 1u);
  board.join();
}

TEST_F(RingWaitTest, EdgeBetweenTwoWaitsIsThereForTheSecond) {
  EXPECT_EQ(WaitRingEdge(&program.action, 5), 0u);
  port.script->Do([](Script& s) { ++s.ring.rings; });
  EXPECT_EQ(WaitRingEdge(&program.action, 0), 1u);
  EXPECT_EQ(WaitRingEdge(&program.action, 0), 0u) << "reported once";
}

TEST_F(RingWaitTest, TimedOutEdgeWaitLeavesNothingPending) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(WaitRingEdge(&program.action, 5), 0u);
  EXPECT_EQ(WaitRingEdge(&program.action, 0), 0u);
  // Transfers and the next wait are not disturbed.
  port.script->Do([](Script& s) { s.input.push_back('x'); });
  OVERLAPPED overlapped{};
  overlapped.hEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  char byte = 0;
  DWORD count = 0;
  if (!ReadFile(port.handle, &byte, 1, &count, &overlapped)) {
    EXPECT_EQ(GetLastError(), ERROR_IO_PENDING);
    EXPECT_TRUE(GetOverlappedResult(port.handle, &overlapped, &count, TRUE));
  }
  EXPECT_EQ(byte, 'x');
  CloseHandle(overlapped.hEvent);
  std::thread board = OnNextQuestion([](Script& s) { s.ring.on = true; });
  EXPECT_EQ(WaitRingEdge(&program.action, 60000), 1u);
  board.join();
}

TEST_F(RingWaitTest, PortThatIsClosedEndsAWaitWhichDoesNotGoOnAtTheNextPort) {
  const std::function<std::uint32_t()> waits[] = {
      [this] { return WaitRingLevel(&program.action, 1, 60000); },
      [this] { return WaitRingEdge(&program.action, 60000); },
  };
  for (const auto& wait : waits) {
    ScriptedPort first;
    ScriptedPort second;
    second.script->Do([](Script& s) {
      s.modem_status = MS_RING_ON;
      s.ring.on = true;
    });
    program.state.port_handle = first.handle;
    std::future<std::uint32_t> result = std::async(std::launch::async, wait);
    first.script->AwaitCalls(3);
    const auto start = std::chrono::steady_clock::now();
    ClosePort(&program.action);
    program.state.port_handle = second.handle;
    EXPECT_EQ(result.get(), 0u);
    EXPECT_LT(ElapsedMs(start), 20'000.0);
    EXPECT_TRUE(second.script->calls.empty());
  }
}

TEST_F(RingWaitTest, LineThatGoesAwayEndsBothWaitsWithoutACondition) {
  std::thread unplugged = OnNextQuestion([](Script& s) { s.error = ERROR_DEVICE_NOT_CONNECTED; });
  EXPECT_EQ(WaitRingEdge(&program.action, 60000), 0u);
  unplugged.join();
  EXPECT_EQ(WaitRingLevel(&program.action, 1, 3), 0u);
}

}  // namespace
}  // namespace vt63x
