// SPDX-License-Identifier: MIT

// Register reads and writes of the whole stack over a pseudo terminal, beside a raw loop of write,
// poll and read that moves the same bytes; both against the same simulated chip in the same run.
//
//   register_bench               the table
//   register_bench MODE COUNT    COUNT accesses and nothing else, for counting system calls;
//                                MODE is stack-read, stack-write, raw-read or raw-write

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/register_stack.h"
#include "simulator/pty_server.h"

namespace {

using vt63x::RegisterStack;
using vt63x::ThreadSeconds;

constexpr int kRounds = 15;
constexpr int kAccesses = 4000;

// The simplest thing that could do it. The line's settings are those that the stack left.
class Raw {
 public:
  explicit Raw(const std::string& device)
      : line_(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK)) {}
  ~Raw() { close(line_); }

  bool Read() { return Send(0xB7) && Receive() == 0x91; }
  bool Write() { return Send(0x2B) && Send(0xA6) && Receive() == 0x2B; }

 private:
  bool Send(unsigned char byte) const { return write(line_, &byte, 1) == 1; }
  int Receive() const {
    pollfd wait{line_, POLLIN, 0};
    unsigned char byte = 0;
    if (poll(&wait, 1, 500) != 1 || read(line_, &byte, 1) != 1) return -1;
    return byte;
  }

  int line_;
};

struct Times {
  std::vector<double> wall;
  std::vector<double> processor;
};

template <typename Line>
bool Repeat(const std::string& device, bool (Line::*access)(), int count, Times* times) {
  Line line(device);
  bool done = (line.*access)();
  const double wall = vt63x::WallSeconds();
  const double processor = ThreadSeconds();
  for (int i = 0; i < count && done; ++i) done = (line.*access)();
  if (times != nullptr) {
    times->wall.push_back((vt63x::WallSeconds() - wall) * 1e6 / count);
    times->processor.push_back((ThreadSeconds() - processor) * 1e6 / count);
  }
  return done;
}

bool Compare(const char* what, const std::string& device, bool (RegisterStack::*stack_access)(),
             bool (Raw::*raw_access)()) {
  Times stack;
  Times raw;
  for (int round = 0; round < kRounds; ++round) {
    if (!Repeat(device, stack_access, kAccesses, &stack)) return false;
    if (!Repeat(device, raw_access, kAccesses, &raw)) return false;
  }
  const double wall[] = {vt63x::Median(stack.wall), vt63x::Median(raw.wall)};
  const double processor[] = {vt63x::Median(stack.processor), vt63x::Median(raw.processor)};
  std::printf("%-16s %8.2f us %8.2f us %6.2f %9.2f us %8.2f us %6.2f\n", what, wall[0], wall[1],
              wall[0] / wall[1], processor[0], processor[1], processor[0] / processor[1]);
  return true;
}

bool CountedRun(const std::string& mode, int count, const std::string& device) {
  if (mode == "stack-read") return Repeat(device, &RegisterStack::Read, count, nullptr);
  if (mode == "stack-write") return Repeat(device, &RegisterStack::Write, count, nullptr);
  { const vt63x::RegisterStack sets_the_line_up(device); }
  if (mode == "raw-read") return Repeat(device, &Raw::Read, count, nullptr);
  if (mode == "raw-write") return Repeat(device, &Raw::Write, count, nullptr);
  return false;
}

bool Table(const std::string& device) {
  std::printf("an access           wall: stack       raw  ratio   processor:       raw  ratio\n");
  return Compare("register read", device, &RegisterStack::Read, &Raw::Read) &&
         Compare("register write", device, &RegisterStack::Write, &Raw::Write);
}

}  // namespace

int main(int argc, char** argv) {
  // A device from outside keeps the chip's own system calls out of the count.
  const char* const device = std::getenv("VT63X_COM1");
  const vt63x::PtyServer server;
  const std::string path = device != nullptr ? device : server.path();
  const bool done = argc == 3 ? CountedRun(argv[1], std::atoi(argv[2]), path) : Table(path);
  if (!done) std::fprintf(stderr, "register_bench: an access failed\n");
  return done ? 0 : 1;
}
