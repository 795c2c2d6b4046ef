// SPDX-License-Identifier: MIT

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "simulator/pty_server.h"
#include "simulator/rfc2217_device.h"
#include "simulator/unique_fd.h"

namespace vt63x {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kGenerous{20};

// True as soon as `condition` holds.
template <typename Condition>
bool Eventually(Condition condition) {
  const auto deadline = Clock::now() + kGenerous;
  while (!condition()) {
    if (Clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

// A program with the line open, which relies on the settings it finds.
class Client {
 public:
  explicit Client(const std::string& path) : fd_(::open(path.c_str(), O_RDWR | O_NOCTTY)) {
    EXPECT_TRUE(fd_);
  }

  void SetRate(speed_t speed) {
    termios settings;
    ASSERT_EQ(::tcgetattr(fd_.get(), &settings), 0);
    ::cfsetspeed(&settings, speed);
    ASSERT_EQ(::tcsetattr(fd_.get(), TCSANOW, &settings), 0);
  }
  void Send(const Bytes& bytes) {
    ASSERT_EQ(::write(fd_.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  // Exactly `count` bytes, fewer when the line goes away or nothing comes.
  Bytes Ask(const Bytes& request, std::size_t count) {
    Send(request);
    Bytes bytes;
    while (bytes.size() < count) {
      pollfd polled{fd_.get(), POLLIN, 0};
      std::uint8_t byte = 0;
      if (::poll(&polled, 1, static_cast<int>(std::chrono::milliseconds(kGenerous).count())) <= 0 ||
          ::read(fd_.get(), &byte, 1) != 1) {
        break;
      }
      bytes.push_back(byte);
    }
    return bytes;
  }
  // How many bytes have arrived.
  int Waiting() const {
    int count = -1;
    ::ioctl(fd_.get(), FIONREAD, &count);
    return count;
  }

 private:
  UniqueFd fd_;
};

PtyServer::Options WithFaults(const std::vector<std::string>& texts) {
  std::string error;
  PtyServer::Options options;
  for (const std::string& text : texts) options.faults.push_back(*ParseFault(text, error));
  return options;
}

// Also those that terminals change, echo or take for commands.
TEST(ServedLine, EveryByteCrossesTheLineUnchanged) {
  PtyServer server;
  ASSERT_EQ(server.error(), "");
  Client client(server.path());
  for (unsigned value = 0; value < 256; ++value) {
    const auto data = static_cast<std::uint8_t>(value);
    ASSERT_EQ(client.Ask({0x15, data, 0x95}, 2), Bytes({0x15, data}));
  }
  server.Stop();
  EXPECT_EQ(server.chip().Read(0x15), 0xFF);
  EXPECT_EQ(server.reads(), 256u);
  EXPECT_EQ(server.line().lost_answers(), 0u);
  EXPECT_EQ(server.end(), ServedLine::End::kStopped);
}

TEST(ServedLine, EchoOfASpeedChangeArrivesAtTheOldRateAndTheNextAnswerAtTheNew) {
  PtyServer server;
  Client client(server.path());
  EXPECT_EQ(client.Ask({0x1F, 0x79}, 1), Bytes({0x1F}));
  client.SetRate(B115200);
  EXPECT_EQ(client.Ask({0xB7}, 1), Bytes({0x91}));
}

// At 57600 bps a byte with bit 2 clear is the chip's start bit and then idle line: a read of 0x7F.
// Its answer of 0 is nothing but a long start bit to the host.
TEST(ServedLine, ClientAtAnotherRateIsMisheardAndHearsNothing) {
  PtyServer server;
  Client client(server.path());
  client.SetRate(B57600);
  client.Send({0x00});
  ASSERT_TRUE(Eventually([&] { return server.reads() == 1; }));
  // The answer, had it been heard, would be in the client's buffer before the next one.
  client.SetRate(B9600);
  EXPECT_EQ(client.Ask({0xB7}, 1), Bytes({0x91}));
}

TEST(ServedLine, NextClientFindsNothingOfTheLastOne) {
  PtyServer server;
  for (int round = 0; round < 50; ++round) {
    {
      Client first(server.path());
      ASSERT_EQ(first.Ask({0xB7, 0xB7}, 1), Bytes({0x91}));
      ASSERT_TRUE(Eventually([&] { return first.Waiting() == 1; }));
    }
    Client second(server.path());
    ASSERT_TRUE(Eventually([&] { return second.Waiting() == 0; }));
    ASSERT_EQ(second.Ask({0x9F}, 1), Bytes({0xEB})) << round;
  }
}

TEST(ServedLine, LateAnswerToAClosedClientIsNotTheNextOnes) {
  PtyServer server(WithFaults({"delay=300@1+1"}));
  Client(server.path()).Send({0xB7});
  ASSERT_TRUE(Eventually([&] { return server.reads() == 1; }));
  EXPECT_EQ(Client(server.path()).Ask({0x9F}, 1), Bytes({0xEB}));
}

TEST(ServedLine, LastBytesOfAClosedClientReachTheChipButAreNotAnswered) {
  Chip chip;
  ChipSerialPort port(chip);
  std::string error;
  PtyDevice device;
  ASSERT_TRUE(device.Open(error)) << error;
  ServedLine line(device, port, {});
  ASSERT_TRUE(line.Open(error)) << error;
  Client(device.path()).Send({0x15, 0x0F, 0xB7});
  line.Stop();
  EXPECT_EQ(line.Serve(), ServedLine::End::kStopped);
  EXPECT_EQ(chip.Read(0x15), 0x0F);
  EXPECT_EQ(port.reads(), 1u);
  EXPECT_EQ(Client(device.path()).Waiting(), 0);
}

// Exclusive use binds everybody but the superuser: a child without privileges plays both clients.
TEST(ServedLine, ExclusiveUseEndsWithTheClientThatAskedForIt) {
  constexpr uid_t kNobody = 65534;
  PtyServer server;
  const char* const path = server.path().c_str();
  ASSERT_TRUE(::geteuid() != 0 || ::chown(path, kNobody, static_cast<gid_t>(-1)) == 0);
  const pid_t child = ::fork();
  if (child == 0) {
    if (::geteuid() == 0 && ::setresuid(kNobody, kNobody, kNobody) != 0) ::_exit(2);
    const int first = ::open(path, O_RDWR | O_NOCTTY);
    if (first < 0 || ::ioctl(first, TIOCEXCL) != 0) ::_exit(3);
    if (::open(path, O_RDWR | O_NOCTTY) >= 0) ::_exit(4);
    ::close(first);
    ::alarm(20);  // ends the child if the device stays busy
    while (::open(path, O_RDWR | O_NOCTTY) < 0) {
    }
    ::_exit(0);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(ServedLine, ClientThatNeverReadsHoldsNothingUp) {
  PtyServer server;
  constexpr std::size_t kReads = 400'000;
  {
    Client deaf(server.path());
    const Bytes requests(4000, 0xB7);
    for (std::size_t sent = 0; sent < kReads; sent += requests.size()) deaf.Send(requests);
    ASSERT_TRUE(Eventually([&] { return server.reads() == kReads; }));
  }
  Client next(server.path());
  ASSERT_TRUE(Eventually([&] { return next.Waiting() == 0; }));
  EXPECT_EQ(next.Ask({0x9F}, 1), Bytes({0xEB}));
  server.Stop();
  EXPECT_GT(server.line().lost_answers(), 0u);
}

TEST(ServedLine, FaultsDelaySilenceAndEndTheAccessesTheyName) {
  PtyServer server(WithFaults({"delay=40@1+1", "silence@2+1", "hang-up@4"}));
  Client client(server.path());
  const auto start = Clock::now();
  // The late answer holds back the one after it.
  EXPECT_EQ(client.Ask({0xB7, 0xB7, 0x9F}, 2), Bytes({0x91, 0xEB}));
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(40));
  EXPECT_EQ(client.Ask({0xB7}, 1), Bytes());
  server.Stop();
  EXPECT_EQ(server.end(), ServedLine::End::kHungUp);
}

TEST(ServedLine, PacedReadTakesTwoByteTimes) {
  PtyServer::Options options;
  options.pace = true;
  PtyServer server(options);
  Client client(server.path());
  constexpr int kReads = 20;
  const auto start = Clock::now();
  for (int read = 0; read < kReads; ++read) ASSERT_EQ(client.Ask({0xB7}, 1), Bytes({0x91}));
  // The chip's 9631 bps are a little faster than the host's 9600.
  EXPECT_GE(Clock::now() - start, kReads * std::chrono::microseconds(2 * 10'000'000 / 9631));
  server.Stop();
  EXPECT_EQ(server.line().pace_report().answers, std::uint64_t{kReads});
  EXPECT_GE(server.line().pace_report().total_late, 0);
}

// A TCP connection to an access server of this machine.
UniqueFd ConnectTo(const std::string& path) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(path.substr(path.rfind(':') + 1))));
  UniqueFd client(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  EXPECT_EQ(::connect(client.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  return client;
}

TEST(Rfc2217Device, ClientThatSaysNothingOfTheProtocolIsTurnedAway) {
  struct Case {
    std::string says;
    bool stays;
  };
  for (const Case& c : {Case{"", false}, Case{"GET / HTTP/1.0\r\n\r\n\xFF\xFB\x01", false},
                        Case{"\xFF\xFB\x2C", true}}) {
    Rfc2217Device device(50'000'000);
    std::string error;
    ASSERT_TRUE(device.Open("127.0.0.1:0", error)) << error;
    const UniqueFd client = ConnectTo(device.path());
    ASSERT_TRUE(Eventually([&] { return device.TakeChange() == LineDevice::Change::kOpened; }));
    ASSERT_EQ(::write(client.get(), c.says.data(), c.says.size()),
              static_cast<ssize_t>(c.says.size()));
    LineDevice::Change change = LineDevice::Change::kNone;
    EXPECT_TRUE(Eventually([&] {
      std::uint8_t bytes[64];
      device.Read(bytes);
      if (device.due() == LineDevice::kNever) return true;
      device.OnTime();
      change = device.TakeChange();
      return change != LineDevice::Change::kNone;
    }));
    EXPECT_EQ(change == LineDevice::Change::kNone, c.stays) << c.says;
  }
}

// What the system does with these settings takes longer than a test may.
TEST(Rfc2217Device, VanishedClientIsLookedForWithinHalfAMinute) {
  Rfc2217Device device;
  std::string error;
  ASSERT_TRUE(device.Open("127.0.0.1:0", error)) << error;
  const UniqueFd client = ConnectTo(device.path());
  ASSERT_TRUE(Eventually([&] { return device.TakeChange() == LineDevice::Change::kOpened; }));
  const auto option = [&](int level, int name) {
    int value = 0;
    socklen_t size = sizeof value;
    EXPECT_EQ(::getsockopt(device.client_fd(), level, name, &value, &size), 0);
    return value;
  };
  EXPECT_NE(option(SOL_SOCKET, SO_KEEPALIVE), 0);
  EXPECT_LE(option(IPPROTO_TCP, TCP_KEEPIDLE) +
                option(IPPROTO_TCP, TCP_KEEPINTVL) * option(IPPROTO_TCP, TCP_KEEPCNT),
            30);
  EXPECT_LE(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 30'000);
}

}  // namespace
}  // namespace vt63x
