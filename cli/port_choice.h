// SPDX-License-Identifier: MIT

#ifndef VT63X_CLI_PORT_CHOICE_H
#define VT63X_CLI_PORT_CHOICE_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace vt63x {

// "COM1" to "COM16", in any case, with or without a colon: the index from 0. Anything else: none.
std::optional<std::uint8_t> ComPortIndex(std::string_view name);

// True for these, and for the path or address of a device where the system knows ports by such.
bool IsPortName(std::string_view name);

}  // namespace vt63x

#endif
