// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_RING_INDICATOR_H
#define VT63X_SIMULATOR_RING_INDICATOR_H

#include <cstdint>
#include <string>
#include <string_view>

namespace vt63x {

// The ring indicator of a line that has one, as the board drives it. On the thread that serves.
class RingIndicator {
 public:
  // Longest pulse, milliseconds.
  static constexpr std::uint32_t kMaxPulseMs = 60'000;

  virtual void SetRing(bool on) = 0;
  // On now, off after `milliseconds`, 1 to kMaxPulseMs.
  virtual void PulseRing(std::uint32_t milliseconds) = 0;

 protected:
  RingIndicator() = default;
  ~RingIndicator() = default;
  RingIndicator(const RingIndicator&) = delete;
  RingIndicator& operator=(const RingIndicator&) = delete;
};

// True for lines of text that begin with the word "ring".
bool IsRingCommand(std::string_view line);

// Carries out "ring on", "ring off" or "ring pulse MILLISECONDS" and gives what to say about it
// with its line end: "ok", or "error: " and what was wrong, and then nothing has changed. `ring` is
// null for a line that has none.
std::string RunRingCommand(RingIndicator* ring, std::string_view line);

}  // namespace vt63x

#endif
