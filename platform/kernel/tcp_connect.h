// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_TCP_CONNECT_H
#define VT63X_PLATFORM_KERNEL_TCP_CONNECT_H

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/kernel/deadline.h"
#include "platform/kernel/file_descriptor.h"

namespace vt63x::kernel {

struct RemoteName {
  std::string host;  // a name or an address; without the brackets of an IPv6 address
  std::string port;  // 1 to 65535, or the name of a service
};

// True for names that mean a line of another machine, well formed or not.
bool IsRemoteName(std::string_view name);

// "rfc2217://host:port", "rfc2217://[address]:port"; nothing when it is formed otherwise.
std::optional<RemoteName> ParseRemoteName(std::string_view name);

// Connects to the first address of the host that accepts; the socket neither blocks nor holds small
// packets back, and finds out within about 10 s when the other machine is no longer there.
// ERROR_BAD_NETPATH (no such host), ERROR_CONNECTION_REFUSED, ERROR_HOST_UNREACHABLE, or
// ERROR_SEM_TIMEOUT when the deadline passes first.
DWORD ConnectTcp(const RemoteName& name, Deadline deadline, FileDescriptor* socket);

}  // namespace vt63x::kernel

#endif
