// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <filesystem>
#include <string>

namespace {

LONGLONG Milliseconds() {
  LARGE_INTEGER frequency, count;
  EXPECT_NE(QueryPerformanceFrequency(&frequency), FALSE);
  EXPECT_NE(QueryPerformanceCounter(&count), FALSE);
  return count.QuadPart / (frequency.QuadPart / 1000);
}

TEST(Win32Time, SleepAndWaitAreNotCutShort) {
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  const LONGLONG start = Milliseconds();
  Sleep(0);
  Sleep(25);
  EXPECT_GE(Milliseconds() - start, 24);
  EXPECT_EQ(WaitForSingleObject(event, 30), DWORD{WAIT_TIMEOUT});
  EXPECT_GE(Milliseconds() - start, 54);
  EXPECT_LT(Milliseconds() - start, 5000);
  CloseHandle(event);
}

TEST(Win32Directory, CopiesOnlyWhatFitsAndSaysWhatIsNeeded) {
  const std::string expected = std::filesystem::current_path().string();
  const auto length = static_cast<DWORD>(expected.size());
  char path[MAX_PATH];
  std::memset(path, '#', sizeof path);
  EXPECT_EQ(GetCurrentDirectoryA(0, nullptr), length + 1);
  EXPECT_EQ(GetCurrentDirectoryA(length, path), length + 1);
  EXPECT_EQ(path[length], '#');  // nothing written behind a buffer that is too small
  EXPECT_EQ(GetCurrentDirectoryA(length + 1, path), length);
  EXPECT_EQ(std::string(path), expected);
  EXPECT_EQ(path[length + 1], '#');
}

TEST(Win32Environment, NameWithoutMeaningIsRefused) {
  EXPECT_NE(SetEnvironmentVariableA("VT63X_TEST_VARIABLE", "1"), FALSE);
  EXPECT_NE(SetEnvironmentVariableA("VT63X_TEST_VARIABLE", nullptr), FALSE);
  EXPECT_EQ(SetEnvironmentVariableA("VT63X=TEST", "1"), FALSE);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

}  // namespace
