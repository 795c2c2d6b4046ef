// SPDX-License-Identifier: MIT

#include "platform/kernel/tcp_connect.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <memory>
#include <thread>

#include "platform/kernel/poll_until.h"
#include "threading/mutex.h"

namespace vt63x::kernel {
namespace {

constexpr std::string_view kScheme = "rfc2217://";

bool IsNumber(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

// The resolver would take a larger number and drop its upper bits.
bool IsTcpPort(std::string_view digits) {
  std::uint16_t port = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  return result.ec == std::errc() && port != 0;
}

struct Addresses {
  struct Free {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
  };
  std::unique_ptr<addrinfo, Free> list;
};

// A question to the system's resolver, which nothing can break off: who asked may leave before the
// answer comes, and then nobody takes it.
struct Question {
  Mutex mutex;
  Condition answered;
  bool done GUARDED_BY(mutex) = false;
  Addresses addresses GUARDED_BY(mutex);
};

void Ask(const std::shared_ptr<Question>& question, const RemoteName& name) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* list = nullptr;
  if (getaddrinfo(name.host.c_str(), name.port.c_str(), &hints, &list) != 0) list = nullptr;
  const LockGuard lock(question->mutex);
  question->addresses.list.reset(list);
  question->done = true;
  question->answered.NotifyAll();
}

DWORD Resolve(const RemoteName& name, Deadline deadline, Addresses* addresses) try {
  const auto question = std::make_shared<Question>();
  std::thread(Ask, question, name).detach();
  const LockGuard lock(question->mutex);
  while (!question->done && !deadline.Passed())
    WaitUntil(question->answered, question->mutex, deadline);
  if (!question->done) return ERROR_SEM_TIMEOUT;
  *addresses = std::move(question->addresses);
  return addresses->list != nullptr ? ERROR_SUCCESS : ERROR_BAD_NETPATH;
} catch (const std::system_error&) {
  return ERROR_NOT_ENOUGH_MEMORY;  // no thread to be had
}

DWORD ConnectError(int error_number) {
  switch (error_number) {
    case ECONNREFUSED:
      return ERROR_CONNECTION_REFUSED;
    case ETIMEDOUT:
      return ERROR_SEM_TIMEOUT;
    default:
      return ERROR_HOST_UNREACHABLE;
  }
}

// How the attempt that goes on in `socket` ends.
DWORD AwaitConnection(const FileDescriptor& socket, Deadline deadline) {
  pollfd waited[] = {{socket.get(), POLLOUT, 0}};
  while (PollUntil(waited, deadline) <= 0) {
    if (deadline.Passed()) return ERROR_SEM_TIMEOUT;
  }
  int error_number = 0;
  socklen_t size = sizeof error_number;
  getsockopt(socket.get(), SOL_SOCKET, SO_ERROR, &error_number, &size);
  return error_number == 0 ? ERROR_SUCCESS : ConnectError(error_number);
}

void SetOption(const FileDescriptor& socket, int level, int option, int value) {
  setsockopt(socket.get(), level, option, &value, sizeof value);
}

// A line that is silent for 4 s is asked whether it is still there, three times; what was sent and
// not confirmed may wait 10 s.
void SetUp(const FileDescriptor& socket) {
  SetOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
  SetOption(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPIDLE, 4);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPINTVL, 2);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPCNT, 3);
  SetOption(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, 10'000);
}

DWORD ConnectTo(const addrinfo& address, Deadline deadline, FileDescriptor* opened) {
  FileDescriptor socket(::socket(
      address.ai_family, address.ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, address.ai_protocol));
  if (!socket.valid()) return ERROR_HOST_UNREACHABLE;
  SetUp(socket);
  if (connect(socket.get(), address.ai_addr, address.ai_addrlen) != 0) {
    if (errno != EINPROGRESS) return ConnectError(errno);
    const DWORD error = AwaitConnection(socket, deadline);
    if (error != ERROR_SUCCESS) return error;
  }
  *opened = std::move(socket);
  return ERROR_SUCCESS;
}

}  // namespace

bool IsRemoteName(std::string_view name) { return name.starts_with(kScheme); }

std::optional<RemoteName> ParseRemoteName(std::string_view name) {
  if (!IsRemoteName(name)) return std::nullopt;
  name.remove_prefix(kScheme.size());
  const std::size_t colon = name.rfind(':');
  if (colon == std::string_view::npos) return std::nullopt;
  std::string_view host = name.substr(0, colon);
  const std::string_view port = name.substr(colon + 1);
  if (host.starts_with('[') && host.ends_with(']')) {
    host = host.substr(1, host.size() - 2);
  } else if (host.find(':') != std::string_view::npos) {
    return std::nullopt;
  }
  const auto is_end = [](char c) { return c == '/' || c == '?' || c == ' '; };
  if (host.empty() || port.empty() || std::ranges::any_of(port, is_end)) return std::nullopt;
  if (IsNumber(port) && !IsTcpPort(port)) return std::nullopt;
  return RemoteName{std::string(host), std::string(port)};
}

DWORD ConnectTcp(const RemoteName& name, Deadline deadline, FileDescriptor* socket) {
  Addresses addresses;
  DWORD error = Resolve(name, deadline, &addresses);
  const addrinfo* address = addresses.list.get();
  for (; address != nullptr; address = address->ai_next) {
    error = ConnectTo(*address, deadline, socket);
    if (error == ERROR_SUCCESS || deadline.Passed()) break;
  }
  return error;
}

}  // namespace vt63x::kernel
