// SPDX-License-Identifier: MIT

// Ports of other machines, against servers of all kinds: those that do as they should, and those
// that refuse, say nothing, echo, flood or go away.

#include "platform/kernel/remote_line.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <future>
#include <thread>

#include "overlapped_call.h"
#include "platform/kernel/file_descriptor.h"
#include "platform/kernel/tcp_connect.h"
#include "pseudo_terminal.h"
#include "rfc2217/telnet.h"

namespace vt63x {
namespace {

using kernel::FileDescriptor;
using rfc2217::Bytes;
using rfc2217::ComPort;
using rfc2217::Negotiation;

Bytes BytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// Listens on a free port of this machine.
class Listening {
 public:
  explicit Listening(int backlog = 8) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(bind(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(socket_.get(), backlog), 0);
    socklen_t size = sizeof address;
    getsockname(socket_.get(), reinterpret_cast<sockaddr*>(&address), &size);
    name_ = "rfc2217://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
  }

  const std::string& name() const { return name_; }
  FileDescriptor Accept() const { return FileDescriptor(accept(socket_.get(), nullptr, nullptr)); }
  void Close() { socket_ = FileDescriptor(); }

 private:
  FileDescriptor socket_;
  std::string name_;
};

// One connection of an access server that confirms settings; a test changes what it does.
class Server : private rfc2217::Listener {
 public:
  Server() : thread_([this] { Serve(); }) {}
  ~Server() {
    // A test that never opened the port leaves the thread waiting for it.
    if (!served_)
      kernel::ConnectTcp(*kernel::ParseRemoteName(name()), kernel::Deadline::Never(), &nudge_);
    while (!served_) std::this_thread::yield();
    shutdown(connection_.get(), SHUT_RDWR);
    thread_.join();
  }

  const std::string& name() const { return listening_.name(); }

  // Called on the server's thread; set before the port is opened.
  std::function<std::uint32_t(std::uint32_t)> rate = [](std::uint32_t asked) { return asked; };
  std::function<void(Server&, std::uint8_t which)> purge = [](Server& server, std::uint8_t which) {
    server.Confirm(ComPort::kPurgeData, which);
  };
  std::function<void(Server&, const std::string& data)> data =
      [](Server& server, const std::string& text) { server.Send(text); };

  void Send(const std::string& text) {
    std::string wire;
    rfc2217::AppendData(wire, BytesOf(text));
    SendWire(wire);
  }
  void Confirm(ComPort command, std::uint8_t value) {
    std::string wire;
    rfc2217::AppendComPort(wire, static_cast<std::uint8_t>(static_cast<int>(command) + 100), value);
    SendWire(wire);
  }
  void SendWire(const std::string& wire) {
    // One that has gone is the other side's business.
    [[maybe_unused]] const ssize_t sent =
        send(connection_.get(), wire.data(), wire.size(), MSG_NOSIGNAL);
  }
  void HangUp() { shutdown(connection_.get(), SHUT_RDWR); }

 private:
  void Serve() {
    connection_ = listening_.Accept();
    served_ = true;
    std::string hello;
    rfc2217::AppendNegotiation(hello, Negotiation::kDo, rfc2217::kOptionComPort);
    SendWire(hello);
    std::uint8_t bytes[4096];
    for (ssize_t count; (count = recv(connection_.get(), bytes, sizeof bytes, 0)) > 0;) {
      decoder_.Take({bytes, static_cast<std::size_t>(count)}, *this);
    }
  }
  void OnData(Bytes bytes) override { data(*this, std::string(bytes.begin(), bytes.end())); }
  void OnNegotiation(Negotiation, std::uint8_t) override {}
  void OnComPort(std::uint8_t command, Bytes value) override {
    if (command == static_cast<std::uint8_t>(ComPort::kSetBaudRate)) {
      const std::uint32_t answer = rate(rfc2217::BaudRateOf(value));
      std::string wire;
      rfc2217::AppendBaudRate(wire, 101, answer);
      if (answer != 0) SendWire(wire);
    } else if (command == static_cast<std::uint8_t>(ComPort::kPurgeData)) {
      purge(*this, value.empty() ? std::uint8_t{0} : value[0]);
    }
  }

