#include "contactless/operation_control.h"

#include <gtest/gtest.h>

#include "tests/contactless/scripted_registers.h"

namespace vt63x {
namespace {

struct Bench {
  explicit Bench(std::uint8_t version = 0xA5) {
    control.Init(OperationControlOpen, &chip);
    chip.registers.fill(0xFF);
    chip.registers[0x37] = version;
  }
  HFLSTATUS Set(opp param) { return control.SetAttribute(&param); }
  // The setting's own accesses, without the one that learns the version.
  std::string TraceOf(opp param, HFLSTATUS expected) {
    Set({9, 0, 0, 0, nullptr, nullptr});
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
  struct Case {
    std::uint8_t group, attribute, param_a, param_b;
    std::uint8_t* buffer;
    const char* trace;  // every register reads 0xFF at first
  };
  for (const Case& c : {
           Case{1, 3, 1, 0, nullptr, "M08-08 G12 S12=98 G13 S13=88 S24=15"},
           Case{1, 3, 1, 1, nullptr, "M08-08 G12 S12=98 G13 S13=98 S24=15"},
           Case{1, 3, 0, 1, nullptr,
                "M08-08 G12 S12=88 G13 S13=98 S24=26 G15 S15=FF G18 S18=55 G24 S24=26 G19 S19=4D "
                "G26 S26=59 G27 S27=F4 G28 S28=3F G29 S29=11"},
           Case{2, 1, 0, 7, nullptr, "S1F=EB"},
           Case{2, 1, 1, 0, nullptr, "S1F=CB"},
           Case{2, 1, 2, 0, nullptr, "S1F=AB"},
           Case{2, 1, 3, 0, nullptr, "S1F=9A"},
           Case{2, 1, 4, 0, nullptr, "S1F=79"},
           Case{2, 1, 5, 0, nullptr, "S1F=5A"},
           Case{2, 1, 6, 0, nullptr, "S1F=3A"},
           Case{2, 1, 7, 0, nullptr, "S1F=1C"},
           Case{2, 1, 8, 0, nullptr, "S1F=14"},
           Case{5, 0x11, 0, 0x11, nullptr, "G16 S16=CD G17 S17=7F S31=18 M13-04"},
           Case{6, 0, 1, 0, timer, "M2A+80 M2A-10 S2B=A5 G2A S2A=E2 S2D=03 S2C=04"},
           Case{6, 0, 0, 1, highest_prescaler, "M2A-80 M2A+10 S2B=FF G2A S2A=7F S2D=00 S2C=00"},
           Case{6, 1, 1, 9, nullptr, "M2A+80"},
           Case{6, 1, 0, 0, nullptr, "M2A-80"},
           Case{6, 2, 1, 0, nullptr, "M2A+10"},
           Case{6, 2, 0, 0, nullptr, "M2A-10"},
           Case{6, 3, 2, 0, nullptr, "G2A S2A=DF"},
           Case{6, 3, 0, 0, nullptr, "G2A S2A=9F"},
           Case{6, 3, 3, 0, nullptr, "G2A S2A=FF"},
           Case{6, 4, 0xA6, 0x02, nullptr, "S2B=A6 G2A S2A=F2"},
           Case{6, 4, 0xFF, 0x0F, nullptr, "S2B=FF G2A S2A=FF"},
           Case{6, 5, 0xE8, 0x03, nullptr, "S2D=E8 S2C=03"},
           Case{7, 0, 0, 0, nullptr, "G11 S11=FC"},
           Case{7, 0, 3, 0, nullptr, "G11 S11=FF"},
           Case{7, 2, 0, 0, nullptr, "M11-80"},
           Case{7, 2, 1, 0, nullptr, "M11+80"},
           Case{7, 2, 2, 0, nullptr, "M11-80"},
       }) {
    Bench bench;
    const opp param{c.group, c.attribute, c.param_a, c.param_b, c.buffer, nullptr};
    EXPECT_EQ(bench.TraceOf(param, HFL_SUCCESS), c.trace);
  }
}

TEST(OperationControlTest, RefusedSettingsTouchNothingButTheAuthenticatedState) {
  std::uint8_t prescaler_16[4] = {0x00, 0x10, 0x00, 0x00};
  struct Case {
    std::uint8_t group, attribute, param_a, param_b;
    std::uint8_t* buffer;
    HFLSTATUS status;
    const char* trace;
  };
  for (const Case& c : {
           Case{0, 0, 0, 0, nullptr, HFL_NOT_SUPPORTED, ""},
           Case{0, 0x55, 0, 0, nullptr, HFL_NOT_SUPPORTED, ""},
           Case{1, 2, 0, 0, nullptr, HFL_INVALID_PARAMETER, "M08-08"},
           Case{1, 3, 2, 0, nullptr, HFL_INVALID_PARAMETER, "M08-08"},
           Case{1, 3, 0, 2, nullptr, HFL_INVALID_PARAMETER, "M08-08"},
           Case{2, 0, 0, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{2, 1, 9, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{3, 0, 0, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{4, 1, 0, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{5, 0x10, 0, 0x11, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{5, 0x11, 1, 0x11, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{5, 0x11, 0, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{6, 0, 1, 0, prescaler_16, HFL_INVALID_PARAMETER, ""},
           Case{6, 0, 1, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{6, 0, 2, 0, prescaler_16, HFL_INVALID_PARAMETER, ""},
           Case{6, 1, 2, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{6, 2, 2, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{6, 3, 4, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{6, 4, 0, 16, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{6, 6, 0, 0, nullptr, HFL_NOT_SUPPORTED, ""},
           Case{6, 7, 0, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{7, 0, 4, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{7, 1, 0, 0, nullptr, HFL_NOT_SUPPORTED, ""},
           Case{7, 3, 65, 0, prescaler_16, HFL_INVALID_PARAMETER, ""},
           Case{7, 3, 1, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{7, 4, 0, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{8, 0, 0, 0, nullptr, HFL_INVALID_PARAMETER, ""},
           Case{255, 255, 0, 0, nullptr, HFL_INVALID_PARAMETER, ""},
       }) {
    Bench bench;
    SCOPED_TRACE(testing::Message() << int{c.group} << ", " << int{c.attribute});
    const opp param{c.group, c.attribute, c.param_a, c.param_b, c.buffer, nullptr};
    EXPECT_EQ(bench.TraceOf(param, c.status), c.trace);
  }
}

TEST(OperationControlTest, VersionIsReadOnceAndChoosesTheDefaults) {
  const opp speeds{1, 3, 0, 0, nullptr, nullptr};
  const std::string first_six =
      "M08-08 G12 S12=88 G13 S13=88 S24=26 G15 S15=FF G18 S18=55 G24 S24=26 G19 S19=4D "
      "G26 S26=59 G27 S27=F4";
  Bench old_chip(0x00);
  EXPECT_EQ(old_chip.control.members.version, 0xB1);
  EXPECT_EQ(old_chip.Set(speeds), HFL_SUCCESS);
  EXPECT_EQ(old_chip.chip.trace, "G37 " + first_six);
  EXPECT_EQ(old_chip.control.members.version, 0x00);

  old_chip.chip.trace.clear();
  EXPECT_EQ(old_chip.Set({6, 1, 1, 0, nullptr, nullptr}), HFL_SUCCESS);
  EXPECT_EQ(old_chip.chip.trace, "M2A+80");

  Bench unlucky(0xB1);
  EXPECT_EQ(unlucky.Set(speeds), HFL_SUCCESS);
  EXPECT_EQ(unlucky.chip.trace, "G37 " + first_six + " G28 S28=3F G29 S29=11");
  unlucky.chip.trace.clear();
  EXPECT_EQ(unlucky.Set({6, 1, 1, 0, nullptr, nullptr}), HFL_SUCCESS);
  EXPECT_EQ(unlucky.chip.trace, "G37 M2A+80");
}

TEST(OperationControlTest, FailedVersionReadIsTriedAgain) {
  Bench bench;
  bench.chip.fail_from = 1;
  EXPECT_EQ(bench.Set({6, 1, 1, 0, nullptr, nullptr}), bench.chip.fail_status);
  EXPECT_EQ(bench.control.members.version, 0xB1);
  bench.chip.fail_from = 0;
  bench.chip.trace.clear();
  EXPECT_EQ(bench.Set({6, 1, 1, 0, nullptr, nullptr}), HFL_SUCCESS);
  EXPECT_EQ(bench.chip.trace, "G37 M2A+80");
}

TEST(OperationControlTest, EveryAttributeReadsBackOrIsRefused) {
  for (int group = 0; group < 256; ++group) {
    for (int attribute = 0; attribute < 256; ++attribute) {
      const bool one_way = (group == 1 && attribute == 3) || (group == 2 && attribute == 1) ||
                           (group == 5 && attribute == 0x11) || (group == 6 && attribute <= 5) ||
                           (group == 7 && (attribute == 0 || attribute == 3));
      const bool readable = (group == 0 && attribute == 0) || (group == 6 && attribute == 6) ||
                            (group == 7 && attribute == 1);
      if (readable) continue;
      Bench bench;
      opp param{static_cast<std::uint8_t>(group),
                static_cast<std::uint8_t>(attribute),
                0x55,
                0x66,
                nullptr,
                nullptr};
      ASSERT_EQ(bench.control.GetAttribute(&param),
                one_way ? HFL_NOT_SUPPORTED : HFL_INVALID_PARAMETER)
          << group << ", " << attribute;
      ASSERT_EQ(bench.chip.accesses, 0);
      ASSERT_EQ(param.param_a, 0x55);
    }
  }
}

TEST(OperationControlTest, ReadingsPutTheHighByteIntoParamB) {
  struct Case {
    std::uint8_t group, attribute;
    const char* trace;
    std::uint8_t param_a, param_b;
  };
  for (const Case& c : {Case{0, 0, "G37", 0xA5, 0x00}, Case{6, 6, "G2E G2F", 0x2F, 0x2E},
                        Case{7, 1, "G21 G22", 0x22, 0x21}}) {
    Bench bench;
    for (const std::uint8_t address : Bytes{0x21, 0x22, 0x2E, 0x2F}) {
      bench.chip.registers[address] = address;
    }
    opp param{c.group, c.attribute, 0x55, 0x66, nullptr, nullptr};
    EXPECT_EQ(bench.control.GetAttribute(&param), HFL_SUCCESS);
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
    opp param;
    int at_least;
  };
  const auto ready = [](ScriptedRegisters& chip) {
    chip.registers[0x07] = 0x20;
    chip.registers[0x37] = 0x01;
  };
  for (const Case& c :
       {Case{{1, 3, 0, 0, nullptr, nullptr}, 20}, Case{{1, 3, 1, 1, nullptr, nullptr}, 7},
        Case{{2, 1, 4, 0, nullptr, nullptr}, 2}, Case{{5, 0x11, 0, 0x11, nullptr, nullptr}, 7},
        Case{{6, 0, 1, 0, buffer, nullptr}, 8}, Case{{6, 2, 1, 0, nullptr, nullptr}, 2},
        Case{{6, 4, 1, 0, nullptr, nullptr}, 4}, Case{{6, 5, 1, 0, nullptr, nullptr}, 3},
        Case{{7, 2, 1, 0, nullptr, nullptr}, 2}, Case{{7, 3, 64, 0, buffer, nullptr}, 20}}) {
    const auto set = [&](ScriptedRegisters& chip) {
      OperationControlWrapper control;
      control.Init(OperationControlOpen, &chip);
      opp param = c.param;
      return control.SetAttribute(&param);
    };
    ExpectEveryFailingAccessToEndIt(ready, set, c.at_least);
  }
  for (const opp& reading : {opp{0, 0, 0, 0, nullptr, nullptr}, opp{6, 6, 0, 0, nullptr, nullptr},
                             opp{7, 1, 0, 0, nullptr, nullptr}}) {
    const auto get = [&](ScriptedRegisters& chip) {
      OperationControlWrapper control;
      control.Init(OperationControlOpen, &chip);
      opp param = reading;
      return control.GetAttribute(&param);
    };
    ExpectEveryFailingAccessToEndIt(ready, get, 1);
  }
}

int callback_calls = 0;
HFLSTATUS CountingCallback(wait_event_cb_param* event) {
  EXPECT_EQ(event->wait_cb_context, &callback_calls);
  EXPECT_EQ(event->command, 0x03);
  ++callback_calls;
  return 0x0BAD;
}

TEST(OperationControlTest, CrcCalculationUsesTheWaitCallbackUntilItIsTakenAway) {
  Bench bench;
  bench.chip.answers.assign(2, {0x00, 0, 0, 0, {}});
  bench.chip.registers[0x07] = 0x20;
  auto* const garbage = reinterpret_cast<OperationControlCore*>(0x1234);
  set_wait_callback_param install{CountingCallback, &callback_calls, garbage};
  callback_calls = 0;
  bench.control.SetWaitCallback(&install);
  EXPECT_EQ(install.self, garbage);

  opp param{7, 3, 0, 0x99, nullptr, garbage};
  EXPECT_EQ(bench.control.SetAttribute(&param), 0x0BAD);
  EXPECT_EQ(callback_calls, 1);
  EXPECT_EQ(param.self, garbage);
  EXPECT_EQ(param.param_b, 0x99);  // the result is not read after a failed command

  set_wait_callback_param remove{nullptr, nullptr, nullptr};
  bench.control.SetWaitCallback(&remove);
  EXPECT_EQ(bench.control.SetAttribute(&param), HFL_SUCCESS);
  EXPECT_EQ(callback_calls, 1);
  EXPECT_EQ(bench.control.GetAttribute(&param), HFL_NOT_SUPPORTED);
  EXPECT_EQ(param.self, garbage);
}

}  // namespace
}  // namespace vt63x
