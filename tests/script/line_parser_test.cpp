// SPDX-License-Identifier: MIT

#include "script/line_parser.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "shell/state/log.h"
#include "tests/support/program_state.h"

namespace vt63x {
namespace {

std::vector<std::string> Tokens(std::string line) {
  LineParser parser(nullptr);
  parser.cursor = line.data();
  std::vector<std::string> tokens;
  token_buffer token;
  while (NextToken(parser, token) == 1) tokens.push_back(token);
  EXPECT_STREQ(token, "");
  return tokens;
}

TEST(TokenTest, ExactlyTheTokenCharactersBelongToTokens) {
  const std::string token_chars = "/0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ>:#_";
  for (int code = 0; code < 256; ++code) {
    const char c = static_cast<char>(code);
    const bool expected = c != '\0' && token_chars.find(c) != std::string::npos;
    EXPECT_EQ(IsTokenChar(c), expected) << code;
  }
}

TEST(TokenTest, LinesFallIntoTokens) {
  const std::string run31(31, 'A');
  using Case = std::tuple<std::string, std::vector<std::string>>;
  const Case cases[] = {
      {"", {}},
      {" \t  ", {}},
      {"SR 01 02", {"SR", "01", "02"}},
      {"\tSR,01;02", {"SR", "01", "02"}},
      {"MY-LABEL", {"MY", "LABEL"}},
      {"FILE.TXT", {"FILE", "TXT"}},
      {"gr 37", {"37"}},  // not folded: lower case separates
      {"//>:#_", {"//>:#_"}},
      {"SR 01\r02", {"SR", "01"}},
      {"SR 01\n02", {"SR", "01"}},
      {"SR 01\x1B 02", {"SR", "01"}},
      {"SR 01\x7F 02", {"SR", "01", "02"}},  // above 31: a separator
      {"SR 01\x80 02", {"SR", "01"}},
      {"SR 01\xFF 02", {"SR", "01"}},
      {"SR 01 02\xE4 03", {"SR", "01", "02"}},
      {run31 + " B", {run31, "B"}},
      {run31 + "ZZZZZZZZZ B", {run31, "B"}},
  };
  for (const auto& [line, tokens] : cases) EXPECT_EQ(Tokens(line), tokens) << line;
}

TEST(TokenTest, TokenBufferIsClearedBehindTheToken) {
  std::string line = "AB";
  LineParser parser(nullptr);
  parser.cursor = line.data();
  token_buffer token;
  std::fill(std::begin(token), std::end(token), 'x');
  EXPECT_EQ(NextToken(parser, token), 1);
  EXPECT_EQ(std::string(token, sizeof token), std::string("AB") + std::string(30, '\0'));
}

class OperandTest : public testing::Test {
 protected:
  ProgramState program;
  LineParser parser{&program.action};
};

TEST_F(OperandTest, NumbersAreHexadecimalAndKeepTheirLowByte) {
  using Case = std::tuple<const char*, int>;
  for (const auto& [token, value] :
       {Case{"5A", 0x5A}, Case{"1FF", 0xFF}, Case{"ABC", 0xBC}, Case{"0X2A", 0x2A},
        Case{"0x2a", 0x2A}, Case{"1G", 0x01}, Case{"0XG", 0x00}, Case{"0X", 0x00}, Case{"0", 0x00},
        Case{"7FFFFF12", 0x12}, Case{"7FFFFFFF", 0xFF}, Case{"80000000", 0xFF},
        Case{"FFFFFF00", 0xFF}, Case{"100000000", 0xFF},
        Case{"0000000000000000000000000000012", 0x12}}) {
    for (int position = 1; position <= 3; ++position) {
      std::uint8_t& cell = ResolveOperand(parser, token, position);
      EXPECT_EQ(&cell, &parser.scratch[position - 1]) << token;
      EXPECT_EQ(cell, value) << token;
    }
  }
  EXPECT_EQ(parser.error, 0);
  EXPECT_EQ(program.log(), "");
}

TEST_F(OperandTest, NamesReachTheirRegisterAndNothingElse) {
  EXPECT_EQ(&ResolveOperand(parser, "IOR", 1), &parser.IOR);
  EXPECT_EQ(&ResolveOperand(parser, "IOE", 1), &parser.IOE);
  std::uint8_t* const cells[] = {&parser.ML0, &parser.ML1, &parser.ML2, &parser.ML3,
                                 &parser.ML4, &parser.ML5, &parser.ML6, &parser.ML7};
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(&ResolveOperand(parser, ("ML" + std::to_string(i)).c_str(), 1), cells[i]);
  }
}

TEST_F(OperandTest, WhatIsNeitherIsReportedAndLeavesZero) {
  for (const char* token : {"", "G1", "XYZ", "ML8", "IORX", "/5", "X1", ":1"}) {
    parser.error = 0;
    parser.scratch[1] = 0x55;
    log_clear(&program.action);
    EXPECT_EQ(ResolveOperand(parser, token, 2), 0) << token;
    EXPECT_EQ(&ResolveOperand(parser, token, 2), &parser.scratch[1]);
    EXPECT_NE(parser.error, 0);
    EXPECT_EQ(program.last_line(), "Error: Invalid numeric format / parameter identifier.");
  }
}

TEST(DecimalTest, ReadsUpToTheFirstNonDigitAndSaturates) {
  using Case = std::tuple<const char*, std::int32_t>;
  for (const auto& [token, value] :
       {Case{"", 0}, Case{"XYZ", 0}, Case{"12AB", 12}, Case{"70000", 70000}, Case{"007", 7},
        Case{"2147483647", 2147483647}, Case{"2147483648", 2147483647},
        Case{"9999999999999999999999999999999", 2147483647}}) {
    EXPECT_EQ(ParseDecimal(token), value) << token;
  }
}

}  // namespace
}  // namespace vt63x
