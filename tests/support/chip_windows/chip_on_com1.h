// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SUPPORT_CHIP_ON_COM1_H
#define VT63X_TESTS_SUPPORT_CHIP_ON_COM1_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace vt63x {

// The chip with the card 5A3C1E78 in its field that is behind COM1: while a test program runs:
// whoever starts the program has started it, and says in VT63X_CHIP_TRACE where it writes a line
// for each access.
class ChipOnCom1 {
 public:
  ChipOnCom1() : before_(Lines()) {}

  // Register accesses that the chip has carried out since this object was made.
  std::uint64_t accesses() const { return Lines() - before_; }

 private:
  static std::uint64_t Lines() {
    const char* const path = std::getenv("VT63X_CHIP_TRACE");
    if (path == nullptr) return 0;
    std::ifstream file(path, std::ios::binary);
    const auto count =
        std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n');
    return static_cast<std::uint64_t>(count);
  }

  const std::uint64_t before_;
};

}  // namespace vt63x

#endif
