// SPDX-License-Identifier: MIT

#include "script/interpreter.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "frontend/register_control.h"
#include "shell/state/log.h"
#include "tests/support/program_state.h"
#include "tests/support/register_bus.h"

namespace vt63x {
namespace {

class InterpreterTest : public testing::Test {
 protected:
  InterpreterTest() {
    registers.Init(RegisterControlOpen, &bus);
    program.state.component_ptrs.register_control = &registers;
    bus.registers[0x37] = 0x91;
  }

  int Run(std::string line) {
    log_clear(&program.action);
    const int result = ExecuteLine(parser, line.data());
    folded = line.c_str();
    return result;
  }

  ProgramState program;
  RegisterBus bus;
  RegisterControlWrapper registers;
  LineParser parser{&program.action};
  std::string folded;
};

constexpr char kOperandError[] = "Error: Invalid numeric format / parameter identifier.\r\n";

TEST_F(InterpreterTest, EveryLineGivesItsResultAndItsLog) {
  using Case = std::tuple<const char*, int, std::string>;
  const Case cases[] = {
      {"sr 1 2", LINE_OK, "SR  01  02                     // (Status: 0x0000)\r\n"},
      {"SR 01 02 // enable", LINE_OK, "SR  01  02                     // (Status: 0x0000)\r\n"},
      {"GR 37", LINE_OK, "GR  37          // data == 91  // (Status: 0x0000)\r\n"},
      {"GR 37 02 03", LINE_OK, "GR  37          // data == 91  // (Status: 0x0000)\r\n"},
      {"MR 01 20 1", LINE_OK, "MR  01 20 1                    // (Status: 0x0000)\r\n"},
      {"MR 01 20 FF", LINE_OK, "MR  01 20 FF                    // (Status: 0x0000)\r\n"},
      {"RE 37 91", LINE_OK, "RE  37  91      // data == 91  // (Status: 0x0000)\r\n"},
      {"RE 37 90", LINE_OK,
       "RE  37  90      // data == 91  // (Status: 0x0000) **ERROR: Expected data different from "
       "read.**\r\n"
       "                               //                  **Expected data: 90, Received data: "
       "91 **\r\n"},
      {"RF 37 81 81", LINE_OK, "RF  37  81  81  // data == 91  // (Status: 0x0000)\r\n"},
      {"RF 37 91 80", LINE_OK,
       "RF  37  91  80  // data == 91  // (Status: 0x0000) **ERROR: Expected data different from "
       "read.**\r\n"
       "                               //                  **Expected data: 91, Received data: "
       "91 **\r\n"},
      {"", LINE_OK, ""},
      {" \t ", LINE_OK, ""},
      {"\x01GR 37", LINE_OK, ""},
      {"\x80GR 37", LINE_OK, ""},
      {"// a comment", LINE_OK, ""},
      {"//", LINE_OK, ""},
      {"//.text", LINE_OK, ""},
      {"//comment", LINE_FAILED, "ERROR: Unknown Command - \"//COMMENT\" (length = 9).\r\n"},
      {"SRX 01 02", LINE_FAILED, "ERROR: Unknown Command - \"SRX\" (length = 3).\r\n"},
      {"sr1 02", LINE_FAILED, "ERROR: Unknown Command - \"SR1\" (length = 3).\r\n"},
      {"//> Hello World", LINE_OK, "//< Hello World\r\n"},
      {"//>  two blanks", LINE_OK, "//<  two blanks\r\n"},
      {"//>\ttab", LINE_OK, "//< tab\r\n"},
      {"//>", LINE_OK, "//< \r\n"},
      {"//> ", LINE_OK, "//< \r\n"},
      {"x //> kept Case", LINE_OK, "//< kept Case\r\n"},
      {"//>Hello", LINE_FAILED, "ERROR: Unknown Command - \"//>H\" (length = 4).\r\n"},
      {"//# 5a", LINE_OK, "Value = 0x5A\r\n"},
      {"GR", LINE_FAILED, kOperandError},
      {"GR ML9", LINE_FAILED, kOperandError},
      {"SR", LINE_FAILED, std::string(kOperandError) + kOperandError},
      {"MR 01", LINE_FAILED, std::string(kOperandError) + kOperandError},
      {"JNE X Y Z", LINE_FAILED, std::string(kOperandError) + kOperandError},
      {"//# ", LINE_FAILED, kOperandError},
      {"JMP", LINE_FAILED, ""},
      {"JMP -", LINE_FAILED, ""},
      {"JNE 01 02", LINE_FAILED, ""},
      {"JNE 01 01 X", LINE_OK, ""},
      {"::: name", LINE_OK, ""},
      {"BRK", LINE_BREAK, ""},
      {"MOV 5A ML0", LINE_OK, ""},
      {"INC 12", LINE_OK, ""},
  };
  for (const auto& [line, result, log] : cases) {
    EXPECT_EQ(Run(line), result) << line;
    EXPECT_EQ(program.log(), log) << line;
  }
}

TEST_F(InterpreterTest, LineIsFoldedInPlaceUnlessItIsAMessage) {
  Run("sr 1 2 // lower \xE4 z");
  EXPECT_EQ(folded, "SR 1 2 // LOWER \xE4 Z");
  Run("//> keep Me");
  EXPECT_EQ(folded, "//> keep Me");
}

TEST_F(InterpreterTest, RegisterOperandsHoldAddressesAndValues) {
  parser.ML0 = 0x37;
  Run("GR ml0");
  EXPECT_EQ(parser.IOR, 0x91);
  Run("MOV ML1 IOR");
  Run("SR 05 ML1");
  EXPECT_EQ(bus.registers[0x05], 0x91);
}

TEST_F(InterpreterTest, CountersWrapAroundAndWritesToNumbersAreLost) {
  parser.ML3 = 0;
  Run("DEC ML3");
  EXPECT_EQ(parser.ML3, 0xFF);
  Run("INC ML3");
  EXPECT_EQ(parser.ML3, 0x00);
  Run("MOV 5A ML3");
  Run("//# 5A");
  EXPECT_EQ(program.log(), "Value = 0x5A\r\n");
}

TEST_F(InterpreterTest, ResultAndErrorRegistersFollowTheAccess) {
  Run("RE 37 90");
  EXPECT_EQ(parser.IOR, 1);
  Run("RF 37 10 10");
  EXPECT_EQ(parser.IOR, 0);
  Run("GR 37");
  EXPECT_EQ(parser.IOR, 0x91);
  Run("SR 01 02");
  EXPECT_EQ(parser.IOR, 0x91);
  EXPECT_EQ(parser.IOE, 0);

  bus.silent = true;
  for (const char* line : {"SR 01 02", "GR 37", "MR 01 20 1", "RE 37 00", "RF 37 00 FF"}) {
    parser.IOE = 0;
    EXPECT_EQ(Run(line), LINE_OK) << line;
    EXPECT_EQ(parser.IOE, 1) << line;
    EXPECT_NE(program.log().find("(Status: 0x0104)"), std::string::npos) << program.log();
  }
  EXPECT_EQ(parser.IOR, 0) << "a failed read compares as 0";
}

TEST_F(InterpreterTest, FailedAccessReadsAsZeroWhereverItFails) {
  parser.IOR = 0x55;
  bus.refuse_writes = true;
  Run("GR 37");
  EXPECT_EQ(parser.IOR, 0);
  EXPECT_EQ(program.log(), "GR  37          // data == 00  // (Status: 0x0104)\r\n");
}

TEST_F(InterpreterTest, BadOperandTouchesNeitherChipNorRegisters) {
  parser.IOR = 0x11;
  parser.IOE = 0x22;
  bus.registers[0x01] = 0x33;
  for (const char* line : {"SR 01 XX", "SR XX 01", "MR 01 01 ?", "GR ?", "RE 01", "MOV ML0 ?"}) {
    EXPECT_EQ(Run(line), LINE_FAILED) << line;
  }
  EXPECT_EQ(parser.IOR, 0x11);
  EXPECT_EQ(parser.IOE, 0x22);
  EXPECT_EQ(parser.ML0, 0);
  EXPECT_EQ(bus.registers[0x01], 0x33);
}

TEST_F(InterpreterTest, TakenJumpSkipsSilentlyUntilItsLabel) {
  EXPECT_EQ(Run("jmp end"), LINE_JUMP);
  EXPECT_NE(parser.searching, 0);
  EXPECT_STREQ(parser.label, "END");
  for (const char* line : {"FOO", "SR 01 02", "BRK", "GR", "::: other", ":::", "JMP other"}) {
    EXPECT_EQ(Run(line), LINE_OK) << line;
    EXPECT_NE(parser.searching, 0) << line;
    EXPECT_EQ(program.log(), "") << line;
  }
  EXPECT_EQ(Run("::: End of it"), LINE_OK);
  EXPECT_EQ(parser.searching, 0);
  EXPECT_EQ(Run("BRK"), LINE_BREAK);
}

TEST_F(InterpreterTest, LabelsAreComparedUpTo31Characters) {
  const std::string name(40, 'L');
  EXPECT_EQ(Run("JNE 01 02 " + name), LINE_JUMP);
  EXPECT_EQ(std::string(parser.label), std::string(31, 'L'));
  Run("::: " + name + "OTHER");
  EXPECT_EQ(parser.searching, 0);
}

TEST_F(InterpreterTest, MessageIsLoggedWholeHoweverLong) {
  const std::string text(1000, 'm');
  Run("//> " + text);
  EXPECT_EQ(program.log(), "//< " + text + "\r\n");
}

TEST_F(InterpreterTest, FaultsNameKindAndText) {
  for (const char* line : {"FOO", "GR ?", "CHB 4800", "JMP", "RE 37 90"}) {
    Run(line);
  }
  bus.silent = true;
  Run("GR 37");
  std::vector<ScriptFaultKind> kinds;
  for (const auto& fault : program.view.faults) kinds.push_back(fault.kind);
  EXPECT_EQ(kinds, (std::vector{ScriptFaultKind::kUnknownCommand, ScriptFaultKind::kBadOperand,
                                ScriptFaultKind::kBadBitRate, ScriptFaultKind::kJumpWithoutLabel,
                                ScriptFaultKind::kDifference, ScriptFaultKind::kAccessFailed}));
  EXPECT_EQ(program.view.faults[0].text, "FOO");
  EXPECT_EQ(program.view.faults[1].text, "GR: operand 1");
  EXPECT_EQ(program.view.faults[2].text, "4800");
  EXPECT_EQ(parser.totals.comparisons, 1u);
  EXPECT_EQ(parser.totals.differences, 1u);
  EXPECT_EQ(parser.totals.accesses, 2u);
  EXPECT_EQ(parser.totals.access_failures, 1u);
}

TEST_F(InterpreterTest, EngineRunsWithoutAView) {
  program.state.view = nullptr;
  for (const char* line : {"FOO", "GR ?", "CHB 9600", "CHB 1", "JMP", "RE 37 90", "SAV"}) Run(line);
  EXPECT_EQ(parser.totals.lines, 7u);
}

}  // namespace
}  // namespace vt63x