  Listening listening_;
  FileDescriptor connection_;
  std::atomic<bool> served_ = false;
  FileDescriptor nudge_;
  rfc2217::Decoder decoder_;
  std::thread thread_;
};

HANDLE OpenRemote(const std::string& name) {
  SetEnvironmentVariableA(PseudoTerminal::kVariable, name.c_str());
  SetLastError(0);
  return OpenPort();
}

DWORD OpenErrorOf(const std::string& name) {
  const HANDLE port = OpenRemote(name);
  if (port == INVALID_HANDLE_VALUE) return GetLastError();
  CloseHandle(port);
  return ERROR_SUCCESS;
}

class RemotePort {
 public:
  explicit RemotePort(const std::string& name, DWORD read_ms = 2000) : handle(OpenRemote(name)) {
    EXPECT_NE(handle, INVALID_HANDLE_VALUE) << GetLastError();
    COMMTIMEOUTS timeouts = FirstByteWithin(read_ms);
    EXPECT_EQ(ErrorOf(SetCommTimeouts(handle, &timeouts)), ERROR_SUCCESS);
  }
  ~RemotePort() { CloseHandle(handle); }
  RemotePort(const RemotePort&) = delete;
  RemotePort& operator=(const RemotePort&) = delete;

  DWORD SetRate(DWORD rate) const {
    DCB settings = SettingsWithRate(rate);
    return ErrorOf(SetCommState(handle, &settings));
  }
  // Reads until `size` bytes are there or nothing comes any more.
  std::string Read(std::size_t size) const {
    std::string all;
    while (all.size() < size) {
      const ReadOutcome piece = ReadPort(handle, static_cast<DWORD>(size - all.size()));
      if (piece.error != ERROR_SUCCESS || piece.data.empty()) break;
      all += piece.data;
    }
    return all;
  }
  DWORD RingStatus() const {
    DWORD status = 0;
    EXPECT_EQ(ErrorOf(GetCommModemStatus(handle, &status)), ERROR_SUCCESS);
    return status & MS_RING_ON;
  }

