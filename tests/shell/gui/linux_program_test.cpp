// SPDX-License-Identifier: MIT

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
