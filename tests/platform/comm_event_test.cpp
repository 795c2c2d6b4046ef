// SPDX-License-Identifier: MIT

// Waiting for the ring indicator.

#include <gtest/gtest.h>

#include <future>
#include <tuple>

#include "overlapped_call.h"
#include "scripted_line.h"

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
    {"pulse between two looks", {true, 7, false}, {true, 8, false}, true},
    {"counter wraps", {true, 0xFFFFFFFF, false}, {true, 0, false}, true},
    {"nothing counted", {true, 7, false}, {true, 7, false}, false},
    {"level rose", {false, 0, false}, {false, 0, true}, true},
    {"level fell", {false, 0, true}, {false, 0, false}, true},
    {"level stayed", {false, 0, true}, {false, 0, true}, false},
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

TEST_F(CommEvent, EdgeDuringTheWaitEndsIt) {
  SetRing({true, 1, false});
  BeginPending();
  std::future<DWORD> wait = WaitElsewhere();
  SetRing({true, 2, false});
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
  SetRing({false, 0, true});
  EXPECT_EQ(wait.get(), WAIT_OBJECT_0);
}

}  // namespace
}  // namespace vt63x
