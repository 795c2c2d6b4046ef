// SPDX-License-Identifier: MIT

#include "platform/window/modal_loop.h"

#include <algorithm>
#include <vector>

#include "platform/window/dialog.h"
#include "platform/window/input_queue.h"
#include "platform/window/main_thread.h"
#include "platform/window/message_queue.h"

namespace vt63x::ui {
namespace {

std::vector<ModalLoop*>& Loops() {
  static std::vector<ModalLoop*> loops;
  return loops;
}

}  // namespace

OwnerDisabled::OwnerDisabled(HWND owner) : owner_(owner) {
  Window* const window = Window::Find(owner);
  if (window == nullptr || !window->enabled()) {
    owner_ = nullptr;
    return;
  }
  window->Enable(false);
}

void OwnerDisabled::Enable() {
  if (Window* const window = Window::Find(owner_)) window->Enable(true);
  owner_ = nullptr;
}

ModalLoop::ModalLoop() : ModalLoop([this] { loop_.quit(); }) {}

ModalLoop::ModalLoop(std::function<void()> end) : end_(std::move(end)) {
  Loops().push_back(this);
  LoopBegins();
}

ModalLoop::~ModalLoop() {
  std::erase(Loops(), this);
  LoopEnds();
  if (Loops().empty()) {
    ForgetQuit();
    InputQueue::Instance().Clear();
  }
  // The loop around this one has not heard yet of what was posted to it or of the request to quit.
  WakeMainThread();
}

void ModalLoop::Run() {
  // A quit before the loop runs would be lost: it is asked for again.
  while (!ended_) loop_.exec();
}

void ModalLoop::End() {
  ended_ = true;
  end_();
}

void ModalLoop::EndInnermost() {
  if (!Loops().empty()) Loops().back()->End();
}

bool ModalLoop::InnermostEnded() { return !Loops().empty() && Loops().back()->ended(); }

std::size_t ModalLoop::Depth() { return Loops().size(); }

// The dialog may be destroyed at any message; what is left to do goes by its handle.
INT_PTR RunModalDialog(Dialog& dialog, OwnerDisabled& owner, LPARAM parameter) {
  const HWND handle = dialog.handle();
  ModalLoop loop;
  loop.owner = &owner;
  dialog.loop = &loop;
  dialog.Initialise(parameter);
  if (!loop.ended() && Window::Find(handle) != nullptr) {
    dialog.Show(true);
    loop.Run();
  }
  owner.Enable();
  if (Window* const window = Window::Find(handle)) window->Destroy();
  return loop.result;
}

void EndModalDialog(Dialog& dialog, INT_PTR result) {
  ModalLoop* const loop = dialog.loop;
  if (loop == nullptr) return;
  const HWND handle = dialog.handle();
  loop->result = result;
  loop->End();
  if (loop->owner != nullptr) loop->owner->Enable();
  // Who hears of that may destroy it.
  if (Window::Find(handle) != nullptr) dialog.Show(false);
}

}  // namespace vt63x::ui
