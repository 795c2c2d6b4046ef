// SPDX-License-Identifier: MIT

#include <tuple>

#include "tests/shell/gui/program_test.h"

namespace vt63x {
namespace {

class CommandLineTest : public ProgramTest {
 protected:
  std::string Line() const { return Text(IDC_COMMAND_LINE); }
  std::string Press(WPARAM key) const {
    SendMessageA(Item(IDC_COMMAND_LINE), WM_KEYDOWN, key, 1);
    return Line();
  }
};

TEST_F(CommandLineTest, LinesThatDidNotStayForCorrection) {
  Run([&] {
    Command(IDC_OPEN);
    // `logged`: in the last line of the log
    using row = std::tuple<const char*, const char*, const char*>;
    for (const auto& [line, left, logged] :
         {row{"FOO 1", "FOO 1", "FOO"}, row{"GR", "GR", ""},
          row{"GR ", "GR ", "Invalid numeric format"}, row{"jmp x", "JMP X", ""},
          row{"brk", "BRK", ""}, row{"//> hello", "", "//< HELLO"}}) {
      Command(IDM_CLEAR_LOG);
      Enter(line);
      EXPECT_EQ(Line(), left) << line;
      EXPECT_NE(LastLine().find(logged), std::string::npos) << line << ": " << LastLine();
      if (*logged == '\0') {
        EXPECT_EQ(Log(), "") << line;
      }
    }
    // What did its work comes back.
    Enter("GR 02");
    EXPECT_EQ(Line(), "");
    for (const char* shown : {"GR 02", "//> HELLO", "GR 02"}) EXPECT_EQ(Press(VK_UP), shown);
    EXPECT_EQ(SendMessageA(Item(IDC_COMMAND_LINE), EM_GETSEL, 0, 0), MAKELONG(5, 5));
    EXPECT_EQ(Press(VK_DOWN), "//> HELLO");
  });
}

TEST_F(CommandLineTest, AnyTextIsTakenAndNothingBreaks) {
  Run([&] {
    Command(IDC_OPEN);
    for (const std::string& text :
         {std::string(5000, 'A'), std::string("GR 37\r\nGR 36"),
          std::string("\xc3\xa4\xc3\xb6 \xff\xfe"), std::string("//> \xe2\x82\xac\xc3\xa4"),
          std::string("%s%n%x"), std::string("\t\t\t")}) {
      Enter(text.c_str());
    }
    Enter("GR 37");
    EXPECT_EQ(LastLine(), "GR  37          // data == 91  // (Status: 0x0000)");
  });
}

}  // namespace
}  // namespace vt63x
