// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_AIR_FAULTS_H
#define VT63X_SIMULATOR_AIR_FAULTS_H

// The ways in which the air between cards and chip spoils an answer on request. The cards have
// answered in every case and do not notice:
//
//   lost     the answer does not arrive
//   short    the second half of the answer does not arrive: of a single byte the second half of its
//            bits, of more bytes the second half of the bytes, an odd one with it
//   crc      one bit of the last byte is changed, its parity with it; answers without a CRC pass
//   parity   a parity bit is wrong
//
// Written as NAME[@FIRST[+COUNT]]: FIRST is the first answer concerned, counted from 1 since the
// fault was set (default 1), COUNT how many are (default all from FIRST on). Answers that come at
// the same time count as one, the acceptance of a key is one, silence is none. When several faults
// concern one answer, all of them come to bear; an acceptance of a key does not survive any.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/air_frame.h"
#include "simulator/fault_text.h"

namespace vt63x {

enum class AirFaultKind { kLost, kShort, kCrc, kParity };

struct AirFault {
  AirFaultKind kind = AirFaultKind::kLost;
  FaultRange answers;
};

// The fault that `text` names, or nothing and, in `error`, a line without full stop that says what
// is wrong with it.
std::optional<AirFault> ParseAirFault(std::string_view text, std::string& error);

class AirFaults {
 public:
  void Set(const AirFault& fault) { faults_.push_back({fault, 0}); }
  void Clear() { faults_.clear(); }

  // Counts one answer and does to it what has been asked for; false when it is lost.
  bool Spoil(AirFrame& answer);
  // Counts the acceptance of a key; false when it does not arrive intact.
  bool Pass();

 private:
  struct Counted {
    AirFault fault;
    std::uint64_t answers;  // since the fault was set

    bool ConcernsNext() { return fault.answers.Concerns(++answers); }
  };

  std::vector<Counted> faults_;
};

}  // namespace vt63x

#endif
