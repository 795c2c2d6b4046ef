// SPDX-License-Identifier: MIT

#ifndef VT63X_CONTACTLESS_ISO14443A_H
#define VT63X_CONTACTLESS_ISO14443A_H

// Iso14443A brings a type A card from idle to selected and back to halt (ISO/IEC 14443-3,
// clause 6). It keeps no card state: the caller keeps identifier and SAK. anticollision.h has
// the work on one cascade level and the limits of the anticollision.
//
// A register access that fails ends every operation at once, without any clean-up of the chip; a
// status that the chip gives ends it after the framing registers are back at their rest values.

#include <cstdint>

#include "contactless/chip_command.h"
#include "frontend/register_control.h"
#include "frontend/status.h"

namespace vt63x {

struct Iso14443ACore;

struct req_p {
  std::uint8_t request_code;  // 0x26 REQA, 0x52 WUPA; sent as 7 bits
  // Out, 2 bytes in the order received; 0x00 0x00 when the chip command failed other than by a
  // collision.
  std::uint8_t* atqa;
  Iso14443ACore* self;
};

struct sel_p {
  std::uint8_t select_code;  // of cascade level 1: 0x93
  // 12 bytes, 4 for each cascade level in the order received, cascade tags in place. Of a partly
  // known byte the unknown upper bits are 0.
  std::uint8_t* uid;
  // In: identifier bits known, counting from level 1. Out, AnticollisionSelect: 32 for each level
  // completed; unchanged when none was.
  std::uint8_t bit_count;
  std::uint8_t sak;        // out: of the last level selected
  std::uint8_t collision;  // out: bit 0x01 is set after any collision and never cleared
  Iso14443ACore* self;
};

struct hlt_p {
  Iso14443ACore* self;
};

struct Iso14443ACore {
  void (*SetWaitCallback)(set_wait_callback_param*);
  // HFL_COLLISION when several cards answered differently, with what was received;
  // HFL_PROTOCOL_ERROR when the answer is not two complete bytes.
  HFLSTATUS (*Request)(req_p*);
  // Anticollision and select, level by level, until the SAK tells that the identifier is complete
  // or three levels are done.
  HFLSTATUS (*AnticollisionSelect)(sel_p*);
  // Selects the levels of a known identifier. HFL_INVALID_PARAMETER for a bit count that is not a
  // multiple of 32 or above 96, the size of the identifier buffer.
  HFLSTATUS (*Select)(sel_p*);
  // Success is silence; HFL_NOT_SUPPORTED while not ready. The others: HFL_NOT_READY.
  HFLSTATUS (*Halt)(hlt_p*);
  std::uint8_t* members;  // the ready byte
  void* owner;
  void* wait_cb_context;
  wait_event_cb wait_cb;
  RegisterControlCore* lower;
};

class Iso14443AInterface {
 public:
  virtual void SetWaitCallback(set_wait_callback_param* param) = 0;
  virtual HFLSTATUS Request(req_p* param) = 0;
  virtual HFLSTATUS AnticollisionSelect(sel_p* param) = 0;
  virtual HFLSTATUS Select(sel_p* param) = 0;
  virtual HFLSTATUS Halt(hlt_p* param) = 0;

 protected:
  Iso14443AInterface() = default;
  ~Iso14443AInterface() = default;
  Iso14443AInterface(const Iso14443AInterface&) = delete;
  Iso14443AInterface& operator=(const Iso14443AInterface&) = delete;
};

// Fills `core` for use over `lower`, without a wait callback, and sets the ready byte to `ready`.
void Iso14443AOpen(Iso14443ACore* core, std::uint8_t* members, RegisterControlCore* lower,
                   std::uint8_t ready);
using Iso14443AOpenFunction = void (*)(Iso14443ACore*, std::uint8_t*, RegisterControlCore*,
                                       std::uint8_t);

class Iso14443AWrapper final : public Iso14443AInterface, public RegisterControlUser {
 public:
  // Once, before any operation. The port need not be open yet.
  void Init(Iso14443AOpenFunction open, RegisterControlInterface* lower_registers,
            std::uint8_t ready);

  void SetWaitCallback(set_wait_callback_param* param) override;
  HFLSTATUS Request(req_p* param) override;
  HFLSTATUS AnticollisionSelect(sel_p* param) override;
  HFLSTATUS Select(sel_p* param) override;
  HFLSTATUS Halt(hlt_p* param) override;

  Iso14443ACore core{};
  std::uint8_t members = 0;

 private:
  RegisterControlForwarder forwarder_;
};

}  // namespace vt63x

#endif
