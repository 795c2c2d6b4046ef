// SPDX-License-Identifier: MIT

#include "cli/check.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/port_choice.h"

namespace vt63x {
namespace {

std::vector<std::string> Findings(const std::string& content) {
  std::vector<std::string> texts;
  for (const Finding& finding : CheckCommandFile(CommandFile(content))) {
    texts.push_back(std::to_string(finding.line) + (finding.error ? "E " : "W ") + finding.text);
  }
  return texts;
}

using Texts = std::vector<std::string>;

TEST(CheckTest, GoodFileHasNoFindings) {
  EXPECT_EQ(Findings("::: top\n\nSR 1 2 // text\nMR ML0 IOR 1\nJNE IOE 00 TOP\nCHB 9600\nSLP\n"
                     "WIL 1 100\nSAV x\nBRK\n//> any Thing\n"),
            Texts{});
}

TEST(CheckTest, EveryKindOfFindingStandsAtItsLine) {
  const std::string long_line = "//> " + std::string(400, 'x');
  EXPECT_EQ(Findings("FOO 1\n::: a\n" + long_line +
                     "\nJMP b\nJMP\nSR 01 XX\nMR ? ?\nCHB 4800\n"
                     "::: A\njne ml0 01\nJNE ML0 01 a\n"),
            Texts({"1E error: unknown command 'FOO'",
                   "3E error: unknown command 'XXXXXXXXXXXXXXXXXXXXXXXXXXXXXXX'",
                   "3E error: unknown command 'XXXXXX'",
                   "3W warning: the line has 199 characters or more and is read in pieces",
                   "4E error: there is no label 'B'", "5E error: jump without a label",
                   "6E error: SR: operand 2 is no number or register",
                   "7E error: MR: operand 1 is no number or register",
                   "7E error: MR: operand 2 is no number or register",
                   "7E error: MR: operand 3 is no number or register",
                   "8E error: unsupported bit rate '4800'",
                   "9W warning: label 'A' is defined twice; jumps go to line 2",
                   "10E error: jump without a label"}));
}

TEST(CheckTest, TimesThatDoNotFitSixteenBitsArePointedOut) {
  EXPECT_EQ(Findings("SLP 65535\nSLP 65536\nWIE 70000\nWIL 70000 65535\nWIL 1 99999999999\n"),
            Texts({"2W warning: SLP: '65536' does not fit 16 bits; 0 ms are waited",
                   "3W warning: WIE: '70000' does not fit 16 bits; 4464 ms are waited",
                   "5W warning: WIL: '99999999999' does not fit 16 bits; 65535 ms are waited"}));
}

TEST(CheckTest, TextBehindACtrlZIsPointedOut) {
  EXPECT_EQ(Findings("GR 1\nGR 2 \x1A\nFOO\n"),
            Texts({"2W warning: a Ctrl-Z character ends the text; what follows is not read"}));
  EXPECT_EQ(Findings("GR 1\n\x1A"), Texts{});
}

TEST(CheckTest, FileThatIsNoCommandFileHasFewEnoughFindings) {
  std::string content;
  for (int i = 0; i < 5000; ++i) content += "SR\n";
  EXPECT_EQ(Findings(content).size(), MOST_FINDINGS);
}

TEST(PortNameTest, DevicesAreTakenAndWordsAreNot) {
  for (const char* name : {"COM1", "com16:", "/dev/ttyUSB0", "rfc2217://lab3:4001", "./tty"}) {
    EXPECT_TRUE(IsPortName(name)) << name;
  }
  for (const char* name : {"", "COM17", "COM0", "COM1x", "ttyUSB0"}) {
    EXPECT_FALSE(IsPortName(name)) << name;
  }
}

TEST(ComPortIndexTest, NamesFrom1To16InAnyCase) {
  EXPECT_EQ(ComPortIndex("COM1"), 0);
  EXPECT_EQ(ComPortIndex("com16:"), 15);
  for (const char* name : {"COM0", "COM17", "COM", "COM1x", "COM-1", "COM256", "/dev/ttyUSB0", "",
                           "COM1::", "XCOM1"}) {
    EXPECT_FALSE(ComPortIndex(name).has_value()) << name;
  }
}

}  // namespace
}  // namespace vt63x
