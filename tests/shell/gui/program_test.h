// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SHELL_GUI_PROGRAM_TEST_H
#define VT63X_TESTS_SHELL_GUI_PROGRAM_TEST_H

// The whole program in a directory of its own, driven from outside by window calls alone, with a
// chip and a card on COM1: and nothing on COM8:.

#include <filesystem>
#include <fstream>
#include <string>

#include "chip_on_com1.h"
#include "shell/program.h"
#include "shell/resources/resource.h"
#include "tests/support/gui_driver.h"
#include "tests/support/temp_directory.h"

namespace vt63x {

inline constexpr char MAIN_CAPTION[] = "VT63x Serial RS 232 Test Program";

class ProgramTest : public testing::Test {
 protected:
  ProgramTest() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(std::filesystem::path(directory_.File("x")).parent_path());
    SetEnvironmentVariableA("VT63X_COM8", directory_.File("none").c_str());
  }
  ~ProgramTest() override { std::filesystem::current_path(before_); }

  // Runs the program while `driver` drives it; ends it by its menu if the driver has not.
  int Run(const std::function<void()>& driver, const std::string& arguments = "") {
    std::string command_line = arguments;
    return static_cast<int>(
        Drive([&] { return RunProgram(GetModuleHandleA(nullptr), command_line.data()); },
              [&] {
                main_ = WaitForWindow(MAIN_CAPTION);
                driver();
              },
              [&] {
                for (const char* caption : {"Processing...", "RS 232", "Ostrel Reader", "Dialog"}) {
                  PostMessageA(FindWindowA(nullptr, caption), WM_CLOSE, 0, 0);
                }
                PostMessageA(main_, WM_COMMAND, IDM_EXIT, 0);
              }));
  }

  HWND main() const { return main_; }
  HWND Item(int id) const { return GetDlgItem(main_, id); }
  void Command(int id) const { SendMessageA(main_, WM_COMMAND, static_cast<WPARAM>(id), 0); }
  void Post(int id) const { PostMessageA(main_, WM_COMMAND, static_cast<WPARAM>(id), 0); }

  static std::string Text(HWND dialog, int id) {
    std::string text(LOG_CAPACITY, '\0');
    text.resize(GetDlgItemTextA(dialog, id, text.data(), static_cast<int>(text.size())));
    return text;
  }
  std::string Text(int id) const { return Text(main_, id); }
  std::string Log() const { return Text(IDC_LOG); }
  std::string LastLine() const {
    std::string log = Log();
    if (log.ends_with("\r\n")) log.resize(log.size() - 2);
    return log.substr(log.rfind('\n') + 1);
  }
  bool WaitForLog(const std::string& part) const {
    return WaitFor([&] { return Log().find(part) != std::string::npos; }, part.c_str());
  }

  // What can be used depends on whether the port is open.
  void ExpectState(bool open, const char* when) const {
    const auto enabled = [&](int id) { return IsWindowEnabled(Item(id)) != FALSE; };
    const auto menu_enabled = [&](int id) {
      return (GetMenuState(GetMenu(main_), static_cast<UINT>(id), MF_BYCOMMAND) & MF_GRAYED) == 0;
    };
    for (const int id : {1033, 1034, 1035, 1036, 1041, 1042, 1044, 1045, 5, 1039, 1018}) {
      EXPECT_EQ(enabled(id), open) << id << when;
    }
    for (const int id : {40006, 40007, 40008, 40010, 40014})
      EXPECT_EQ(menu_enabled(id), open) << id;
    for (const int id : {40003, 40005}) EXPECT_EQ(menu_enabled(id), !open) << id << when;
    for (const int id : {40001, 40002, 40015, 40016, 40017, 40025}) {
      EXPECT_TRUE(menu_enabled(id)) << id;
    }
    EXPECT_EQ(enabled(1032), !open) << when;
    EXPECT_TRUE(enabled(1014));
    EXPECT_EQ(Text(1012), open ? "O" : "C") << when;
  }

  // As typed and entered.
  void Enter(const char* line) const {
    SetDlgItemTextA(main_, IDC_COMMAND_LINE, line);
    Command(IDC_PROCESS_LINE);
  }

  void WriteFile(const char* name, const std::string& content) const {
    std::ofstream(directory_.File(name), std::ios::binary) << content;
  }
  std::string ReadFile(const char* name) const {
    std::ifstream file(directory_.File(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // As the file dialog does it.
  void Select(const std::string& path) const {
    SendMessageA(main_, WM_NULL, 0, 0);
    path.copy(ProgramState()->wcf_path, MAX_PATH - 1);
    ProgramState()->wcf_path[path.size()] = '\0';
    ProgramState()->resume_line = 0;
    SendMessageA(main_, WM_NULL, 0, 0);
  }
  void SelectScript(const std::string& content) const {
    WriteFile("script.wcf", content);
    Select(directory_.File("script.wcf"));
  }
  bool WaitForRun() const {
    return WaitFor(
        [&] {
          SendMessageA(main_, WM_NULL, 0, 0);
          return ProgramState()->script_running == 0 && IsWindowEnabled(main_) != FALSE &&
                 FindWindowA(nullptr, "Processing...") == nullptr;
        },
        "the end of the run");
  }
  void Process() const {
    Command(IDC_PROCESS_WCF);
    WaitForRun();
  }

  TempDirectory directory_;
  ChipOnCom1 chip_;

 private:
  std::filesystem::path before_;
  HWND main_ = nullptr;
};

}  // namespace vt63x

#endif
