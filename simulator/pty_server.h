// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_PTY_SERVER_H
#define VT63X_SIMULATOR_PTY_SERVER_H

#include <cstdint>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "simulator/air_faults.h"
#include "simulator/card_options.h"
#include "simulator/chip.h"
#include "simulator/pty_device.h"
#include "simulator/serial_port.h"
#include "simulator/served_line.h"

namespace vt63x {

// A chip on a pseudo terminal that is served on a thread of its own: construct it, open path(),
// and it is gone with the object. The chip's timer runs in real time.
class PtyServer {
 public:
  struct Options {
    bool pace = false;
    std::vector<Fault> faults;
    std::vector<std::pair<std::uint8_t, std::uint8_t>> registers;  // address and value to preset
    std::vector<CardOption> cards;
    std::vector<AirFault> air_faults;
  };

  // Serves when it returns. On failure error() is not empty and path() is.
  PtyServer() : PtyServer(Options{}) {}
  explicit PtyServer(const Options& options);
  ~PtyServer();
  PtyServer(const PtyServer&) = delete;
  PtyServer& operator=(const PtyServer&) = delete;

  const std::string& path() const { return device_.path(); }
  const std::string& error() const { return error_; }

  // Accesses carried out so far; from any thread.
  std::uint64_t reads() const { return port_.reads(); }
  std::uint64_t writes() const { return port_.writes(); }

  // Ends the serving and waits for it; the device stays, unanswered. A second call does nothing.
  void Stop();

  // Only after Stop: the serving thread owns them until then.
  Chip& chip() { return chip_; }
  const ServedLine& line() const { return line_; }
  ServedLine::End end() const { return end_; }

 private:
  RealClock clock_;
  Chip chip_{clock_};
  ChipSerialPort port_;
  PtyDevice device_;
  ServedLine line_;
  std::string error_;
  ServedLine::End end_ = ServedLine::End::kStopped;
  std::thread thread_;
};

}  // namespace vt63x

#endif
