// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_FUZZ_FUZZ_INPUT_H
#define VT63X_TESTS_FUZZ_FUZZ_INPUT_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

// What a fuzz target is called with, again and again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vt63x {

// Ends the program, and with it the search, where a rule of the product is broken.
inline void Require(bool holds, const char* rule) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", rule);
  std::abort();
}

// The input, taken from its start.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

  bool empty() const { return rest_.empty(); }
  std::span<const std::uint8_t> rest() const { return rest_; }
  // 0 behind the end.
  std::uint8_t Byte() { return rest_.empty() ? std::uint8_t{0} : Bytes(1)[0]; }
  std::span<const std::uint8_t> Bytes(std::size_t count) {
    const auto taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }

 private:
  std::span<const std::uint8_t> rest_;
};

}  // namespace vt63x

#endif
