// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_INPUT_QUEUE_H
#define VT63X_PLATFORM_WINDOW_INPUT_QUEUE_H

// What the user did with keyboard and mouse, in its order, until its turn comes: an event is handed
// out when nothing posted is left, so that what a key made somebody post is done before the next
// key. Main thread only.

#include <QEvent>
#include <QPointer>
#include <QWindow>
#include <cstddef>
#include <deque>
#include <memory>

namespace vt63x::ui {

class InputQueue {
 public:
  // The one of the program.
  static InputQueue& Instance();

  // Takes an event that the toolkit has for a window of its own; it waits here, or is handed out at
  // once when it is its turn. False for one that is none of the user's, or is being handed out.
  bool Take(QWindow& window, QEvent& event);

  // The toolkit's focus has moved. Behind waiting keys it waits as well: they were typed before.
  void FocusMoved(QWidget* now);

  bool empty() const { return waiting_.empty(); }

  // Hands the oldest event out. Keys go to whoever has the focus now, the mouse to the window it
  // was over, if that is still there. Not when the queue is empty.
  void HandOut();

  // The last window is gone; nobody is left to take what waits.
  void Clear() { waiting_.clear(); }

 private:
  struct waiting_input {
    QPointer<QWindow> window;
    std::unique_ptr<QEvent> event;  // null: the focus moved
  };

  bool HandingOut() const;
  void Deliver(const waiting_input& input);

  std::deque<waiting_input> waiting_;
  const QEvent* handed_out_ = nullptr;
  std::size_t depth_ = 0;  // of the modal loop that handed it out
};

}  // namespace vt63x::ui

#endif
