// SPDX-License-Identifier: MIT

// window_screenshots --screenshot DIR: drives the program through its windows, with a chip and a
// card on COM1:, and leaves a picture of each in DIR. Needs no screen (QT_QPA_PLATFORM=offscreen).

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

#include "platform/window/window_picture.h"
#include "shell/program.h"
#include "shell/resources/resource.h"
#include "simulator/pty_server.h"

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kSmallestPicture = 1000;  // bytes; one colour alone takes fewer

fs::path pictures;
HWND main_window = nullptr;
std::atomic<int> failures = 0;

void Complain(const std::string& what) {
  std::fprintf(stderr, "window_screenshots: %s\n", what.c_str());
  ++failures;
}

// Polls for 10 s at most.
bool WaitUntil(const std::function<bool()>& condition) {
  for (int i = 0; i < 1000; ++i) {
    if (condition()) return true;
    Sleep(10);
  }
  return false;
}

HWND WaitForWindow(const char* caption) {
  HWND window = nullptr;
  const bool came = WaitUntil([&] {
    window = FindWindowA(nullptr, caption);
    return window != nullptr && IsWindowVisible(window) != FALSE;
  });
  if (!came) Complain(std::string(caption) + ": no such window");
  return window;
}

void Take(HWND window, const char* name) {
  const std::string path = (pictures / (std::string(name) + ".png")).string();
  if (!vt63x::ui::SaveWindowPicture(window, path.c_str())) {
    Complain(path + ": cannot be taken");
  } else if (fs::file_size(path) < kSmallestPicture) {
    Complain(path + ": shows nothing");
  }
}

void Press(HWND dialog, int id) { SendMessageA(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0); }

void Enter(const char* line) {
  SetDlgItemTextA(main_window, IDC_COMMAND_LINE, line);
  Press(main_window, IDC_PROCESS_LINE);
}

// Opens a modal dialog, has `steps` done in it, takes its picture and leaves it.
void VisitDialog(
    int command, const char* caption, const char* name,
    const std::function<void(HWND)>& steps = [](HWND) {}) {
  PostMessageA(main_window, WM_COMMAND, static_cast<WPARAM>(command), 0);
  const HWND dialog = WaitForWindow(caption);
  steps(dialog);
  Take(dialog, name);
  PostMessageA(dialog, WM_CLOSE, 0, 0);
  if (!WaitUntil([&] { return IsWindow(dialog) == FALSE; })) Complain("a dialog stays");
}

void VisitMainWindow() {
  Take(main_window, "closed");
  Press(main_window, IDC_OPEN);
  Enter("gr 37");
  Enter("sr 2b 4a");
  Enter("mr 2b 0f 01");
  Enter("re 2b 4f");
  Press(main_window, IDC_DUMP_REGISTER);
  Take(main_window, "main");
}

void VisitRegisterDialog() {
  Press(main_window, IDC_REGISTER_IO);
  const HWND dialog = WaitForWindow("Access RF Front End Registers");
  SetDlgItemTextA(dialog, IDC_ADDRESS, "2b");
  Press(dialog, IDC_GET);
  Take(dialog, "register");
  SendMessageA(dialog, WM_CLOSE, 0, 0);
}

void ReadCard(HWND dialog) {
  for (const int id : {IDC_REQUEST_SELECT, IDC_AUTHENTICATE_A, IDC_READ}) Press(dialog, id);
}

// A command file that runs until it is broken off.
void VisitProcessingDialog() {
  const fs::path file = pictures / "endless.wcf";
  std::ofstream(file) << "::: LOOP\nINC ML0\nJMP LOOP\n";
  file.string().copy(vt63x::ProgramState()->wcf_path, MAX_PATH - 1);
  PostMessageA(main_window, WM_COMMAND, IDC_PROCESS_WCF, 0);
  const HWND dialog = WaitForWindow("Processing...");
  Take(dialog, "processing");
  Press(dialog, IDC_BREAK);
  if (!WaitUntil([&] { return IsWindow(dialog) == FALSE; })) Complain("Break ends nothing");
  fs::remove(file);
}

void Drive() {
  main_window = WaitForWindow("VT63x Serial RS 232 Test Program");
  VisitDialog(IDM_SETTINGS, "RS 232", "settings", [](HWND dialog) { Press(dialog, IDC_VERIFY); });
  VisitDialog(IDM_INFO, "Dialog", "about");
  VisitMainWindow();
  VisitRegisterDialog();
  VisitDialog(IDC_CARD_READER, "Ostrel Reader", "card_reader", ReadCard);
  VisitProcessingDialog();
  PostMessageA(main_window, WM_COMMAND, IDM_EXIT, 0);
}

vt63x::PtyServer::Options OneCard() {
  vt63x::PtyServer::Options options;
  std::string error;
  options.cards.push_back(*vt63x::ParseCardOption("5A3C1E78", error));
  return options;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 || std::strcmp(argv[1], "--screenshot") != 0) {
    std::fputs("usage: window_screenshots --screenshot DIR\n", stderr);
    return 2;
  }
  pictures = fs::absolute(argv[2]);
  fs::create_directories(pictures);
  fs::current_path(pictures);
  vt63x::PtyServer chip(OneCard());
  SetEnvironmentVariableA("VT63X_COM1", chip.path().c_str());
  std::thread driver(Drive);
  char arguments[] = "-pi";
  vt63x::RunProgram(GetModuleHandleA(nullptr), arguments);
  driver.join();
  fs::remove(pictures / "wps_start.cfg");
  return failures == 0 ? 0 : 1;
}
