// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_CONTACTLESS_SCRIPTED_REGISTERS_H
#define VT63X_TESTS_CONTACTLESS_SCRIPTED_REGISTERS_H

// Registers that record every access and play back prepared answers of the chip. They follow no
// rule of the hardware: what an answer says is what is read, however impossible.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "contactless/chip_command.h"
#include "frontend/register_control.h"

namespace vt63x {

using Bytes = std::vector<std::uint8_t>;

// What the registers read from the start of a chip command on.
struct ChipAnswer {
  std::uint8_t comm_request = 0x20;  // 0x04
  std::uint8_t fifo_level = 0;       // 0x0A
  std::uint8_t control = 0;          // 0x0C
  std::uint8_t errors = 0;           // 0x06
  Bytes fifo;                        // 0x09; 0xEE when it is empty
};

inline ChipAnswer Complete(const Bytes& bytes) {
  return {0x20, static_cast<std::uint8_t>(bytes.size()), 0, 0, bytes};
}
// `last_bits` of the last byte are valid.
inline ChipAnswer Collided(const Bytes& bytes, std::uint8_t last_bits) {
  return {0x20, static_cast<std::uint8_t>(bytes.size()), last_bits, 0x08, bytes};
}
inline ChipAnswer Acknowledge(std::uint8_t nibble) { return {0x20, 1, 4, 0x04, {nibble}}; }
inline ChipAnswer Silence() { return {0x01, 0, 0, 0, {}}; }

class ScriptedRegisters final : public RegisterControlInterface {
 public:
  // The trace: G01 a read, S01=0C a write, M0D+80 and M02-23 bits set and cleared, W09=26,00 and
  // R09*2 multiple accesses; separated by blanks.
  std::string trace;
  std::array<std::uint8_t, 64> registers{};
  std::deque<ChipAnswer> answers;  // one for each command started; then silence
  int quiet_passes = 0;            // reads of 0x04 that give 0 after each start
  std::vector<Bytes> sent;         // FIFO contents of each command started
  Bytes framing;                   // register 0x0D at each start
  int accesses = 0;
  int fail_from = 0;  // every access from this one on fails
  HFLSTATUS fail_status = 0x5A5A;

  HFLSTATUS SetRegister(setreg_param* param) override {
    if (!Allowed("S%02X=%02X", param->address, param->data)) return fail_status;
    if (param->address == 0x0A && param->data == 0x80) to_send_.clear();
    const bool read_only = param->address == 0x04 || param->address == 0x05 ||
                           param->address == 0x06 || param->address == 0x0A;
    if (!read_only) registers[param->address] = param->data;
    const int command = param->data & 0x0F;
    if (param->address == 0x01 && command != 0x00 && command != 0x0C) Start();
    return HFL_SUCCESS;
  }

  HFLSTATUS GetRegister(getreg_param* param) override {
    if (!Allowed("G%02X", param->address)) return fail_status;
    param->data = Value(param->address);
    return HFL_SUCCESS;
  }

  HFLSTATUS ModifyRegister(modify_param* param) override {
    if (!Allowed("M%02X%c%02X", param->address, param->set != 0 ? '+' : '-', param->mask)) {
      return fail_status;
    }
    std::uint8_t& value = registers[param->address];
    value = static_cast<std::uint8_t>(param->set != 0 ? value | param->mask : value & ~param->mask);
    if (param->address == 0x0D && param->set != 0 && param->mask == 0x80) Start();
    return HFL_SUCCESS;
  }

  HFLSTATUS SetRegisterMultiple(setmulti_param* param) override {
    if (!Allowed("W%02X", param->address)) return fail_status;
    for (unsigned i = 0; i < param->length; ++i) {
      Append(i == 0 ? "=%02X" : ",%02X", param->buffer[i]);
      to_send_.push_back(param->buffer[i]);
    }
    return HFL_SUCCESS;
  }

  HFLSTATUS GetRegisterMultiple(getmulti_param* param) override {
    if (!Allowed("R%02X*%d", param->address, param->length)) return fail_status;
    for (unsigned i = 0; i < param->length; ++i) param->buffer[i] = Value(param->address);
    return HFL_SUCCESS;
  }

 private:
  template <typename... Values>
  void Append(const char* format, Values... values) {
    char text[24];
    std::snprintf(text, sizeof text, format, values...);
    trace += text;
  }

  template <typename... Values>
  bool Allowed(const char* format, Values... values) {
    if (!trace.empty()) trace += ' ';
    Append(format, values...);
    ++accesses;
    return fail_from == 0 || accesses < fail_from;
  }

  std::uint8_t Value(std::uint8_t address) {
    if (address == 0x04 && quiet_left_ > 0) {
      --quiet_left_;
      return 0;
    }
    if (address != 0x09) return registers[address];
    if (fifo_.empty()) return 0xEE;
    const std::uint8_t byte = fifo_.front();
    fifo_.pop_front();
    return byte;
  }

  void Start() {
    sent.push_back(to_send_);
    framing.push_back(registers[0x0D] & 0x7F);
    to_send_.clear();
    ChipAnswer answer = Silence();
    if (!answers.empty()) {
      answer = answers.front();
      answers.pop_front();
    }
    registers[0x04] = answer.comm_request;
    registers[0x0A] = answer.fifo_level;
    registers[0x0C] = answer.control;
    registers[0x06] = answer.errors;
    fifo_.assign(answer.fifo.begin(), answer.fifo.end());
    quiet_left_ = quiet_passes;
  }

  Bytes to_send_;
  std::deque<std::uint8_t> fifo_;
  int quiet_left_ = 0;
};

// What a component has as its `lower`: the way to a test's registers.
class LowerRecord : RegisterControlUser {
 public:
  explicit LowerRecord(RegisterControlInterface* registers) {
    lower = registers;
    record.owner = static_cast<RegisterControlUser*>(this);
  }
  RegisterControlForwarder record;
};

// A wait callback that gives up with the status that its context points at.
inline HFLSTATUS GiveUpWaiting(wait_event_cb_param* event) {
  return *static_cast<HFLSTATUS*>(event->wait_cb_context);
}

// Runs `operation` once on registers that `prepare` has given answers, then again for each of its
// accesses with that one and all later ones failing: it must end there with the failing status.
// An operation that makes an access after the failed one, a clean-up included, is caught.
inline void ExpectEveryFailingAccessToEndIt(
    const std::function<void(ScriptedRegisters&)>& prepare,
    const std::function<HFLSTATUS(ScriptedRegisters&)>& operation, int at_least) {
  ScriptedRegisters whole;
  prepare(whole);
  operation(whole);
  ASSERT_GE(whole.accesses, at_least) << whole.trace;
  for (int position = 1; position <= whole.accesses; ++position) {
    ScriptedRegisters failing;
    prepare(failing);
    failing.fail_from = position;
    EXPECT_EQ(operation(failing), failing.fail_status) << "access " << position;
    EXPECT_EQ(failing.accesses, position) << failing.trace;
  }
}

}  // namespace vt63x

#endif
