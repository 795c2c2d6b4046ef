// SPDX-License-Identifier: MIT

// Bit rate, waits, pause, and what a script does with the log.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>

#include "script/command_table.h"
#include "script/interpreter.h"
#include "script/script_log.h"
#include "serial/port_control.h"
#include "serial/ring_wait.h"
#include "shell/state/breakable_wait.h"

namespace vt63x {
namespace {

constexpr std::array<std::int32_t, 8> kHostBitRates = {9600,  14400,  19200,  38400,
                                                       57600, 115200, 128000, 256000};

// The next operand, in decimal; `rest` moves behind it.
std::int32_t TakeDecimal(CommandCall& call) {
  token_buffer token;
  call.rest = ScanToken(call.rest, token);
  return ParseDecimal(token);
}

// Time-outs have 16 bits, in milliseconds.
std::uint16_t TakeTimeout(CommandCall& call) {
  return static_cast<std::uint16_t>(TakeDecimal(call) & 0xFFFF);
}

// A closed port, as the simulated chip has, takes any rate.
void ReportRefusedRate(const LineParser& parser, const char* bit_rate, DWORD error) {
  if (parser.action->app_state->port_handle == nullptr) return;
  const std::string text = std::string(bit_rate) + " (error " + std::to_string(error) + ")";
  ReportFault(parser, ScriptFaultKind::kBitRateRefused, text.c_str());
}

constexpr char kSeparator = static_cast<char>(std::filesystem::path::preferred_separator);

// Current directory, separator, name and ".txt". False when the directory is too long to tell.
bool LogFilePath(const char* name, char* path, std::size_t size) {
  char directory[MAX_PATH];
  const DWORD length = GetCurrentDirectoryA(sizeof directory, directory);
  if (length == 0 || length >= sizeof directory) return false;
  std::snprintf(path, size, "%s%c%s.txt", directory, kSeparator, name);
  return true;
}

}  // namespace

bool IsHostBitRate(std::int32_t bit_rate) {
  return std::find(kHostBitRates.begin(), kHostBitRates.end(), bit_rate) != kHostBitRates.end();
}

int RunChb(CommandCall& call) {
  LineParser& parser = call.parser;
  const std::int32_t bit_rate = TakeDecimal(call);
  char baudrate_text[12];
  std::snprintf(baudrate_text, sizeof baudrate_text, "%d", bit_rate);
  parser.IOE = IsHostBitRate(bit_rate) ? 0 : 1;
  if (parser.IOE != 0) {
    LogLine(parser, "//%s: Error: Unsupported Baudrate - %d", "CHB", bit_rate);
    ReportFault(parser, ScriptFaultKind::kBadBitRate, baudrate_text);
    return LINE_OK;
  }
  LogLine(parser, "%s %7d     // Baudrate = %d", "CHB", bit_rate, bit_rate);
  MainView* const view = parser.action->app_state->view;
  if (view != nullptr) view->ShowBitRate(baudrate_text);
  const DWORD error = SetPortBitRate(parser.action, static_cast<DWORD>(bit_rate));
  if (error != ERROR_SUCCESS) ReportRefusedRate(parser, baudrate_text, error);
  return LINE_OK;
}

int RunSlp(CommandCall& call) {
  BreakableWait wait(call.parser.action, TakeTimeout(call));
  while (wait.GoesOn()) Sleep(wait.StepMs());
  return LINE_OK;
}

int RunWie(CommandCall& call) {
  const std::uint16_t timeout = TakeTimeout(call);
  const std::uint32_t result = WaitRingEdge(call.parser.action, timeout);
  LogLine(call.parser, "%s %d       // Timeout = %d (Result: %d)", "WIE", timeout, timeout,
          static_cast<int>(result));
  return LINE_OK;
}

int RunWil(CommandCall& call) {
  const std::uint8_t level = (TakeDecimal(call) & 0xFF) != 0 ? 1 : 0;
  const std::uint16_t timeout = TakeTimeout(call);
  const std::uint32_t result = WaitRingLevel(call.parser.action, level, timeout);
  LogLine(call.parser, "%s %d %d    // Level = %d, Timeout = %d (Result: %d)", "WIL", level,
          timeout, level, timeout, static_cast<int>(result));
  return LINE_OK;
}

int RunCll(CommandCall& call) {
  log_clear(call.parser.action);
  return LINE_OK;
}

int RunShow(CommandCall& call) {
  LogLine(call.parser, "Value = 0x%02X", *call.operand[0]);
  return LINE_OK;
}

int RunSav(CommandCall& call) {
  token_buffer name;
  ScanToken(call.rest, name);
  if (name[0] == '\0') {
    log_save(call.parser.action);
    return LINE_FAILED;
  }
  char path[MAX_PATH + TOKEN_SIZE + sizeof ".txt"];
  if (LogFilePath(name, path, sizeof path)) {
    log_append_to_file(call.parser.action, path);
    return LINE_FAILED;
  }
  MainView* const view = call.parser.action->app_state->view;
  if (view != nullptr) view->LogNotSaved(name, ENAMETOOLONG);
  return LINE_FAILED;
}

}  // namespace vt63x
