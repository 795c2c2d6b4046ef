// SPDX-License-Identifier: MIT

#include "platform/window/start_up.h"

#include <QString>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "platform/window/message_queue.h"

namespace vt63x::ui {
namespace {

constexpr int kNoDisplay = 3;  // exit code

// What the toolkit said so far; of interest if it starts after all; if not, the first is why.
std::vector<std::pair<QtMsgType, std::string>>& Said() {
  static std::vector<std::pair<QtMsgType, std::string>> said;
  return said;
}

void Listen(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type != QtFatalMsg) {
    Said().emplace_back(type, text.trimmed().toStdString());
    return;
  }
  const std::string reason = Said().empty() ? text.toStdString() : Said().front().second;
  const char* const display = std::getenv("DISPLAY");
  std::fprintf(stderr, "wps: no display to show the window on (DISPLAY %s%s): %s\n",
               display == nullptr ? "is not set" : "is ", display == nullptr ? "" : display,
               reason.substr(0, reason.find('\n')).c_str());
  std::_Exit(kNoDisplay);
}

void AskToQuit(int) { QuitFromSignal(); }

}  // namespace

DisplayNeeded::DisplayNeeded() : before_(qInstallMessageHandler(Listen)) {}

DisplayNeeded::~DisplayNeeded() {
  qInstallMessageHandler(before_);
  for (const auto& [type, text] : std::exchange(Said(), {})) {
    if (before_ != nullptr) before_(type, QMessageLogContext(), QString::fromStdString(text));
  }
}

void CatchEndSignals() {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    struct sigaction before {};
    sigaction(number, nullptr, &before);
    if (before.sa_handler == SIG_IGN) continue;
    struct sigaction action {};
    action.sa_handler = AskToQuit;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigaction(number, &action, nullptr);
  }
}

}  // namespace vt63x::ui
