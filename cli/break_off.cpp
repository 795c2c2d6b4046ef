// SPDX-License-Identifier: MIT

#include "cli/break_off.h"

#include <windows.h>

#include <atomic>
#include <system_error>
#include <thread>

#include "cli/output.h"
#include "threading/mutex.h"

namespace vt63x {
namespace {

// Of an access that a silent chip does not answer (500 ms), and some; with what follows, a second.
constexpr DWORD kGraceMs = 700;
constexpr int kLastWordsMs = 100;

std::atomic<ExitCode> broken_off = EXIT_ALL_DONE;

// Held for good by the thread that ends the program by force, so that nothing goes away under it.
Mutex lock;
BreakTarget* current GUARDED_BY(lock) = nullptr;
bool last_words_claimed GUARDED_BY(lock) = false;

ExitCode CodeOf(DWORD event) {
  if (event == CTRL_CLOSE_EVENT) return EXIT_HUNG_UP;
  return event == CTRL_SHUTDOWN_EVENT ? EXIT_TERMINATED : EXIT_INTERRUPTED;
}

// Standard error may be the very thing that takes nothing.
void SayLastWords(const std::string& words) try {
  static std::atomic<bool> said = false;
  std::thread([words] {
    PrintMessage(words);
    said = true;
  }).detach();
  for (int i = 0; i < kLastWordsMs && !said; ++i) Sleep(1);
} catch (const std::system_error&) {
  // No thread to be had: the exit code has to do.
}

BOOL WINAPI OnControlEvent(DWORD event) {
  ExitCode none = EXIT_ALL_DONE;
  broken_off.compare_exchange_strong(none, CodeOf(event));
  {
    const LockGuard guard(lock);
    if (current == nullptr) return FALSE;
    current->BreakOff();
  }
  Sleep(kGraceMs);
  const LockGuard guard(lock);
  if (current == nullptr) return TRUE;
  if (!last_words_claimed) SayLastWords(current->LastWords());
  ExitProcess(static_cast<UINT>(broken_off.load()));
}

}  // namespace

void WatchForBreak() { SetConsoleCtrlHandler(OnControlEvent, TRUE); }

void SetBreakTarget(BreakTarget* target) {
  const LockGuard guard(lock);
  current = target;
  last_words_claimed = false;
}

void ClaimLastWords() {
  const LockGuard guard(lock);
  last_words_claimed = true;
}

ExitCode BrokenOff() { return broken_off; }

}  // namespace vt63x
