// SPDX-License-Identifier: MIT

#ifndef VT63X_CONTACTLESS_EXCHANGE_H
#define VT63X_CONTACTLESS_EXCHANGE_H

// Exchange sends bytes to a card and receives its answer, with whatever framing, CRC, speeds and
// timer the chip is set to. It adds nothing and repeats nothing.

#include <cstdint>

#include "contactless/chip_command.h"
#include "frontend/register_control.h"
#include "frontend/status.h"

namespace vt63x {

struct ExchangeCore;

// Lengths, last bits and buffers are those of single_command_param.
struct transceive_param {
  const std::uint8_t* send_buffer;
  std::uint16_t send_length;
  std::uint8_t* receive_buffer;     // may be the send buffer
  std::uint16_t receive_length;     // in: capacity, out: complete bytes received
  std::uint16_t receive_last_bits;  // out: 0 when nothing was received
  ExchangeCore* self;
};

struct transmit_param {
  const std::uint8_t* data;
  std::uint16_t length;
  ExchangeCore* self;
};

struct receive_param {
  std::uint8_t* receive_buffer;
  std::uint16_t receive_length;
  std::uint16_t receive_last_bits;
  ExchangeCore* self;
};

struct ExchangeCore {
  void (*SetWaitCallback)(set_wait_callback_param*);
  // All four: HFL_NOT_READY while the ready byte is 0, else the status of the chip command.
  HFLSTATUS (*Transceive)(transceive_param*);
  HFLSTATUS (*Transmit)(transmit_param*);
  HFLSTATUS (*Receive)(receive_param*);
  // `data`: authentication command 0x60 or 0x61, block number, 6 key bytes, 4 bytes of the card's
  // identifier; any length but 12 is HFL_INVALID_PARAMETER. HFL_AUTHENTICATION_FAILED when the
  // chip does not encrypt afterwards. Encryption lasts until the chip is told to end it.
  HFLSTATUS (*Authenticate)(transmit_param*);
  std::uint8_t* members;  // the ready byte
  void* owner;
  void* wait_cb_context;
  wait_event_cb wait_cb;
  RegisterControlCore* lower;
};

class ExchangeInterface {
 public:
  virtual void SetWaitCallback(set_wait_callback_param* param) = 0;
  virtual HFLSTATUS Transceive(transceive_param* param) = 0;
  virtual HFLSTATUS Transmit(transmit_param* param) = 0;
  virtual HFLSTATUS Receive(receive_param* param) = 0;
  virtual HFLSTATUS Authenticate(transmit_param* param) = 0;

 protected:
  ExchangeInterface() = default;
  ~ExchangeInterface() = default;
  ExchangeInterface(const ExchangeInterface&) = delete;
  ExchangeInterface& operator=(const ExchangeInterface&) = delete;
};

// Fills `core` for use over `lower`, without a wait callback, and sets the ready byte to 1
// whatever `flag` is.
void ExchangeOpen(ExchangeCore* core, std::uint8_t* members, RegisterControlCore* lower,
                  std::uint8_t flag);
using ExchangeOpenFunction = void (*)(ExchangeCore*, std::uint8_t*, RegisterControlCore*,
                                      std::uint8_t);

class ExchangeWrapper final : public ExchangeInterface, public RegisterControlUser {
 public:
  // Once, before any operation. The port need not be open yet.
  void Init(ExchangeOpenFunction open, RegisterControlInterface* lower_registers,
            std::uint8_t flag);

  void SetWaitCallback(set_wait_callback_param* param) override;
  HFLSTATUS Transceive(transceive_param* param) override;
  HFLSTATUS Transmit(transmit_param* param) override;
  HFLSTATUS Receive(receive_param* param) override;
  HFLSTATUS Authenticate(transmit_param* param) override;

  ExchangeCore core{};
  std::uint8_t members = 0;

 private:
  RegisterControlForwarder forwarder_;
};

}  // namespace vt63x

#endif
