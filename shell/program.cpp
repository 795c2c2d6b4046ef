// SPDX-License-Identifier: MIT

#include "shell/program.h"

#include <cctype>
#include <cstring>
#include <memory>

#include "shell/component_stack.h"
#include "shell/configuration_file.h"
#include "shell/main_view.h"
#include "shell/main_window.h"
#include "shell/modeless_keys.h"
#include "shell/resources/resource.h"

namespace vt63x {
namespace {

constexpr char seps[] = " ,\t\n";
constexpr DWORD kRunnerAwaitedMs = 1000;

AppState* program_state = nullptr;

bool EqualWithoutCase(const char* left, const char* right) {
  for (; *left != '\0' && *right != '\0'; ++left, ++right) {
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    if (lower(*left) != lower(*right)) return false;
  }
  return *left == *right;
}

// Every other word is ignored.
void ReadCommandLine(AppState& state, char* command_line) {
  char* rest = command_line;
  while (*rest != '\0') {
    rest += std::strspn(rest, seps);
    const std::size_t length = std::strcspn(rest, seps);
    const bool last = rest[length] == '\0';
    rest[length] = '\0';
    if (length > 0 && EqualWithoutCase(rest, "-pi")) state.pi_hidden = 0;
    rest += length + (last ? 0 : 1);
  }
}

// False when it does not end in time.
bool EndRunner(AppState& state) {
  state.script_running = 0;
  if (state.runner_thread == nullptr) return true;
  return WaitForSingleObject(state.runner_thread, kRunnerAwaitedMs) != WAIT_TIMEOUT;
}

void CloseThread(HANDLE& thread) {
  if (thread != nullptr) CloseHandle(thread);
  thread = nullptr;
}

}  // namespace

AppState* ProgramState() { return program_state; }

int RunProgram(HINSTANCE instance, char* command_line, SerialBusInterface* bus) {
  const auto log = std::make_unique<char[]>(LOG_CAPACITY);
  AppState state;
  state.instance = instance;
  BuildConfigPath(state);
  ReadConfiguration(state);
  state.log_buf = log.get();
  ReadCommandLine(state, command_line);
  const ComponentStack stack(state, bus);
  MainWindowView view(state);
  state.view = &view;
  program_state = &state;
  const ModelessKeys modeless_keys;
  const INT_PTR result =
      DialogBoxParamA(instance, MAKEINTRESOURCEA(IDD_MAIN), nullptr, MainDlgProc, 0);
  const bool runner_ended = EndRunner(state);
  WriteConfiguration(state);
  if (!runner_ended) ExitProcess(static_cast<UINT>(result));
  CloseThread(state.runner_thread);
  CloseThread(state.processing_thread);
  program_state = nullptr;
  return static_cast<int>(result);
}

}  // namespace vt63x
