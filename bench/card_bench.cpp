// SPDX-License-Identifier: MIT

// One request, select, authentication and read of a block through the whole stack: how many
// register accesses and bytes it takes beside the fewest that it could, and its time over a line
// with paced bytes beside a raw loop that plays the same bytes on the same line.

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "serial/port_control.h"
#include "shell/card_reader.h"
#include "shell/component_stack.h"
#include "simulator/pty_server.h"

namespace {

using namespace vt63x;

constexpr int kBlock = 5;
constexpr int kRounds = 7;

struct Transfer {
  bool sent;
  std::uint8_t byte;
};

// Stands between register control and the serial bus and keeps what crosses.
class RecordingBus final : public SerialBusInterface {
 public:
  HFLSTATUS WriteByte(bus_byte_param* param) override {
    transfers.push_back({true, param->data});
    return bus->WriteByte(param);
  }
  HFLSTATUS ReadByte(bus_byte_param* param) override {
    const HFLSTATUS status = bus->ReadByte(param);
    transfers.push_back({false, param->data});
    return status;
  }

  SerialBusInterface* bus = nullptr;
  std::vector<Transfer> transfers;
};

// The stack on COM1:, with its chip set up for type A.
class Reader {
 public:
  Reader(const std::string& device, bool fast) : stack_(state_, &bus_) {
    action_.app_state = &state_;
    bus_.bus = state_.component_ptrs.serial_bus;
    SetEnvironmentVariableA("VT63X_COM1", device.c_str());
    OpenPort(&action_);
    if (fast) SwitchAllTo115k(&action_);
    ready_ = reader_.SetUp() == HFL_SUCCESS;
    reader_.block = kBlock;
  }
  ~Reader() {
    // The chip follows to 9600 bps, where the next reader starts.
    setreg_param slow{0x1F, 0xEB, nullptr};
    state_.component_ptrs.register_control->SetRegister(&slow);
    ClosePort(&action_);
  }

  bool ReadCard() {
    constexpr std::uint8_t kKey[6] = {0x3C, 0x9A, 0x5E, 0x71, 0xB2, 0xD4};
    std::uint8_t data[16];
    bus_.transfers.clear();
    return ready_ && reader_.Request(REQUEST_WUPA) == HFL_SUCCESS &&
           reader_.AnticollisionSelect() == HFL_SUCCESS &&
           reader_.Authenticate(0x60, kKey) == HFL_SUCCESS && reader_.Read(data) == HFL_SUCCESS;
  }
  const std::vector<Transfer>& transfers() const { return bus_.transfers; }

 private:
  AppState state_;
  action_param action_{};
  RecordingBus bus_;
  ComponentStack stack_;
  CardReader reader_{&action_, {[](const char*) {}, [](HFLSTATUS) {}, [](HFLSTATUS) {}}};
  bool ready_ = false;
};

struct Accesses {
  int reads = 0;
  int writes = 0;
  int bytes() const { return 2 * reads + 3 * writes; }
};

Accesses operator+(Accesses a, Accesses b) { return {a.reads + b.reads, a.writes + b.writes}; }

// A chip command that sends `sent` bytes, finds the chip done at the first look, and fetches
// `received` bytes (-1: expects no answer).
Accesses ChipCommand(int sent, int received) {
  return {8 + (received < 0 ? 0 : 3 + received), 13 + sent};
}

// Changes of bits are a read and a write.
Accesses Fewest() {
  const Accesses timer = {3, 6};
  const Accesses request = Accesses{3, 6} + ChipCommand(1, 2);
  const Accesses anticollision = Accesses{2, 6} + ChipCommand(2, 5);
  const Accesses select = Accesses{2, 2} + ChipCommand(7, 1);
  const Accesses authentication = Accesses{1, 0} + ChipCommand(12, -1);
  const Accesses read = ChipCommand(2, 16);
  return timer + request + timer + anticollision + select + timer + authentication + timer + read;
}

// A read takes one byte each way, a write two out and one back.
Accesses Count(const std::vector<Transfer>& transfers) {
  Accesses count;
  for (std::size_t at = 0; at < transfers.size();) {
    const bool read = (transfers[at].byte & 0x80) != 0;
    ++(read ? count.reads : count.writes);
    at += read ? 2 : 3;
  }
  return count;
}

bool Play(int line, const std::vector<Transfer>& transfers) {
  for (const Transfer& transfer : transfers) {
    std::uint8_t byte = transfer.byte;
    if (transfer.sent) {
      if (write(line, &byte, 1) != 1) return false;
      continue;
    }
    pollfd wait{line, POLLIN, 0};
    if (poll(&wait, 1, 500) != 1 || read(line, &byte, 1) != 1) return false;
  }
  return true;
}

bool Compare(const PtyServer& server, bool fast) {
  std::vector<double> stack_ms;
  std::vector<double> raw_ms;
  for (int round = 0; round < kRounds; ++round) {
    Reader reader(server.path(), fast);
    double start = WallSeconds();
    if (!reader.ReadCard()) return false;
    stack_ms.push_back((WallSeconds() - start) * 1000);
    const int line = open(server.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    start = WallSeconds();
    const bool played = Play(line, reader.transfers());
    raw_ms.push_back((WallSeconds() - start) * 1000);
    close(line);
    if (!played) return false;
  }
  std::printf("%6d bps  %10.2f ms %10.2f ms %8.3f\n", fast ? 115200 : 9600, Median(stack_ms),
              Median(raw_ms), Median(stack_ms) / Median(raw_ms));
  return true;
}

bool Run() {
  PtyServer::Options options;
  options.pace = true;
  std::string error;
  options.cards.push_back(ParseCardOption("5A3C1E78", error).value());
  const PtyServer server(options);

  Accesses used;
  {
    Reader reader(server.path(), false);
    if (!reader.ReadCard()) return false;
    used = Count(reader.transfers());
  }
  const Accesses fewest = Fewest();
  std::printf("request, select, authenticate, read    reads  writes  bytes on the line\n");
  std::printf("%-36s %7d %7d %8d\n", "the stack", used.reads, used.writes, used.bytes());
  std::printf("%-36s %7d %7d %8d\n", "the fewest", fewest.reads, fewest.writes, fewest.bytes());
  std::printf("paced bytes       stack           raw    ratio\n");
  return Compare(server, false) && Compare(server, true);
}

}  // namespace

int main() {
  if (Run()) return 0;
  std::fprintf(stderr, "card_bench: an operation failed\n");
  return 1;
}
