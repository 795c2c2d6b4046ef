// SPDX-License-Identifier: MIT

// What holds for every operation of every component: the first register access that fails ends it
// with its status, a component that is not ready touches nothing, a wait callback is asked.

#include <gtest/gtest.h>

#include <tuple>

#include "contactless/card_memory.h"
#include "contactless/iso14443a.h"
#include "contactless/operation_control.h"
#include "tests/contactless/scripted_registers.h"

namespace vt63x {
namespace {

// All components on one chip, whose operations work on the same 64 bytes.
struct Stack {
  explicit Stack(std::uint8_t ready = 1) {
    control.Init(OperationControlOpen, &chip);
    exchange.Init(ExchangeOpen, &chip, 0);
    iso.Init(Iso14443AOpen, &chip, ready);
    exchange.members = ready;
    memory.Init(&exchange, trxbuffer);
    chip.registers[0x07] = 0x20;  // a CRC is ready
    chip.registers[0x08] = 0x08;  // the session is on
    chip.registers[0x37] = 0x01;  // a version with the full list of defaults
  }

  HFLSTATUS Command(std::uint8_t code, std::uint16_t sent, std::uint16_t room) {
    LowerRecord lower(&chip);
    single_command_param param{&lower.record, nullptr, nullptr, code, 1, 0,
                               bytes,         sent,    bytes,   room, 0};
    return ExecuteSingleCommand(&param);
  }
  HFLSTATUS Transceive() {
    transceive_param param{bytes, 2, bytes, 16, 0, nullptr};
    return exchange.Transceive(&param);
  }
  HFLSTATUS Transmit() {
    transmit_param param{bytes, 12, nullptr};
    return exchange.Transmit(&param);
  }
  HFLSTATUS Receive() {
    receive_param param{bytes, 16, 0, nullptr};
    return exchange.Receive(&param);
  }
  HFLSTATUS Authenticate() {
    transmit_param param{bytes, 12, nullptr};
    return exchange.Authenticate(&param);
  }
  HFLSTATUS Request() {
    req_p param{0x26, bytes, nullptr};
    return iso.Request(&param);
  }
  HFLSTATUS Select(std::uint8_t known_bits) {
    sel_p param{0x93, bytes, known_bits, 0, 0, nullptr};
    return known_bits == 0 ? iso.AnticollisionSelect(&param) : iso.Select(&param);
  }
  HFLSTATUS Halt() {
    hlt_p param{nullptr};
    return iso.Halt(&param);
  }
  HFLSTATUS Set(std::uint8_t group, std::uint8_t attribute, std::uint8_t a, std::uint8_t b = 0) {
    opp param{group, attribute, a, b, bytes, nullptr};
    return control.SetAttribute(&param);
  }
  HFLSTATUS Get(std::uint8_t group, std::uint8_t attribute) {
    opp param{group, attribute, 0, 0, bytes, nullptr};
    return control.GetAttribute(&param);
  }
  HFLSTATUS Card(std::uint8_t command, std::uint8_t length) {
    ostrel_p param{command, 0, bytes, length, 0, nullptr};
    return memory.CardCommand(&param);
  }

