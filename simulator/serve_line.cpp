// SPDX-License-Identifier: MIT

#include "simulator/serve_line.h"

#include <signal.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "simulator/child_process.h"
#include "simulator/control_input.h"
#include "simulator/pty_device.h"
#include "simulator/rfc2217_device.h"
#include "simulator/serial_port.h"
#include "simulator/served_line.h"
#include "simulator/sim_setup.h"

namespace vt63x {
namespace {

constexpr int kLineEnded = SIGUSR1;        // from the serving thread to the main one
constexpr std::chrono::seconds kGrace{5};  // for a command that was told to end

// Why a link at `path` to `device` cannot take the place of what is there; empty when it can.
std::string WhatIsInTheWay(const std::string& path, const std::filesystem::path& device) {
  std::error_code code;
  const std::filesystem::file_type type = std::filesystem::symlink_status(path, code).type();
  if (type == std::filesystem::file_type::not_found) return "";
  if (type != std::filesystem::file_type::symlink) return path + ": is there and is not a link";
  const std::filesystem::path target = std::filesystem::read_symlink(path, code);
  const bool to_a_device = target.string().starts_with("/dev/");
  if (to_a_device && (target == device || !std::filesystem::exists(target, code))) return "";
  return path + ": is a link to " + target.string() + ", which " +
         (to_a_device ? "is there: another simulator may serve it" : "is not a device");
}

// A symbolic link that is there as long as the object.
class DeviceLink {
 public:
  ~DeviceLink() {
    std::error_code ignored;
    if (!path_.empty() && std::filesystem::read_symlink(path_, ignored) == device_) {
      std::filesystem::remove(path_, ignored);
    }
  }

  // A link that an earlier simulator left is replaced: one to this device, or to one that is gone.
  // Anything else is left alone and makes this fail.
  bool Make(const std::string& path, const std::string& device, std::string& error) {
    std::error_code code;
    error = WhatIsInTheWay(path, device);
    if (!error.empty()) return false;
    std::filesystem::remove(path, code);
    std::filesystem::create_symlink(device, path, code);
    if (code) {
      error = path + ": " + code.message();
      return false;
    }
    path_ = path;
    device_ = device;
    return true;
  }

 private:
  std::filesystem::path path_;
  std::filesystem::path device_;
};

// The one of the two devices that is asked for.
class OwnDevice {
 public:
  // An empty address: the pseudo terminal.
  bool Open(const std::string& rfc2217_address, std::string& error) {
    is_remote_ = !rfc2217_address.empty();
    return is_remote_ ? remote_.Open(rfc2217_address, error) : pty_.Open(error);
  }
  LineDevice& device() { return is_remote_ ? static_cast<LineDevice&>(remote_) : pty_; }
  RingIndicator* ring() { return is_remote_ ? &remote_ : nullptr; }

 private:
  bool is_remote_ = false;
  PtyDevice pty_;
  Rfc2217Device remote_;
};

// The signals that the main thread takes one by one. Blocked before any other thread starts.
sigset_t BlockSignals(sigset_t& old_mask) {
  ::signal(SIGCHLD, SIG_DFL);  // ignored, it would take the command's exit code away
  sigset_t signals;
  ::sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD, kLineEnded}) {
    ::sigaddset(&signals, number);
  }
  ::pthread_sigmask(SIG_BLOCK, &signals, &old_mask);
  return signals;
}

// Until a signal asks for the end or the line has gone.
void WaitForEnd(const sigset_t& signals) {
  int number = 0;
  do {
    number = ::sigwaitinfo(&signals, nullptr);
  } while (number < 0 || number == SIGCHLD);
}

// Until the command ends; its exit code. Outlives the command in any case: what a terminal sends
// reaches the command by itself, what is sent to this process alone is passed on.
int WaitForCommand(const sigset_t& signals, ChildProcess& command) {
  using Clock = std::chrono::steady_clock;
  constexpr timespec kOneSecond{1, 0};
  std::optional<Clock::time_point> kill_at;
  while (true) {
    if (const auto code = command.ExitCode()) return *code;
    if (kill_at && Clock::now() >= *kill_at) command.Signal(SIGKILL);
    siginfo_t info{};
    const int number = ::sigtimedwait(&signals, &info, &kOneSecond);
    if (number != SIGINT && number != SIGTERM && number != SIGHUP) continue;
    const bool from_terminal = info.si_code > 0;
    if (!from_terminal) command.Signal(number);
    if (number != SIGINT && !kill_at) kill_at = Clock::now() + kGrace;  // SIGINT need not mean end
  }
}

void Report(const SimOptions& options, const ServedLine& line, ServedLine::End end,
            const Field& field) {
  ReportStoreErrors(field);
  if (end == ServedLine::End::kHungUp) Complain("the line has hung up");
  if (end == ServedLine::End::kFailed) Complain("the line could not be served any longer");
  if (line.lost_answers() > 0) {
    Complain(std::to_string(line.lost_answers()) + " bytes found the client's buffer full");
  }
  const PaceReport& pace = line.pace_report();
  if (!options.pace || pace.answers == 0) return;
  const double mean = static_cast<double>(pace.total_late) / static_cast<double>(pace.answers);
  std::fprintf(stderr,
               "vt63x-sim: %llu answer bytes, late by %.1f us on average, %.1f us at most\n",
               static_cast<unsigned long long>(pace.answers), mean / 1e3,
               static_cast<double>(pace.most_late) / 1e3);
}

}  // namespace

// The main thread waits for signals, a second one serves the line.
int ServeLine(const SimOptions& options) {
  sigset_t old_mask;
  const sigset_t signals = BlockSignals(old_mask);
  RealClock clock;
  Chip chip(clock);
  AccessTrace trace;
  if (!SetUp(options, chip, trace)) return kExitNoDevice;
  std::string error;
  // Who has asked need not stay for the reply, and a trace that cannot grow is no reason to end.
  for (const int number : {SIGPIPE, SIGXFSZ}) ::signal(number, SIG_IGN);
  OwnDevice own;
  if (!own.Open(options.rfc2217, error)) {
    Complain(error);
    return kExitNoDevice;
  }
  LineDevice& device = own.device();
  ControlInput control(chip.field(), own.ring());
  ChipSerialPort port(chip, options.faults);
  ServedLine line(device, port,
                  {options.pace, options.trace.empty() ? nullptr : &trace,
                   options.control ? &control : nullptr});
  DeviceLink link;
  if (!line.Open(error) ||
      (!options.link.empty() && !link.Make(options.link, device.path(), error))) {
    Complain(error);
    return kExitNoDevice;
  }

  ChildProcess command;
  if (options.command.empty()) {
    std::printf("%s\n", device.path().c_str());
    std::fflush(stdout);
  } else {
    ::setenv("VT63X_COM1", device.path().c_str(), 1);
    const int code = command.Start(options.command, old_mask, error);
    if (code != 0) {
      Complain(error);
      return code;
    }
  }

  ServedLine::End end = ServedLine::End::kStopped;
  std::thread server([&] {
    end = line.Serve();
    ::kill(::getpid(), kLineEnded);
  });
  int exit_code = 0;
  if (options.command.empty()) {
    WaitForEnd(signals);
  } else {
    exit_code = WaitForCommand(signals, command);
  }
  line.Stop();
  server.join();
  Report(options, line, end, chip.field());
  if (options.command.empty() && end == ServedLine::End::kFailed) exit_code = kExitNoDevice;
  return exit_code;
}

}  // namespace vt63x
