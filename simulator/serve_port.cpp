// SPDX-License-Identifier: MIT

#include "simulator/serve_port.h"

#include <atomic>
#include <csignal>
#include <cstdio>

#include "simulator/com_line.h"
#include "simulator/sim_setup.h"

namespace vt63x {
namespace {

std::atomic<bool> stop_asked = false;
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void AskForStop(int) { stop_asked = true; }

}  // namespace

int ServePort(const SimOptions& options) {
  RealClock clock;
  Chip chip(clock);
  AccessTrace trace;
  if (!SetUp(options, chip, trace)) return kExitNoDevice;
  ChipSerialPort port(chip, options.faults);
  ComLine line(port, options.trace.empty() ? nullptr : &trace);
  std::string error;
  if (!line.Open(options.port, error)) {
    Complain(error);
    return kExitNoDevice;
  }
  for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, AskForStop);
  std::printf("%s\n", options.port.c_str());
  std::fflush(stdout);

  const ComLine::End end = line.Serve(stop_asked);
  ReportStoreErrors(chip.field());
  if (end == ComLine::End::kHungUp) Complain("a fault has ended the service");
  if (end == ComLine::End::kFailed) Complain("the line went away");
  return end == ComLine::End::kFailed ? kExitNoDevice : 0;
}

}  // namespace vt63x
