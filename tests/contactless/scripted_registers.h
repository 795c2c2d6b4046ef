// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_CONTACTLESS_SCRIPTED_REGISTERS_H
#define VT63X_TESTS_CONTACTLESS_SCRIPTED_REGISTERS_H

// Registers that record every access and play back prepared answers of the chip. They follow no
// rule of the hardware: what an answer says is what is read, however impossible.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <deque>
#include <sstream>
#include <string>
#include <vector>

#include "contactless/chip_command.h"
#include "frontend/register_control.h"

namespace vt63x {

using Bytes = std::vector<std::uint8_t>;

inline Bytes BytesOf(const std::string& hex) {
  Bytes bytes;
  for (std::size_t at = 0; at + 1 < hex.size(); at += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(hex.substr(at, 2), nullptr, 16)));
  }
  return bytes;
}

inline std::string HexOf(const Bytes& bytes) {
  std::string hex;
  for (const std::uint8_t byte : bytes) {
    hex += "0123456789ABCDEF"[byte / 16];
    hex += "0123456789ABCDEF"[byte % 16];
  }
  return hex;
}

class ScriptedRegisters final : public RegisterControlInterface {
 public:
  // The trace: G01 a read, S01=0C a write, M0D+80 and M02-23 bits set and cleared, W09=26,00 and
  // R09*2 multiple accesses; separated by blanks.
  std::string trace;
  std::array<std::uint8_t, 64> registers{};
  int quiet_passes = 0;  // reads of 0x04 that give 0 after each start
  std::string sent;      // FIFO contents of each command started, "." for none, separated by blanks
  Bytes framing;         // register 0x0D at each start
  int accesses = 0;
  int fail_from = 0;  // every access from this one on fails
  HFLSTATUS fail_status = 0x5A5A;

  // One answer for each command started, separated by blanks; then there is silence. The bytes of
  // the FIFO, 0xEE behind them; behind '/' the valid bits of the last one, behind ':' the error
  // register and behind '@' the requests of 0x04, which are 20. "0A/4:04" is an acknowledge,
  // "9C35/3:08" a collision, "." an answer without bytes and "-" silence.
  void Answer(const std::string& texts) {
    answers_.clear();
    std::istringstream words(texts);
    for (std::string word; words >> word;) answers_.push_back(word == "-" ? ".@01" : word);
  }

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
    sent += (sent.empty() ? "" : " ") + (to_send_.empty() ? "." : HexOf(to_send_));
    framing.push_back(registers[0x0D] & 0x7F);
    to_send_.clear();
    const std::string answer = answers_.empty() ? ".@01" : answers_.front();
    if (!answers_.empty()) answers_.pop_front();
    const auto value = [&](char mark, std::uint8_t otherwise) {
      const std::size_t at = answer.find(mark);
      if (at == std::string::npos) return otherwise;
      return static_cast<std::uint8_t>(std::stoul(answer.substr(at + 1), nullptr, 16));
    };
    const Bytes bytes = BytesOf(answer.substr(0, answer.find_first_of("/:@")));
    fifo_.assign(bytes.begin(), bytes.end());
    registers[0x04] = value('@', 0x20);
    registers[0x0A] = static_cast<std::uint8_t>(bytes.size());
    registers[0x0C] = value('/', 0);
    registers[0x06] = value(':', 0);
    quiet_left_ = quiet_passes;
  }

  Bytes to_send_;
  std::deque<std::string> answers_;
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

}  // namespace vt63x

#endif
