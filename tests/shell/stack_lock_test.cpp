// SPDX-License-Identifier: MIT

#include "shell/state/stack_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace vt63x {
namespace {

TEST(StackLockTest, OneHolderAtATime) {
  StackLock lock;
  int count = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int pass = 0; pass < 2000; ++pass) {
        const std::lock_guard guard(lock);
        ++count;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(count, 8000);
}

// A command file gives the lock back after each access and asks again at once. A lock that favoured
// the running thread would let hundreds of accesses pass before the register dialog's.
TEST(StackLockTest, WaiterComesBeforeTheOneThatAsksAgain) {
  using std::chrono::steady_clock;
  StackLock lock;
  std::atomic<bool> stop = false;
  std::atomic<int> turns = 0;
  std::thread runner([&] {
    while (!stop) {
      const std::lock_guard guard(lock);
      const auto end = steady_clock::now() + std::chrono::microseconds(100);
      while (steady_clock::now() < end) continue;
      ++turns;
    }
  });
  while (turns == 0) std::this_thread::yield();
  int prompt = 0;
  for (int i = 0; i < 20; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const int before = turns;
    const std::lock_guard guard(lock);
    prompt += turns - before <= 2 ? 1 : 0;
  }
  stop = true;
  runner.join();
  // Not all 20: the system may take the processor away between the two lines above.
  EXPECT_GE(prompt, 10);
}

}  // namespace
}  // namespace vt63x
