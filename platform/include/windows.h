// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOWS_H
#define VT63X_PLATFORM_WINDOWS_H

// The part of the Win32 interface that the program uses, for systems that are not Windows. It is
// a closed list: what is not declared here does not compile, and a value, flag or structure field
// that is declared but not carried out makes its call fail. Types, constants and sizes have the
// values of 64-bit Windows, which the tests check when they are built for Windows.
//
// The headers below stand for themselves: none of them brings in a POSIX or toolkit name.

#include "win32/kernel.h"
#include "win32/types.h"
#include "win32/window.h"

#endif