  const HANDLE handle;
};

TEST(RemoteName, HostAndPortAreNeeded) {
  const auto host_of = [](const char* name) {
    const auto parsed = kernel::ParseRemoteName(name);
    return parsed ? parsed->host + " " + parsed->port : "none";
  };
  EXPECT_EQ(host_of("rfc2217://lab3:4001"), "lab3 4001");
  EXPECT_EQ(host_of("rfc2217://[fe80::1]:4001"), "fe80::1 4001");
  EXPECT_EQ(host_of("rfc2217://lab3:telnet"), "lab3 telnet");
  for (const char* name : {"rfc2217://", "rfc2217://lab3", "rfc2217://:4001", "rfc2217://lab3:",
                           "rfc2217://fe80::1:4001", "rfc2217://lab3:4001/x", "/dev/ttyS0", ""}) {
    EXPECT_EQ(host_of(name), "none") << name;
    if (kernel::IsRemoteName(name)) {
      EXPECT_EQ(OpenErrorOf(name), ERROR_INVALID_PARAMETER) << name;
    }
  }
}

TEST(RemoteOpen, WhatCannotBeReachedIsSaidAtOnce) {
  Listening closed;
  closed.Close();
  EXPECT_EQ(OpenErrorOf(closed.name()), ERROR_CONNECTION_REFUSED);
  EXPECT_EQ(OpenErrorOf("rfc2217://no-such-host.invalid:4001"), ERROR_BAD_NETPATH);
}

void ReadToTheEnd(int connection) {
  char byte = 0;
  while (recv(connection, &byte, 1, 0) > 0) continue;
}

// Most of these take the whole 5 s, so they take them together.
TEST(RemoteOpen, ServersThatNeverAgreeAreNamedInTime) {
  struct Case {
    void (*serve)(int connection);  // null: accepts nobody
    DWORD error;
  };
  const Case cases[] = {
      {[](int) {}, ERROR_ACCESS_DENIED},  // closes: has no room
      {[](int connection) {
         send(connection, "\xff\xfe\x2c", 3, MSG_NOSIGNAL);  // refuses the option
         ReadToTheEnd(connection);
       },
       ERROR_NOT_SUPPORTED},
      {ReadToTheEnd, ERROR_NOT_SUPPORTED},
      {[](int connection) {  // echoes
         for (char byte = 0; recv(connection, &byte, 1, 0) > 0;) {
           send(connection, &byte, 1, MSG_NOSIGNAL);
         }
       },
       ERROR_NOT_SUPPORTED},
      {[](int connection) {  // floods
         const std::string flood(4096, '\xfa');
         while (send(connection, flood.data(), flood.size(), MSG_NOSIGNAL) > 0) continue;
       },
       ERROR_NOT_SUPPORTED},
      {nullptr, ERROR_SEM_TIMEOUT},
  };
  const auto error_of = [](const Case& c) {
    const Listening listening(c.serve != nullptr ? 8 : 0);
    std::vector<FileDescriptor> queue(c.serve != nullptr ? 0 : 4);  // what exceeds it is unanswered
    for (FileDescriptor& socket : queue) {
      kernel::ConnectTcp(*kernel::ParseRemoteName(listening.name()),
                         kernel::Deadline::After(std::chrono::milliseconds(300)), &socket);
    }
    std::thread server([&] {
      if (c.serve != nullptr) c.serve(listening.Accept().get());
    });
    std::unique_ptr<kernel::LineSource> line;
    const DWORD error = kernel::RemoteLine::Open(listening.name(), &line);
    server.join();
    return error;
  };
  const Stopwatch watch;
  std::vector<std::future<DWORD>> errors;
  for (const Case& c : cases) errors.push_back(std::async(std::launch::async, error_of, c));
  for (std::size_t i = 0; i < errors.size(); ++i) EXPECT_EQ(errors[i].get(), cases[i].error) << i;
  EXPECT_LT(watch.ms(), 20'000);
}

TEST(RemoteTransfer, EveryByteGoesThereAndComesBack) {
  Server server;
  const RemotePort port(server.name());
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  bytes += "\xff\xff\xff";
  EXPECT_EQ(WritePort(port.handle, bytes), ERROR_SUCCESS);
  EXPECT_EQ(port.Read(bytes.size()), bytes);
}

TEST(RemoteSettings, RateIsTheServersWord) {
  Server server;
  server.rate = [](std::uint32_t asked) -> std::uint32_t {
    if (asked == 57'600) return 9600;    // what it kept
    return asked == 38'400 ? 0 : asked;  // and one that it says nothing about
  };
  const RemotePort port(server.name());
  EXPECT_EQ(port.SetRate(115'200), ERROR_SUCCESS);
  EXPECT_EQ(port.SetRate(57'600), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(port.SetRate(38'400), ERROR_SEM_TIMEOUT);
  EXPECT_EQ(port.SetRate(9600), ERROR_SUCCESS);
}

// Bytes that were on their way when the purge was asked for arrive before its confirmation.
TEST(RemotePurge, ThrowsAwayWhatWasOnItsWay) {
  Server server;
  server.purge = [](Server& s, std::uint8_t which) {
    s.Send("on its way");
    s.Confirm(ComPort::kPurgeData, which);
    s.Send("later");
  };
  const RemotePort port(server.name());
  EXPECT_EQ(port.Read(5), "later");  // opening purges, too
  EXPECT_EQ(ErrorOf(PurgeComm(port.handle, PURGE_RXCLEAR)), ERROR_SUCCESS);
  EXPECT_EQ(port.Read(5), "later");
}

TEST(RemotePurge, ServerThatNeverConfirmsSilencesThePortForAMomentOnly) {
  Server server;
  server.purge = [](Server&, std::uint8_t) {};
  const RemotePort port(server.name(), 100);
  std::string answer;
  for (int i = 0; i < 50 && answer.empty(); ++i) {
    EXPECT_EQ(WritePort(port.handle, "x"), ERROR_SUCCESS);
    answer = port.Read(1);
  }
  EXPECT_EQ(answer, "x");
}

TEST(RemoteLoss, BytesBeforeItAreReadAndThenEveryCallFails) {
  Server server;
  server.data = [](Server& s, const std::string&) {
    s.Send("last");
    s.HangUp();
  };
  const RemotePort port(server.name());
  EXPECT_EQ(WritePort(port.handle, "x"), ERROR_SUCCESS);
  EXPECT_EQ(port.Read(4), "last");
  EXPECT_EQ(ReadPort(port.handle, 1).error, ERROR_DEVICE_NOT_CONNECTED);
  DWORD status = 0;
  EXPECT_EQ(ErrorOf(GetCommModemStatus(port.handle, &status)), ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_EQ(ErrorOf(PurgeComm(port.handle, PURGE_RXCLEAR)), ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_EQ(port.SetRate(9600), ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_EQ(WritePort(port.handle, "x"), ERROR_DEVICE_NOT_CONNECTED);
}

TEST(RemoteLoss, IsSeenBehindBytesThatNobodyReads) {
  Server server;
  std::promise<void> gone;
  server.data = [&](Server& s, const std::string&) {
    s.Send("last");
    s.HangUp();
    gone.set_value();
  };
  const RemotePort port(server.name());
  EXPECT_EQ(WritePort(port.handle, "x"), ERROR_SUCCESS);
  gone.get_future().wait();
  DWORD status = 0;
  EXPECT_EQ(ErrorOf(GetCommModemStatus(port.handle, &status)), ERROR_DEVICE_NOT_CONNECTED);
}

TEST(RemoteLoss, LostConnectionAndClosedPortEndAWaitInAnotherThread) {
  for (const bool closed : {false, true}) {
    Server server;
    auto port = std::make_unique<RemotePort>(server.name(), 60'000);
    OverlappedCall read;
    char byte = 0;
    EXPECT_EQ(ErrorOf(ReadFile(port->handle, &byte, 1, nullptr, &read.record)), ERROR_IO_PENDING);
    auto waited = std::async(std::launch::async, [&] { return read.Wait(30'000); });
    Sleep(30);  // lets the wait come first; either order must do
    if (closed) {
      port.reset();
    } else {
      server.HangUp();
    }
    EXPECT_EQ(waited.get(), WAIT_OBJECT_0);
    EXPECT_EQ(read.record.Internal, closed ? ERROR_OPERATION_ABORTED : ERROR_DEVICE_NOT_CONNECTED);
  }
}

TEST(RemoteRing, LevelAndEndedRingsAreTheServersNotices) {
  Server server;
  const RemotePort port(server.name());
  EXPECT_EQ(port.SetRate(9600), ERROR_SUCCESS);
  EXPECT_EQ(port.RingStatus(), 0u);
  EXPECT_EQ(ErrorOf(SetCommMask(port.handle, EV_RING)), ERROR_SUCCESS);

  const auto next_event = [&](DWORD timeout_ms) {
    OverlappedCall wait;
    DWORD events = 0;
    const DWORD begun = ErrorOf(WaitCommEvent(port.handle, &events, &wait.record));
    if (begun == ERROR_IO_PENDING && wait.Wait(timeout_ms) != WAIT_OBJECT_0) {
      SetCommMask(port.handle, 0);
      SetCommMask(port.handle, EV_RING);
      return DWORD{0};
    }
    return events;
  };
  const auto notice = [&](std::uint8_t state) {
    server.Confirm(ComPort::kNotifyModemState, state);
  };
  notice(rfc2217::kModemRing);
  for (int i = 0; i < 400 && port.RingStatus() == 0; ++i) Sleep(5);
  EXPECT_EQ(port.RingStatus(), DWORD{MS_RING_ON});
  EXPECT_EQ(next_event(30), 0u);  // it has not ended
  notice(0);                      // by its level alone
  EXPECT_EQ(next_event(5000), DWORD{EV_RING});
  notice(rfc2217::kModemRingEnded);  // shorter than two notices
  EXPECT_EQ(next_event(5000), DWORD{EV_RING});
  EXPECT_EQ(next_event(30), 0u);
}

// Its notices are heard all the same, and what finds no room is lost as with any driver.
TEST(RemoteFlood, LeavesThePortUsable) {
  Server server;
  server.data = [](Server& s, const std::string&) {
    for (int i = 0; i < 500; ++i) s.Send(std::string(4096, 'f'));
    s.Confirm(ComPort::kNotifyModemState, rfc2217::kModemRing);
  };
  const RemotePort port(server.name());
  EXPECT_EQ(WritePort(port.handle, "x"), ERROR_SUCCESS);
  for (int i = 0; i < 2000 && port.RingStatus() == 0; ++i) Sleep(5);
  EXPECT_EQ(port.RingStatus(), DWORD{MS_RING_ON});
  EXPECT_EQ(port.SetRate(115'200), ERROR_SUCCESS);
  const std::string rest = port.Read(100'000);
  EXPECT_EQ(rest, std::string(rest.size(), 'f'));
  EXPECT_GT(rest.size(), 1000u);
}

}  // namespace
}  // namespace vt63x
