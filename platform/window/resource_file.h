// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_RESOURCE_FILE_H
#define VT63X_PLATFORM_WINDOW_RESOURCE_FILE_H

// The program's resources, as the resource compiler left them (.res with 32-bit headers), several
// files one behind the other.

#include "platform/window/byte_reader.h"

namespace vt63x::ui {

// The resource with this numbered type and name; empty when there is none.
ResourceData FindResource(WORD type, WORD name);

// The same in a file of the caller's.
ResourceData FindResourceIn(ResourceData file, WORD type, WORD name);

}  // namespace vt63x::ui

#endif
