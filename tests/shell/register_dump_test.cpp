// SPDX-License-Identifier: MIT

#include "shell/register_dump.h"

#include <gtest/gtest.h>

#include <string>

#include "shell/component_stack.h"
#include "tests/support/program_state.h"
#include "tests/support/register_bus.h"

namespace vt63x {
namespace {

class RegisterDumpTest : public testing::Test {
 protected:
  RegisterDumpTest() {
    for (int i = 0; i < 64; ++i) bus.registers[i] = static_cast<std::uint8_t>(0xC0 + i);
  }

  ProgramState program;
  RegisterBus bus;
  ComponentStack stack{program.state, &bus};
};

TEST_F(RegisterDumpTest, RowsOfSixteenWithoutTheFifo) {
  EXPECT_EQ(DumpRegisters(&program.action), HFL_SUCCESS);
  EXPECT_EQ(program.log(),
            "Registersetting : \r\n"
            "    0  1  2  3  4  5  6  7   8  9  A  B  C  D  E  F\r\n"
            "P0 00 c1 c2 c3 c4 c5 c6 c7  c8 xx ca cb cc cd ce cf  \r\n"
            "P1 d0 d1 d2 d3 d4 d5 d6 d7  d8 d9 da db dc dd de df  \r\n"
            "P2 e0 e1 e2 e3 e4 e5 e6 e7  e8 e9 ea eb ec ed ee ef  \r\n"
            "P3 f0 f1 f2 f3 f4 f5 f6 00  f8 f9 fa fb fc fd fe ff  \r\n");
}

TEST_F(RegisterDumpTest, FailingReadEndsTheDumpWithoutItsRow) {
  // Two writes of three transfers, then two a read: 0x25 is the 37th read, 0x09 left out.
  int transfers = 0;
  bus.on_transfer = [&] { bus.silent = ++transfers > 6 + 2 * 36; };
  EXPECT_EQ(DumpRegisters(&program.action), HFL_LINK_FAILED);
  EXPECT_TRUE(program.log().ends_with("dd de df  \r\n")) << program.log();
}

TEST_F(RegisterDumpTest, FailingWriteIsLoggedAndTheDumpGoesOn) {
  int transfers = 0;
  bus.on_transfer = [&] { bus.silent = ++transfers <= 6; };
  EXPECT_EQ(DumpRegisters(&program.action), HFL_LINK_FAILED);
  EXPECT_TRUE(program.log().starts_with(
      "Writing Error on register 0x00: HFLSTATUS 0x0104!\r\nRegistersetting : \r\n"))
      << program.log();
  EXPECT_NE(program.log().find("P3 "), std::string::npos);
}

}  // namespace
}  // namespace vt63x
