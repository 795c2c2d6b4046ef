// SPDX-License-Identifier: MIT

#include "contactless/operation_control.h"

#include <gtest/gtest.h>

#include "tests/contactless/scripted_registers.h"

namespace vt63x {
namespace {

opp Param(std::uint8_t group, std::uint8_t attribute, std::uint8_t param_a = 0,
          std::uint8_t param_b = 0, std::uint8_t* buffer = nullptr) {
  return {group, attribute, param_a, param_b, buffer, nullptr};
}

struct Bench {
  explicit Bench(std::uint8_t version = 0xA5) {
    control.Init(OperationControlOpen, &chip);
    chip.registers.fill(0xFF);
    chip.registers[0x37] = version;
  }
  HFLSTATUS Set(opp param) { return control.SetAttribute(&param); }
  // The setting's own accesses, without the one that learns the version.
  std::string TraceOf(opp param, HFLSTATUS expected) {
    Set(Param(9, 0));
    chip.trace.clear();
    EXPECT_EQ(Set(param), expected);
    return chip.trace;
  }

  ScriptedRegisters chip;
  OperationControlWrapper control;
};

TEST(OperationControlTest, EverySettingMakesItsAccesses) {
  std::uint8_t timer[4] = {0xA5, 0x02, 0x03, 0x04};
  std::uint8_t highest_prescaler[4] = {0xFF, 0x0F, 0x00, 0x00};
  const std::pair<opp, const char*> cases[] = {
      {Param(1, 3, 1, 0), "M08-08 G12 S12=98 G13 S13=88 S24=15"},
      {Param(1, 3, 0, 1),
       "M08-08 G12 S12=88 G13 S13=98 S24=26 G15 S15=FF G18 S18=55 G24 S24=26 G19 S19=4D "
       "G26 S26=59 G27 S27=F4 G28 S28=3F G29 S29=11"},
      {Param(5, 0x11, 0, 0x11), "G16 S16=CD G17 S17=7F S31=18 M13-04"},
      {Param(6, 0, 1, 0, timer), "M2A+80 M2A-10 S2B=A5 G2A S2A=E2 S2D=03 S2C=04"},
      {Param(6, 0, 0, 1, highest_prescaler), "M2A-80 M2A+10 S2B=FF G2A S2A=7F S2D=00 S2C=00"},
      {Param(6, 1, 1, 9), "M2A+80"},
      {Param(6, 2, 0), "M2A-10"},
      {Param(6, 3, 2), "G2A S2A=DF"},
      {Param(6, 3, 3), "G2A S2A=FF"},
      {Param(6, 4, 0xA6, 0x0F), "S2B=A6 G2A S2A=FF"},
      {Param(6, 5, 0xE8, 0x03), "S2D=E8 S2C=03"},
      {Param(7, 0, 0), "G11 S11=FC"},
      {Param(7, 0, 3), "G11 S11=FF"},
      {Param(7, 2, 1), "M11+80"},
      {Param(7, 2, 2), "M11-80"},
  };
  for (const auto& [param, trace] : cases) {
    Bench bench;  // every register reads 0xFF at first
    EXPECT_EQ(bench.TraceOf(param, HFL_SUCCESS), trace);
  }
}

TEST(OperationControlTest, RefusedSettingsTouchNothingButTheAuthenticatedState) {
  std::uint8_t timer[4] = {};
  std::uint8_t prescaler_16[4] = {0x00, 0x10, 0x00, 0x00};
  // Group, attribute, parameters, which buffer.
  for (const std::string row : {"1 2",
                                "1 3 2",
                                "1 3 0 2",
                                "2 0",
                                "2 1 9",
                                "5 17 1 17",
                                "5 17",
                                "6 0 1",
                                "6 0 2 0 timer",
                                "6 0 0 2 timer",
                                "6 0 1 0 prescaler",
                                "6 1 2",
                                "6 2 2",
                                "6 3 4",
                                "6 4 0 16",
                                "6 7",
                                "7 0 4",
                                "7 3 65 0 timer",
                                "7 3 1",
                                "255 255"}) {
    opp param = Param(0, 0);
    std::sscanf(row.c_str(), "%hhu %hhu %hhu %hhu", &param.group, &param.attribute, &param.param_a,
                &param.param_b);
    if (row.ends_with("timer")) param.buffer = timer;
    if (row.ends_with("prescaler")) param.buffer = prescaler_16;
    Bench bench;
    EXPECT_EQ(bench.TraceOf(param, HFL_INVALID_PARAMETER), param.group == 1 ? "M08-08" : "") << row;
  }
  for (const opp& param : {Param(0, 0), Param(0, 0x55), Param(6, 6), Param(7, 1)}) {
    Bench bench;
    EXPECT_EQ(bench.TraceOf(param, HFL_NOT_SUPPORTED), "") << int{param.group};
  }
}

TEST(OperationControlTest, EverySpeedHasItsCode) {
  std::uint8_t index = 0;
  for (const char* code : {"EB", "CB", "AB", "9A", "79", "5A", "3A", "1C", "14"}) {
    Bench bench;
    EXPECT_EQ(bench.TraceOf(Param(2, 1, index++, 7), HFL_SUCCESS), std::string("S1F=") + code);
  }
}

TEST(OperationControlTest, VersionIsReadOnceAndChoosesTheDefaults) {
  const std::string first_six =
      "M08-08 G12 S12=88 G13 S13=88 S24=26 G15 S15=FF G18 S18=55 G24 S24=26 G19 S19=4D "
      "G26 S26=59 G27 S27=F4";
  // 0xB1 means that none has been read.
  for (const auto& [version, trace] :
       {std::pair<std::uint8_t, std::string>{0x00, "G37 " + first_six + " M2A+80"},
        {0xB1, "G37 " + first_six + " G28 S28=3F G29 S29=11 G37 M2A+80"}}) {
    Bench bench(version);
    EXPECT_EQ(bench.Set(Param(1, 3)), HFL_SUCCESS);
    EXPECT_EQ(bench.Set(Param(6, 1, 1)), HFL_SUCCESS);
    EXPECT_EQ(bench.chip.trace, trace);
  }
  Bench failing;
  failing.chip.fail_from = 1;
  EXPECT_EQ(failing.Set(Param(6, 1, 1)), failing.chip.fail_status);
  failing.chip.fail_from = 0;
  EXPECT_EQ(failing.Set(Param(6, 1, 1)), HFL_SUCCESS);
  EXPECT_EQ(failing.chip.trace, "G37 G37 M2A+80") << "a failed reading is tried again";
}

TEST(OperationControlTest, ReadingsPutTheHighByteIntoParamBAndOthersAreRefused) {
  struct Case {
    opp param;
    HFLSTATUS status;
    const char* trace;
    std::uint8_t param_a, param_b;
  };
  std::vector<Case> cases = {{Param(0, 0), HFL_SUCCESS, "G37", 0xA5, 0x00},
                             {Param(6, 6), HFL_SUCCESS, "G2E G2F", 0x2F, 0x2E},
                             {Param(7, 1), HFL_SUCCESS, "G21 G22", 0x22, 0x21}};
  for (const opp& param :
       {Param(1, 3), Param(2, 1), Param(5, 0x11), Param(6, 0), Param(6, 1), Param(6, 2),
        Param(6, 3), Param(6, 4), Param(6, 5), Param(7, 0), Param(7, 3)}) {
    cases.push_back({param, HFL_NOT_SUPPORTED, "", 0x55, 0x66});
  }
  for (const opp& param : {Param(0, 1), Param(1, 2), Param(6, 7), Param(7, 2), Param(8, 0)}) {
    cases.push_back({param, HFL_INVALID_PARAMETER, "", 0x55, 0x66});
  }
  for (const Case& c : cases) {
    Bench bench;
    for (const std::uint8_t address : Bytes{0x21, 0x22, 0x2E, 0x2F}) {
      bench.chip.registers[address] = address;
    }
    opp param = Param(c.param.group, c.param.attribute, 0x55, 0x66);
    SCOPED_TRACE(testing::Message() << int{param.group} << ", " << int{param.attribute});
    EXPECT_EQ(bench.control.GetAttribute(&param), c.status);
    EXPECT_EQ(bench.chip.trace, c.trace);
    EXPECT_EQ(param.param_a, c.param_a);
    EXPECT_EQ(param.param_b, c.param_b);
  }
}

TEST(OperationControlTest, CrcOfDataComesBackInTheParameters) {
  std::uint8_t data[] = {0x12, 0x34, 0x56};
  Bench bench;
  bench.chip.registers[0x01] = 0x00;
  bench.chip.registers[0x21] = 0xCF;
  bench.chip.registers[0x22] = 0x26;
  opp param{7, 3, 2, 0x99, data, nullptr};
  EXPECT_EQ(bench.control.SetAttribute(&param), HFL_SUCCESS);
  EXPECT_EQ(bench.chip.sent, "1234");
  EXPECT_TRUE(bench.chip.trace.ends_with(
      "W09=12,34 G01 S01=03 G01 G07 M02-00 M03-00 S04=00 S05=00 S0A=80 S04=01 G21 G22"))
      << bench.chip.trace;
  EXPECT_EQ(param.param_a, 0x26);
  EXPECT_EQ(param.param_b, 0xCF);
}

}  // namespace
}  // namespace vt63x
