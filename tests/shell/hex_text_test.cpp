// SPDX-License-Identifier: MIT

#include "shell/hex_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

namespace vt63x {
namespace {

TEST(HexTextTest, TypedValuesAreCorrectedToTwoDigits) {
  struct Case {
    const char* typed;
    int value;
    const char* shown;
    int error;
  };
  for (const Case& c :
       {Case{"", 0x00, "00", 0}, Case{"A", 0x0A, "0A", 0}, Case{"FF", 0xFF, "FF", 0},
        Case{"1G", 0x10, "10", 1}, Case{"2G", 0x20, "20", 1}, Case{"123", 0x23, "23", 1},
        Case{"1FF", 0xFF, "FF", 1}, Case{"100", 0x00, "00", 1}, Case{"0FF", 0xFF, "FF", 0},
        Case{"a", 0x00, "00", 1}, Case{"-1", 0x01, "01", 1}, Case{"0X12", 0x12, "12", 1},
        Case{"1:2", 0x01, "01", 0}, Case{"@", 0x00, "00", 0}, Case{"FFFFFFFFF", 0xFF, "FF", 1},
        Case{"123456700", 0xFF, "FF", 1}, Case{"7FFFFF12", 0x12, "12", 1},
        Case{"\xE4"
             "1",
             0x01, "01", 1}}) {
    char text[10];
    std::strcpy(text, c.typed);
    std::uint8_t error = 0;
    EXPECT_EQ(HexTextToByte(text, &error), c.value) << c.typed;
    EXPECT_STREQ(text, c.shown) << c.typed;
    EXPECT_EQ(error, c.error) << c.typed;
  }
}

TEST(HexTextTest, ErrorFlagIsOnlyEverSet) {
  char text[10] = "12";
  std::uint8_t error = 1;
  HexTextToByte(text, &error);
  EXPECT_EQ(error, 1);
}

TEST(HexTextTest, PairsEndAtTheirFirstOtherCharacter) {
  using Case = std::tuple<const char*, int>;
  for (const auto& [text, value] :
       {Case{"3C9A", 0x3C}, Case{"5", 0x05}, Case{"", 0}, Case{"G1", 0}, Case{"1G", 1},
        Case{"ff", 0xFF}, Case{"-1", 0}, Case{" 5", 0}, Case{"0x", 0}}) {
    EXPECT_EQ(HexPairToByte(text), value) << text;
  }
}

TEST(HexTextTest, BitsAndBytesInOrder) {
  char bits[9];
  ByteToBinaryText(0x0A, bits);
  EXPECT_STREQ(bits, "00001010");
  char digits[7] = "xxxxxx";
  const std::uint8_t bytes[] = {0x00, 0xA5, 0xFF};
  BytesToHexText(digits, bytes, 3);
  EXPECT_STREQ(digits, "00A5FF");
  BytesToHexText(digits, bytes, 0);
  EXPECT_STREQ(digits, "");
}

}  // namespace
}  // namespace vt63x
