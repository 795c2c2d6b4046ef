// SPDX-License-Identifier: MIT

#include "script/command_help.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "script/command_table.h"
#include "tests/support/program_state.h"

namespace vt63x {
namespace {

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