  ScriptedRegisters chip;
  OperationControlWrapper control;
  ExchangeWrapper exchange;
  Iso14443AWrapper iso;
  CardMemoryWrapper memory;
  std::uint8_t trxbuffer[255] = {};
  std::uint8_t bytes[64] = {};
};

// An operation that makes an access after the failed one, a clean-up included, is caught.
TEST(OperationsTest, AnyFailingAccessEndsThemWithItsStatus) {
  // `at_least`: accesses
  using Case = std::tuple<HFLSTATUS (*)(Stack&), std::string, int>;
  for (const auto& [operation, answers, at_least] : {
           Case{[](Stack& s) { return s.Command(0x0C, 2, 2); }, "0A/4:04", 24},
           Case{[](Stack& s) { return s.Command(0x0C, 2, 2); }, "0102/3:08", 24},
           Case{[](Stack& s) { return s.Command(0x0C, 2, 2); }, "-", 18},
           Case{[](Stack& s) { return s.Command(0x08, 2, 2); }, "01", 23},
           Case{[](Stack& s) { return s.Command(0x0E, 2, 2); }, ".@10", 20},
           Case{[](Stack& s) { return s.Command(0x00, 2, 2); }, "", 16},
           Case{[](Stack& s) { return s.Request(); }, "0400", 29},
           Case{[](Stack& s) { return s.Select(0); }, "00/3:08 0000000000 04 0000000000 00", 100},
           Case{[](Stack& s) { return s.Select(64); }, "04 00", 40},
           Case{[](Stack& s) { return s.Halt(); }, ".", 20},
           Case{[](Stack& s) { return s.Set(1, 3, 0); }, "", 20},
           Case{[](Stack& s) { return s.Set(6, 0, 1); }, "", 8},
           Case{[](Stack& s) { return s.Set(5, 0x11, 0, 0x11); }, "", 7},
           Case{[](Stack& s) { return s.Set(7, 3, 64); }, "", 20},
           Case{[](Stack& s) { return s.Get(0, 0); }, "", 1},
           Case{[](Stack& s) { return s.Get(6, 6); }, "", 2},
           Case{[](Stack& s) { return s.Card(0x30, 0); }, HexOf(Bytes(16, 1)), 23},
           Case{[](Stack& s) { return s.Card(0x60, 10); }, ".@10", 21},
           Case{[](Stack& s) { return s.Card(0xA0, 16); }, "0A/4:04 0A/4:04", 48},
           Case{[](Stack& s) { return s.Card(0xC2, 0); }, "0A/4:04 -", 40},
       }) {
    Stack whole;
    whole.chip.Answer(answers);
    operation(whole);
    ASSERT_GE(whole.chip.accesses, at_least) << whole.chip.trace;
    for (int position = 1; position <= whole.chip.accesses; ++position) {
      Stack failing;
      failing.chip.Answer(answers);
      failing.chip.fail_from = position;
      EXPECT_EQ(operation(failing), failing.chip.fail_status) << "access " << position;
      EXPECT_EQ(failing.chip.accesses, position) << failing.chip.trace;
    }
  }
}

HFLSTATUS GiveUpWaiting(wait_event_cb_param* event) {
  return *static_cast<HFLSTATUS*>(event->wait_cb_context);
}

TEST(OperationsTest, EachNeedsTheReadyByteAndUsesTheWaitCallback) {
  struct Case {
    HFLSTATUS (*operation)(Stack&);
    HFLSTATUS not_ready = HFL_NOT_READY;
  };
  for (const Case& c :
       {Case{[](Stack& s) { return s.Transceive(); }}, Case{[](Stack& s) { return s.Transmit(); }},
        Case{[](Stack& s) { return s.Receive(); }}, Case{[](Stack& s) { return s.Authenticate(); }},
        Case{[](Stack& s) { return s.Request(); }}, Case{[](Stack& s) { return s.Select(0); }},
        Case{[](Stack& s) { return s.Select(64); }},
        Case{[](Stack& s) { return s.Halt(); }, HFL_NOT_SUPPORTED}}) {
    Stack not_ready(0);
    EXPECT_EQ(c.operation(not_ready), c.not_ready);
    EXPECT_EQ(not_ready.chip.accesses, 0);
    Stack ready;
    ready.chip.Answer(".@70");
    HFLSTATUS status = 0x0BAD;
    set_wait_callback_param install{GiveUpWaiting, &status, nullptr};
    ready.exchange.SetWaitCallback(&install);
    ready.iso.SetWaitCallback(&install);
    EXPECT_EQ(c.operation(ready), 0x0BAD);
  }
}

TEST(OperationsTest, CrcCalculationUsesTheWaitCallbackUntilItIsTakenAway) {
  Stack stack;
  stack.chip.Answer(".@00 .@00");
  HFLSTATUS status = 0x0BAD;
  auto* const garbage = reinterpret_cast<OperationControlCore*>(0x1234);
  set_wait_callback_param install{GiveUpWaiting, &status, garbage};
  stack.control.SetWaitCallback(&install);
  opp param{7, 3, 0, 0x99, nullptr, garbage};
  EXPECT_EQ(stack.control.SetAttribute(&param), 0x0BAD);
  EXPECT_EQ(param.param_b, 0x99);  // the result is not read after a failed command

  set_wait_callback_param remove{nullptr, nullptr, nullptr};
  stack.control.SetWaitCallback(&remove);
  EXPECT_EQ(stack.control.SetAttribute(&param), HFL_SUCCESS);
  EXPECT_EQ(install.self, garbage);
  EXPECT_EQ(param.self, garbage);
}

}  // namespace
}  // namespace vt63x
