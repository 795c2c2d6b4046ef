// SPDX-License-Identifier: MIT

// What a resource script includes: the styles of windows and controls.
#include "win32/styles.h"
