// SPDX-License-Identifier: MIT

#include "shell/state/log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>

#include "tests/support/program_state.h"
#include "tests/support/temp_directory.h"

namespace vt63x {
namespace {

class LogTest : public testing::Test {
 protected:
  void Append(const std::string& text, int newline = 1) {
    log_append(&program.action, text.c_str(), newline);
  }

  ProgramState program;
};

TEST_F(LogTest, LinesEndWithCarriageReturnAndLineFeed) {
  Append("Processing ", 0);
  Append("a.wcf");
  Append("b", 2);
  EXPECT_EQ(program.log(), "Processing a.wcf\r\nb\r\n");
  EXPECT_EQ(program.view.shown, "Processing a.wcf\nb\n");
}

TEST_F(LogTest, AppendThatWouldReach99997CharactersEmptiesTheLogFirst) {
  Append(std::string(99'990, 'x'), 0);
  Append("123456", 0);  // 99,996
  EXPECT_EQ(program.log().size(), 99'996u);
  Append("7", 0);
  EXPECT_EQ(program.log(), "7");

  log_clear(&program.action);
  EXPECT_EQ(program.log(), "");
  EXPECT_TRUE(program.view.shown.ends_with("<cleared>"));
  Append(std::string(99'990, 'x'), 0);
  Append("1234567", 1);
  EXPECT_EQ(program.log(), "1234567\r\n");
  EXPECT_TRUE(program.view.shown.ends_with("<cleared>1234567\n"));
}

TEST_F(LogTest, TextLargerThanTheLogIsCutToIt) {
  Append(std::string(99'996, 'a'));
  EXPECT_EQ(program.log().size(), 99'998u);
  Append(std::string(250'000, 'b'));
  EXPECT_EQ(program.log(), std::string(99'997, 'b') + "\r\n");
  EXPECT_EQ(program.log_buffer.back(), '\0');
}

TEST_F(LogTest, TextPutIntoTheBufferByHandIsFollowed) {
  std::strcpy(program.log_buffer.data(), "by hand");
  Append("!");
  EXPECT_EQ(program.log(), "by hand!\r\n");
  program.log_buffer[0] = '\0';
  Append("new");
  EXPECT_EQ(program.log(), "new\r\n");
  std::fill_n(program.log_buffer.begin(), 99'990, 'x');
  program.log_buffer[99'990] = '\0';
  Append("0123456789");
  EXPECT_EQ(program.log(), "0123456789\r\n");
}

TEST_F(LogTest, SavingTakesThePanesTextAndAppends) {
  const TempDirectory directory;
  program.view.log_file = directory.File("log.txt");
  Append("line");
  program.view.pane = "line, edited\r\n";
  log_save(&program.action);
  EXPECT_EQ(program.view.asked_with, "*.txt");
  EXPECT_EQ(program.log(), "line, edited\r\n");
  log_save(&program.action);
  EXPECT_EQ(directory.Read("log.txt"), "line, edited\r\nline, edited\r\n");
  Append("next");
  EXPECT_EQ(program.log(), "line, edited\r\nnext\r\n");
}

TEST_F(LogTest, CancelledSaveWritesNothing) {
  Append("line");
  program.view.pane = "edited";
  log_save(&program.action);
  EXPECT_EQ(program.log(), "line\r\n");
  EXPECT_EQ(program.view.not_saved, "");
}

TEST_F(LogTest, FullDeviceIsReported) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  Append("line");
  log_append_to_file(&program.action, "/dev/full");
  EXPECT_EQ(program.view.not_saved, "/dev/full");
  EXPECT_EQ(program.view.save_error, ENOSPC);
}

TEST_F(LogTest, WithoutABufferOrAViewNothingHappens) {
  program.state.view = nullptr;
  Append("quiet");
  log_save(&program.action);
  EXPECT_EQ(program.log(), "quiet\r\n");
  program.state.log_buf = nullptr;
  Append("x");
  log_clear(&program.action);
  log_save(&program.action);
  log_append_to_file(&program.action, "/dev/full");
}

TEST_F(LogTest, LinesOfTwoThreadsDoNotMix) {
  program.state.view = nullptr;
  const auto write = [&](char c) {
    const std::string text(50, c);
    for (int i = 0; i < 500; ++i) log_append(&program.action, text.c_str(), 1);
  };
  std::thread other(write, 'b');
  write('a');
  other.join();
  std::string log = program.log();
  int lines = 0;
  for (std::size_t at = 0; at < log.size(); at += 52, ++lines) {
    const std::string line = log.substr(at, 52);
    ASSERT_TRUE(line == std::string(50, 'a') + "\r\n" || line == std::string(50, 'b') + "\r\n");
  }
  EXPECT_EQ(lines, 1000);
}

}  // namespace
}  // namespace vt63x
