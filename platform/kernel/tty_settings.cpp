// SPDX-License-Identifier: MIT

#include "platform/kernel/tty_settings.h"

#include <cstring>

namespace vt63x::kernel {
namespace {

struct RateRow {
  DWORD bit_rate;
  tcflag_t constant;
};

constexpr RateRow kRates[] = {
    {50, B50},           {75, B75},           {110, B110},         {134, B134},
    {150, B150},         {200, B200},         {300, B300},         {600, B600},
    {1200, B1200},       {1800, B1800},       {2400, B2400},       {4800, B4800},
    {9600, B9600},       {19200, B19200},     {38400, B38400},     {57600, B57600},
    {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
    {576000, B576000},   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000},
    {1500000, B1500000}, {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000},
    {3500000, B3500000}, {4000000, B4000000},
};

tcflag_t RateConstant(DWORD bit_rate) {
  for (const RateRow& row : kRates) {
    if (row.bit_rate == bit_rate) return row.constant;
  }
  return BOTHER;
}

}  // namespace

bool IsSupported(const DCB& settings) {
  if (settings.BaudRate == 0 || settings.BaudRate > kHighestBitRate) return false;
  DCB supported{};
  supported.DCBlength = sizeof(DCB);
  supported.BaudRate = settings.BaudRate;
  supported.fBinary = 1;
  supported.fDtrControl = DTR_CONTROL_DISABLE;
  supported.fRtsControl = RTS_CONTROL_DISABLE;
  supported.ByteSize = 8;
  supported.Parity = NOPARITY;
  supported.StopBits = ONESTOPBIT;
  return std::memcmp(&settings, &supported, sizeof(DCB)) == 0;  // the record has no padding
}

void MakeRaw(termios2* settings) {
  settings->c_iflag = 0;
  settings->c_oflag = 0;
  settings->c_lflag = 0;
  const tcflag_t rate = settings->c_cflag & (CBAUD | (CBAUD << IBSHIFT));
  settings->c_cflag = rate | CS8 | CREAD | CLOCAL;
  // With VMIN 1 a timed read would need its first byte before the clock starts. With VTIME 0 a
  // non-blocking read could not tell an empty line (0 bytes) from one that hung up (0 bytes too).
  settings->c_cc[VMIN] = 0;
  settings->c_cc[VTIME] = static_cast<cc_t>(kDriverReadSpan / std::chrono::milliseconds(100));
}

void SetBitRate(termios2* settings, DWORD bit_rate) {
  const tcflag_t constant = RateConstant(bit_rate);
  settings->c_cflag &= ~static_cast<tcflag_t>(CBAUD | (CBAUD << IBSHIFT));
  settings->c_cflag |= constant | (constant << IBSHIFT);
  settings->c_ispeed = bit_rate;
  settings->c_ospeed = bit_rate;
}

bool IsCloseTo(DWORD actual, DWORD wanted) {
  const std::int64_t difference = std::int64_t{actual} - std::int64_t{wanted};
  const std::int64_t magnitude = difference < 0 ? -difference : difference;
  return magnitude * 100 <= std::int64_t{wanted} * 3;
}

}  // namespace vt63x::kernel
