// SPDX-License-Identifier: MIT

#include "script/command_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "script/command_table.h"
#include "tests/support/temp_directory.h"

namespace vt63x {
namespace {

// Each line's rest behind its command word; all lines are messages, whose rest is kept as it is.
std::vector<std::string> Rests(std::string_view content) {
  const CommandFile file(content);
  std::vector<std::string> rests;
  for (std::size_t i = 0; i < file.size(); ++i) rests.push_back(file.text(file.line(i)));
  return rests;
}

using Lines = std::vector<std::string>;

TEST(CommandFileTest, LineEndsOfEverySystemSplitAlike) {
  EXPECT_EQ(Rests(""), Lines{});
  EXPECT_EQ(Rests("\n"), Lines({""}));
  EXPECT_EQ(Rests("//> a\n//> b\n"), Lines({" a", " b"}));
  EXPECT_EQ(Rests("//> a\r\n//> b\r\n"), Lines({" a", " b"}));
  EXPECT_EQ(Rests("//> a\n//> b"), Lines({" a", " b"}));
  EXPECT_EQ(Rests("//> a\n\n//> b"), Lines({" a", "", " b"}));
  // A lone carriage return ends what the interpreter sees, not the line.
  EXPECT_EQ(Rests("//> a\r//> b\n//> c"), Lines({" a", " c"}));
}

TEST(CommandFileTest, ZeroByteEndsALineAndCtrlZTheText) {
  EXPECT_EQ(Rests(std::string_view("//> a\0b\n//> c\n", 13)), Lines({" a", " c"}));
  EXPECT_EQ(Rests("//> a\n//> b\x1A\n//> c\n"), Lines({" a", " b"}));
}

TEST(CommandFileTest, LongLinesFallIntoPiecesOf199Characters) {
  const std::string digits(450, '7');
  const CommandFile file(digits + "\nBRK\n");
  ASSERT_EQ(file.size(), 4u);
  EXPECT_EQ(std::string(file.text(file.line(0))).size(), 199u);
  EXPECT_EQ(std::string(file.text(file.line(1))).size(), 199u);
  EXPECT_EQ(std::string(file.text(file.line(2))).size(), 52u);
  EXPECT_EQ(file.line(3).command, kBrk);
  EXPECT_EQ(file.line(2).file_line, 1u);
  EXPECT_EQ(file.line(3).file_line, 2u);
  EXPECT_EQ(file.long_lines(), std::vector<std::uint32_t>({1}));
}

TEST(CommandFileTest, LineEndCountsIntoThe199Characters) {
  // 198 characters and their line end are one piece; 199 leave the line end to a piece of its own.
  EXPECT_EQ(Rests(std::string(198, '7') + "\nBRK\n").size(), 2u);
  EXPECT_EQ(Rests(std::string(198, '7') + "\r\nBRK\r\n").size(), 2u);
  EXPECT_EQ(Rests(std::string(199, '7') + "\nBRK\n").size(), 3u);
  EXPECT_EQ(Rests(std::string(199, '7')).size(), 1u);
}

TEST(CommandFileTest, JumpsFindTheFirstLabelOfTheirName) {
  const std::string long_name(40, 'L');
  const CommandFile file(
      "JMP b\n::: a\n::: B\n::: b again\njne ml0 01 A\nJMP none\nJMP\n:::\nJMP " + long_name +
      "\n::: " + long_name + "X\n");
  EXPECT_EQ(file.line(0).target, 2u);
  EXPECT_EQ(file.line(4).target, 1u);
  EXPECT_EQ(file.line(5).target, DecodedLine::kNoTarget);
  EXPECT_EQ(file.line(6).target, DecodedLine::kNoTarget);
  EXPECT_EQ(file.line(8).target, 9u);
  ASSERT_EQ(file.duplicate_labels().size(), 1u);
  EXPECT_EQ(file.duplicate_labels()[0].name, "B");
  EXPECT_EQ(file.duplicate_labels()[0].line, 4u);
  EXPECT_EQ(file.duplicate_labels()[0].first_line, 3u);
}

// A line takes 24 bytes beside its text; 64 million of them would take 1.6 GB.
TEST(CommandFileTest, LinesThatDoNothingTakeNoMemory) {
  std::string content(1'000'000, '\n');
  for (int i = 0; i < 1000; ++i) content += "// x\r\n \r\n";
  const CommandFile file(content + "GR 37\n\n");
  EXPECT_EQ(file.size(), 3u);
  EXPECT_EQ(file.line_count(), 1'002'002u);
  EXPECT_EQ(file.LinesOf(0), 1'002'000u);
  EXPECT_EQ(file.Find(1'001'999), 0u);
  EXPECT_EQ(file.line(file.Find(1'002'000)).command, kGr);
  EXPECT_EQ(file.Find(1'002'002), file.size());
}

TEST(CommandFileTest, AnyBytesAreTaken) {
  std::string content;
  unsigned value = 1;
  for (int i = 0; i < 100000; ++i) {
    value = value * 1664525U + 1013904223U;
    content.push_back(static_cast<char>(value >> 24U));
  }
  const CommandFile file(content);
  EXPECT_LE(file.size(), content.size());
}

TEST(ReadWholeFileTest, SaysWhatIsWrong) {
  const TempDirectory directory;
  std::string content;
  EXPECT_EQ(ReadWholeFile(directory.File("missing").c_str(), content), ENOENT);
  EXPECT_EQ(ReadWholeFile(directory.path().string().c_str(), content), EISDIR);
  EXPECT_EQ(ReadWholeFile("/dev/zero", content), EFBIG);
  EXPECT_EQ(ReadWholeFile(directory.Write("a", std::string("x\0y", 3)).c_str(), content), 0);
  EXPECT_EQ(content, std::string("x\0y", 3));
}

}  // namespace
}  // namespace vt63x
