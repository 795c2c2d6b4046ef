// SPDX-License-Identifier: MIT

// Processor time of a logged line through the program's own window, beside the simplest ways to
// show a growing log with the toolkit's text widget, and how soon the window answers meanwhile.
// Needs no screen: QT_QPA_PLATFORM=offscreen.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "bench/measure.h"
#include "bench/pane_baseline.h"
#include "shell/program.h"
#include "shell/resources/resource.h"
#include "shell/state/log.h"

namespace {

constexpr char kLine[] = "GR  37          // data == 91  // (Status: 0x0000)";
constexpr int kRounds = 3;
constexpr int kLines = 50'000;
constexpr int kFullLog = 90'000;
constexpr int kPauseMs = 35;  // longer than the window waits before it shows the log again
constexpr int kHelpLines = 143;

HWND main_window = nullptr;
std::string command_file;

vt63x::AppState& State() { return *vt63x::ProgramState(); }

void WaitUntil(const std::function<bool()>& condition) {
  while (!condition()) Sleep(1);
}

bool RunOver() { return State().script_running == 0 && IsWindowEnabled(main_window) != FALSE; }

void RunCommandFile() {
  PostMessageA(main_window, WM_COMMAND, IDC_PROCESS_WCF, 0);
  WaitUntil([] { return IsWindowEnabled(main_window) == FALSE; });
  WaitUntil(RunOver);
}

double Microseconds(int lines, const std::function<void()>& work) {
  std::vector<double> times;
  for (int round = 0; round < kRounds; ++round) {
    const double start = vt63x::ProcessorSeconds();
    work();
    times.push_back((vt63x::ProcessorSeconds() - start) * 1e6 / lines);
  }
  return vt63x::Median(times);
}

// Lines from a thread that is not the window's, `batch` of them for each time that it is shown.
void LogInBatches(int lines, int batch) {
  const vt63x::action_param action{main_window, main_window, nullptr, 0, 0, &State()};
  for (int i = 0; i < lines; i += batch) {
    for (int k = 0; k < batch; ++k) vt63x::log_append(&action, kLine, 1);
    Sleep(kPauseMs);
  }
}

void FillLog(int length) {
  const vt63x::action_param action{main_window, main_window, nullptr, 0, 0, &State()};
  vt63x::log_clear(&action);
  for (int i = 0; i < length; i += static_cast<int>(sizeof kLine) + 1) {
    vt63x::log_append(&action, kLine, 1);
  }
  Sleep(100);
}

// The longest and the 99 % time, in ms, that the window takes to answer during a run.
void MeasureAnswers(double& longest, double& most) {
  std::vector<double> waits;
  PostMessageA(main_window, WM_COMMAND, IDC_PROCESS_WCF, 0);
  WaitUntil([] { return IsWindowEnabled(main_window) == FALSE; });
  while (!RunOver()) {
    const double start = vt63x::WallSeconds();
    SendMessageA(main_window, WM_NULL, 0, 0);
    waits.push_back((vt63x::WallSeconds() - start) * 1e3);
    Sleep(1);
  }
  std::sort(waits.begin(), waits.end());
  longest = waits.back();
  most = waits[waits.size() * 99 / 100];
}

void PrintRow(const char* what, double time) { std::printf("%-46s %10.1f us\n", what, time); }

void Measure() {
  PrintRow("50,000 lines of a command file", Microseconds(kLines, RunCommandFile));
  PrintRow("100 lines each time that it is shown",
           Microseconds(2000, [] { LogInBatches(2000, 100); }));
  FillLog(kFullLog);
  PrintRow("1 line each time, the log near full", Microseconds(50, [] { LogInBatches(50, 1); }));
  PrintRow("the command reference, line by line", Microseconds(10 * kHelpLines, [] {
             for (int i = 0; i < 10; ++i)
               SendMessageA(main_window, WM_COMMAND, IDM_HELP_COMMANDS, 0);
           }));
  double longest = 0;
  double most = 0;
  MeasureAnswers(longest, most);
  std::printf("the window answers during the run within %.1f ms, 99 %% of the time %.1f ms\n\n",
              longest, most);
}

void Drive() {
  WaitUntil([] {
    main_window = FindWindowA(nullptr, "VT63x Serial RS 232 Test Program");
    return main_window != nullptr && IsWindowVisible(main_window) != FALSE;
  });
  command_file.copy(State().wcf_path, MAX_PATH - 1);
  State().wcf_path[command_file.size()] = '\0';
  Measure();
  PostMessageA(main_window, WM_COMMAND, IDM_EXIT, 0);
}

// In a folder of its own: the program leaves its configuration file there.
void MakeCommandFile(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  std::filesystem::current_path(folder);
  command_file = (folder / "lines.wcf").string();
  std::ofstream file(command_file);
  for (int i = 0; i < kLines; ++i) file << "//> " << kLine << '\n';
}

}  // namespace

int main() {
  const auto folder = std::filesystem::temp_directory_path() / "vt63x-pane-bench";
  MakeCommandFile(folder);
  std::printf("a logged line, the window                       processor\n");
  std::thread driver(Drive);
  char no_arguments[] = "";
  vt63x::RunProgram(GetModuleHandleA(nullptr), no_arguments);
  driver.join();
  std::filesystem::current_path("/");
  std::filesystem::remove_all(folder);

  std::printf("a logged line, the toolkit's text widget        processor\n");
  PrintRow("50,000 lines, appended 100 at a time",
           vt63x::MicrosecondsPerAppendedLine(kLine, kLines, 100, 0, 0));
  PrintRow("50,000 lines, appended one by one",
           vt63x::MicrosecondsPerAppendedLine(kLine, kLines, 1, 0, 0));
  PrintRow("100 lines each time that it is shown",
           vt63x::MicrosecondsPerAppendedLine(kLine, 2000, 100, kPauseMs, 0));
  PrintRow("1 line each time, the log near full",
           vt63x::MicrosecondsPerAppendedLine(kLine, 50, 1, kPauseMs, kFullLog));
  PrintRow("the whole text at each line, the log near full",
           vt63x::MicrosecondsPerReplacedText(kLine, 100, kFullLog));
  return 0;
}
