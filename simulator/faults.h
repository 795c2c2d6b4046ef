// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_FAULTS_H
#define VT63X_SIMULATOR_FAULTS_H

// The ways in which a simulated chip misbehaves on request. Each concerns a run of register
// accesses; the chip carries the access out in every case, and only its answer suffers:
//
//   silence      no answer
//   wrong-echo   the echo of a write is another address (reads are answered as usual)
//   delay=MS     the answer comes MS milliseconds late, 1 to 60000; later answers queue behind it
//   rubbish      a byte of the answer changed, or one to three random bytes before or after it;
//                rubbish=SEED, 1 to 2147483646, picks another sequence (default 1). The same seed
//                gives the same sequence in every run
//   hang-up      the line goes away instead of the answer, for good
//
// Written as NAME[=VALUE][@FIRST[+COUNT]]: FIRST is the first access concerned, counted from 1
// (default 1), COUNT how many accesses are (default all from FIRST on); both are at least 1. When
// several faults concern one access, hang-up wins over silence and silence over the others, which
// add up.

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/fault_text.h"
#include "simulator/line_answer.h"

namespace vt63x {

enum class FaultKind { kSilence, kWrongEcho, kDelay, kRubbish, kHangUp };

struct Fault {
  FaultKind kind = FaultKind::kSilence;
  std::uint32_t value = 0;  // delay: milliseconds; rubbish: seed; else 0
  FaultRange accesses;
};

// The fault that `text` names, or nothing and, in `error`, a line without full stop that says what
// is wrong with it.
std::optional<Fault> ParseFault(std::string_view text, std::string& error);

// Spoils answers as a list of faults asks for. One thread at a time.
class FaultPlan {
 public:
  explicit FaultPlan(std::vector<Fault> faults);

  // `answer` holds the one byte of the undisturbed answer.
  void Apply(const Access& access, LineAnswer& answer);

 private:
  void Spoil(std::minstd_rand& random, LineAnswer& answer);

  std::vector<Fault> faults_;
  std::vector<std::minstd_rand> generators_;  // one for each fault; rubbish alone uses its own
};

}  // namespace vt63x

#endif
