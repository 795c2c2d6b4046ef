// SPDX-License-Identifier: MIT

#include "cli/session.h"

#include <cerrno>
#include <cstring>

#include "cli/error_text.h"
#include "cli/output.h"
#include "cli/port_choice.h"
#include "cli/status_text.h"
#include "script/command_file.h"
#include "script/runner.h"
#include "serial/port_control.h"
#include "shell/register_dump.h"
#include "shell/state/log.h"

namespace vt63x {
namespace {

constexpr char kBrokenOff[] = "broken off";

std::string Plural(std::uint64_t count, const char* noun, const char* plural) {
  return std::to_string(count) + " " + (count == 1 ? noun : plural);
}

const char* VerdictWord(ExitCode code) {
  switch (code) {
    case EXIT_ALL_DONE:
      return "ok";
    case EXIT_HUNG_UP:
    case EXIT_INTERRUPTED:
    case EXIT_TERMINATED:
      return kBrokenOff;
    case EXIT_LINE_LOST:
      return "line lost";
    default:
      return "failed";
  }
}

std::string Verdict(ExitCode code, const script_totals& totals) {
  std::string text =
      std::string(VerdictWord(code)) + ": " + Plural(totals.lines, "line", "lines") + " run, ";
  if (totals.comparisons == 0) {
    text += "nothing was compared";
  } else {
    text += Plural(totals.comparisons, "comparison", "comparisons") + " made, " +
            std::to_string(std::uint64_t{totals.differences}) + " failed";
  }
  return text + ", " + Plural(totals.accesses, "access", "accesses") + ", " +
         std::to_string(std::uint64_t{totals.access_failures}) + " failed";
}

std::string JoinLines(const std::vector<std::string>& lines) {
  std::string content;
  for (const std::string& line : lines) content += line + "\n";
  return content;
}

}  // namespace

Session::Session(const SessionOptions& options)
    : options_(options),
      log_buffer_(LOG_CAPACITY, '\0'),
      stack_(state_, options.simulate ? &simulated_bus_ : nullptr),
      view_(state_) {
  state_.log_buf = log_buffer_.data();
  state_.view = &view_;
  action_.app_state = &state_;
  if (options_.simulate) view_.SetSimulatedBus(&simulated_bus_);
  view_.SetObjectsOnly(options.objects_only);
  if (!options.script) {
    RegisterControlWrapper& registers = *state_.component_ptrs.register_control;
    registers.lower = &gate_.emplace(*registers.lower);
  }
  SetBreakTarget(this);
}

Session::~Session() {
  if (state_.port_handle != nullptr) ClosePort(&action_);
  if (log_file_ != nullptr) std::fclose(log_file_);
  SetBreakTarget(nullptr);
}

bool Session::Open() {
  if (!OpenLogFile()) return false;
  return options_.simulate ? OpenField() : OpenLine();
}

bool Session::OpenLogFile() {
  if (options_.log_file.empty()) return true;
  do {
    log_file_ = std::fopen(options_.log_file.c_str(), "ab");
  } while (log_file_ == nullptr && errno == EINTR);
  if (log_file_ == nullptr) {
    view_.Complain(options_.log_file + ": " + FileErrorText(errno));
    view_.Raise(EXIT_FILE_OR_PORT);
    return false;
  }
  MakeUnbuffered(log_file_);
  view_.SetLogFile(log_file_, options_.log_file);
  return true;
}

bool Session::OpenField() {
  std::string error;
  if (FillField(chip_.field(), options_.cards, error)) return true;
  view_.Complain(error);
  view_.Raise(EXIT_FILE_OR_PORT);
  return false;
}

// A device that is not a COM name becomes COM1 of this process; IsPortName has let it through.
bool Session::OpenLine() {
  if (const auto index = ComPortIndex(options_.port)) {
    state_.port_index = *index;
  } else {
    SetEnvironmentVariableA("VT63X_COM1", options_.port.c_str());
  }
  OpenPort(&action_);
  if (state_.port_handle == nullptr) return false;
  PurgePort(&action_);
  return true;
}

void Session::StartRun(std::int32_t resume_line) {
  state_.resume_line = resume_line;
  state_.script_running = 1;
  // The end may have been asked for before there was a run to break off.
  if (interrupted()) state_.script_running = 0;
}

void Session::Print(const std::string& line) { log_append(&action_, line.c_str(), 1); }

void Session::PrintObject(const std::string& object) { view_.PrintObject(object); }

void Session::Complain(const std::string& message) { view_.Complain(message); }

void Session::Fail(const std::string& message) {
  if (interrupted()) return;
  view_.Complain(message);
  view_.Raise(EXIT_FAILED);
}

bool Session::interrupted() const { return BrokenOff() != EXIT_ALL_DONE; }

void Session::BreakOff() { state_.script_running = 0; }

std::string Session::LastWords() {
  return options_.script ? Verdict(BrokenOff(), view_.totals()) : kBrokenOff;
}

ExitCode Session::exit_code() {
  view_.NoteIfLineIsGone();
  for (const std::string& error : StoreErrors(chip_.field())) {
    view_.Complain(error);
    view_.Raise(EXIT_FILE_OR_PORT);
  }
  view_.Raise(BrokenOff());
  return view_.exit_code();
}

ExitCode Session::Dump() {
  const HFLSTATUS status = DumpRegisters(&action_);
  if (status != HFL_SUCCESS) {
    Fail(std::string("dump: ") + StatusText(status) + " (status " + StatusDigits(status) + ")");
  }
  return Conclude();
}

ExitCode Session::Run(const std::string& path, std::int32_t resume_line) {
  view_.SetSource(path);
  if (path.size() >= sizeof state_.wcf_path) {
    view_.Complain(path + ": the path is too long (" + std::to_string(MAX_PATH - 1) +
                   " characters at most)");
    view_.Raise(EXIT_FILE_OR_PORT);
    return Conclude();
  }
  std::memcpy(state_.wcf_path, path.c_str(), path.size() + 1);
  StartRun(resume_line);
  RunCommandFile(&action_);
  if (view_.end() == ScriptEnd::kBreakCommand) {
    view_.Complain("stopped by BRK; --resume " + std::to_string(state_.resume_line) +
                   " goes on behind it");
  }
  return Conclude();
}

ExitCode Session::Execute(const std::vector<std::string>& lines) {
  view_.SetSource("line");
  StartRun(0);
  LineParser parser(&action_);
  view_.ScriptBegins(parser.totals);
  const CommandFile file(JoinLines(lines));
  const ScriptEnd end = RunLines(parser, file);
  view_.ScriptEnded(end, parser.totals);
  return Conclude();
}

ExitCode Session::Conclude() {
  const ExitCode code = exit_code();
  ClaimLastWords();
  if (options_.script) {
    view_.Complain(Verdict(code, view_.totals()));
  } else if (interrupted()) {
    view_.Complain(kBrokenOff);
  }
  return code;
}

}  // namespace vt63x
