// SPDX-License-Identifier: MIT

#include "contactless/exchange.h"

#include <gtest/gtest.h>

#include "tests/contactless/scripted_registers.h"

namespace vt63x {
namespace {

struct Bench {
  Bench() { exchange.Init(ExchangeOpen, &chip, 1); }
  ScriptedRegisters chip;
  ExchangeWrapper exchange;
  std::uint8_t bytes[16] = {0x60, 0x04};
  ExchangeCore* const garbage = reinterpret_cast<ExchangeCore*>(0x1234);
};

TEST(ExchangeTest, TransceiveReportsLengthAndBitsWhateverTheStatus) {
  struct Case {
    const char* answer;
    HFLSTATUS status;
    std::uint16_t length, last_bits;
    Bytes received;
  };
  for (const Case& c : {Case{"010203", HFL_SUCCESS, 3, 0, {1, 2, 3}},
                        Case{"0102/3:08", HFL_COLLISION, 1, 3, {1, 2}},
                        Case{"0A/4:04", HFL_SHORT_ANSWER, 1, 4, {0x0A}},
                        Case{"-", HFL_NO_ANSWER, 0, 0, {0x60, 4}}}) {
    Bench bench;
    bench.chip.Answer(c.answer);
    transceive_param param{bench.bytes, 2, bench.bytes, 16, 0x55, bench.garbage};
    EXPECT_EQ(bench.exchange.Transceive(&param), c.status);
    EXPECT_EQ(bench.chip.sent, "6004");
    EXPECT_EQ(param.receive_length, c.length);
    EXPECT_EQ(param.receive_last_bits, c.last_bits);
    EXPECT_EQ(param.self, bench.garbage);
    EXPECT_EQ(Bytes(bench.bytes, bench.bytes + c.received.size()), c.received);
  }
}

TEST(ExchangeTest, TransmitSendsAndReceiveOnlyListens) {
  Bench bench;
  bench.chip.Answer("010203/2:FF@40 0908");
  transmit_param transmit{bench.bytes, 2, bench.garbage};
  EXPECT_EQ(bench.exchange.Transmit(&transmit), HFL_SUCCESS);
  EXPECT_EQ(transmit.length, 2);
  EXPECT_EQ(transmit.self, bench.garbage);
  receive_param receive{bench.bytes, 16, 0x55, bench.garbage};
  EXPECT_EQ(bench.exchange.Receive(&receive), HFL_SUCCESS);
  EXPECT_EQ(receive.receive_length, 2);
  EXPECT_EQ(receive.receive_last_bits, 0);
  EXPECT_EQ(receive.self, bench.garbage);
  EXPECT_EQ(bench.chip.sent, "6004 .");
  EXPECT_EQ(bench.bytes[0], 9);
}

TEST(ExchangeTest, AuthenticationNeedsTwelveBytesAndTheCryptoBitAfterwards) {
  struct Case {
    std::uint16_t length;
    std::uint8_t crypto;  // register 0x08
    const char* answer;
    HFLSTATUS status;
  };
  for (const Case& c :
       {Case{0, 0x08, ".@10", HFL_INVALID_PARAMETER}, Case{11, 0x08, ".@10", HFL_INVALID_PARAMETER},
        Case{13, 0x08, ".@10", HFL_INVALID_PARAMETER}, Case{12, 0x08, ".@10", HFL_SUCCESS},
        Case{12, 0xF7, ".@10", HFL_AUTHENTICATION_FAILED}, Case{12, 0x08, "-", HFL_NO_ANSWER}}) {
    Bench bench;
    bench.chip.registers[0x08] = c.crypto;
    bench.chip.Answer(c.answer);
    transmit_param param{bench.bytes, c.length, bench.garbage};
    EXPECT_EQ(bench.exchange.Authenticate(&param), c.status);
    EXPECT_EQ(bench.chip.sent, c.length == 12 ? "600400000000000000000000" : "");
    EXPECT_EQ(bench.chip.trace.ends_with("S04=01 G08"), c.length == 12 && *c.answer == '.');
    EXPECT_EQ(param.self, bench.garbage);
  }
}

}  // namespace
}  // namespace vt63x
