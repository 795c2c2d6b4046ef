// SPDX-License-Identifier: MIT

#include "simulator/child_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "simulator/unique_fd.h"

namespace vt63x {
namespace {

// In the child: becomes the command or reports why not through `failure`, which the exec closes.
[[noreturn]] void Become(char* const* arguments, const sigset_t& mask, pid_t parent, int failure) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(ChildProcess::kExitNotRun);  // it died before the line above
  // An exec keeps what is ignored.
  for (const int number : {SIGPIPE, SIGXFSZ}) ::signal(number, SIG_DFL);
  ::sigprocmask(SIG_SETMASK, &mask, nullptr);
  ::execvp(arguments[0], arguments);
  const int code = errno;
  [[maybe_unused]] const ssize_t written = ::write(failure, &code, sizeof code);
  ::_exit(ChildProcess::kExitNotRun);
}

int WaitFor(pid_t pid) {
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace

ChildProcess::~ChildProcess() {
  if (pid_ < 0) return;
  Signal(SIGKILL);
  WaitFor(pid_);
}

int ChildProcess::Start(const std::vector<std::string>& command, const sigset_t& mask,
                        std::string& error) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command) {
    arguments.push_back(const_cast<char*>(argument.c_str()));  // exec changes none of them
  }
  arguments.push_back(nullptr);

  int pipe_ends[2];
  if (::pipe2(pipe_ends, O_CLOEXEC) != 0) {
    error = "no pipe to be had from the system";
    return kExitNotRun;
  }
  UniqueFd failure_in(pipe_ends[0]);
  UniqueFd failure_out(pipe_ends[1]);
  const pid_t parent = ::getpid();
  pid_ = ::fork();
  if (pid_ == 0) Become(arguments.data(), mask, parent, failure_out.get());
  if (pid_ < 0) {
    error = "cannot start a process: " + std::generic_category().message(errno);
    return kExitNotRun;
  }
  failure_out.Reset();
  int code = 0;
  ssize_t count;
  while ((count = ::read(failure_in.get(), &code, sizeof code)) < 0 && errno == EINTR) {
  }
  if (count != sizeof code) return 0;
  WaitFor(pid_);
  pid_ = -1;
  error = "cannot run '" + command[0] + "': " + std::generic_category().message(code);
  // A search that met a folder it may not enter ends like one that met a file it may not run.
  const bool searched = command[0].find('/') == std::string::npos;
  return code == ENOENT || (searched && code == EACCES) ? kExitNotFound : kExitNotRun;
}

void ChildProcess::Signal(int number) const {
  if (pid_ > 0) ::kill(pid_, number);
}

std::optional<int> ChildProcess::ExitCode() {
  int status = 0;
  if (pid_ < 0 || ::waitpid(pid_, &status, WNOHANG) != pid_) return std::nullopt;
  pid_ = -1;
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace vt63x
