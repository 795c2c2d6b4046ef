// SPDX-License-Identifier: MIT

#include "contactless/exchange.h"

#include <gtest/gtest.h>

#include "tests/contactless/scripted_registers.h"

namespace vt63x {
namespace {

struct Bench {
  Bench() { exchange.Init(ExchangeOpen, &chip, 0); }
  ScriptedRegisters chip;
  ExchangeWrapper exchange;
  std::uint8_t bytes[16] = {0x60, 0x04};
  ExchangeCore* const garbage = reinterpret_cast<ExchangeCore*>(0x1234);
};

TEST(ExchangeTest, TransceiveReportsLengthAndBitsWhateverTheStatus) {
  struct Case {
    ChipAnswer answer;
    HFLSTATUS status;
    std::uint16_t length, last_bits;
  };
  for (const Case& c :
       {Case{Complete({1, 2, 3}), HFL_SUCCESS, 3, 0},
        Case{Collided({1, 2}, 3), HFL_COLLISION, 1, 3},
        Case{Acknowledge(0x0A), HFL_SHORT_ANSWER, 1, 4}, Case{Silence(), HFL_NO_ANSWER, 0, 0}}) {
    Bench bench;
    bench.chip.answers = {c.answer};
    transceive_param param{bench.bytes, 2, bench.bytes, 16, 0x55, bench.garbage};
    EXPECT_EQ(bench.exchange.Transceive(&param), c.status);
    EXPECT_EQ(bench.chip.sent, std::vector<Bytes>({{0x60, 0x04}}));
    EXPECT_EQ(param.receive_length, c.length);
    EXPECT_EQ(param.receive_last_bits, c.last_bits);
    EXPECT_EQ(param.self, bench.garbage);
    EXPECT_EQ(Bytes(bench.bytes, bench.bytes + c.answer.fifo.size()),
              c.answer.fifo.empty() ? Bytes{} : c.answer.fifo);
  }
}

TEST(ExchangeTest, TransmitSendsAndReceiveOnlyListens) {
  Bench bench;
  bench.chip.answers = {{0x40, 3, 2, 0xFF, {1, 2, 3}}, Complete({9, 8})};
  transmit_param transmit{bench.bytes, 2, bench.garbage};
  EXPECT_EQ(bench.exchange.Transmit(&transmit), HFL_SUCCESS);
  EXPECT_EQ(transmit.length, 2);
  EXPECT_EQ(transmit.self, bench.garbage);
  receive_param receive{bench.bytes, 16, 0x55, bench.garbage};
  EXPECT_EQ(bench.exchange.Receive(&receive), HFL_SUCCESS);
  EXPECT_EQ(receive.receive_length, 2);
  EXPECT_EQ(receive.receive_last_bits, 0);
  EXPECT_EQ(receive.self, bench.garbage);
  EXPECT_EQ(bench.chip.sent, std::vector<Bytes>({{0x60, 0x04}, {}}));
  EXPECT_EQ(bench.bytes[0], 9);
}

TEST(ExchangeTest, AuthenticationNeedsTwelveBytesAndTheCryptoBitAfterwards) {
  for (const std::uint16_t length : std::vector<std::uint16_t>{0, 11, 13}) {
    Bench bench;
    transmit_param param{bench.bytes, length, nullptr};
    EXPECT_EQ(bench.exchange.Authenticate(&param), HFL_INVALID_PARAMETER);
    EXPECT_EQ(bench.chip.accesses, 0);
  }
  for (const std::uint8_t status : Bytes{0x08, 0xF7}) {
    Bench bench;
    bench.chip.registers[0x08] = status;
    bench.chip.answers = {{0x10, 0, 0, 0, {}}};
    transmit_param param{bench.bytes, 12, bench.garbage};
    EXPECT_EQ(bench.exchange.Authenticate(&param),
              status == 0x08 ? HFL_SUCCESS : HFL_AUTHENTICATION_FAILED);
    EXPECT_TRUE(bench.chip.trace.ends_with("S04=01 G08"));
    EXPECT_EQ(bench.chip.sent, std::vector<Bytes>({Bytes(bench.bytes, bench.bytes + 12)}));
    EXPECT_EQ(param.self, bench.garbage);
  }
  Bench silent;
  silent.chip.registers[0x08] = 0x08;
  transmit_param param{silent.bytes, 12, nullptr};
  EXPECT_EQ(silent.exchange.Authenticate(&param), HFL_NO_ANSWER);
}

// The operations by number, so that tests can go through all of them.
HFLSTATUS Operate(ExchangeInterface& exchange, int operation) {
  std::uint8_t bytes[16] = {};
  transceive_param transceive{bytes, 2, bytes, 16, 0, nullptr};
  transmit_param transmit{bytes, 12, nullptr};
  receive_param receive{bytes, 16, 0, nullptr};
  if (operation == 0) return exchange.Transceive(&transceive);
  if (operation == 1) return exchange.Transmit(&transmit);
  if (operation == 2) return exchange.Receive(&receive);
  return exchange.Authenticate(&transmit);
}

TEST(ExchangeTest, EveryOperationNeedsTheReadyByteAndUsesTheWaitCallback) {
  HFLSTATUS status = 0x0BAD;
  for (int operation = 0; operation < 4; ++operation) {
    Bench bench;
    bench.exchange.members = 0;
    EXPECT_EQ(Operate(bench.exchange, operation), HFL_NOT_READY);
    EXPECT_EQ(bench.chip.accesses, 0);
    bench.exchange.members = 1;
    bench.chip.answers = {{0x70, 0, 0, 0, {}}};
    set_wait_callback_param install{GiveUpWaiting, &status, nullptr};
    bench.exchange.SetWaitCallback(&install);
    EXPECT_EQ(Operate(bench.exchange, operation), 0x0BAD);
  }
}

}  // namespace
}  // namespace vt63x
