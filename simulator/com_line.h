// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_COM_LINE_H
#define VT63X_SIMULATOR_COM_LINE_H

// A simulated chip at the end of a serial port that is there already: the far end of a null-modem
// cable, or one of a pair of virtual ports. The port keeps the chip's bit rate; what the other end
// sends at another one arrives as the line makes of it.

#include <windows.h>

#include <atomic>
#include <string>

#include "simulator/access_observer.h"
#include "simulator/serial_port.h"

namespace vt63x {

class ComLine {
 public:
  enum class End { kStopped, kHungUp, kFailed };

  // `port` and `observer`, which may be null, are the caller's and outlive the line.
  ComLine(ChipSerialPort& port, AccessObserver* observer);
  ~ComLine();
  ComLine(const ComLine&) = delete;
  ComLine& operator=(const ComLine&) = delete;

  // `name` is COM1 to COM16, on Windows any port, with or without a colon; or the path of a device,
  // which becomes COM1 of this process. False and a line for the user in `error` on failure.
  bool Open(const std::string& name, std::string& error);

  // Serves in the caller's thread until `stop`, which any thread or a signal handler may set, at
  // most 100 ms after that; or until a fault takes the line away or it does so itself.
  End Serve(const std::atomic<bool>& stop);

 private:
  bool FollowRate();
  bool Send(const LineAnswer& answer);

  ChipSerialPort& port_;
  AccessObserver* const observer_;
  HANDLE handle_ = nullptr;
  HANDLE event_ = nullptr;        // of the read
  HANDLE write_event_ = nullptr;  // of the write
  OVERLAPPED read_{};             // pending until the port is closed, perhaps
  std::uint8_t byte_ = 0;         // and where it goes
  std::uint32_t rate_ = 0;        // that the port has, bits per second
};

}  // namespace vt63x

#endif
