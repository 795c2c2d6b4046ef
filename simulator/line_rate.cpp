// SPDX-License-Identifier: MIT

#include "simulator/line_rate.h"

#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace vt63x {

std::uint32_t LineRate(int master_fd) {
  termios2 settings;
  if (ioctl(master_fd, TCGETS2, &settings) != 0) return 0;
  return (settings.c_cflag & CBAUD) == B0 ? 0 : settings.c_ospeed;
}

bool MakeLineRaw(int master_fd, std::uint32_t bits_per_second) {
  termios2 settings;
  if (ioctl(master_fd, TCGETS2, &settings) != 0) return false;
  settings.c_iflag = 0;
  settings.c_oflag = 0;
  settings.c_lflag = 0;
  settings.c_cflag = CS8 | CREAD | CLOCAL | BOTHER;
  settings.c_ispeed = bits_per_second;
  settings.c_ospeed = bits_per_second;
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  return ioctl(master_fd, TCSETS2, &settings) == 0;
}

}  // namespace vt63x
