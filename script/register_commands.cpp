// SPDX-License-Identifier: MIT

// SR, GR, MR, RE and RF: one register access each, its status in IOE and one log line; a
// comparison that fails logs a second.

#include "frontend/register_control.h"
#include "script/command_table.h"
#include "script/interpreter.h"
#include "script/script_log.h"

namespace vt63x {
namespace {

constexpr char kDifferent[] = " **ERROR: Expected data different from read.**";

// Four hexadecimal digits of a status in a log line; every status is below 0x8000.
unsigned Digits(HFLSTATUS status) { return static_cast<std::uint16_t>(status); }

// One access under the stack's lock; its status goes to IOE.
template <typename Param>
HFLSTATUS Access(LineParser& parser, HFLSTATUS (RegisterControlInterface::*operation)(Param*),
                 Param& param) {
  AppState& state = *parser.action->app_state;
  HFLSTATUS status = HFL_SUCCESS;
  {
    const LockGuard lock(state.stack_lock);
    RegisterControlInterface& registers = *state.component_ptrs.register_control;
    status = (registers.*operation)(&param);
  }
  ++parser.totals.accesses;
  parser.IOE = status != HFL_SUCCESS ? 1 : 0;
  return status;
}

// After the access is logged.
void CountFailure(LineParser& parser, HFLSTATUS status) {
  if (status == HFL_SUCCESS) return;
  ++parser.totals.access_failures;
  ReportFault(parser, ScriptFaultKind::kAccessFailed, parser.msg);
}

// A failed address write leaves the record alone, so its data starts at 0: a failed access always
// reads as 0.
HFLSTATUS Read(LineParser& parser, std::uint8_t address, std::uint8_t& data) {
  getreg_param param{address, 0, nullptr};
  const HFLSTATUS status = Access(parser, &RegisterControlInterface::GetRegister, param);
  data = param.data;
  return status;
}

void CountComparison(LineParser& parser, std::uint8_t expected, std::uint8_t received) {
  ++parser.totals.comparisons;
  if (parser.IOR == 0) return;
  ++parser.totals.differences;
  ReportFault(parser, ScriptFaultKind::kDifference, parser.msg);
  LogLine(
      parser,
      "                               //                  **Expected data: %02X, Received data: "
      "%02X **",
      expected, received);
}

}  // namespace

int RunSr(CommandCall& call) {
  setreg_param param{*call.operand[0], *call.operand[1], nullptr};
  const HFLSTATUS status = Access(call.parser, &RegisterControlInterface::SetRegister, param);
  LogLine(call.parser, "%s  %02X  %02X                     // (Status: 0x%04X)", "SR",
          param.address, param.data, Digits(status));
  CountFailure(call.parser, status);
  return LINE_OK;
}

int RunGr(CommandCall& call) {
  const std::uint8_t address = *call.operand[0];
  std::uint8_t data = 0;
  const HFLSTATUS status = Read(call.parser, address, data);
  call.parser.IOR = data;
  LogLine(call.parser, "%s  %02X          // data == %02X  // (Status: 0x%04X)", "GR", address,
          data, Digits(status));
  CountFailure(call.parser, status);
  return LINE_OK;
}

int RunMr(CommandCall& call) {
  modify_param param{*call.operand[0], *call.operand[1], *call.operand[2], nullptr};
  const HFLSTATUS status = Access(call.parser, &RegisterControlInterface::ModifyRegister, param);
  LogLine(call.parser, "%s  %02X %02X %01X                    // (Status: 0x%04X)", "MR",
          param.address, param.mask, param.set, Digits(status));
  CountFailure(call.parser, status);
  return LINE_OK;
}

int RunRe(CommandCall& call) {
  const std::uint8_t address = *call.operand[0];
  const std::uint8_t expected = *call.operand[1];
  std::uint8_t data = 0;
  const HFLSTATUS status = Read(call.parser, address, data);
  call.parser.IOR = data == expected ? 0 : 1;
  LogLine(call.parser, "%s  %02X  %02X      // data == %02X  // (Status: 0x%04X)%s", "RE", address,
          expected, data, Digits(status), call.parser.IOR == 0 ? "" : kDifferent);
  CountFailure(call.parser, status);
  CountComparison(call.parser, expected, data);
  return LINE_OK;
}

int RunRf(CommandCall& call) {
  const std::uint8_t address = *call.operand[0];
  const std::uint8_t expected = *call.operand[1];
  const std::uint8_t mask = *call.operand[2];
  std::uint8_t data = 0;
  const HFLSTATUS status = Read(call.parser, address, data);
  call.parser.IOR = (data & mask) == expected ? 0 : 1;
  LogLine(call.parser, "%s  %02X  %02X  %02X  // data == %02X  // (Status: 0x%04X)%s", "RF",
          address, expected, mask, data, Digits(status), call.parser.IOR == 0 ? "" : kDifferent);
  CountFailure(call.parser, status);
  CountComparison(call.parser, expected, data);
  return LINE_OK;
}

}  // namespace vt63x
