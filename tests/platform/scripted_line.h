// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_PLATFORM_SCRIPTED_LINE_H
#define VT63X_TESTS_PLATFORM_SCRIPTED_LINE_H

// A line that does what a test tells it to. The port owns the line; the test and the line share
// the script, which any thread may change.

#include <windows.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/kernel/line_source.h"
#include "platform/kernel/port.h"

namespace vt63x {

struct Script {
  std::mutex mutex;
  std::condition_variable changed;

  std::deque<char> input;
  std::string output;
  std::size_t room = 1000;      // bytes that writes take
  DWORD error = ERROR_SUCCESS;  // of every transfer, and of Ring
  DWORD configure_error = ERROR_SUCCESS;
  kernel::RingState ring;
  DWORD modem_status = 0;
  bool timed_reads_end_empty = false;
  bool interrupted = false;

  std::vector<std::string> calls;
  int readers_inside = 0;
  int most_readers_inside = 0;

  // Changes the script and wakes who waits for it.
  template <typename Change>
  void Do(Change change) {
    const std::lock_guard lock(mutex);
    change(*this);
    changed.notify_all();
  }

  // Blocks until the line has been called `count` times; the handshake of tests with a thread that
  // waits in the port.
  void AwaitCalls(std::size_t count) {
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return calls.size() >= count; });
  }
};

class ScriptedLine final : public kernel::LineSource {
 public:
  explicit ScriptedLine(std::shared_ptr<Script> script) : script_(std::move(script)) {}

  DWORD Configure(DWORD) override {
    const Lock lock = Enter("Configure");
    return script_->configure_error;
  }

  kernel::Transfer Read(void* buffer, std::size_t size) override {
    const Lock lock = Enter("Read");
    return Take(buffer, size);
  }

  kernel::Transfer Write(const void* data, std::size_t size) override {
    const Lock lock = Enter("Write");
    const std::size_t count = std::min(size, script_->room);
    script_->room -= count;
    script_->output.append(static_cast<const char*>(data), count);
    return {count, script_->error};
  }

  std::chrono::milliseconds TimedReadSpan() const override {
    return std::chrono::milliseconds(100);
  }

  // Waits without limit, so that only the script decides when it ends.
  kernel::Transfer TimedRead(void* buffer, std::size_t size) override {
    Lock lock = Enter("TimedRead");
    Script& s = *script_;
    s.most_readers_inside = std::max(s.most_readers_inside, ++s.readers_inside);
    while (s.input.empty() && !s.timed_reads_end_empty && !Ended()) s.changed.wait(lock);
    --s.readers_inside;
    return Take(buffer, size);
  }

  kernel::LineHealth WaitReadable(kernel::Deadline deadline) override {
    Lock lock = Enter("WaitReadable");
    while (script_->input.empty() && !Ended() && !deadline.Passed()) {
      Await(lock, deadline);
    }
    return kernel::LineHealth::kUp;
  }

  kernel::LineHealth WaitWritable(kernel::Deadline deadline) override {
    Lock lock = Enter("WaitWritable");
    while (script_->room == 0 && !Ended() && !deadline.Passed()) {
      Await(lock, deadline);
    }
    return kernel::LineHealth::kUp;
  }

  void Interrupt() override {
    script_->Do([](Script& s) { s.interrupted = true; });
  }

  DWORD PurgeInput() override {
    const Lock lock = Enter("PurgeInput");
    return ERROR_SUCCESS;
  }

  DWORD PurgeOutput() override {
    const Lock lock = Enter("PurgeOutput");
    return ERROR_SUCCESS;
  }

  DWORD ModemStatus(DWORD* status) override {
    const Lock lock = Enter("ModemStatus");
    *status = script_->modem_status;
    return script_->error;
  }

  DWORD Ring(kernel::RingState* state) override {
    const Lock lock = Enter("Ring");
    *state = script_->ring;
    return script_->error;
  }

 private:
  using Lock = std::unique_lock<std::mutex>;

  Lock Enter(const char* call) {
    Lock lock(script_->mutex);
    script_->calls.push_back(call);
    script_->changed.notify_all();
    return lock;
  }

  void Await(Lock& lock, kernel::Deadline deadline) {
    if (deadline.IsNever()) return script_->changed.wait(lock);
    script_->changed.wait_until(lock, deadline.point());
  }

  bool Ended() const { return script_->error != ERROR_SUCCESS || script_->interrupted; }

  kernel::Transfer Take(void* buffer, std::size_t size) {
    const std::size_t count = std::min(size, script_->input.size());
    for (std::size_t i = 0; i < count; ++i) {
      static_cast<char*>(buffer)[i] = script_->input.front();
      script_->input.pop_front();
    }
    return {count, count != 0 ? ERROR_SUCCESS : script_->error};
  }

  const std::shared_ptr<Script> script_;
};

// A port on a scripted line.
struct ScriptedPort {
  ScriptedPort() : handle(kernel::MakePortHandle(std::make_unique<ScriptedLine>(script), true)) {}
  ~ScriptedPort() { CloseHandle(handle); }
  ScriptedPort(const ScriptedPort&) = delete;
  ScriptedPort& operator=(const ScriptedPort&) = delete;

  const std::shared_ptr<Script> script = std::make_shared<Script>();
  const HANDLE handle;
};

}  // namespace vt63x

#endif
