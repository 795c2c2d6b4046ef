// SPDX-License-Identifier: MIT

#include <windows.h>

#include "shell/program.h"

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR command_line, int) {
  return vt63x::RunProgram(instance, command_line);
}
