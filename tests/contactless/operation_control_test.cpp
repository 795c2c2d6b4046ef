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
  for (const opp& param : {Param(1, 2),
                           Param(1, 3, 2),
                           Param(1, 3, 0, 2),
                           Param(2, 0),
                           Param(2, 1, 9),
                           Param(5, 0x11, 1, 0x11),
                           Param(5, 0x11, 0, 0),
                           Param(6, 0, 1),
                           Param(6, 0, 2, 0, timer),
                           Param(6, 0, 0, 2, timer),
                           Param(6, 0, 1, 0, prescaler_16),
                           Param(6, 1, 2),
                           Param(6, 2, 2),
                           Param(6, 3, 4),
                           Param(6, 4, 0, 16),
                           Param(6, 7),
                           Param(7, 0, 4),
                           Param(7, 3, 65, 0, timer),
                           Param(7, 3, 1),
                           Param(255, 255)}) {
    Bench bench;
    SCOPED_TRACE(testing::Message() << int{param.group} << ", " << int{param.attribute});
    EXPECT_EQ(bench.TraceOf(param, HFL_INVALID_PARAMETER), param.group == 1 ? "M08-08" : "");
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
  Bench old_chip(0x00);
  EXPECT_EQ(old_chip.Set(Param(1, 3)), HFL_SUCCESS);
  EXPECT_EQ(old_chip.Set(Param(6, 1, 1)), HFL_SUCCESS);
  EXPECT_EQ(old_chip.chip.trace, "G37 " + first_six + " M2A+80");

  Bench unlucky(0xB1);  // this version means that none has been read
  EXPECT_EQ(unlucky.Set(Param(1, 3)), HFL_SUCCESS);
  EXPECT_EQ(unlucky.Set(Param(6, 1, 1)), HFL_SUCCESS);
  EXPECT_EQ(unlucky.chip.trace, "G37 " + first_six + " G28 S28=3F G29 S29=11 G37 M2A+80");
}

TEST(OperationControlTest, FailedVersionReadIsTriedAgain) {
  Bench bench;
  bench.chip.fail_from = 1;
  EXPECT_EQ(bench.Set(Param(6, 1, 1)), bench.chip.fail_status);
  bench.chip.fail_from = 0;
  EXPECT_EQ(bench.Set(Param(6, 1, 1)), HFL_SUCCESS);
  EXPECT_EQ(bench.chip.trace, "G37 G37 M2A+80");
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
  EXPECT_EQ(bench.chip.sent, std::vector<Bytes>({{0x12, 0x34}}));
  EXPECT_TRUE(bench.chip.trace.ends_with(
      "W09=12,34 G01 S01=03 G01 G07 M02-00 M03-00 S04=00 S05=00 S0A=80 S04=01 G21 G22"))
      << bench.chip.trace;
  EXPECT_EQ(param.param_a, 0x26);
  EXPECT_EQ(param.param_b, 0xCF);
}

TEST(OperationControlTest, AnyFailingAccessEndsTheOperationWithItsStatus) {
  std::uint8_t buffer[64] = {0xA5, 0x02, 0x03, 0x00};
  struct Case {
    HFLSTATUS (OperationControlWrapper::*operation)(opp*);
    opp param;
    int at_least;
  };
  constexpr auto kSet = &OperationControlWrapper::SetAttribute;
  constexpr auto kGet = &OperationControlWrapper::GetAttribute;
  for (const Case& c :
       {Case{kSet, Param(1, 3), 20}, Case{kSet, Param(6, 0, 1, 0, buffer), 8},
        Case{kSet, Param(5, 0x11, 0, 0x11), 7}, Case{kSet, Param(7, 3, 64, 0, buffer), 20},
        Case{kGet, Param(0, 0), 1}, Case{kGet, Param(6, 6), 2}}) {
    ExpectEveryFailingAccessToEndIt(
        [](ScriptedRegisters& chip) {
          chip.registers[0x07] = 0x20;
          chip.registers[0x37] = 0x01;
        },
        [&](ScriptedRegisters& chip) {
          OperationControlWrapper control;
          control.Init(OperationControlOpen, &chip);
          opp param = c.param;
          return (control.*c.operation)(&param);
        },
        c.at_least);
  }
}

TEST(OperationControlTest, CrcCalculationUsesTheWaitCallbackUntilItIsTakenAway) {
  Bench bench;
  bench.chip.answers.assign(2, {0x00, 0, 0, 0, {}});
  bench.chip.registers[0x07] = 0x20;
  HFLSTATUS status = 0x0BAD;
  auto* const garbage = reinterpret_cast<OperationControlCore*>(0x1234);
  set_wait_callback_param install{GiveUpWaiting, &status, garbage};
  bench.control.SetWaitCallback(&install);
  opp param{7, 3, 0, 0x99, nullptr, garbage};
  EXPECT_EQ(bench.control.SetAttribute(&param), 0x0BAD);
  EXPECT_EQ(param.param_b, 0x99);  // the result is not read after a failed command

  set_wait_callback_param remove{nullptr, nullptr, nullptr};
  bench.control.SetWaitCallback(&remove);
  EXPECT_EQ(bench.control.SetAttribute(&param), HFL_SUCCESS);
  EXPECT_EQ(install.self, garbage);
  EXPECT_EQ(param.self, garbage);
}

}  // namespace
}  // namespace vt63x
