// SPDX-License-Identifier: MIT

#ifndef VT63X_CONTACTLESS_ANTICOLLISION_H
#define VT63X_CONTACTLESS_ANTICOLLISION_H

// One cascade level of a type A card: anticollision (ISO/IEC 14443-3, clause 6) and select.
//
// After a collision the level's known bits grow by every bit that the chip reports as received;
// the colliding bit stands as the chip delivered it. A level takes at most 32 collisions, each of
// which can add a bit, and one more frame when that has made all 32 bits known; beyond that the
// cards do not answer as cards do, and the level ends with HFL_WRONG_ANSWER_SIZE.
//
// An answer without a collision that ends before the check byte is HFL_CHECK_BYTE, whatever its
// bytes are: the check byte that never came does not match.

#include <cstdint>

#include "contactless/iso14443a.h"

namespace vt63x {

// `known_bits` 0 to 32 of the 4 bytes at `uid`. Sets bit 0x01 of `collision` at any collision.
// Leaves the CRC off. On failure `uid` may hold a part of the answer.
HFLSTATUS AnticollisionLoop(Iso14443ACore* self, RegisterControlCore* lower,
                            std::uint8_t select_code, std::uint8_t known_bits, std::uint8_t* uid,
                            std::uint8_t* collision);

// Sends the 4 bytes at `uid` with their check byte and leaves the CRC on. HFL_WRONG_ANSWER_SIZE
// when the answer is not one complete byte, the SAK.
HFLSTATUS SelectLevel(Iso14443ACore* self, RegisterControlCore* lower, std::uint8_t select_code,
                      const std::uint8_t* uid, std::uint8_t* sak);

}  // namespace vt63x

#endif
