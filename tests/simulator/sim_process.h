// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SIMULATOR_SIM_PROCESS_H
#define VT63X_TESTS_SIMULATOR_SIM_PROCESS_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "simulator/unique_fd.h"

namespace vt63x {

using Texts = std::vector<std::string>;

[[noreturn]] inline void ExecSim(const std::vector<char*>& arguments) {
  ::signal(SIGINT, SIG_DFL);  // whoever starts tests in the background ignores it
  ::execv(VT63X_SIM_PROGRAM, arguments.data());
  ::_exit(99);
}

// vt63x-sim with its standard input and output, or with a terminal of its own, in the test's hands.
// Ended with the object if it is still there.
class Sim {
 public:
  explicit Sim(Texts texts, bool on_terminal = false) {
    texts.insert(texts.begin(), "vt63x-sim");
    std::vector<char*> arguments;
    for (std::string& text : texts) arguments.push_back(text.data());
    arguments.push_back(nullptr);
    if (on_terminal) {
      int master = -1;
      pid_ = ::forkpty(&master, nullptr, nullptr, nullptr);
      if (pid_ == 0) ExecSim(arguments);
      terminal_.Reset(master);
      return;
    }
    int out[2], in[2];
    if (::pipe2(out, O_CLOEXEC) != 0) return;
    terminal_.Reset(out[0]);
    const UniqueFd output(out[1]);
    if (::pipe2(in, O_CLOEXEC) != 0) return;
    input_.Reset(in[1]);
    const UniqueFd input(in[0]);
    pid_ = ::fork();
    if (pid_ == 0) {
      ::dup2(input.get(), STDIN_FILENO);
      ::dup2(output.get(), STDOUT_FILENO);
      ExecSim(arguments);
    }
  }
  ~Sim() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
  Sim(const Sim&) = delete;
  Sim& operator=(const Sim&) = delete;

  void Signal(int number) const { ::kill(pid_, number); }
  void Type(char character) { ASSERT_EQ(::write(terminal_.get(), &character, 1), 1); }

  // To the standard input.
  void Say(const std::string& text) {
    ASSERT_EQ(::write(input_.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void EndInput() { input_.Reset(); }
  void StopReading() { terminal_.Reset(); }

  // Up to the end of a line, which is left out, or of the output.
  std::string Line() {
    std::string line;
    for (char c; ::read(terminal_.get(), &c, 1) == 1 && c != '\n';) {
      if (c != '\r') line += c;
    }
    return line;
  }
  std::string Rest() {
    std::string text;
    for (char c; ::read(terminal_.get(), &c, 1) == 1;) text += c;
    return text;
  }
  // Waits for the end: the exit code, or minus the signal.
  int Exit() {
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  }

 private:
  pid_t pid_ = -1;
  UniqueFd terminal_;
  UniqueFd input_;
};

inline int ExitOf(const Texts& arguments) { return Sim(arguments).Exit(); }

}  // namespace vt63x

#endif
