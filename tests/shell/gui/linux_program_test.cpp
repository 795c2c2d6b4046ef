// SPDX-License-Identifier: MIT

#include <csignal>

#include "simulator/pty_server.h"
#include "tests/shell/gui/program_test.h"

namespace vt63x {
namespace {

class LinuxProgramTest : public ProgramTest {};

TEST_F(LinuxProgramTest, LostPortIsSaidAndTheWindowStays) {
  auto chip = std::make_unique<PtyServer>();
  SetEnvironmentVariableA("VT63X_COM1", chip->path().c_str());
  Run([&] {
    Command(IDC_OPEN);
    ExpectState(true, " with the port open");
    chip.reset();
    Enter("GR 37");
    EXPECT_NE(LastLine().find("(Status: 0x"), std::string::npos);
    EXPECT_EQ(LastLine().find("(Status: 0x0000)"), std::string::npos) << LastLine();
    Command(IDC_ALL_TO_115K);
    EXPECT_NE(LastLine().find("attempting to change Vt63x config!"), std::string::npos);
    EXPECT_EQ(Text(1011), "9600");
    Command(IDC_CLOSE);
    ExpectState(false, " after it went away");
  });
}

TEST_F(LinuxProgramTest, CardReaderOnALostPortSaysSoOnceForEachOperation) {
  auto chip = std::make_unique<PtyServer>();
  SetEnvironmentVariableA("VT63X_COM1", chip->path().c_str());
  Run([&] {
    Command(IDC_OPEN);
    chip.reset();
    Post(IDC_CARD_READER);
    const HWND dialog = WaitForWindow("Ostrel Reader");
    SendMessageA(dialog, WM_COMMAND, IDC_REQUEST, 0);
    const std::string log = Text(dialog, IDC_READER_LOG);
    EXPECT_EQ(log.find("Timeout Setting Errornous(Status: 0x"), 0u) << log;
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2) << log;
  });
}

TEST_F(LinuxProgramTest, RunWithoutAThreadIsSaid) {
  Run([&] {
    Command(IDC_OPEN);
    SelectScript("//> never\n");
    std::vector<HANDLE> all;
    do {
      all.push_back(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    } while (all.back() != nullptr);
    Command(IDC_PROCESS_WCF);
    EXPECT_EQ(Log(), "Error: Cannot process WCF (no thread for it).\r\n");
    for (const HANDLE event : all) CloseHandle(event);
    EXPECT_EQ(ProgramState()->script_running, 0);
  });
}

// Wherever the program is, it leaves in order: its port is remembered.
TEST_F(LinuxProgramTest, SignalClosesTheProgram) {
  const std::function<void()> states[] = {
      [] {},
      [&] {
        Post(IDM_SETTINGS);
        WaitForWindow("RS 232");
      },
      [&] { Post(IDC_SELECT_WCF); },
      [&] {
        SelectScript("::: LOOP\nGR 37\nJMP LOOP\n");
        Command(IDC_PROCESS_WCF);
        WaitForWindow("Processing...");
      },
  };
  for (const auto& enter : states) {
    std::filesystem::remove("wps_start.cfg");
    const int result = Run([&] {
      Command(IDC_OPEN);
      enter();
      SendMessageA(main(), WM_NULL, 0, 0);
      kill(getpid(), &enter == states ? SIGINT : SIGTERM);
      WaitUntilGone(main());
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(ReadFile("wps_start.cfg"), "0");
  }
}

// Windows replaces them.
TEST_F(LinuxProgramTest, BytesThatAreNoUtf8StayAsTheyAre) {
  Run([&] {
    Command(IDC_OPEN);
    Enter("//> \xff");
    EXPECT_EQ(LastLine(), "//< \xff");
  });
}

}  // namespace
}  // namespace vt63x
