// SPDX-License-Identifier: MIT

// Waiting for the ring indicator.

#include <gtest/gtest.h>
#include <linux/serial.h>
#include <stdarg.h>
#include <sys/syscall.h>

#include <atomic>
#include <future>
#include <tuple>

#include "overlapped_call.h"
#include "platform/kernel/tty_line.h"
#include "pseudo_terminal.h"
#include "scripted_line.h"

namespace {

// While a test says so, every terminal is an adapter whose ring indicator is on and whose driver
// has a counter of rings that it never moves.
std::atomic<bool> rings_uncounted = false;

}  // namespace

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (rings_uncounted && request == TIOCGICOUNT) {
    *static_cast<serial_icounter_struct*>(argument) = {};
    return 0;
  }
  if (rings_uncounted && request == TIOCMGET) {
    *static_cast<int*>(argument) = TIOCM_RNG;
    return 0;
  }
  return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
}

namespace vt63x {
namespace {

using kernel::RingState;

class CommEvent : public testing::Test {
 protected:
  void SetRing(RingState ring) {
    port.script->Do([&](Script& s) { s.ring = ring; });
  }

  DWORD Begin() { return ErrorOf(WaitCommEvent(port.handle, &events, &call.record)); }

  // Sets the mask and begins a wait for an edge that has not come.
  void BeginPending() {
    ASSERT_EQ(SetCommMask(port.handle, EV_RING), TRUE);
    ASSERT_EQ(Begin(), ERROR_IO_PENDING);
  }

  // A thread that has looked at the line a few times when this returns.
  std::future<DWORD> WaitElsewhere() {
    std::future<DWORD> wait = std::async(std::launch::async, [this] { return call.Wait(); });
    port.script->AwaitCalls(5);
    return wait;
  }

  ScriptedPort port;
  DWORD events = 0xDEADBEEF;
  OverlappedCall call;
};

using EdgeCase = std::tuple<const char*, RingState, RingState, bool>;

const EdgeCase kEdges[] = {
    {"pulse between two looks", {7, false}, {8, false}, true},
    {"counter wraps", {0xFFFFFFFF, false}, {0, false}, true},
    {"nothing counted", {7, false}, {7, false}, false},
    {"counter never moves, level rose", {0, false}, {0, true}, true},
    {"counter never moves, level fell", {0, true}, {0, false}, true},
    {"level stayed", {0, true}, {0, true}, false},
    {"first ring that the driver counts", {0, true}, {1, false}, true},
};

TEST_F(CommEvent, EdgeSinceTheMaskWasSetIsReportedAtOnceAndOnce) {
  for (const auto& [name, before, now, edge] : kEdges) {
    SCOPED_TRACE(name);
    SetRing(before);
    ASSERT_EQ(SetCommMask(port.handle, EV_RING), TRUE);
    SetRing(now);
    events = 0;
    EXPECT_EQ(Begin(), edge ? ERROR_SUCCESS : ERROR_IO_PENDING);
    EXPECT_EQ(events, edge ? EV_RING : 0);
    EXPECT_EQ(Begin(), edge ? ERROR_IO_PENDING : ERROR_BUSY);  // the edge is used up
    EXPECT_EQ(SetCommMask(port.handle, 0), TRUE);
  }
}

TEST(TtyRing, LevelCountsWhereTheDriversCounterNeverMoves) {
  PseudoTerminal terminal;
  std::unique_ptr<kernel::LineSource> line;
  ASSERT_EQ(kernel::TtyLine::Open(terminal.device(), &line), ERROR_SUCCESS);
  RingState off;
  RingState on;
  EXPECT_EQ(line->Ring(&off), ERROR_SUCCESS);
  rings_uncounted = true;
  EXPECT_EQ(line->Ring(&on), ERROR_SUCCESS);
  rings_uncounted = false;
  kernel::RingWatch watch;
  watch.Start(off);
  EXPECT_TRUE(watch.Rang(on));
}

TEST_F(CommEvent, FirstRingThatIsCountedIsNotReportedAtBothEnds) {
  SetRing({0, false});
  ASSERT_EQ(SetCommMask(port.handle, EV_RING), TRUE);
  SetRing({0, true});
  EXPECT_EQ(Begin(), ERROR_SUCCESS);
  SetRing({1, false});
  EXPECT_EQ(Begin(), ERROR_IO_PENDING);
}

TEST_F(CommEvent, EdgeDuringTheWaitEndsIt) {
  SetRing({1, false});
  BeginPending();
  std::future<DWORD> wait = WaitElsewhere();
  SetRing({2, false});
  EXPECT_EQ(wait.get(), WAIT_OBJECT_0);
  EXPECT_EQ(events, EV_RING);
}

TEST_F(CommEvent, NewMaskEndsAWaitThatTimedOutWithNoEvent) {
  BeginPending();
  EXPECT_EQ(call.Wait(5), WAIT_TIMEOUT);
  EXPECT_EQ(call.Result(port.handle), ERROR_IO_INCOMPLETE);
  EXPECT_EQ(SetCommMask(port.handle, 0), TRUE);
  EXPECT_EQ(call.Result(port.handle), ERROR_SUCCESS);
  EXPECT_EQ(events, 0u);
  EXPECT_EQ(Begin(), ERROR_INVALID_PARAMETER);  // nothing to wait for
}

TEST_F(CommEvent, NewMaskEndsAWaitInAnotherThread) {
  BeginPending();
  std::future<DWORD> wait = WaitElsewhere();
  EXPECT_EQ(SetCommMask(port.handle, EV_RING), TRUE);
  EXPECT_EQ(wait.get(), WAIT_OBJECT_0);
  EXPECT_EQ(events, 0u);
}

TEST_F(CommEvent, LineThatGoesAwayEndsTheWait) {
  BeginPending();
  port.script->Do([](Script& s) { s.error = ERROR_DEVICE_NOT_CONNECTED; });
  EXPECT_EQ(call.Wait(), WAIT_OBJECT_0);
  EXPECT_EQ(call.Result(port.handle), ERROR_DEVICE_NOT_CONNECTED);
}

TEST_F(CommEvent, ReadsAndWritesGoOnBesideAWait) {
  BeginPending();
  std::future<DWORD> wait = WaitElsewhere();
  port.script->Do([](Script& s) { s.input = {'a'}; });
  EXPECT_EQ(WritePort(port.handle, "x"), ERROR_SUCCESS);
  EXPECT_EQ(ReadPort(port.handle, 1).data, "a");
  SetRing({0, true});
  EXPECT_EQ(wait.get(), WAIT_OBJECT_0);
}

}  // namespace
}  // namespace vt63x
