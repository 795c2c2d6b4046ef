// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <tuple>

#include "script/command_help.h"
#include "script/command_table.h"
#include "script/interpreter.h"
#include "tests/support/program_state.h"
#include "tests/support/temp_directory.h"

namespace vt63x {
namespace {

class ApplicationCommandsTest : public testing::Test {
 protected:
  int Run(std::string line) { return ExecuteLine(parser, line.data()); }

  ProgramState program;
  LineParser parser{&program.action};
};

TEST_F(ApplicationCommandsTest, BitRateIsShownAfterItsLineOrRefused) {
  for (const char* rate :
       {"9600", "14400", "19200", "38400", "57600", "115200", "128000", "256000"}) {
    parser.IOE = 1;
    EXPECT_EQ(Run(std::string("CHB ") + rate), LINE_OK);
    EXPECT_EQ(parser.IOE, 0);
    EXPECT_EQ(program.view.bit_rates.back(), rate);
  }
  Run("CHB 19200");
  EXPECT_EQ(program.last_line(), "CHB   19200     // Baudrate = 19200");
  EXPECT_EQ(program.state.baudrate_index, 0);

  const std::size_t shown = program.view.bit_rates.size();
  using Case = std::tuple<const char*, const char*>;
  for (const auto& [line, log] :
       {Case{"CHB 4800", "//CHB: Error: Unsupported Baudrate - 4800"},
        Case{"CHB", "//CHB: Error: Unsupported Baudrate - 0"},
        Case{"CHB 9601", "//CHB: Error: Unsupported Baudrate - 9601"},
        Case{"CHB 99999999999", "//CHB: Error: Unsupported Baudrate - 2147483647"}}) {
    parser.IOE = 0;
    EXPECT_EQ(Run(line), LINE_OK);
    EXPECT_EQ(parser.IOE, 1);
    EXPECT_EQ(program.last_line(), log);
  }
  EXPECT_EQ(program.view.bit_rates.size(), shown);
}

TEST_F(ApplicationCommandsTest, SleepTakesTheLow16Bits) {
  const auto elapsed_ms = [&](const char* line) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Run(line), LINE_OK);
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
  };
  EXPECT_GE(elapsed_ms("SLP 30"), 30.0);
  EXPECT_GE(elapsed_ms("SLP 65546"), 10.0);
  EXPECT_LT(elapsed_ms("SLP 65536"), 5000.0);
  EXPECT_EQ(program.log(), "");
}

TEST_F(ApplicationCommandsTest, WaitsOnAClosedPortTimeOutAndSayWhatTheyWaitedFor) {
  using Case = std::tuple<const char*, const char*>;
  for (const auto& [line, log] :
       {Case{"WIE 20", "WIE 20       // Timeout = 20 (Result: 0)"},
        Case{"WIE 65541", "WIE 5       // Timeout = 5 (Result: 0)"},
        Case{"WIL 1 5", "WIL 1 5    // Level = 1, Timeout = 5 (Result: 0)"},
        Case{"WIL 5 5", "WIL 1 5    // Level = 1, Timeout = 5 (Result: 0)"},
        Case{"WIL 256 5", "WIL 0 5    // Level = 0, Timeout = 5 (Result: 1)"},
        Case{"WIL 2 0", "WIL 1 0    // Level = 1, Timeout = 0 (Result: 0)"},
        Case{"WIL", "WIL 0 0    // Level = 0, Timeout = 0 (Result: 0)"}}) {
    EXPECT_EQ(Run(line), LINE_OK) << line;
    EXPECT_EQ(program.last_line(), log);
  }
}

TEST_F(ApplicationCommandsTest, ClearLogLeavesNoLine) {
  Run("//> something");
  EXPECT_EQ(Run("CLL"), LINE_OK);
  EXPECT_EQ(program.log(), "");
}

