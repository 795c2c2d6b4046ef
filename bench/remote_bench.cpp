// SPDX-License-Identifier: MIT

// One register read, a byte there and a byte back, through the whole stack and RFC 2217 over
// loopback, beside a plain TCP connection that moves the same two bytes; the same simulated chip
// behind the same server answers both.

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "bench/measure.h"
#include "bench/register_stack.h"
#include "simulator/rfc2217_device.h"
#include "simulator/served_line.h"

namespace {

using vt63x::RegisterStack;

constexpr int kRounds = 15;
constexpr int kAccesses = 4000;

// A chip behind an access server of this process.
class Server {
 public:
  Server() {
    std::string error;
    if (!device_.Open("127.0.0.1:0", error) || !line_.Open(error)) {
      std::fprintf(stderr, "remote_bench: %s\n", error.c_str());
      std::exit(1);
    }
    thread_ = std::thread([this] { line_.Serve(); });
  }
  ~Server() {
    line_.Stop();
    thread_.join();
  }
  const std::string& name() const { return device_.path(); }

 private:
  vt63x::RealClock clock_;
  vt63x::Chip chip_{clock_};
  vt63x::ChipSerialPort port_{chip_};
  vt63x::Rfc2217Device device_;
  vt63x::ServedLine line_{device_, port_, {}};
  std::thread thread_;
};

// The simplest thing that could do it.
class Plain {
 public:
  explicit Plain(const std::string& name) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int port = std::stoi(name.substr(name.rfind(':') + 1));
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const int on = 1;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    connected_ = connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  }
  ~Plain() { close(socket_); }

  bool Read() {
    const unsigned char request = 0xB7;
    if (!connected_ || write(socket_, &request, 1) != 1) return false;
    pollfd wait{socket_, POLLIN, 0};
    unsigned char answer = 0;
    return poll(&wait, 1, 500) == 1 && read(socket_, &answer, 1) == 1 && answer == 0x91;
  }

 private:
  int socket_;
  bool connected_ = false;
};

struct Times {
  std::vector<double> wall;
  std::vector<double> processor;
};

template <typename Line>
bool Repeat(const std::string& name, Times& times) {
  Line line(name);
  bool done = line.Read();
  const double wall = vt63x::WallSeconds();
  const double processor = vt63x::ThreadSeconds();
  for (int i = 0; i < kAccesses && done; ++i) done = line.Read();
  times.wall.push_back((vt63x::WallSeconds() - wall) * 1e6 / kAccesses);
  times.processor.push_back((vt63x::ThreadSeconds() - processor) * 1e6 / kAccesses);
  return done;
}

}  // namespace

int main() {
  const Server server;
  Times stack;
  Times plain;
  for (int round = 0; round < kRounds; ++round) {
    if (!Repeat<RegisterStack>(server.name(), stack) || !Repeat<Plain>(server.name(), plain)) {
      std::fprintf(stderr, "remote_bench: an access failed\n");
      return 1;
    }
  }
  const double wall[] = {vt63x::Median(stack.wall), vt63x::Median(plain.wall)};
  const double processor[] = {vt63x::Median(stack.processor), vt63x::Median(plain.processor)};
  std::printf("over the network    wall: stack     plain  ratio   processor:     plain  ratio\n");
  std::printf("%-16s %8.2f us %8.2f us %6.2f %9.2f us %8.2f us %6.2f\n", "register read", wall[0],
              wall[1], wall[0] / wall[1], processor[0], processor[1], processor[0] / processor[1]);
  return 0;
}
