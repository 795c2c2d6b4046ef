// SPDX-License-Identifier: MIT

#include "cli/status_text.h"

#include <cstdio>

namespace vt63x {
namespace {

struct Row {
  HFLSTATUS status;
  const char* text;
};

constexpr Row kRows[] = {
    {HFL_SUCCESS, "success"},
    {HFL_NO_ANSWER, "no card answered in time"},
    {HFL_CRC_ERROR, "CRC error"},
    {HFL_PARITY_ERROR, "parity error"},
    {HFL_WRONG_ANSWER_SIZE, "wrong size of the answer"},
    {HFL_COLLISION, "collision"},
    {HFL_BUFFER_SIZE, "answer too long, or nothing to send"},
    {HFL_OVERFLOW, "FIFO overflow, or too much data"},
    {HFL_PROTOCOL_ERROR, "protocol error"},
    {HFL_CHIP_ERROR, "unspecified chip error"},
    {HFL_WRITE_ERROR, "chip error register bit 0x80"},
    {HFL_INVALID_PARAMETER, "invalid parameter"},
    {HFL_NOT_SUPPORTED, "not supported"},
    {HFL_UNKNOWN_COMMAND, "unknown command"},
    {HFL_LINK_FAILED, "the chip does not answer on the line"},
    {HFL_UNEXPECTED_ANSWER, "unexpected answer of the card"},
    {HFL_AUTHENTICATION_FAILED, "authentication failed"},
    {HFL_SHORT_ANSWER, "short answer of the card"},
    {HFL_CARD_REFUSED, "the card refused"},
    {HFL_CHECK_BYTE, "check byte of the identifier is wrong"},
    {HFL_NO_EVENT, "no event for the transfer"},
    {HFL_NOT_READY, "not ready, or the wait for the transfer failed"},
    {HFL_TEMPERATURE, "the chip is too hot"},
};

}  // namespace

std::string StatusDigits(HFLSTATUS status) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%04X",
                static_cast<unsigned>(static_cast<std::uint16_t>(status)));
  return text;
}

const char* StatusText(HFLSTATUS status) {
  for (const Row& row : kRows) {
    if (row.status == status) return row.text;
  }
  return "unknown status";
}

}  // namespace vt63x