// SAV writes to the current directory, so these run in one of their own.
class SaveTest : public ApplicationCommandsTest {
 protected:
  SaveTest() { std::filesystem::current_path(directory.path()); }
  ~SaveTest() override { std::filesystem::current_path(old_directory); }

  const std::filesystem::path old_directory = std::filesystem::current_path();
  TempDirectory directory;
};

TEST_F(SaveTest, SavesUnderTheFoldedNameAndAddsToIt) {
  Run("//> one");
  EXPECT_EQ(Run("sav run1"), LINE_FAILED);
  EXPECT_EQ(directory.Read("RUN1.txt"), "//< one\r\n");
  Run("SAV RUN1 ignored");
  EXPECT_EQ(directory.Read("RUN1.txt"), "//< one\r\n//< one\r\n");
  Run("SAV my-log");
  EXPECT_EQ(directory.Read("MY.txt"), "//< one\r\n");
  EXPECT_EQ(program.log(), "//< one\r\n");
}

TEST_F(SaveTest, WithoutANameTheViewIsAsked) {
  Run("//> one");
  program.view.log_file = directory.File("chosen.txt");
  EXPECT_EQ(Run("SAV"), LINE_FAILED);
  EXPECT_EQ(program.view.asked_with, "*.txt");
  EXPECT_EQ(directory.Read("chosen.txt"), "//< one\r\n");
}

TEST_F(SaveTest, FileThatCannotBeWrittenIsSilentInTheLogAndToldToTheView) {
  Run("//> one");
  std::filesystem::create_directory(directory.path() / "TAKEN.txt");
  EXPECT_EQ(Run("SAV taken"), LINE_FAILED);
  EXPECT_EQ(program.log(), "//< one\r\n");
  EXPECT_NE(program.view.not_saved.find("TAKEN.txt"), std::string::npos);
  // Windows denies access to a directory.
  EXPECT_TRUE(program.view.save_error == EISDIR || program.view.save_error == EACCES);
}

TEST_F(SaveTest, DirectoryTooLongForAPathIsRefused) {
  std::filesystem::path deep = directory.path();
  while (deep.string().size() < 270) deep /= std::string(50, 'd');
  std::filesystem::create_directories(deep);
  std::filesystem::current_path(deep);
  EXPECT_EQ(Run("SAV run1"), LINE_FAILED);
  EXPECT_EQ(program.view.save_error, ENAMETOOLONG);
  EXPECT_FALSE(std::filesystem::exists(deep / "RUN1.txt"));
}

TEST(CommandHelpTest, ShowsOneCopyOf143Lines) {
  ProgramState program;
  ShowCommandHelp(&program.action);
  const std::string once = program.log();
  ShowCommandHelp(&program.action);
  EXPECT_EQ(program.log(), once);
  EXPECT_EQ(std::count(once.begin(), once.end(), '\n'), 143);
  EXPECT_TRUE(
      once.starts_with("H A R D W A R E   C O M M A N D S :\r\n \r\nCommand:  SR\r\n"
                       "Synopsis: SR <address> <data>\r\nDescription:\r\n"));
  EXPECT_TRUE(
      once.ends_with(" \r\n \r\nU S E R   R E G I S T E R S :\r\n \r\n"
                     "User registers are divided into special purpose registers IOR and "
                     "IOE\r\nand general purpose registers MLn, where n = 0..7. The "
                     "special purpose\r\nregister IOR contains the result (data, if any) "
                     "of an I/O operation.\r\nIOE is the error register, zero means "
                     "success, one failure.\r\n_\r\n"));
}

TEST(CommandHelpTest, EveryCommandHasItsBlock) {
  ProgramState program;
  ShowCommandHelp(&program.action);
  for (int row = 0; row < kUnknown; ++row) {
    const std::string heading =
        std::string("Command:  ") + kCommands[row].word + "\r\nSynopsis: " + kCommands[row].word;
    EXPECT_NE(program.log().find(heading), std::string::npos) << heading;
  }
}

}  // namespace
}  // namespace vt63x
