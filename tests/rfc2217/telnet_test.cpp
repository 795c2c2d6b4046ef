// SPDX-License-Identifier: MIT

#include "rfc2217/telnet.h"

#include <gtest/gtest.h>

#include <random>
#include <tuple>

namespace vt63x::rfc2217 {
namespace {

// What a decoder reports, as one text: data as it is, "<w 2c>" for a negotiation, "{65 0102}" for
// an option's text.
class Recorder final : public Listener {
 public:
  std::string seen;

  void OnData(Bytes data) override { seen.append(data.begin(), data.end()); }
  void OnNegotiation(Negotiation what, std::uint8_t option) override {
    constexpr const char* kNames[] = {"will", "wont", "do", "dont"};
    seen += '<';
    seen += kNames[static_cast<int>(what) - static_cast<int>(Negotiation::kWill)];
    seen += ' ' + std::to_string(option) + '>';
  }
  void OnComPort(std::uint8_t command, Bytes value) override {
    seen += '{' + std::to_string(command);
    for (const std::uint8_t byte : value) seen += ' ' + std::to_string(byte);
    seen += '}';
  }
};

Bytes BytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string Decoded(const std::string& wire) {
  Decoder decoder;
  Recorder recorder;
  decoder.Take(BytesOf(wire), recorder);
  return recorder.seen;
}

TEST(TelnetTest, WireBytesMeanWhatTheStandardsSay) {
  using Case = std::tuple<std::string, std::string>;
  const Case cases[] = {
      {"plain", "plain"},
      {std::string("\0\r\n\x7f\xfe", 5), std::string("\0\r\n\x7f\xfe", 5)},
      {"a\xff\xff"
       "b",
       "a\xff"
       "b"},
      {"\xff\xfb\x2c\xff\xfc\x01\xff\xfd\x2cz\xff\xfe\xff", "<will 44><wont 1><do 44>z<dont 255>"},
      {std::string("\xff\xfa\x2c\x01\x00\x01\xc2\x00\xff\xf0", 10), "{1 0 1 194 0}"},
      {std::string("\xff\xfa\x2c\x6b\xff\xff\xff\xf0x", 9), "{107 255}x"},
      {"\xff\xfa\x2c\x0c\xff\xf0", "{12}"},
      {"\xff\xf1q\xff\xf6", "q"},              // commands without meaning here
      {"\xff\xfa\x18\x01\xff\xf0q", "q"},      // another option's text
      {"\xff\xfa\x2c\xff\xf0q", "q"},          // without a command
      {"\xff\xfa\x2c\x05\x01\xff\x07q", "q"},  // a text that another command ends
      {"\xff\xfa\x2c\x01never ended", ""},
  };
  for (const auto& [wire, meaning] : cases)
    EXPECT_EQ(Decoded(wire), meaning) << testing::PrintToString(wire);
}

TEST(TelnetTest, TextThatIsTooLongIsLeftOutAndTheNextIsNot) {
  const std::string begin = "\xff\xfa\x2c\x07";
  const std::string end = "\xff\xf0";
  const std::size_t room = Decoder::kMaxText - 2;
  EXPECT_NE(Decoded(begin + std::string(room, 'x') + end), "");
  EXPECT_EQ(Decoded(begin + std::string(room + 1, 'x') + end), "");
  EXPECT_EQ(Decoded(begin + std::string(100'000, 'x') + end + begin + "a" + end + "q"), "{7 97}q");
}

TEST(TelnetTest, WhatIsAppendedIsUnderstoodHoweverItIsCut) {
  std::mt19937 random(2217);
  std::string wire;
  Recorder expected;
  for (int i = 0; i < 500; ++i) {
    std::string bytes;
    for (auto k = random() % 40; k > 0; --k) {
      bytes += static_cast<char>(random() % 3 == 0 ? 0xFF : random() & 0xFF);
    }
    const auto command = static_cast<std::uint8_t>(random());
    switch (random() % 3) {
      case 0:
        AppendData(wire, BytesOf(bytes));
        expected.OnData(BytesOf(bytes));
        break;
      case 1:
        AppendNegotiation(wire, Negotiation::kDont, command);
        expected.OnNegotiation(Negotiation::kDont, command);
        break;
      default:
        AppendComPort(wire, command, BytesOf(bytes));
        expected.OnComPort(command, BytesOf(bytes));
    }
  }
  Decoder decoder;
  Recorder recorder;
  for (std::size_t at = 0; at < wire.size();) {
    const std::size_t size = std::min<std::size_t>(1 + random() % 7, wire.size() - at);
    decoder.Take(BytesOf(wire).subspan(at, size), recorder);
    at += size;
  }
  EXPECT_EQ(recorder.seen, expected.seen);
}

TEST(TelnetTest, RubbishIsTakenWithoutHarm) {
  std::mt19937 random(854);
  Decoder decoder;
  Recorder recorder;
  for (int i = 0; i < 20'000; ++i) {
    const std::uint8_t bytes[] = {static_cast<std::uint8_t>(random() % 8 == 0 ? 0xFF : random()),
                                  static_cast<std::uint8_t>(240 + random() % 16)};
    decoder.Take(bytes, recorder);
  }
  SUCCEED();
}

TEST(TelnetTest, BaudRatesAreFourBytesTheHighestFirst) {
  for (const std::uint32_t rate : {1U, 9600U, 115'200U, 0xFEDC'BA98U}) {
    std::string wire;
    AppendBaudRate(wire, 1, rate);
    struct Taker final : Listener {
      std::uint32_t rate = 0;
      void OnData(Bytes) override {}
      void OnNegotiation(Negotiation, std::uint8_t) override {}
      void OnComPort(std::uint8_t, Bytes value) override { rate = BaudRateOf(value); }
    } taker;
    Decoder().Take(BytesOf(wire), taker);
    EXPECT_EQ(taker.rate, rate);
  }
  EXPECT_EQ(BaudRateOf(BytesOf("abc")), 0u);
}

}  // namespace
}  // namespace vt63x::rfc2217
