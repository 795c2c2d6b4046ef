// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <chrono>
#include <future>
#include <list>
#include <string>
#include <vector>

namespace {

HANDLE Start(LPTHREAD_START_ROUTINE routine, void* parameter) {
  DWORD id = 0;
  return CreateThread(nullptr, 0, routine, parameter, 0, &id);
}

DWORD ExitCode(HANDLE thread) {
  DWORD code = 0;
  EXPECT_EQ(GetExitCodeThread(thread, &code), TRUE);
  return code;
}

// Runs until the test lets it go.
struct Held {
  std::promise<void> go;
  std::atomic<int> passed{0};
};

DWORD WINAPI RunHeld(void* parameter) {
  auto* held = static_cast<Held*>(parameter);
  held->go.get_future().wait();
  ++held->passed;
  return 42;
}

TEST(Win32Thread, IsActiveUntilItReturnsItsCode) {
  Held held;
  const HANDLE thread = Start(RunHeld, &held);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(WaitForSingleObject(thread, 0), DWORD{WAIT_TIMEOUT});
  EXPECT_EQ(WaitForSingleObject(thread, 20), DWORD{WAIT_TIMEOUT});
  EXPECT_EQ(ExitCode(thread), DWORD{STILL_ACTIVE});
  held.go.set_value();
  EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(ExitCode(thread), 42u);
  EXPECT_EQ(held.passed, 1);
  EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0);
  EXPECT_EQ(CloseHandle(thread), TRUE);
  DWORD code = 0;
  EXPECT_EQ(GetExitCodeThread(thread, &code), FALSE);
}

TEST(Win32Thread, ExitThreadGivesItsCodeAndRunsNothingAfterIt) {
  static bool passed_exit = false;
  passed_exit = false;
  const HANDLE thread = Start(
      [](void*) -> DWORD {
        const std::vector<std::string> on_the_stack(10, std::string(100, 'x'));
        if (!on_the_stack.empty()) ExitThread(7);
        passed_exit = true;
        return 8;
      },
      nullptr);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(ExitCode(thread), 7u);
  EXPECT_FALSE(passed_exit);
  CloseHandle(thread);
}

TEST(Win32Thread, OutlivesItsClosedHandle) {
  struct Gates {
    std::promise<void> go;
    std::promise<void> done;
  };
  static std::list<Gates> every_run;  // its thread may still be inside its gates afterwards
  Gates& gates = every_run.emplace_back();
  const HANDLE thread = Start(
      [](void* parameter) -> DWORD {
        auto* const own = static_cast<Gates*>(parameter);
        own->go.get_future().wait();
        own->done.set_value();
        return 0;
      },
      &gates);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(CloseHandle(thread), TRUE);
  gates.go.set_value();
  EXPECT_EQ(gates.done.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

TEST(Win32Thread, ManyWaitForOne) {
  Held held;
  const HANDLE thread = Start(RunHeld, &held);
  std::vector<std::future<DWORD>> waits;
  for (int i = 0; i < 4; ++i) {
    waits.push_back(
        std::async(std::launch::async, [=] { return WaitForSingleObject(thread, INFINITE); }));
  }
  held.go.set_value();
  for (std::future<DWORD>& wait : waits) EXPECT_EQ(wait.get(), WAIT_OBJECT_0);
  CloseHandle(thread);
}

}  // namespace
