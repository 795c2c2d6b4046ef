// SPDX-License-Identifier: MIT

// A port behind an access server that sends anything: while the port is being opened, while it is
// used, and before the server goes.

#include <sys/socket.h>

#include <memory>

#include "platform/kernel/remote_line.h"
#include "platform/kernel/tcp_connect.h"
#include "tests/fuzz/fuzz_input.h"

namespace vt63x {
namespace {

using kernel::FileDescriptor;

FileDescriptor server;
std::span<const std::uint8_t> greeting;

// The server's socket takes what fits, which is more than an input has.
void Say(std::span<const std::uint8_t> bytes) {
  [[maybe_unused]] const ssize_t sent =
      ::send(server.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void Use(kernel::LineSource& line, FuzzInput& input) {
  std::uint8_t bytes[64];
  DWORD status = 0;
  kernel::RingState ring;
  while (!input.empty()) {
    const std::uint8_t what = input.Byte();
    Say(input.Bytes(what >> 3));
    switch (what & 7) {
      case 0:
        line.Configure(9600);
        break;
      case 1:
        line.Write(bytes, sizeof bytes);
        break;
      case 2:
        line.PurgeInput();
        break;
      case 3:
        line.PurgeOutput();
        break;
      case 4:
        line.ModemStatus(&status);
        break;
      case 5:
        line.Ring(&ring);
        break;
      case 6:
        line.WaitReadable(kernel::Deadline::After(std::chrono::milliseconds(500)));
        break;
      default:
        line.Read(std::make_unique<std::uint8_t[]>(2).get(), 2);
    }
  }
}

}  // namespace

// In the place of the one that connects to other machines.
DWORD kernel::ConnectTcp(const RemoteName&, Deadline, FileDescriptor* socket) {
  int ends[2];
  constexpr int kType = SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK;
  if (::socketpair(AF_UNIX, kType, 0, ends) != 0) return ERROR_HOST_UNREACHABLE;
  *socket = FileDescriptor(ends[0]);
  server = FileDescriptor(ends[1]);
  Say(greeting);
  return ERROR_SUCCESS;
}

bool kernel::IsRemoteName(std::string_view) { return true; }

std::optional<kernel::RemoteName> kernel::ParseRemoteName(std::string_view) { return RemoteName{}; }

}  // namespace vt63x

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vt63x;
  FuzzInput input(data, size);
  greeting = input.Bytes(input.Byte());
  std::unique_ptr<kernel::LineSource> line;
  if (kernel::RemoteLine::Open("rfc2217://server:1", &line) != ERROR_SUCCESS) return 0;
  Use(*line, input);
  ::shutdown(server.get(), SHUT_RDWR);
  for (int reads = 0; line->WaitReadable(kernel::Deadline::After({})) == kernel::LineHealth::kUp;) {
    std::uint8_t bytes[4096];
    line->Read(bytes, sizeof bytes);
    Require(++reads < 1000, "a line whose server has gone goes too");
  }
  return 0;
}
