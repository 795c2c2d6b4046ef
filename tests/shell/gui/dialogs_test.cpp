// SPDX-License-Identifier: MIT

#include <tuple>

#include "tests/shell/gui/program_test.h"

namespace vt63x {
namespace {

class DialogsTest : public ProgramTest {
 protected:
  HWND OpenRegisterDialog() const {
    Command(IDC_REGISTER_IO);
    return WaitForWindow("Access RF Front End Registers");
  }
};

TEST_F(DialogsTest, RegisterTextsAreCorrectedWhileTheyAreTyped) {
  Run([&] {
    Command(IDC_OPEN);
    const HWND dialog = OpenRegisterDialog();
    EXPECT_EQ(Text(dialog, IDC_ADDRESS), "00");
    EXPECT_EQ(Text(dialog, IDC_BINARY), "00000000");
    using row = std::tuple<const char*, const char*, const char*>;
    for (const auto& [typed, shown, binary] :
         {row{"2g", "20", "00100000"}, row{"1FF", "FF", "11111111"}, row{"a", "A", "00001010"},
          row{"", "", "00000000"}, row{"-1", "01", "00000001"}, row{"12345678A", "FF", "11111111"},
          row{"\xc3\xa4", "00", "00000000"}}) {
      SetDlgItemTextA(dialog, IDC_VALUE, typed);
      EXPECT_EQ(Text(dialog, IDC_VALUE), shown) << typed;
      EXPECT_EQ(Text(dialog, IDC_BINARY), binary) << typed;
    }
    SetDlgItemTextA(dialog, IDC_ADDRESS, "");
    for (const char c : std::string("1g7"))
      SendDlgItemMessageA(dialog, IDC_ADDRESS, WM_CHAR, static_cast<WPARAM>(c), 1);
    EXPECT_EQ(Text(dialog, IDC_ADDRESS), "07");  // 107, its low byte
  });
}

TEST_F(DialogsTest, RegisterAccessShowsAndLogsItsLine) {
  Run([&] {
    Command(IDC_OPEN);
    HWND dialog = OpenRegisterDialog();
    SetDlgItemTextA(dialog, IDC_ADDRESS, "1F");
    SetDlgItemTextA(dialog, IDC_VALUE, "EB");
    SendMessageA(GetDlgItem(dialog, IDC_SET), BM_CLICK, 0, 0);
    EXPECT_EQ(Text(dialog, IDC_RESULT), "SR: 1F EB                      // (STATUS: 0X0000)");
    EXPECT_EQ(Log(), "");
    SendMessageA(GetDlgItem(dialog, IDC_LOG_ENABLE), BM_CLICK, 0, 0);
    SetDlgItemTextA(dialog, IDC_VALUE, "00");
    SendMessageA(GetDlgItem(dialog, IDC_GET), BM_CLICK, 0, 0);
    EXPECT_EQ(LastLine(), "GR: 1F          // data == EB  // (Status: 0x0000)");
    EXPECT_EQ(LastLine().find("// (S"), 31u);
    EXPECT_EQ(Text(dialog, IDC_VALUE), "EB");
    EXPECT_EQ(Text(dialog, IDC_BINARY), "11101011");
    // It is there once, keeps its texts, and outlives the port.
    Command(IDM_ACCESS_REGISTER);
    Command(IDC_CLOSE);
    SendMessageA(GetDlgItem(dialog, IDC_GET), BM_CLICK, 0, 0);
    EXPECT_EQ(Text(dialog, IDC_VALUE), "00");
    EXPECT_EQ(LastLine().find("(Status: 0x0000)"), std::string::npos);
    SendMessageA(GetDlgItem(dialog, IDC_CLEAR_LOG), BM_CLICK, 0, 0);
    EXPECT_EQ(Log(), "");
    SetDlgItemTextA(dialog, IDC_ADDRESS, "7");
    SendMessageA(dialog, WM_COMMAND, IDC_REGISTER_QUIT, 0);
    EXPECT_EQ(ProgramState()->register_dlg, nullptr);
    Command(IDM_ACCESS_REGISTER);
    dialog = WaitForWindow("Access RF Front End Registers");
    EXPECT_EQ(Text(dialog, IDC_ADDRESS), "7");
    EXPECT_EQ(IsDlgButtonChecked(dialog, IDC_LOG_ENABLE), static_cast<UINT>(BST_CHECKED));
    PostMessageA(dialog, WM_CLOSE, 0, 0);
    WaitUntilGone(dialog);
  });
}

// It is modeless, and the loop that runs is the main dialog's.
TEST_F(DialogsTest, RegisterDialogHasItsKeys) {
  Run([&] {
    Command(IDC_OPEN);
    const HWND dialog = OpenRegisterDialog();
    const HWND address = GetDlgItem(dialog, IDC_ADDRESS);
    const auto result_begins = [&](const char* with) {
      return WaitFor([&] { return Text(dialog, IDC_RESULT).starts_with(with); }, with);
    };
    PostMessageA(address, WM_KEYDOWN, VK_RETURN, 1);
    result_begins("SR: 00 00");
    PostMessageA(address, WM_SYSCHAR, 'g', 0x20000001);
    result_begins("GR: 00");
  });
}

TEST_F(DialogsTest, CardReaderReadsACardAndLeavesTheMainPaneAlone) {
  Run([&] {
    Command(IDC_OPEN);
    Enter("//> before");
    Post(IDC_CARD_READER);
    const HWND dialog = WaitForWindow("Ostrel Reader");
    const auto press = [&](int id) {
      SendMessageA(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0);
    };
    EXPECT_EQ(Text(dialog, IDC_READER_LOG), "");
    EXPECT_EQ(Text(dialog, IDC_KEY_A), "3C9A5E71B2D4");
    EXPECT_EQ(Text(dialog, IDC_DATA), std::string(32, '0'));
    char block[8];
    SendDlgItemMessageA(dialog, IDC_BLOCK, CB_GETLBTEXT, 102, reinterpret_cast<LPARAM>(block));
    EXPECT_STREQ(block, "00102");
    press(IDC_REQUEST_SELECT);
    press(IDC_AUTHENTICATE_A);
    SendDlgItemMessageA(dialog, IDC_BLOCK, CB_SETCURSEL, 1, 0);
    press(IDC_BLOCK);
    SetDlgItemTextA(dialog, IDC_DATA, "00112233445566778899AABBCCDDEEFFF");
    EXPECT_EQ(Text(dialog, IDC_DATA), "00112233445566778899AABBCCDDEEFF");
    press(IDC_WRITE);
    SetDlgItemTextA(dialog, IDC_DATA, "");
    press(IDC_READ);
    EXPECT_EQ(Text(dialog, IDC_DATA), "00112233445566778899AABBCCDDEEFF");
    press(IDC_HALT);
    SendDlgItemMessageA(dialog, IDC_REQUEST_CODE, CB_SETCURSEL, 1, 0);
    press(IDC_REQUEST);
    const std::string log = Text(dialog, IDC_READER_LOG);
    for (const char* line :
         {"Request(0x26, 0x", "Anticollision/Select(0x93, 0x08, 0x5A3C1E78) --> Status: 0x0000\r\n",
          "Authentication KeyA(0x00, 0x3C9A5E71B2D4) --> Status: 0x0000\r\n",
          "Write(0x01, 0x00112233445566778899AABBCCDDEEFF) --> Status: 0x0000\r\n",
          "Read(0x01, 0x00112233445566778899AABBCCDDEEFF) --> Status: 0x0000\r\n",
          "Halt(0x50, 0x00) --> Status: 0x0000\r\n", "Request(0x52, 0x"}) {
      EXPECT_NE(log.find(line), std::string::npos) << line << " in\n" << log;
    }
    EXPECT_EQ(Log(), "//< BEFORE\r\n");
    PostMessageA(dialog, WM_COMMAND, IDC_READER_EXIT, 0);
    WaitUntilGone(dialog);
    EXPECT_EQ(Log(), "//< BEFORE\r\n");
    Enter("//> after");
    EXPECT_EQ(Log(), "//< AFTER\r\n");
    // The block stays chosen though the list shows the first one.
    Post(IDC_CARD_READER);
    const HWND again = WaitForWindow("Ostrel Reader");
    SendMessageA(again, WM_COMMAND, IDC_READ, 0);
    EXPECT_EQ(Text(again, IDC_READER_LOG).find("Read(0x01, 0xA5023200000000000000"), 0u)
        << Text(again, IDC_READER_LOG);
  });
}

TEST_F(DialogsTest, AboutBoxShowsIconAndVersion) {
  Run([&] {
    Post(IDM_INFO);
    const HWND dialog = WaitForWindow("Dialog");
    EXPECT_EQ(IsWindowEnabled(main()), FALSE);
    std::string texts;
    for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
      char text[64] = "";
      GetWindowTextA(child, text, sizeof text);
      texts += text;
    }
    EXPECT_NE(texts.find("VT63x IC Test Program"), std::string::npos);
    EXPECT_NE(texts.find("v2.1"), std::string::npos);
    RECT icon{};
    GetWindowRect(GetWindow(dialog, GW_CHILD), &icon);
    EXPECT_EQ(icon.right - icon.left, 32);
    EXPECT_EQ(icon.bottom - icon.top, 32);
    SendMessageA(GetDlgItem(dialog, IDC_ABOUT_CLOSE), BM_CLICK, 0, 0);
    WaitUntilGone(dialog);
  });
}

}  // namespace
}  // namespace vt63x
