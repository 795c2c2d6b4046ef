// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_KERNEL_PORT_NAME_H
#define VT63X_PLATFORM_KERNEL_PORT_NAME_H

#include <string>
#include <string_view>

namespace vt63x::kernel {

// The number in "COM1" to "COM16", in capitals or not, with or without the colon; 0 for any other
// name.
int PortNumber(std::string_view name);

// The environment variable that names the device of a port.
std::string PortVariable(int number);

// The device of a port: what the variable holds, or /dev/ttyS(number - 1) when it is unset (null)
// or empty.
std::string PortDevice(int number, const char* variable);

}  // namespace vt63x::kernel

#endif
