// SPDX-License-Identifier: MIT

#include "tests/shell/gui/program_test.h"

namespace vt63x {
namespace {

class CommandFileTest : public ProgramTest {};

TEST_F(CommandFileTest, RunsBehindItsDialogAndResumesBehindBrk) {
  Run([&] {
    Command(IDC_OPEN);
    SelectScript("//> one\nBRK\n//> two\n");
    Process();
    WaitForLog("//< one");
    EXPECT_EQ(Log(), "Processing " + directory_.File("script.wcf") + "\r\n//< one\r\n");
    EXPECT_EQ(ProgramState()->resume_line, 2);
    Command(IDM_CLEAR_LOG);
    Process();
    WaitForLog("//< two");
    EXPECT_EQ(Log().find("//< one"), std::string::npos);
    WaitFor([] { return ProgramState()->processing_dlg == nullptr; }, "the end of the dialog");
  });
}

// The run is as good as over when the dialog comes, or quite over.
TEST_F(CommandFileTest, ShortRunsNeverLeaveTheDialogOpen) {
  Run([&] {
    Command(IDC_OPEN);
    SelectScript("");
    for (int i = 0; i < 30; ++i) Process();
    // A run that waits for the end of the one before starts within 100 ms.
    Sleep(300);
    WaitForRun();
    EXPECT_EQ(FindWindowA(nullptr, "Processing..."), nullptr);
    EXPECT_NE(IsWindowEnabled(main()), FALSE);
  });
}

TEST_F(CommandFileTest, RunThatWaitsInVainForTheLastOneIsSaid) {
  Run([&] {
    static std::atomic<bool> over;
    over = false;
    const LPTHREAD_START_ROUTINE wait = [](void*) -> DWORD {
      while (!over) Sleep(5);
      return 0;
    };
    Command(IDC_OPEN);
    SelectScript("//> ran\n");
    ProgramState()->processing_thread = CreateThread(nullptr, 0, wait, nullptr, 0, nullptr);
    Command(IDC_PROCESS_WCF);
    WaitForLog("Error: Cannot process WCF (the last run has not ended).\r\n");
    over = true;
    Process();
    WaitForLog("//< ran");
  });
}

TEST_F(CommandFileTest, OverrideNameRetargetsAsFarAsItFits) {
  Run([&] {
    Command(IDC_OPEN);
    SetDlgItemTextA(main(), IDC_OVERRIDE_NAME, "ignored without a file");
    EXPECT_EQ(Text(IDC_COMMAND_FILE), "NULL");
    SelectScript("//> one\n");
    WriteFile("test.bak.wcf", "//> other\n");
    SetDlgItemTextA(main(), IDC_OVERRIDE_NAME, "test.bak");
    EXPECT_EQ(Text(IDC_COMMAND_FILE), directory_.File("test.bak.wcf"));
    Process();
    WaitForLog("//< other");
    WaitForRun();
    Command(IDM_CLEAR_LOG);
    SetDlgItemTextA(main(), IDC_OVERRIDE_NAME, std::string(253, 'x').c_str());
    EXPECT_EQ(Text(IDC_COMMAND_FILE), directory_.File("test.bak.wcf"));
    SetDlgItemTextA(main(), IDC_OVERRIDE_NAME, std::string(252, 'x').c_str());
    EXPECT_EQ(Log(), "Error: Override name does not fit into the path (259 characters).\r\n");
    const std::string longest(MAX_PATH - 1 - directory_.File("").size() - 4, 'y');
    SetDlgItemTextA(main(), IDC_OVERRIDE_NAME, longest.c_str());
    EXPECT_EQ(Text(IDC_COMMAND_FILE).size(), static_cast<std::size_t>(MAX_PATH - 1));
    Command(IDC_PROCESS_WCF);
    EXPECT_EQ(LastLine(), "Error: Cannot process WCF (not found).");
  });
}

// The runner writes lines while the main thread waits for the stack that the runner has: nobody may
// hold what the other waits for.
TEST_F(CommandFileTest, RegisterDialogStaysUsableDuringARun) {
  Run([&] {
    Command(IDC_OPEN);
    Command(IDC_REGISTER_IO);
    const HWND dialog = WaitForWindow("Access RF Front End Registers");
    SetDlgItemTextA(dialog, IDC_ADDRESS, "37");
    CheckDlgButton(dialog, IDC_LOG_ENABLE, BST_CHECKED);
    SendMessageA(dialog, WM_COMMAND, IDC_LOG_ENABLE, 0);
    SelectScript("::: LOOP\nGR 36\nMR 2B FF 01\nJMP LOOP\n");
    Command(IDC_PROCESS_WCF);
    const HWND processing = WaitForWindow("Processing...");
    EXPECT_NE(FindWindowA("#32770", "Processing..."), nullptr);
    EXPECT_EQ(IsWindowEnabled(main()), FALSE);
    EXPECT_NE(IsWindowEnabled(dialog), FALSE);
    Command(IDC_PROCESS_WCF);  // a second one does not start
    EXPECT_NE(Log().find("Error: Cannot process WCF (a run is under way).\r\n"), std::string::npos);
    for (int i = 0; i < 40; ++i) {
      SendMessageA(dialog, WM_COMMAND, IDC_GET, 0);
      EXPECT_EQ(Text(dialog, IDC_RESULT), "GR: 37          // DATA == 91  // (STATUS: 0X0000)");
    }
    PostMessageA(GetDlgItem(processing, IDC_BREAK), BM_CLICK, 0, 0);
    WaitUntilGone(processing);
    WaitForLog("User Break recognised.");
    std::string log = Log();
    EXPECT_EQ(log.find("Processing", 1), std::string::npos);
    // Every line is whole.
    for (std::size_t end = 0; (end = log.find("\r\n")) != std::string::npos;
         log.erase(0, end + 2)) {
      const std::string line = log.substr(0, end);
      EXPECT_TRUE(line.ends_with("(Status: 0x0000)") || line.starts_with("Processing ") ||
                  line.starts_with("Error: ") || line == "User Break recognised.")
          << line;
    }
  });
}

// 50,000 lines go through a log that holds about 2,000 of them; the window answers all the while
// and shows the end of it.
TEST_F(CommandFileTest, FloodOfLinesLeavesTheWindowAnswering) {
  Run([&] {
    Command(IDC_OPEN);
    SelectScript(
        "::: OUTER\nINC ML1\n::: INNER\n//> a line of the usual length, about fifty "
        "characters\nINC ML0\n"
        "JNE ML0 00 INNER\nJNE ML1 C4 OUTER\n//> the end\n");
    Command(IDC_PROCESS_WCF);
    int answers = 0;
    while (ProgramState()->script_running != 0) {
      SendMessageA(main(), WM_NULL, 0, 0);
      ++answers;
    }
    WaitForRun();
    WaitForLog("//< the end\r\n");
    EXPECT_GT(answers, 0);
    EXPECT_EQ(Log(), std::string(ProgramState()->log_buf));
  });
}

TEST_F(CommandFileTest, ExitInARunEndsRunAndProgram) {
  const int result = Run([&] {
    Command(IDC_OPEN);
    SelectScript("::: LOOP\nGR 37\nJMP LOOP\n");
    Command(IDC_PROCESS_WCF);
    WaitForWindow("Processing...");
    WaitForLog("GR  37");
    Post(IDM_EXIT);
    WaitUntilGone(main());
  });
  EXPECT_EQ(result, 0);
  EXPECT_EQ(ReadFile("wps_start.cfg"), "0");
}

}  // namespace
}  // namespace vt63x
