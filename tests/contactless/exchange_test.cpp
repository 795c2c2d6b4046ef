// SPDX-License-Identifier: MIT

#include "contactless/exchange.h"

#include <gtest/gtest.h>

#include <tuple>

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
  using Case = std::tuple<const char*, HFLSTATUS, std::uint16_t, std::uint16_t, Bytes>;
  for (const auto& [answer, status, length, last_bits, received] :
       {Case{"010203", HFL_SUCCESS, 3, 0, {1, 2, 3}},
        Case{"0102/3:08", HFL_COLLISION, 1, 3, {1, 2}},
        Case{"0A/4:04", HFL_SHORT_ANSWER, 1, 4, {0x0A}},
        Case{"-", HFL_NO_ANSWER, 0, 0, {0x60, 4}}}) {
    Bench bench;
    bench.chip.Answer(answer);
    transceive_param param{bench.bytes, 2, bench.bytes, 16, 0x55, bench.garbage};
    EXPECT_EQ(bench.exchange.Transceive(&param), status);
    EXPECT_EQ(bench.chip.sent, "6004");
    EXPECT_EQ(param.receive_length, length);
    EXPECT_EQ(param.receive_last_bits, last_bits);
    EXPECT_EQ(param.self, bench.garbage);
    EXPECT_EQ(Bytes(bench.bytes, bench.bytes + received.size()), received);
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
  // `crypto`: register 0x08
  using Case = std::tuple<std::uint16_t, std::uint8_t, const char*, HFLSTATUS>;
  for (const auto& [length, crypto, answer, status] :
       {Case{0, 0x08, ".@10", HFL_INVALID_PARAMETER}, Case{11, 0x08, ".@10", HFL_INVALID_PARAMETER},
        Case{13, 0x08, ".@10", HFL_INVALID_PARAMETER}, Case{12, 0x08, ".@10", HFL_SUCCESS},
        Case{12, 0xF7, ".@10", HFL_AUTHENTICATION_FAILED}, Case{12, 0x08, "-", HFL_NO_ANSWER}}) {
    Bench bench;
    bench.chip.registers[0x08] = crypto;
    bench.chip.Answer(answer);
    transmit_param param{bench.bytes, length, bench.garbage};
    EXPECT_EQ(bench.exchange.Authenticate(&param), status);
    EXPECT_EQ(bench.chip.sent, length == 12 ? "600400000000000000000000" : "");
    EXPECT_EQ(bench.chip.trace.ends_with("S04=01 G08"), length == 12 && *answer == '.');
    EXPECT_EQ(param.self, bench.garbage);
  }
}

}  // namespace
}  // namespace vt63x
