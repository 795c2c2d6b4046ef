// SPDX-License-Identifier: MIT

#ifndef VT63X_CONTACTLESS_CHIP_COMMAND_H
#define VT63X_CONTACTLESS_CHIP_COMMAND_H

// Running one command of the chip: the bytes to send go into its FIFO, the command register starts
// it, the interrupt request registers tell its end, the FIFO holds the answer and the error
// register what was wrong with it.
//
// No call waits for ever. Without a wait callback the request registers are polled at the pace of
// the line until an awaited bit comes up. Receive, transceive and authenticate await the chip's
// timer too, so a card that stays silent ends the wait when that timer runs out. The timer runs for
//
//   (2 * prescaler + 1) * (reload + 1) / 13.56 MHz
//
// and the longest set-up that this program uses, prescaler 0x2A6 and reload 0x3E8, is 100.2 ms. A
// chip that has shown no awaited bit 2 s after the start, twenty times that, is out of order or its
// timer was not set to start by itself: the wait ends with HFL_NO_ANSWER, just as if the timer had
// run out, and the chip is cleaned up as always. A longer timer needs a wait callback.
//
// Idle, CRC calculation and soft reset raise no awaited bit. Their wait ends when the command
// register is back at idle or the CRC coprocessor reports ready, and without an error after 20 ms:
// the coprocessor takes less than 1 ms for a full FIFO of 64 bytes, so that elapsed time is an
// answer as good as a report.

#include <cstdint>

#include "frontend/register_control.h"
#include "frontend/status.h"

namespace vt63x {

inline constexpr std::uint8_t kCommandIdle = 0x00;
inline constexpr std::uint8_t kCommandCalculateCrc = 0x03;
inline constexpr std::uint8_t kCommandTransmit = 0x04;
inline constexpr std::uint8_t kCommandReceive = 0x08;
inline constexpr std::uint8_t kCommandTransceive = 0x0C;
inline constexpr std::uint8_t kCommandAuthenticate = 0x0E;
inline constexpr std::uint8_t kCommandSoftReset = 0x0F;

// What a wait callback gets. The masks belong to the running command, which goes on with whatever
// the callback leaves in them: the request bits waited for and the interrupts enabled.
struct wait_event_cb_param {
  std::uint32_t spare_word;  // 0
  std::uint8_t spare_byte;   // 0
  std::uint8_t* commIrqEn;
  std::uint8_t* divIrqEn;
  std::uint8_t* waitForComm;
  std::uint8_t* waitForDiv;
  std::uint8_t command;
  RegisterControlCore* lower;
  void* wait_cb_context;
};

// Returns when the chip has signalled one of the awaited events; called on the thread of the
// command. Its status becomes the command's, unless the timer bit is set afterwards.
using wait_event_cb = HFLSTATUS (*)(wait_event_cb_param*);

// Parameter record of SetWaitCallback in every component that runs chip commands. A null callback
// brings the polling wait back.
struct set_wait_callback_param {
  wait_event_cb callback;
  void* context;
  void* self;  // the record of whichever component it is
};

// `send_buffer` and `receive_buffer` may be the same memory: everything is sent before the answer
// is read. Nothing is ever written beyond the receive buffer's capacity.
struct single_command_param {
  RegisterControlCore* lower;
  wait_event_cb wait_cb;  // null: poll
  void* wait_cb_context;
  std::uint8_t command;
  std::uint8_t clear_switch;  // non-zero: `spare` is set to 0
  std::uint8_t spare;
  const std::uint8_t* send_buffer;
  std::uint16_t send_length;  // bytes, 0: nothing goes into the FIFO
  std::uint8_t* receive_buffer;
  // In: capacity of the receive buffer in bytes. Out: complete bytes received, an incomplete last
  // byte lies right after them. Valid after a success or an error of the chip; when a register
  // access failed while the answer was fetched it may be the chip's count instead.
  std::uint16_t receive_length;
  std::uint16_t receive_last_bits;  // out, only when an answer is read: valid bits of the last
                                    // byte received, 0 when it is complete
};

// Runs one chip command. A register access that fails ends it at once with that access's status.
// Otherwise: HFL_UNKNOWN_COMMAND (nothing was started), HFL_NO_ANSWER, a status of the error
// register (the answer is delivered all the same), HFL_BUFFER_SIZE (as much of the answer as fits
// is delivered), the wait callback's status, or 0.
HFLSTATUS ExecuteSingleCommand(single_command_param* param);

// Clears the interrupt request bits of the two masks (without bit 0x80) and empties the FIFO.
HFLSTATUS ClearIrqAndFlushFifo(RegisterControlCore* lower, std::uint8_t comm, std::uint8_t div);

}  // namespace vt63x

#endif
