// SPDX-License-Identifier: MIT

#include "cli/headless_view.h"

#include <cstdlib>

#include "cli/error_text.h"
#include "cli/output.h"

namespace vt63x {
namespace {

constexpr std::chrono::milliseconds kLookInterval{100};

constexpr char kOutputName[] = "standard output";

struct FaultRow {
  ScriptFaultKind kind;
  ExitCode code;
  const char* before;  // the fault's text
  const char* after;
  bool at_the_port = false;  // perhaps because the line went away
};

constexpr FaultRow kFaults[] = {
    {ScriptFaultKind::kUnknownCommand, EXIT_BAD_LINES, "error: unknown command '", "'"},
    {ScriptFaultKind::kBadOperand, EXIT_BAD_LINES, "error: ", " is no number or register"},
    {ScriptFaultKind::kBadBitRate, EXIT_BAD_LINES, "error: unsupported bit rate '", "'"},
    {ScriptFaultKind::kJumpWithoutLabel, EXIT_BAD_LINES, "error: jump without a label", ""},
    {ScriptFaultKind::kNoSuchLabel, EXIT_BAD_LINES, "error: there is no label '", "'"},
    {ScriptFaultKind::kBitRateRefused, EXIT_FAILED, "the port does not take the bit rate ", "",
     true},
    {ScriptFaultKind::kDifference, EXIT_FAILED, "difference: ", ""},
    {ScriptFaultKind::kAccessFailed, EXIT_FAILED, "access failed: ", "", true},
};

const FaultRow& RowOf(ScriptFaultKind kind) {
  for (const FaultRow& row : kFaults) {
    if (row.kind == kind) return row;
  }
  std::abort();
}

// False for a port that is no longer there. One without modem lines says that it has none.
bool Answers(HANDLE port) {
  DWORD status = 0;
  if (GetCommModemStatus(port, &status) != FALSE) return true;
  const DWORD error = GetLastError();
  return error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED;
}

// What a port's name stands for.
std::string DeviceOf(const char* port_name) {
  const std::string name(port_name, std::string_view(port_name).find(':'));
  const char* const device = std::getenv(("VT63X_" + name).c_str());
  return device != nullptr && device[0] != '\0' ? device : name;
}

}  // namespace

std::string FaultText(const script_fault& fault) {
  const FaultRow& row = RowOf(fault.kind);
  return row.before + std::string(fault.text) + row.after;
}

ExitCode FaultExitCode(ScriptFaultKind kind) { return RowOf(kind).code; }

void HeadlessView::SetLogFile(std::FILE* file, std::string name) {
  log_file_ = file;
  log_name_ = std::move(name);
}

void HeadlessView::Complain(const std::string& message) const { PrintMessage(message); }

// Lines appear as they are produced, also when the output is a pipe. False when the line is lost.
bool HeadlessView::Write(std::FILE* file, std::string_view text, const char* line_end,
                         const std::string& name) {
  buffer_.assign(text).append(line_end);
  const int error = WriteAll(file, buffer_);
  if (error == 0) return true;
  Raise(EXIT_FILE_OR_PORT);
  Complain(name + ": " + FileErrorText(error));
  return false;
}

// The log file comes first: standard output may be a pipe that is not read for a while. A failure
// is told once. A run whose output nobody takes any more ends; one whose log file is full goes on.
void HeadlessView::LogAppended(std::string_view text, bool newline) {
  if (log_file_ != nullptr && !Write(log_file_, text, newline ? "\r\n" : "", log_name_)) {
    log_file_ = nullptr;
  }
  if (objects_only_ || output_failed_) return;
  output_failed_ = !Write(stdout, text, newline ? "\n" : "", kOutputName);
  if (output_failed_) BreakOffRun();
}

void HeadlessView::PrintObject(const std::string& object) {
  if (!output_failed_) output_failed_ = !Write(stdout, object, "\n", kOutputName);
}

bool HeadlessView::AskLogFile(char (&)[MAX_PATH]) {
  Complain("SAV without a file name asks for one in the window; here nothing is saved");
  Raise(EXIT_FILE_OR_PORT);
  return false;
}

void HeadlessView::LogNotSaved(const char* path, int error) {
  Complain(std::string("the log could not be saved in ") + path + ": " + FileErrorText(error));
  Raise(EXIT_FILE_OR_PORT);
}

void HeadlessView::ShowBitRate(const char* text) {
  if (bus_ == nullptr) return;
  bus_->SetHostRate(static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)));
}

void HeadlessView::PortOpenFailed(const char* port_name, DWORD error) {
  Complain("cannot open " + DeviceOf(port_name) + ": " + PortErrorText(error));
  Raise(EXIT_FILE_OR_PORT);
}

void HeadlessView::PortSettingsRefused(const char* port_name, DWORD error) {
  Complain("the port " + DeviceOf(port_name) + " does not take its settings (error " +
           std::to_string(error) + ")");
  Raise(EXIT_FAILED);
}

void HeadlessView::CommandFileNotRead(const char* path, int error) {
  Complain(std::string(path) + ": " + FileErrorText(error));
  Raise(EXIT_FILE_OR_PORT);
}

bool HeadlessView::NoteIfLineIsGone() {
  if (state_.port_handle == nullptr || Answers(state_.port_handle)) return false;
  if (exit_code_ < EXIT_LINE_LOST) Complain("the line went away");
  Raise(EXIT_LINE_LOST);
  return true;
}

void HeadlessView::BreakOffRun() {
  break_reason_ = ScriptEnd::kBrokenOff;
  state_.script_running = 0;
}

bool HeadlessView::BreaksOff() {
  if (state_.script_running == 0) return true;
  const auto now = std::chrono::steady_clock::now();
  if (now < next_look_) return false;
  next_look_ = now + kLookInterval;
  if (!NoteIfLineIsGone()) return false;
  BreakOffRun();
  return true;
}

void HeadlessView::ScriptFault(const script_fault& fault) {
  Complain(source_ + ":" + std::to_string(fault.line) + ": " + FaultText(fault));
  Raise(FaultExitCode(fault.kind));
  // A loop that waits for the chip would never end once the line is gone.
  if (RowOf(fault.kind).at_the_port && NoteIfLineIsGone()) BreakOffRun();
}

void HeadlessView::ScriptBegins(const script_totals& totals) {
  const LockGuard guard(totals_lock_);
  live_totals_ = &totals;
}

void HeadlessView::ScriptEnded(ScriptEnd end, const script_totals& totals) {
  end_ = end;
  const LockGuard guard(totals_lock_);
  live_totals_ = nullptr;
  totals_ = totals;
}

script_totals HeadlessView::totals() const {
  const LockGuard guard(totals_lock_);
  return live_totals_ != nullptr ? *live_totals_ : totals_;
}

}  // namespace vt63x
