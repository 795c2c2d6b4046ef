// SPDX-License-Identifier: MIT

// The rules of pending operations, on a line whose every step the test decides.

#include <gtest/gtest.h>

#include <future>

#include "overlapped_call.h"
#include "scripted_line.h"

namespace vt63x {
namespace {

class PortRules : public testing::Test {
 protected:
  PortRules() { SetTimeouts(FirstByteWithin(60'000)); }

  void SetTimeouts(COMMTIMEOUTS timeouts) {
    EXPECT_EQ(SetCommTimeouts(port.handle, &timeouts), TRUE);
  }

  DWORD BeginRead(OverlappedCall& read) {
    return ErrorOf(ReadFile(port.handle, &byte, 1, nullptr, &read.record));
  }

  std::future<DWORD> WaitElsewhere() {
    return std::async(std::launch::async, [this] { return call.Wait(); });
  }

  ScriptedPort port;
  Script& script = *port.script;
  char byte = '#';
  OverlappedCall call;
};

TEST_F(PortRules, RoundTripAsksTheLineTwiceAndNoMore) {
  script.Do([](Script& s) { s.input = {'a'}; });
  EXPECT_EQ(WritePort(port.handle, "x"), ERROR_SUCCESS);
  EXPECT_EQ(ReadPort(port.handle, 1).data, "a");
  EXPECT_EQ(script.calls, std::vector<std::string>({"Write", "TimedRead"}));
}

TEST_F(PortRules, EmptyTimedReadIsFollowedByAWaitForTheRest) {
  EXPECT_EQ(BeginRead(call), ERROR_IO_PENDING);
  std::future<DWORD> wait = WaitElsewhere();
  script.AwaitCalls(1);
  script.Do([](Script& s) { s.timed_reads_end_empty = true; });
  script.AwaitCalls(2);
  script.Do([](Script& s) { s.input = {'a'}; });
  EXPECT_EQ(wait.get(), WAIT_OBJECT_0);
  EXPECT_EQ(byte, 'a');
  EXPECT_EQ(script.calls[0], "TimedRead");
  EXPECT_EQ(script.calls[1], "WaitReadable");
}

TEST_F(PortRules, TimeOutShorterThanATimedReadIsKept) {
  SetTimeouts(FirstByteWithin(5));
  EXPECT_EQ(ReadPort(port.handle, 1).data, "");
  EXPECT_EQ(script.calls, std::vector<std::string>({"WaitReadable", "Read", "Read"}));
}

TEST_F(PortRules, OfTwoWaitersOneReadsAndBothAreServed) {
  EXPECT_EQ(BeginRead(call), ERROR_IO_PENDING);
  std::future<DWORD> first = WaitElsewhere();
  std::future<DWORD> second = WaitElsewhere();
  script.AwaitCalls(1);
  EXPECT_EQ(call.Wait(5), WAIT_TIMEOUT);  // a third, which finds the work taken
  script.Do([](Script& s) { s.input = {'a', 'b'}; });
  EXPECT_EQ(first.get(), WAIT_OBJECT_0);
  EXPECT_EQ(second.get(), WAIT_OBJECT_0);
  EXPECT_EQ(call.Result(port.handle), ERROR_SUCCESS);
  EXPECT_EQ(call.bytes, 1u);
  EXPECT_EQ(script.most_readers_inside, 1);
}

TEST_F(PortRules, ThreadThatWaitsAlreadyDrivesTheOperationBegunLater) {
  script.Do([](Script& s) { s.input = {'a'}; });
  std::future<DWORD> wait = WaitElsewhere();
  EXPECT_EQ(call.Wait(20), WAIT_TIMEOUT);  // lets the other come first; either order must do
  EXPECT_EQ(BeginRead(call), ERROR_IO_PENDING);
  EXPECT_EQ(wait.get(), WAIT_OBJECT_0);
  EXPECT_EQ(byte, 'a');
}

TEST_F(PortRules, SecondReadIsRefusedWhileOneIsPendingButNotAfterItsTime) {
  SetTimeouts(FirstByteWithin(5));
  OverlappedCall second;
  ASSERT_EQ(BeginRead(call), ERROR_IO_PENDING);
  DWORD error = ERROR_BUSY;
  while (error == ERROR_BUSY) error = BeginRead(second);  // ends with the 5 ms, or never
  EXPECT_EQ(error, ERROR_IO_PENDING);
  EXPECT_EQ(call.Wait(0), WAIT_OBJECT_0);
  EXPECT_EQ(call.Result(port.handle), ERROR_SUCCESS);
  EXPECT_EQ(call.bytes, 0u);
}

TEST_F(PortRules, OneEventServesOneOperation) {
  EXPECT_EQ(BeginRead(call), ERROR_IO_PENDING);
  OVERLAPPED write{};
  write.hEvent = call.record.hEvent;
  EXPECT_EQ(ErrorOf(WriteFile(port.handle, "x", 1, nullptr, &write)), ERROR_BUSY);
  EXPECT_EQ(script.output, "");
}

TEST_F(PortRules, ClosedEventReleasesRecordAndBuffer) {
  {
    OverlappedCall abandoned;
    EXPECT_EQ(BeginRead(abandoned), ERROR_IO_PENDING);
  }
  script.Do([](Script& s) { s.input = {'a'}; });
  EXPECT_EQ(ReadPort(port.handle, 1).data, "a");
  EXPECT_EQ(byte, '#');
}

TEST_F(PortRules, ByteTakenForAReadThatWasBrokenOffGoesToTheNextOrToNobody) {
  for (const bool another : {true, false}) {
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    OVERLAPPED record{};
    record.hEvent = event;
    EXPECT_EQ(ErrorOf(ReadFile(port.handle, &byte, 1, nullptr, &record)), ERROR_IO_PENDING);
    script.Do([](Script& s) { s.calls.clear(); });
    std::future<DWORD> wait =
        std::async(std::launch::async, [&] { return WaitForSingleObject(event, INFINITE); });
    script.AwaitCalls(1);
    CloseHandle(event);
    char next_byte = '#';
    if (another) {
      EXPECT_EQ(ErrorOf(ReadFile(port.handle, &next_byte, 1, nullptr, &call.record)),
                ERROR_IO_PENDING);
    }
    script.Do([](Script& s) { s.input = {'a'}; });
    EXPECT_EQ(wait.get(), WAIT_FAILED);
    if (another) {
      EXPECT_EQ(call.Wait(), WAIT_OBJECT_0);
    }
    EXPECT_EQ(next_byte, another ? 'a' : '#');
    EXPECT_EQ(byte, '#');
  }
}

TEST_F(PortRules, ClosingThePortEndsAWaitAndWaitsForTheThreadInsideTheLine) {
  auto second = std::make_shared<Script>();
  const HANDLE handle = kernel::MakePortHandle(std::make_unique<ScriptedLine>(second), true);
  COMMTIMEOUTS timeouts = FirstByteWithin(60'000);
  SetCommTimeouts(handle, &timeouts);
  EXPECT_EQ(ErrorOf(ReadFile(handle, &byte, 1, nullptr, &call.record)), ERROR_IO_PENDING);
  std::future<DWORD> wait = WaitElsewhere();
  second->AwaitCalls(1);
  EXPECT_EQ(CloseHandle(handle), TRUE);
  EXPECT_EQ(second.use_count(), 1);  // the line is gone when CloseHandle returns
  EXPECT_EQ(wait.get(), WAIT_OBJECT_0);
  EXPECT_EQ(call.record.Internal, ERROR_OPERATION_ABORTED);
  EXPECT_EQ(call.Result(handle), ERROR_INVALID_HANDLE);
}

TEST_F(PortRules, WriteGoesOnWhereItStoppedAndKeepsItsTimeOut) {
  script.Do([](Script& s) { s.room = 2; });
  EXPECT_EQ(ErrorOf(WriteFile(port.handle, "abcd", 4, nullptr, &call.record)), ERROR_IO_PENDING);
  EXPECT_EQ(call.Wait(0), WAIT_TIMEOUT);
  script.Do([](Script& s) { s.room = 9; });
  EXPECT_EQ(call.Wait(), WAIT_OBJECT_0);
  EXPECT_EQ(call.Result(port.handle), ERROR_SUCCESS);
  EXPECT_EQ(call.bytes, 4u);
  EXPECT_EQ(script.output, "abcd");

  SetTimeouts(FirstByteWithin(500, 5));
  script.Do([](Script& s) { s.room = 1; });
  EXPECT_EQ(ErrorOf(WriteFile(port.handle, "ef", 2, nullptr, &call.record)), ERROR_IO_PENDING);
  EXPECT_EQ(call.Wait(), WAIT_OBJECT_0);
  EXPECT_EQ(call.Result(port.handle), ERROR_SEM_TIMEOUT);
  EXPECT_EQ(call.bytes, 1u);
}

TEST_F(PortRules, NothingIsAskedOfALineThatWentAway) {
  script.Do([](Script& s) { s.error = ERROR_DEVICE_NOT_CONNECTED; });
  EXPECT_EQ(ReadPort(port.handle, 1).error, ERROR_DEVICE_NOT_CONNECTED);
  script.Do([](Script& s) {
    s.error = ERROR_SUCCESS;
    s.calls.clear();
  });
  DWORD status = 0;
  EXPECT_EQ(WritePort(port.handle, "x"), ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_EQ(ErrorOf(GetCommModemStatus(port.handle, &status)), ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_EQ(script.calls, std::vector<std::string>());
}

TEST_F(PortRules, PendingReadEndsWhenAnotherCallFindsTheLineGone) {
  EXPECT_EQ(BeginRead(call), ERROR_IO_PENDING);
  script.Do([](Script& s) { s.error = ERROR_DEVICE_NOT_CONNECTED; });
  DWORD status = 0;
  EXPECT_EQ(ErrorOf(GetCommModemStatus(port.handle, &status)), ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_EQ(call.Wait(), WAIT_OBJECT_0);
  EXPECT_EQ(call.Result(port.handle), ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_EQ(script.calls, std::vector<std::string>({"ModemStatus"}));
}

TEST_F(PortRules, ReadForTheFirstByteTakesAllThatIsThere) {
  const std::string there(1000, 'y');
  script.Do([&](Script& s) { s.input.assign(there.begin(), there.end()); });
  EXPECT_EQ(ReadPort(port.handle, 700).data.size(), 700u);
  EXPECT_EQ(ReadPort(port.handle, 700).data.size(), 300u);
}

TEST_F(PortRules, PassingErrorDoesNotCondemnTheLine) {
  script.Do([](Script& s) { s.error = ERROR_GEN_FAILURE; });
  EXPECT_EQ(ReadPort(port.handle, 1).error, ERROR_GEN_FAILURE);
  script.Do([](Script& s) {
    s.error = ERROR_SUCCESS;
    s.input = {'a'};
  });
  EXPECT_EQ(ReadPort(port.handle, 1).data, "a");
}

TEST_F(PortRules, ReadWithoutWaitingAndReadOfNothingAreDoneAtOnce) {
  EXPECT_EQ(ErrorOf(ReadFile(port.handle, &byte, 0, nullptr, &call.record)), ERROR_SUCCESS);
  SetTimeouts({MAXDWORD, 0, 0, 0, 0});
  DWORD count = 77;
  EXPECT_EQ(ErrorOf(ReadFile(port.handle, &byte, 1, &count, &call.record)), ERROR_SUCCESS);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(call.Wait(0), WAIT_OBJECT_0);
}

}  // namespace
}  // namespace vt63x
