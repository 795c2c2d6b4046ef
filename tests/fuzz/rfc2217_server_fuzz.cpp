// SPDX-License-Identifier: MIT

// The simulator's access server, on a client that sends anything.

#include <arpa/inet.h>
#include <sys/socket.h>

#include <string>

#include "simulator/rfc2217_device.h"
#include "tests/fuzz/fuzz_input.h"

namespace vt63x {
namespace {

void Listen(Rfc2217Device& device) {
  std::string error;
  Require(device.Open("127.0.0.1:0", error), "there is a free TCP port");
}

// One that goes without the long good-bye of TCP, which would use all ports up.
UniqueFd ConnectTo(const std::string& path) {
  UniqueFd client(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  constexpr linger kAtOnce{1, 0};
  ::setsockopt(client.get(), SOL_SOCKET, SO_LINGER, &kAtOnce, sizeof kAtOnce);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(path.substr(path.rfind(':') + 1))));
  Require(::connect(client.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0,
          "the server listens");
  return client;
}

}  // namespace
}  // namespace vt63x

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vt63x;
  static Rfc2217Device device;
  [[maybe_unused]] static const bool listens = (Listen(device), true);
  FuzzInput input(data, size);
  UniqueFd client = ConnectTo(device.path());
  while (device.TakeChange() != LineDevice::Change::kOpened) {
  }
  std::size_t under_way = 0;
  while (!input.empty() && device.client_fd() >= 0) {
    const std::uint8_t what = input.Byte();
    const auto sent = input.Bytes(what >> 2);
    if (!sent.empty()) ::send(client.get(), sent.data(), sent.size(), MSG_NOSIGNAL);
    std::uint8_t bytes[256];
    under_way += sent.size();
    const std::size_t read = device.Read(bytes);
    Require(read <= under_way, "no byte is made up");
    under_way -= read;
    if ((what & 1) != 0) device.Write(bytes);
    if ((what & 2) != 0) device.SetRing((what & 1) != 0);
    device.OnTime();
    device.SendRest();
  }
  client.Reset();
  device.SurvivesError();
  device.TakeChange();
  Require(device.client_fd() < 0, "the board is free again");
  return 0;
}
