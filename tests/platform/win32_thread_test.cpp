#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
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

// Opens once; threads wait for it.
class Gate {
 public:
  void Open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }

  // False when it has not opened within half a minute.
  bool Await() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(30), [this] { return open_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool open_ = false;
};

// Runs until the test lets it go.
struct Held {
  Gate go;
  std::atomic<int> passed{0};
};

DWORD WINAPI RunHeld(void* parameter) {
  auto* held = static_cast<Held*>(parameter);
  held->go.Await();
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
  held.go.Open();
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
    Gate go;
    Gate done;
  };
  const auto gates = std::make_shared<Gates>();
  auto* const threads_share = new std::shared_ptr<Gates>(gates);
  const HANDLE thread = Start(
      [](void* parameter) -> DWORD {
        const std::unique_ptr<std::shared_ptr<Gates>> share(
            static_cast<std::shared_ptr<Gates>*>(parameter));
        (*share)->go.Await();
        (*share)->done.Open();
        return 0;
      },
      threads_share);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(CloseHandle(thread), TRUE);
  gates->go.Open();
  EXPECT_TRUE(gates->done.Await());
}

TEST(Win32Thread, ManyWaitForOne) {
  Held held;
  const HANDLE thread = Start(RunHeld, &held);
  std::vector<std::future<DWORD>> waits;
  for (int i = 0; i < 4; ++i) {
    waits.push_back(
        std::async(std::launch::async, [=] { return WaitForSingleObject(thread, INFINITE); }));
  }
  held.go.Open();
  for (std::future<DWORD>& wait : waits) EXPECT_EQ(wait.get(), WAIT_OBJECT_0);
  CloseHandle(thread);
}

}  // namespace
