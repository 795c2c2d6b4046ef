// SPDX-License-Identifier: MIT

#include "contactless/chip_command.h"

#include <gtest/gtest.h>

#include <tuple>

#include "contactless/command_run.h"
#include "tests/contactless/scripted_registers.h"

namespace vt63x {
namespace {

constexpr std::uint8_t kUntouched = 0xA7;
constexpr std::uint16_t kLastBitsUntouched = 0xABCD;

// One command on a chip of its own. The receive memory goes on for 4 guard bytes.
struct Bench {
  Bench(std::uint8_t code, const Bytes& send, std::uint16_t capacity)
      : to_send(send), received(capacity + 4u, kUntouched) {
    param.lower = &lower.record;
    param.command = code;
    param.clear_switch = 1;
    param.spare = 0x77;
    param.send_buffer = to_send.data();
    param.send_length = static_cast<std::uint16_t>(to_send.size());
    param.receive_buffer = received.data();
    param.receive_length = capacity;
    param.receive_last_bits = kLastBitsUntouched;
  }
  HFLSTATUS Run() { return ExecuteSingleCommand(&param); }

  ScriptedRegisters chip;
  LowerRecord lower{&chip};
  Bytes to_send;
  Bytes received;
  single_command_param param{};
};

TEST(ChipCommandTest, TransceiveOfOneByteMakesExactlyTheseAccesses) {
  Bench bench(0x0C, {0x26}, 2);
  bench.chip.registers[0x01] = 0xA3;
  bench.chip.registers[0x02] = 0x80;
  bench.chip.registers[0x03] = 0x10;
  bench.chip.quiet_passes = 1;
  bench.chip.Answer("0400@64");
  EXPECT_EQ(bench.Run(), HFL_SUCCESS);
  EXPECT_EQ(bench.chip.trace,
            "G01 S01=AC S04=21 S05=00 S0A=80 G02 S02=A3 G03 S03=10 W09=26 M0D+80 "
            "G04 G05 G04 G05 M02-23 M03-00 G0A G0C G06 R09*2 "
            "S04=20 S05=00 S0A=80 S04=01");
  EXPECT_EQ(bench.received, Bytes({0x04, 0x00, 0xA7, 0xA7, 0xA7, 0xA7}));
  EXPECT_EQ(bench.param.receive_length, 2);
  EXPECT_EQ(bench.param.receive_last_bits, 0);
  EXPECT_EQ(bench.param.spare, 0);
}

TEST(ChipCommandTest, EveryCommandEnablesAndAwaitsItsOwnBits) {
  using Case = std::tuple<std::uint8_t, Bytes, const char*, std::string>;
  const Case cases[] = {
      {0x04,
       {0x11},
       ".@40",
       "G01 S01=30 S04=40 S05=00 S0A=80 G02 S02=41 G03 S03=00 W09=11 G01 S01=34 "
       "G04 G05 M02-41 M03-00 S04=40 S05=00 S0A=80 S04=01"},
      {0x08,
       {},
       ".@20",
       "G01 S01=30 S04=21 S05=00 S0A=80 G02 S02=23 G03 S03=00 G01 S01=38 "
       "G04 G05 M02-23 M03-00 G0A G0C G06 R09*0 S04=20 S05=00 S0A=80 S04=01"},
      {0x0C,
       {},
       ".@30",
       "G01 S01=3C S04=21 S05=00 S0A=80 G02 S02=23 G03 S03=00 M0D+80 "
       "G04 G05 M02-23 M03-00 G0A G0C G06 R09*0 S04=20 S05=00 S0A=80 S04=01"},
      {0x0E,
       {0x60},
       ".@10",
       "G01 S01=30 S04=11 S05=00 S0A=80 G02 S02=13 G03 S03=00 W09=60 G01 S01=3E "
       "G04 G05 M02-13 M03-00 S04=10 S05=00 S0A=80 S04=01"},
  };
  for (const auto& [code, send, answer, trace] : cases) {
    Bench bench(code, send, 0);
    bench.param.clear_switch = 0;
    bench.chip.registers[0x01] = 0x3C;
    bench.chip.Answer(answer);
    EXPECT_EQ(bench.Run(), HFL_SUCCESS);
    EXPECT_EQ(bench.param.spare, 0x77);
    EXPECT_EQ(bench.chip.trace, trace);
  }
}

TEST(ChipCommandTest, UnknownCommandIsRefusedAfterTheChipIsIdle) {
  for (const std::uint8_t code : Bytes{0x01, 0x0D, 0x10, 0x8C, 0xFF}) {
    Bench bench(code, {0x01}, 2);
    bench.chip.registers[0x01] = 0x2C;
    EXPECT_EQ(bench.Run(), HFL_UNKNOWN_COMMAND) << int{code};
    EXPECT_EQ(bench.chip.trace, "G01 S01=20");
    EXPECT_EQ(bench.param.receive_length, 0);
  }
}

TEST(ChipCommandTest, TimerExpiryReadsNoAnswerEvenWhenSomethingArrived) {
  Bench bench(0x0C, {0x26}, 2);
  bench.chip.Answer("0400@21");
  EXPECT_EQ(bench.Run(), HFL_NO_ANSWER);
  EXPECT_EQ(bench.param.receive_length, 0);
  EXPECT_EQ(bench.param.receive_last_bits, kLastBitsUntouched);
  EXPECT_EQ(bench.received, Bytes(6, kUntouched));
  EXPECT_TRUE(bench.chip.trace.ends_with("M03-00 S04=21 S05=00 S0A=80 S04=01"));
}

// How many bytes the chip claims, how many bits of the last, and what there is room for.
TEST(ChipCommandTest, AnswerNeverLeavesTheReceiveBufferAndCountsCompleteBytes) {
  using Case = std::tuple<std::uint8_t, std::uint8_t, std::uint16_t, HFLSTATUS, std::uint16_t, int>;
  for (const auto& [level, control, capacity, status, length, bytes_delivered] :
       {Case{5, 0xF8, 5, HFL_SUCCESS, 5, 5}, Case{5, 0x03, 16, HFL_SUCCESS, 4, 5},
        Case{18, 0x07, 16, HFL_BUFFER_SIZE, 15, 16}, Case{255, 0, 5, HFL_BUFFER_SIZE, 5, 5},
        Case{255, 0, 255, HFL_SUCCESS, 255, 255}, Case{1, 0x04, 0, HFL_BUFFER_SIZE, 0, 0},
        Case{0, 0x05, 2, HFL_SUCCESS, 0, 0}, Case{0, 0, 0, HFL_SUCCESS, 0, 0}}) {
    Bench bench(0x0C, {0x26}, capacity);
    bench.chip.Answer(HexOf(Bytes(level, 0x5C)) + "/" + HexOf({control}));
    Bytes expected(capacity + 4u, kUntouched);
    std::fill_n(expected.begin(), bytes_delivered, std::uint8_t{0x5C});
    SCOPED_TRACE(testing::Message() << int{level} << " bytes into " << capacity);
    EXPECT_EQ(bench.Run(), status);
    EXPECT_EQ(bench.param.receive_length, length);
    EXPECT_EQ(bench.param.receive_last_bits, control & 0x07);
    EXPECT_EQ(bench.received, expected);
  }
}

int CountOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

// Of several error bits the first in this order has its say.
HFLSTATUS ExpectedStatus(int errors, bool acknowledge) {
  for (const auto& [bit, status] : {std::pair{0x80, HFL_WRITE_ERROR},
                                    {0x01, HFL_PROTOCOL_ERROR},
                                    {0x10, HFL_OVERFLOW},
                                    {0x04, acknowledge ? HFL_SHORT_ANSWER : HFL_CRC_ERROR},
                                    {0x40, HFL_TEMPERATURE},
                                    {0x08, HFL_COLLISION},
                                    {0x02, HFL_PARITY_ERROR},
                                    {0x20, HFL_CHIP_ERROR}}) {
    if ((errors & bit) != 0) return status;
  }
  return HFL_SUCCESS;
}

TEST(ChipCommandTest, EveryErrorValueHasItsStatusAndDeliversTheAnswer) {
  for (int errors = 0; errors < 256; ++errors) {
    Bench data(0x0C, {0x30}, 4);
    const std::string errors_hex = ":" + HexOf({static_cast<std::uint8_t>(errors)});
    data.chip.Answer("1234" + errors_hex);
    EXPECT_EQ(data.Run(), ExpectedStatus(errors, false)) << errors;
    EXPECT_EQ(data.param.receive_length, 2);
    EXPECT_EQ(Bytes(data.received.begin(), data.received.begin() + 3), Bytes({0x12, 0x34, 0xA7}));
    EXPECT_EQ(data.chip.trace.find("S06=00") != std::string::npos, errors != 0);

    Bench nibble(0x0C, {0x30}, 4);
    nibble.chip.Answer("0A/4" + errors_hex);
    const HFLSTATUS expected = ExpectedStatus(errors, true);
    EXPECT_EQ(nibble.Run(), expected) << errors;
    EXPECT_EQ(nibble.param.receive_length, expected == HFL_SHORT_ANSWER ? 1 : 0);
    // The nibble is taken out of the FIFO by itself unless a worse error hides the CRC's.
    const bool taken_alone = (errors & 0x15) == 0x04;
    EXPECT_EQ(CountOf(nibble.chip.trace, "G09"), taken_alone ? 1 : 0);
  }
}

TEST(ChipCommandTest, OnlyOneByteOfFourOrEightBitsIsAShortAnswer) {
  using Case = std::tuple<const char*, std::uint16_t, HFLSTATUS, std::uint16_t, int>;
  for (const auto& [answer, capacity, status, length, taken_alone] :
       {Case{"0A/4:04", 1, HFL_SHORT_ANSWER, 1, 1}, Case{"0A/0:04", 1, HFL_SHORT_ANSWER, 1, 1},
        Case{"0A/3:04", 1, HFL_CRC_ERROR, 0, 0}, Case{"0A/5:04", 1, HFL_CRC_ERROR, 0, 0},
        Case{"0A0A/4:04", 2, HFL_CRC_ERROR, 1, 0}, Case{"./4:04", 1, HFL_CRC_ERROR, 0, 0},
        Case{"0A/4:04", 0, HFL_BUFFER_SIZE, 0, 0}}) {
    Bench bench(0x0C, {0x30}, capacity);
    bench.chip.Answer(answer);
    SCOPED_TRACE(answer);
    EXPECT_EQ(bench.Run(), status);
    EXPECT_EQ(bench.param.receive_length, length);
    EXPECT_EQ(CountOf(bench.chip.trace, "G09"), taken_alone);
    EXPECT_EQ(bench.received[capacity], kUntouched);
  }
}

TEST(ChipCommandTest, ClearWritesBothMasksAndFlushes) {
  ScriptedRegisters chip;
  LowerRecord lower(&chip);
  EXPECT_EQ(ClearIrqAndFlushFifo(&lower.record, 0x21, 0x14), HFL_SUCCESS);
  EXPECT_EQ(chip.trace, "S04=21 S05=14 S0A=80");
}

// A clock that a test moves: every look at it takes `tick`.
std::chrono::steady_clock::time_point fake_now;
std::chrono::milliseconds tick;
std::chrono::steady_clock::time_point TickingClock() { return fake_now += tick; }

TEST(ChipCommandTest, AnswerAtTheLastLookCountsAndOneLookLaterItIsSilenceAndCleanedUp) {
  tick = kWaitLimit / 20;
  for (const int quiet_passes : {19, 20}) {
    Bench bench(0x0C, {0x26}, 2);
    bench.chip.quiet_passes = quiet_passes;
    bench.chip.Answer(quiet_passes == 19 ? "0102" : "0102@00");
    const CommandResult result = RunSingleCommand(&bench.param, TickingClock);
    EXPECT_EQ(result.status, quiet_passes == 19 ? HFL_SUCCESS : HFL_NO_ANSWER);
    EXPECT_FALSE(result.access_failed);
    EXPECT_EQ(CountOf(bench.chip.trace, "G04 G05"), 20);
    if (quiet_passes == 19) continue;
    EXPECT_TRUE(bench.chip.trace.ends_with("M02-23 M03-00 S04=00 S05=00 S0A=80 S04=01"));
    EXPECT_EQ(bench.param.receive_length, 0);
  }
  // A line so slow that the first look comes after the limit.
  tick = kWaitLimit * 3;
  Bench bench(0x0C, {0x26}, 2);
  bench.chip.Answer("0102");
  EXPECT_EQ(RunSingleCommand(&bench.param, TickingClock).status, HFL_SUCCESS);
}

TEST(ChipCommandTest, CommandWithoutAwaitedBitsEndsAtTheChipsReportOrShortlyAfter) {
  using Case = std::tuple<std::uint8_t, std::uint8_t, const char*>;
  tick = kUnreportedEndLimit / 2;
  for (const auto& [code, coprocessor_status, wait] :
       {Case{0x00, 0x00, "S01=00 G01 M02-00"}, Case{0x03, 0x20, "S01=03 G01 G07 M02-00"},
        Case{0x0F, 0x00, "S01=0F G01 G07 G01 G07 M02-00"}}) {
    Bench bench(code, {0x01}, 0);
    bench.chip.registers[0x07] = coprocessor_status;
    EXPECT_EQ(RunSingleCommand(&bench.param, TickingClock).status, HFL_SUCCESS);
    EXPECT_EQ(CountOf(bench.chip.trace, wait), 1) << bench.chip.trace;
  }
}

// A command whose end a callback awaits, which changes two of its masks.
struct CallbackBench : Bench {
  explicit CallbackBench(const char* answer) : Bench(0x0C, {0x26}, 2) {
    chip.Answer(answer);
    param.wait_cb_context = this;
    param.wait_cb = [](wait_event_cb_param* event) {
      auto* const bench = static_cast<CallbackBench*>(event->wait_cb_context);
      EXPECT_EQ(Bytes({*event->commIrqEn, *event->waitForComm, *event->divIrqEn, *event->waitForDiv,
                       event->command}),
                Bytes({0x23, 0x21, 0x00, 0x00, 0x0C}));
      EXPECT_NE(event->lower, nullptr);
      *event->waitForComm = bench->comm_mask;
      *event->divIrqEn = 0x10;
      if (bench->link_breaks) bench->chip.fail_from = bench->chip.accesses + 1;
      return bench->status;
    };
  }
  HFLSTATUS status = HFL_SUCCESS;
  std::uint8_t comm_mask = 0x21;
  bool link_breaks = false;
};

TEST(ChipCommandTest, WaitCallbackReplacesPollingAndItsMasksAreUsed) {
  CallbackBench bench("0400@64");
  bench.comm_mask = 0x44;
  EXPECT_EQ(bench.Run(), HFL_SUCCESS);
  EXPECT_TRUE(bench.chip.trace.ends_with(
      "M0D+80 G04 G05 M02-23 M03-10 G0A G0C G06 R09*2 S04=44 S05=00 S0A=80 S04=01"))
      << bench.chip.trace;
}

TEST(ChipCommandTest, WaitCallbacksStatusStandsUnlessTheTimerRanOut) {
  for (const auto& [answer, status] :
       {std::pair{"0400@20", 0x0BAD}, std::pair{"0400@21", int{HFL_NO_ANSWER}}}) {
    CallbackBench bench(answer);
    bench.status = 0x0BAD;
    EXPECT_EQ(bench.Run(), status);
    EXPECT_EQ(bench.param.receive_length, 0);
    EXPECT_EQ(bench.chip.trace.find("G0A"), std::string::npos);
  }
}

TEST(ChipCommandTest, FailingLooksAfterTheCallbackDoNotEndTheCommandButTheNextAccessDoes) {
  CallbackBench bench("0400@20");
  bench.link_breaks = true;
  EXPECT_EQ(bench.Run(), bench.chip.fail_status);
  EXPECT_TRUE(bench.chip.trace.ends_with("M0D+80 G04 G05 M02-23")) << bench.chip.trace;
}

}  // namespace
}  // namespace vt63x
