// SPDX-License-Identifier: MIT

#include "cli/headless_view.h"

#include <cerrno>
#include <cstdlib>

#include "cli/error_text.h"

namespace vt63x {
namespace {

constexpr char kOutputName[] = "standard output";

struct FaultRow {
  ScriptFaultKind kind;
  ExitCode code;
  const char* before;  // the fault's text
  const char* after;
};

constexpr FaultRow kFaults[] = {
    {ScriptFaultKind::kUnknownCommand, EXIT_BAD_LINES, "error: unknown command '", "'"},
    {ScriptFaultKind::kBadOperand, EXIT_BAD_LINES, "error: ", " is no number or register"},
    {ScriptFaultKind::kBadBitRate, EXIT_BAD_LINES, "error: unsupported bit rate '", "'"},
    {ScriptFaultKind::kJumpWithoutLabel, EXIT_BAD_LINES, "error: jump without a label", ""},
    {ScriptFaultKind::kNoSuchLabel, EXIT_BAD_LINES, "error: there is no label '", "'"},
    {ScriptFaultKind::kDifference, EXIT_FAILED, "difference: ", ""},
    {ScriptFaultKind::kAccessFailed, EXIT_FAILED, "access failed: ", ""},
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

void HeadlessView::Complain(const std::string& message) const {
  std::fprintf(stderr, "wcf: %s\n", message.c_str());
}

// Lines appear as they are produced, also when the output is a pipe. A failure is reported once.
void HeadlessView::Write(std::FILE* file, std::string_view text, const char* line_end,
                         const std::string& name, bool& failed) {
  if (failed) return;
  errno = 0;
  std::fwrite(text.data(), 1, text.size(), file);
  std::fputs(line_end, file);
  if (std::fflush(file) == 0 && std::ferror(file) == 0) return;
  failed = true;
  Raise(EXIT_FILE_OR_PORT);
  Complain(name + ": " + FileErrorText(errno));
}

void HeadlessView::LogAppended(std::string_view text, bool newline) {
  if (!objects_only_) Write(stdout, text, newline ? "\n" : "", kOutputName, output_failed_);
  if (log_file_ == nullptr) return;
  Write(log_file_, text, newline ? "\r\n" : "", log_name_, log_failed_);
}

void HeadlessView::PrintObject(const std::string& object) {
  Write(stdout, object, "\n", kOutputName, output_failed_);
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
  const std::string name(port_name, std::string_view(port_name).find(':'));
  const char* const device = std::getenv(("VT63X_" + name).c_str());
  const bool named = device != nullptr && device[0] != '\0';
  Complain("cannot open " + (named ? std::string(device) : name) + ": " + PortErrorText(error));
  Raise(EXIT_FILE_OR_PORT);
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

void HeadlessView::ScriptFault(const script_fault& fault) {
  Complain(source_ + ":" + std::to_string(fault.line) + ": " + FaultText(fault));
  Raise(FaultExitCode(fault.kind));
  // A loop that waits for the chip would never end once the line is gone.
  if (fault.kind == ScriptFaultKind::kAccessFailed && NoteIfLineIsGone()) {
    state_.script_running = 0;
  }
}

void HeadlessView::ScriptEnded(ScriptEnd end, const script_totals& totals) {
  end_ = end;
  totals_ = totals;
}

}  // namespace vt63x
