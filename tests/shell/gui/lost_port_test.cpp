#include "simulator/pty_server.h"
#include "tests/shell/gui/program_test.h"

namespace vt63x {
namespace {

class LostPortTest : public ProgramTest {};

TEST_F(LostPortTest, IsSaidAndTheWindowStays) {
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

}  // namespace
}  // namespace vt63x
