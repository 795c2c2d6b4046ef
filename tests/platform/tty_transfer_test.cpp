// SPDX-License-Identifier: MIT

// Bytes through a real terminal driver.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>

#include <future>

#include "overlapped_call.h"
#include "platform/kernel/tty_line.h"
#include "pseudo_terminal.h"

namespace vt63x {
namespace {

constexpr std::int64_t kFarTooLong = 15'000;  // ms

class TtyTransfer : public testing::Test {
 protected:
  TtyTransfer() {
    EXPECT_NE(port, INVALID_HANDLE_VALUE);
    SetTimeouts(FirstByteWithin(20'000));
  }
  ~TtyTransfer() override { CloseHandle(port); }

  void SetTimeouts(COMMTIMEOUTS timeouts) { EXPECT_EQ(SetCommTimeouts(port, &timeouts), TRUE); }

  PseudoTerminal line;
  const HANDLE port = OpenPort();
};

TEST_F(TtyTransfer, EveryByteValuePassesUnchangedBothWays) {
  std::string all;
  for (int value = 0; value < 256; ++value) all.push_back(static_cast<char>(value));
  EXPECT_EQ(WritePort(port, all), ERROR_SUCCESS);
  EXPECT_EQ(line.Receive(all.size()), all);
  SetTimeouts({0, 0, 20'000, 0, 0});
  line.Send(all);
  EXPECT_EQ(ReadPort(port, 256).data, all);
}

TEST_F(TtyTransfer, EmptyReadEndsAtItsTimeOutAndNotBefore) {
  // Below, at and above what the driver waits itself.
  for (const DWORD limit : {1u, 50u, 100u, 250u}) {
    SetTimeouts(FirstByteWithin(limit));
    const Stopwatch watch;
    const ReadOutcome outcome = ReadPort(port, 1);
    EXPECT_EQ(outcome.error, ERROR_SUCCESS);
    EXPECT_EQ(outcome.data, "");
    EXPECT_GE(watch.ms(), limit);
    EXPECT_LT(watch.ms(), kFarTooLong);
  }
}

struct OutsideChange {
  const char* name;
  tcflag_t local_modes;
  cc_t min;
  cc_t time;  // tenths of a second
};

constexpr OutsideChange kOutsideChanges[] = {
    {"stty min 1 time 0", 0, 1, 0},
    {"stty min 5 time 200", 0, 5, 200},
    {"stty min 0 time 200", 0, 0, 200},
    {"stty cooked echo", ICANON | ECHO, 1, 0},
};

TEST_F(TtyTransfer, SettingsThatOthersChangeNeitherHoldAReadNorSpoilTheNext) {
  SetTimeouts(FirstByteWithin(150));
  for (const OutsideChange& c : kOutsideChanges) {
    line.ChangeSettings([&](termios2& settings) {
      settings.c_lflag = c.local_modes;
      settings.c_cc[VMIN] = c.min;
      settings.c_cc[VTIME] = c.time;
    });
    const Stopwatch watch;
    std::future<ReadOutcome> read =
        std::async(std::launch::async, [&] { return ReadPort(port, 1); });
    if (read.wait_for(std::chrono::milliseconds(kFarTooLong)) == std::future_status::timeout) {
      line.HangUp();
      FAIL() << c.name << ": the read does not end";
    }
    EXPECT_EQ(read.get().error, ERROR_SUCCESS) << c.name;
    EXPECT_GE(watch.ms(), 150) << c.name;
    line.Send("x");
    EXPECT_EQ(ReadPort(port, 1).data, "x") << c.name;
  }
}

// Only one read of a terminal is inside its driver at a time.
TEST_F(TtyTransfer, ReadOfAnotherProgramDoesNotHoldOurs) {
  SetTimeouts(FirstByteWithin(150));
  const int other = open(line.device().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  line.ChangeSettings([](termios2& settings) {
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
  });
  char taken = 0;
  std::future<ssize_t> others_read =
      std::async(std::launch::async, [&] { return read(other, &taken, 1); });
  std::future<ReadOutcome> ours = std::async(std::launch::async, [&] {
    ReadPort(port, 1);  // by the end of this one the other is inside
    return ReadPort(port, 1);
  });
  const auto limit = std::chrono::milliseconds(kFarTooLong);
  EXPECT_EQ(ours.wait_for(limit), std::future_status::ready);
  line.HangUp();
  others_read.wait();
  close(other);
}

TEST_F(TtyTransfer, SignalsNeitherCutAWaitShortNorProlongIt) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) {};  // without SA_RESTART: calls in progress are interrupted
  ASSERT_EQ(sigaction(SIGALRM, &action, &before), 0);
  const itimerval every_3_ms{{0, 3000}, {0, 3000}};
  ASSERT_EQ(setitimer(ITIMER_REAL, &every_3_ms, nullptr), 0);
  SetTimeouts(FirstByteWithin(150));
  const Stopwatch watch;
  const ReadOutcome outcome = ReadPort(port, 1);
  EXPECT_GE(watch.ms(), 150);
  Sleep(50);
  EXPECT_GE(watch.ms(), 200);
  EXPECT_LT(watch.ms(), kFarTooLong);
  EXPECT_EQ(outcome.error, ERROR_SUCCESS);
  const itimerval off{};
  setitimer(ITIMER_REAL, &off, nullptr);
  sigaction(SIGALRM, &before, nullptr);
}

TEST_F(TtyTransfer, ReadForAllBytesCollectsPiecesAndGivesUpWithWhatItHas) {
  SetTimeouts({0, 0, 20'000, 0, 0});
  std::future<ReadOutcome> read = std::async(std::launch::async, [&] { return ReadPort(port, 3); });
  line.Send("a");
  line.Send("b");
  line.Send("c");
  EXPECT_EQ(read.get().data, "abc");
  SetTimeouts({0, 10, 100, 0, 0});
  line.Send("de");
  const Stopwatch watch;
  EXPECT_EQ(ReadPort(port, 3).data, "de");
  EXPECT_GE(watch.ms(), 130);
}

TEST_F(TtyTransfer, WriteThatDoesNotFitGoesOnWhenTheLineTakesMore) {
  const std::string sent(60'000, 'z');
  std::future<DWORD> write = std::async(std::launch::async, [&] { return WritePort(port, sent); });
  EXPECT_EQ(line.Receive(sent.size()), sent);
  EXPECT_EQ(write.get(), ERROR_SUCCESS);
}

TEST_F(TtyTransfer, WriteToALineThatTakesNothingEnds) {
  SetTimeouts(FirstByteWithin(100, 150));
  const std::string more_than_fits(1'000'000, 'z');
  OverlappedCall call;
  const Stopwatch watch;
  EXPECT_EQ(ErrorOf(WriteFile(port, more_than_fits.data(), 1'000'000, nullptr, &call.record)),
            ERROR_IO_PENDING);
  EXPECT_EQ(call.Wait(), WAIT_OBJECT_0);
  EXPECT_GE(watch.ms(), 150);
  EXPECT_LT(watch.ms(), kFarTooLong);
  EXPECT_EQ(call.Result(port), ERROR_SEM_TIMEOUT);
  EXPECT_GT(call.bytes, 0u);
  EXPECT_LT(call.bytes, 1'000'000u);
}

TEST(TtyHangUp, EachCallFindsItByItselfAndAllLaterOnesFail) {
  const std::pair<const char*, DWORD (*)(HANDLE)> calls[] = {
      {"read", [](HANDLE p) { return ReadPort(p, 1).error; }},
      {"write", [](HANDLE p) { return WritePort(p, "x"); }},
      {"read that is only looked at",
       [](HANDLE p) {
         COMMTIMEOUTS timeouts = FirstByteWithin(60'000);
         SetCommTimeouts(p, &timeouts);
         OverlappedCall call;
         char byte = 0;
         EXPECT_EQ(ErrorOf(ReadFile(p, &byte, 1, nullptr, &call.record)), ERROR_IO_PENDING);
         return call.Result(p);
       }},
      {"modem status",
       [](HANDLE p) {
         DWORD status = 0;
         return ErrorOf(GetCommModemStatus(p, &status));
       }},
      {"purge", [](HANDLE p) { return ErrorOf(PurgeComm(p, PURGE_RXCLEAR)); }},
      {"mask", [](HANDLE p) { return ErrorOf(SetCommMask(p, EV_RING)); }},
      {"settings",
       [](HANDLE p) {
         DCB settings = SettingsWithRate(9600);
         return ErrorOf(SetCommState(p, &settings));
       }},
  };
  for (const auto& [name, call] : calls) {
    PseudoTerminal line;
    const HANDLE port = OpenPort();
    line.HangUp();
    EXPECT_EQ(call(port), ERROR_DEVICE_NOT_CONNECTED) << name;
    COMMTIMEOUTS timeouts = FirstByteWithin(500);
    EXPECT_EQ(ErrorOf(SetCommTimeouts(port, &timeouts)), ERROR_DEVICE_NOT_CONNECTED) << name;
    CloseHandle(port);
  }
}

TEST_F(TtyTransfer, HangUpEndsAWaitingReadAndAWaitingWrite) {
  SetTimeouts(FirstByteWithin(60'000, 60'000));
  const Stopwatch watch;
  const std::string more_than_fits(1'000'000, 'z');
  std::future<ReadOutcome> read = std::async(std::launch::async, [&] { return ReadPort(port, 1); });
  std::future<DWORD> write =
      std::async(std::launch::async, [&] { return WritePort(port, more_than_fits); });
  EXPECT_EQ(line.Receive(1), "z");
  line.HangUp();
  EXPECT_EQ(read.get().error, ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_EQ(write.get(), ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_LT(watch.ms(), kFarTooLong);
}

TEST_F(TtyTransfer, ClosingBreaksOffAWaitingReadAndFreesTheDeviceAtOnce) {
  SetTimeouts(FirstByteWithin(60'000));
  const Stopwatch watch;
  OverlappedCall call;
  char byte = 0;
  EXPECT_EQ(ErrorOf(ReadFile(port, &byte, 1, nullptr, &call.record)), ERROR_IO_PENDING);
  std::future<DWORD> wait = std::async(std::launch::async, [&] { return call.Wait(); });
  EXPECT_EQ(CloseHandle(port), TRUE);
  EXPECT_EQ(wait.get(), WAIT_OBJECT_0);
  EXPECT_EQ(call.record.Internal, ERROR_OPERATION_ABORTED);
  EXPECT_LT(watch.ms(), kFarTooLong);
  const HANDLE again = OpenPort();
  EXPECT_NE(again, INVALID_HANDLE_VALUE);
  CloseHandle(again);
}

TEST(TtyLine, OnlyTheTimedReadWaits) {
  PseudoTerminal terminal;
  std::unique_ptr<kernel::LineSource> line;
  ASSERT_EQ(kernel::TtyLine::Open(terminal.device(), &line), ERROR_SUCCESS);
  char byte = 0;
  const Stopwatch watch;
  EXPECT_EQ(line->TimedRead(&byte, 1).bytes, 0u);
  constexpr int kTickMs = 10;  // the driver counts in ticks of the system, the first one cut short
  EXPECT_GE(watch.ms(), line->TimedReadSpan().count() - kTickMs);
  const kernel::Transfer nothing = line->Read(&byte, 1);
  EXPECT_EQ(nothing.bytes, 0u);
  EXPECT_EQ(nothing.error, ERROR_SUCCESS);
  line->Interrupt();
  line->WaitReadable(kernel::Deadline::Never());  // does not wait any more
  EXPECT_LT(watch.ms(), kFarTooLong);
}

TEST(TtyPlainPort, CallsReturnWhenTheyAreDone) {
  PseudoTerminal line;
  const HANDLE port = OpenPort(PseudoTerminal::kPort, 0);
  ASSERT_NE(port, INVALID_HANDLE_VALUE);
  COMMTIMEOUTS timeouts = FirstByteWithin(120);
  EXPECT_EQ(SetCommTimeouts(port, &timeouts), TRUE);
  DWORD count = 0;
  EXPECT_EQ(WriteFile(port, "ab", 2, &count, nullptr), TRUE);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(line.Receive(2), "ab");
  char byte = '#';
  const Stopwatch watch;
  EXPECT_EQ(ReadFile(port, &byte, 1, &count, nullptr), TRUE);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(byte, '#');
  EXPECT_GE(watch.ms(), 120);
  line.HangUp();
  EXPECT_EQ(ErrorOf(ReadFile(port, &byte, 1, &count, nullptr)), ERROR_DEVICE_NOT_CONNECTED);
  CloseHandle(port);
}

}  // namespace
}  // namespace vt63x
