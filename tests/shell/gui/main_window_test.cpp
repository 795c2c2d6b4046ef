// SPDX-License-Identifier: MIT

#include <tuple>

#include "tests/shell/gui/program_test.h"

namespace vt63x {
namespace {

class MainWindowTest : public ProgramTest {};

TEST_F(MainWindowTest, PortStateDecidesWhatCanBeUsed) {
  Run([&] {
    EXPECT_EQ(Text(1010), "COM1:");
    EXPECT_EQ(Text(1011), "9600");
    EXPECT_EQ(Text(1013), "NULL");
    EXPECT_EQ(Text(1015), "N");
    EXPECT_EQ(Text(1016), " ");
    ExpectState(false, " at the start");
    Command(IDC_OPEN);
    ExpectState(true, " with the port open");
    Command(IDC_ALL_TO_115K);
    EXPECT_EQ(Text(1011), "115200");
    Command(IDC_CLOSE);
    ExpectState(false, " with the port closed");
    EXPECT_EQ(Text(1011), "9600");
    EXPECT_EQ(IsWindowVisible(Item(IDC_CPP_INTERFACE)), FALSE);
  });
}

TEST_F(MainWindowTest, ResumeLineIsForgottenByTheButtonsAndNotByTheMenusOpen) {
  Run([&] {
    using row = std::tuple<int, int>;
    for (const auto& [command, left] :
         {row{IDM_OPEN, 7}, row{IDM_CLOSE, 0}, row{IDC_OPEN, 0}, row{IDC_ALL_TO_115K, 0},
          row{IDM_9600_BPS, 7}, row{IDC_CLOSE, 0}}) {
      ProgramState()->resume_line = 7;
      Command(command);
      EXPECT_EQ(ProgramState()->resume_line, left) << command;
    }
  });
}

TEST_F(MainWindowTest, MissingPortIsSaid) {
  WriteFile("wps_start.cfg", "7");
  Run([&] {
    EXPECT_EQ(Text(1010), "COM8:");
    Command(IDC_OPEN);
    EXPECT_EQ(Log(), "Error opening port - Check and verify (!) settings.\r\n");
    ExpectState(false, " without a port");
  });
}

struct configuration_row {
  const char* content;  // null: no file
  const char* port;
  const char* written;
};

class ConfigurationTest : public ProgramTest,
                          public testing::WithParamInterface<configuration_row> {};

TEST_P(ConfigurationTest, FileOfAnyContentGivesAPort) {
  if (GetParam().content != nullptr) WriteFile("wps_start.cfg", GetParam().content);
  std::filesystem::create_directory("elsewhere");
  Run([&] {
    EXPECT_EQ(Text(1010), GetParam().port);
    std::filesystem::current_path("elsewhere");  // it is written where the program started
  });
  EXPECT_EQ(ReadFile("wps_start.cfg"), GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(
    Any, ConfigurationTest,
    testing::Values(configuration_row{nullptr, "COM1:", "0"}, configuration_row{"3", "COM4:", "3"},
                    configuration_row{"8", "COM9:", "8"}, configuration_row{"9", "COM9:", "8"},
                    configuration_row{"12", "COM2:", "1"}, configuration_row{"", "COM9:", "8"},
                    configuration_row{"A", "COM9:", "8"}, configuration_row{" ", "COM9:", "8"},
                    configuration_row{"\xff\x01\x02", "COM9:", "8"}),
    [](const auto& row) { return std::to_string(row.index); });

TEST_F(MainWindowTest, ConfigurationThatCannotBeWrittenIsNobodysTrouble) {
  std::filesystem::create_directory("wps_start.cfg");
  EXPECT_EQ(Run([] {}), 0);
}

using InterfaceRow = std::pair<const char*, bool>;

class ProgrammingInterfaceTest : public ProgramTest,
                                 public testing::WithParamInterface<InterfaceRow> {};

TEST_P(ProgrammingInterfaceTest, IsThereWhenAskedFor) {
  const auto& [arguments, shown] = GetParam();
  Run(
      [&, expected = shown] {
        EXPECT_EQ(IsWindowVisible(Item(IDC_CPP_INTERFACE)) != FALSE, expected);
        const HMENU menu = ProgramState()->pi_menu;
        EXPECT_EQ(menu == nullptr ? 0 : GetMenuItemCount(menu), expected ? 3 : 0);
      },
      arguments);
}

INSTANTIATE_TEST_SUITE_P(Any, ProgrammingInterfaceTest,
                         testing::Values(InterfaceRow{"", false}, InterfaceRow{"-PI", true},
                                         InterfaceRow{"x,-pi", true}, InterfaceRow{"-pix", false},
                                         InterfaceRow{"--other\t-Pi\n", true}),
                         [](const auto& row) { return std::to_string(row.index); });

TEST_F(MainWindowTest, UserActionsNeedAPortAndReachTheCard) {
  Run(
      [&] {
        EXPECT_EQ(GetMenuItemID(ProgramState()->pi_menu, 0), 50502u);
        Command(50501);
        EXPECT_EQ(LastLine(), "Error: Cannot perform user action with closed RS 232 port.");
        EXPECT_EQ(chip_.accesses(), 0u);
        Command(IDC_OPEN);
        // The reader sets up the chip's timer, which ends an operation that no card answers.
        Post(IDC_CARD_READER);
        const HWND reader = WaitForWindow("Ostrel Reader");
        PostMessageA(reader, WM_CLOSE, 0, 0);
        WaitUntilGone(reader);
        const std::uint64_t before = chip_.accesses();
        for (const auto& [command, line] :
             {std::pair{50501, "Sample Action 2"}, std::pair{50502, "Sample Action 1"},
              std::pair{50500, "Unknown Command Recognised by Programming Interface."},
              std::pair{50532, "Unknown Command Recognised by Programming Interface."}}) {
          Command(command);
          EXPECT_EQ(LastLine(), line);
        }
        EXPECT_GT(chip_.accesses(), before + 20);
      },
      "-pi");
}

TEST_F(MainWindowTest, WidthStaysHeightGrowsOnlyAndThePaneFollows) {
  Run([&] {
    RECT start{};
    GetWindowRect(main(), &start);
    const int width = start.right - start.left;
    const int height = start.bottom - start.top;
    MINMAXINFO limits{};
    SendMessageA(main(), WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
    EXPECT_EQ(limits.ptMinTrackSize.x, width);
    EXPECT_EQ(limits.ptMaxTrackSize.x, width);
    EXPECT_EQ(limits.ptMinTrackSize.y, height);
    using row = std::tuple<int, int, int>;
    for (const auto& [width_change, height_change, height_after] :
         {row{0, 120, 120}, row{100, 0, 0}, row{-200, 0, 0}, row{0, -150, 0}, row{-50, 60, 60},
          row{30, -300, 0}, row{-2000, -2000, 0}}) {
      MoveWindow(main(), start.left, start.top, width + width_change, height + height_change, TRUE);
      RECT rect{};
      RECT pane{};
      RECT client{};
      POINT corner{};
      GetWindowRect(main(), &rect);
      GetWindowRect(Item(IDC_LOG), &pane);
      GetClientRect(main(), &client);
      ClientToScreen(main(), &corner);
      EXPECT_EQ(rect.right - rect.left, width) << width_change << ' ' << height_change;
      EXPECT_EQ(rect.bottom - rect.top, height + height_after) << height_change;
      EXPECT_EQ(pane.bottom, corner.y + client.bottom) << height_change;
    }
  });
}

TEST_F(MainWindowTest, HelpAndPaneTextFollowTheLog) {
  Run([&] {
    Command(IDM_HELP_COMMANDS);
    Command(IDM_HELP_COMMANDS);
    EXPECT_EQ(SendMessageA(Item(IDC_LOG), EM_GETLINECOUNT, 0, 0), 144);
    EXPECT_EQ(LastLine(), "_");
    Command(IDC_OPEN);
    // What somebody typed into the pane is gone with the next line.
    SendMessageA(Item(IDC_LOG), WM_CHAR, 'x', 1);
    EXPECT_NE(Log().find('x'), std::string::npos);
    Command(IDM_CLEAR_LOG);
    EXPECT_EQ(Log(), "");
    Enter("//> one");
    SendMessageA(Item(IDC_LOG), WM_CHAR, 'x', 1);
    Enter("//> two");
    EXPECT_EQ(Log(), "//< ONE\r\n//< TWO\r\n");
    // The caret stands at the end of the last line, before its line end or in it.
    EXPECT_GE(LOWORD(SendMessageA(Item(IDC_LOG), EM_GETSEL, 0, 0)), 16);
    Enter("CLL");
    EXPECT_EQ(Log(), "");
    Command(IDC_DUMP_REGISTER);
    EXPECT_EQ(Log().find("Registersetting : \r\n    0  1  2"), 0u);
    EXPECT_EQ(SendMessageA(Item(IDC_LOG), EM_GETLINECOUNT, 0, 0), 7);
  });
}

TEST_F(MainWindowTest, LogThatCannotBeSavedIsSaid) {
  std::filesystem::create_directory("X.txt");
  Run([&] {
    Command(IDC_OPEN);
    Enter("SAV X");
    const std::string path = directory_.File("X.txt");
    EXPECT_EQ(LastLine().find("Error: Cannot save the log in " + path + ": "), 0u) << LastLine();
  });
}

TEST_F(MainWindowTest, SettingsChooseAndVerifyThePort) {
  Run([&] {
    const auto with_dialog = [&](const std::function<void(HWND)>& act) {
      Post(IDM_SETTINGS);
      const HWND dialog = WaitForWindow("RS 232");
      act(dialog);
      WaitUntilGone(dialog);
    };
    with_dialog([&](HWND dialog) {
      const HWND list = GetDlgItem(dialog, 1005);
      EXPECT_EQ(SendMessageA(list, LB_GETCOUNT, 0, 0), 16);
      EXPECT_EQ(SendMessageA(list, LB_GETCURSEL, 0, 0), 0);
      EXPECT_EQ(Text(dialog, 1009), "Unknown");
      SendMessageA(GetDlgItem(dialog, 1007), BM_CLICK, 0, 0);
      EXPECT_EQ(Text(dialog, 1009), "OK (0x00000000)");
      PostMessageA(list, WM_KEYDOWN, VK_DOWN, 1);
      WaitFor([&] { return Text(dialog, 1009) == "Unknown"; }, "another choice");
      SendMessageA(list, LB_SETCURSEL, 7, 0);
      SendMessageA(GetDlgItem(dialog, 1007), BM_CLICK, 0, 0);
      EXPECT_EQ(Text(dialog, 1009), "NOK (0x00000002)");
      SendMessageA(list, LB_SETCURSEL, static_cast<WPARAM>(-1), 0);
      SendMessageA(GetDlgItem(dialog, 1007), BM_CLICK, 0, 0);
      EXPECT_EQ(Text(dialog, 1009), "NOK (No Sel.)");
      SendMessageA(list, LB_SETCURSEL, 1, 0);
      PostMessageA(dialog, WM_COMMAND, 3, 0);
    });
    EXPECT_EQ(Text(1010), "COM1:");
    for (const auto& [entry, name, letter] :
         {std::tuple{1, "COM2:", "R"}, std::tuple{11, "COM12:", "N"}}) {
      with_dialog([&](HWND dialog) {
        SendDlgItemMessageA(dialog, 1005, LB_SETCURSEL, static_cast<WPARAM>(entry), 0);
        PostMessageA(dialog, WM_COMMAND, 1001, 0);
      });
      EXPECT_EQ(Text(1010), name);
      EXPECT_EQ(Text(1015), letter);
    }
  });
  EXPECT_EQ(ReadFile("wps_start.cfg"), "11");
}

}  // namespace
}  // namespace vt63x
