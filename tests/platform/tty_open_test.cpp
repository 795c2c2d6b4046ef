// SPDX-License-Identifier: MIT

// Opening devices and setting their lines.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "overlapped_call.h"
#include "pseudo_terminal.h"

namespace vt63x {
namespace {

constexpr uid_t kNobody = 65534;

DWORD OpenDeviceError(const std::string& device) {
  SetEnvironmentVariableA(PseudoTerminal::kVariable, device.c_str());
  SetLastError(0xDEADBEEF);
  const HANDLE port = OpenPort();
  SetEnvironmentVariableA(PseudoTerminal::kVariable, nullptr);
  if (port == INVALID_HANDLE_VALUE) return GetLastError();
  CloseHandle(port);
  return ERROR_SUCCESS;
}

TEST(TtyOpen, RelativeDeviceStaysWhereTheProgramStarted) {
  const PseudoTerminal terminal;
  const std::filesystem::path start = std::filesystem::current_path();
  const std::string link = "line-" + std::to_string(getpid());
  std::filesystem::create_symlink(std::getenv(PseudoTerminal::kVariable), link);
  std::filesystem::current_path("/");
  EXPECT_EQ(OpenDeviceError(link), DWORD{ERROR_SUCCESS});
  std::filesystem::current_path(start);
  std::filesystem::remove(link);
}

TEST(TtyOpen, WhatIsNoSerialLineIsRefusedAndNeverWaitedFor) {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("vt63x-" + std::to_string(getpid()));
  ASSERT_TRUE(std::filesystem::create_directory(folder));
  const std::string file = folder / "file";
  const std::string fifo = folder / "fifo";
  std::ofstream(file) << "text";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const std::pair<std::string, DWORD> cases[] = {
      {folder / "missing", ERROR_FILE_NOT_FOUND},
      {file + "/below", ERROR_FILE_NOT_FOUND},
      {file, ERROR_INVALID_PARAMETER},
      {fifo, ERROR_INVALID_PARAMETER},
      {folder, ERROR_INVALID_PARAMETER},
      {"/dev/null", ERROR_INVALID_PARAMETER},
      {"/dev/ptmx", ERROR_INVALID_PARAMETER},  // a terminal, and none whose reads end by themselves
  };
  for (const auto& [device, error] : cases) EXPECT_EQ(OpenDeviceError(device), error) << device;
  EXPECT_EQ(OpenPort("COM17:"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  std::filesystem::remove_all(folder);
}

TEST(TtyOpen, WithoutRightsAccessIsDenied) {
  PseudoTerminal line;
  ASSERT_EQ(chmod(line.device().c_str(), 0), 0);
  const bool root = geteuid() == 0;  // whom rights do not concern
  ASSERT_EQ(seteuid(root ? kNobody : geteuid()), 0);
  SetLastError(0xDEADBEEF);
  EXPECT_EQ(OpenPort(), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_PRIVILEGE_NOT_HELD);
  ASSERT_EQ(seteuid(root ? 0 : geteuid()), 0);
}

TEST(TtyOpen, OpenPortIsClosedToThisProcessAndToOthersUntilItIsClosed) {
  PseudoTerminal line;
  const HANDLE port = OpenPort();
  ASSERT_NE(port, INVALID_HANDLE_VALUE);
  EXPECT_EQ(OpenPort(), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);

  const pid_t other = fork();
  if (other == 0) {
    const bool opened = OpenPort() != INVALID_HANDLE_VALUE;
    _exit(opened ? 0 : static_cast<int>(GetLastError()));
  }
  int status = 0;
  ASSERT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(WEXITSTATUS(status), static_cast<int>(ERROR_ACCESS_DENIED));

  EXPECT_EQ(CloseHandle(port), TRUE);
  EXPECT_EQ(OpenDeviceError(line.device()), ERROR_SUCCESS);
}

TEST(TtyOpen, StaleInputIsThrownAwayAndTheRateIsKept) {
  PseudoTerminal line;
  HANDLE port = OpenPort();
  DCB settings = SettingsWithRate(57600);
  ASSERT_EQ(SetCommState(port, &settings), TRUE);
  CloseHandle(port);
  line.Send("stale");
  port = OpenPort();
  ASSERT_NE(port, INVALID_HANDLE_VALUE);
  EXPECT_EQ(line.Settings().c_ospeed, 57600u);
  EXPECT_EQ(ReadPort(port, 10).data, "");
  CloseHandle(port);
}

TEST(TtySettings, EveryRateReachesTheLineAndLeavesTheDriversTimeOut) {
  PseudoTerminal line;
  const HANDLE port = OpenPort();
  for (const DWORD rate : {1u, 9600u, 14400u, 115200u, 4000000u, 256000u}) {
    DCB settings = SettingsWithRate(rate);
    EXPECT_EQ(ErrorOf(SetCommState(port, &settings)), ERROR_SUCCESS) << rate;
    const termios2 set = line.Settings();
    EXPECT_EQ(set.c_ospeed, rate);
    EXPECT_EQ(set.c_ispeed, rate);
    EXPECT_EQ(set.c_lflag, 0u);
    EXPECT_EQ(set.c_cc[VMIN], 0);
    EXPECT_EQ(set.c_cc[VTIME], 1);
  }
  DCB refused = SettingsWithRate(9600);
  refused.ByteSize = 7;
  EXPECT_EQ(ErrorOf(SetCommState(port, &refused)), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(line.Settings().c_ospeed, 256000u);
  CloseHandle(port);
}

}  // namespace
}  // namespace vt63x
