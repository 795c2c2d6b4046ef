// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_PLATFORM_WINDOW_TEST_DIALOG_H
#define VT63X_TESTS_PLATFORM_WINDOW_TEST_DIALOG_H

// A dialog that records what its procedure receives, and runs a function on its thread for whoever
// asks from another.

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/window/window_test_ids.h"
#include "tests/support/gui_driver.h"

namespace vt63x {

inline constexpr UINT WM_RUN = WM_APP + 1;  // lParam: a std::function<void()>*
inline constexpr UINT WM_END = WM_APP + 2;  // wParam: the result

struct recorded_message {
  UINT message;
  WPARAM wparam;
  LPARAM lparam;
};

struct Recorder {
  std::mutex mutex;
  std::vector<recorded_message> messages;
  // Asked first; a result other than FALSE is the procedure's.
  std::function<INT_PTR(HWND, const recorded_message&)> first =
      [](HWND, const recorded_message&) -> INT_PTR { return FALSE; };

  void Add(const recorded_message& message) {
    const std::lock_guard lock(mutex);
    messages.push_back(message);
  }
  std::vector<recorded_message> Take() {
    const std::lock_guard lock(mutex);
    return std::exchange(messages, {});
  }
};

inline Recorder& Record() {
  static Recorder recorder;
  return recorder;
}

inline INT_PTR CALLBACK RecordingProc(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
  const recorded_message recorded{message, wparam, lparam};
  Record().Add(recorded);
  if (const INT_PTR answer = Record().first(dialog, recorded); answer != FALSE) return answer;
  if (message == WM_RUN) {
    (*reinterpret_cast<std::function<void()>*>(lparam))();
    return TRUE;
  }
  if (message == WM_END) EndDialog(dialog, static_cast<INT_PTR>(wparam));
  return message == WM_INITDIALOG || message == WM_END ? TRUE : FALSE;
}

// On the dialog's thread, between two messages.
inline void OnWindowThread(HWND dialog, std::function<void()> function) {
  SendMessageA(dialog, WM_RUN, 0, reinterpret_cast<LPARAM>(&function));
}

class WindowTest : public testing::Test {
 protected:
  ~WindowTest() override {
    Record().first = [](HWND, const recorded_message&) { return INT_PTR{}; };
  }

  // Shows ALL_CONTROLS and runs `test` from the second thread.
  static INT_PTR WithDialog(const std::function<void(HWND)>& test) {
    HWND dialog = nullptr;
    return Drive(
        [] {
          return DialogBoxParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(ALL_CONTROLS), nullptr,
                                 RecordingProc, 0);
        },
        [&] {
          dialog = WaitForWindow("All controls");
          SendMessageA(dialog, WM_NULL, 0, 0);
          Record().Take();
          test(dialog);
        },
        [&] { PostMessageA(dialog, WM_END, 0, 0); });
  }

  // The same with the test on the dialog's own thread.
  static void InDialog(const std::function<void(HWND)>& test) {
    WithDialog([&](HWND dialog) { OnWindowThread(dialog, [&] { test(dialog); }); });
  }

  // Handles what has been posted so far: a message posted now arrives after it.
  static void Settle(HWND dialog) {
    SendMessageA(dialog, WM_NULL, 0, 0);
    std::atomic<bool> arrived = false;
    std::function<void()> mark = [&] { arrived = true; };
    PostMessageA(dialog, WM_RUN, 0, reinterpret_cast<LPARAM>(&mark));
    WaitFor([&] { return arrived.load(); }, "a posted message");
  }

  // "id:code" of the WM_COMMAND messages since the last call.
  static std::string Commands() {
    std::string text;
    for (const recorded_message& message : Record().Take()) {
      if (message.message != WM_COMMAND) continue;
      if (!text.empty()) text += ' ';
      text += std::to_string(LOWORD(message.wparam)) + ':' + std::to_string(HIWORD(message.wparam));
    }
    return text;
  }

  static std::string Text(HWND dialog, int id) {
    std::string text(200'000, '\0');
    text.resize(GetDlgItemTextA(dialog, id, text.data(), static_cast<int>(text.size())));
    return text;
  }

  static void Type(HWND dialog, int id, const char* text) {
    for (; *text != '\0'; ++text) {
      SendDlgItemMessageA(dialog, id, WM_CHAR, static_cast<unsigned char>(*text), 1);
    }
  }
};

}  // namespace vt63x

#endif
