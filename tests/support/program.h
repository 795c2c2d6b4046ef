// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SUPPORT_PROGRAM_H
#define VT63X_TESTS_SUPPORT_PROGRAM_H

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/temp_directory.h"

namespace vt63x {

struct ProgramResult {
  int exit_code = -1;  // 128 + signal when one ended it; -1 when it had to be killed
  std::string out;
  std::string err;
};

// A program of ours, started with its output in files. Ends with the test, whatever happens.
class RunningProgram {
 public:
  RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                 const std::vector<std::pair<std::string, std::string>>& environment = {},
                 const std::string& directory = "") {
    std::vector<char*> argv = {const_cast<char*>(program.c_str())};
    for (const std::string& a : arguments) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    const std::string out = files_.File("out");
    const std::string err = files_.File("err");
    pid_ = fork();
    if (pid_ != 0) return;
    setpgid(0, 0);
    Redirect(out, STDOUT_FILENO);
    Redirect(err, STDERR_FILENO);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    if (directory.empty() || chdir(directory.c_str()) == 0) execv(program.c_str(), argv.data());
    _exit(126);
  }
  ~RunningProgram() {
    if (pid_ > 0) Kill();
  }
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  // Until `text` stands in the standard output; false if that takes too long or the program ends.
  bool WaitForOutput(const std::string& text) {
    return Poll([&] { return Out().find(text) != std::string::npos || Ended(); }) &&
           Out().find(text) != std::string::npos;
  }
  void Signal(int signal) const { kill(pid_, signal); }
  std::string Out() const { return files_.Read("out"); }

  // `signal`, if it is not 0, is sent again and again until the program ends.
  ProgramResult Finish(int signal = 0) {
    const auto ended = [&] {
      if (signal != 0 && pid_ > 0) Signal(signal);
      return Ended();
    };
    if (!Poll(ended)) Kill();
    return {exit_code_, files_.Read("out"), files_.Read("err")};
  }

 private:
  static void Redirect(const std::string& path, int descriptor) {
    dup2(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), descriptor);
  }
  template <typename Condition>
  static bool Poll(const Condition& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
  }
  bool Ended() {
    if (pid_ < 0) return true;
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) != pid_) return false;
    exit_code_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    pid_ = -1;
    return true;
  }
  void Kill() {
    kill(-pid_, SIGKILL);
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }

  TempDirectory files_;
  pid_t pid_ = -1;
  int exit_code_ = -1;
};

}  // namespace vt63x

#endif
