// SPDX-License-Identifier: MIT

// Where a program with windows begins: its WinMain, with the arguments as one text.

#include <windows.h>

#include <string>

int main(int count, char** arguments) {
  std::string command_line;
  for (int i = 1; i < count; ++i) {
    if (i > 1) command_line += ' ';
    command_line += arguments[i];
  }
  return WinMain(GetModuleHandleA(nullptr), nullptr, command_line.data(), SW_SHOWNORMAL);
}
