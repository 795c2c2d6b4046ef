// SPDX-License-Identifier: MIT

#include "simulator/access_trace.h"

#include <cerrno>
#include <system_error>

#include "simulator/complain.h"
#include "simulator/sim_options.h"

namespace vt63x {

bool AccessTrace::Open(const std::string& path, std::string& error) {
  // e, where there are commands that run on the line: not for them.
  file_.reset(std::fopen(path.c_str(), kHasOwnLines ? "we" : "w"));
  if (!file_) {
    error = path + ": " + std::generic_category().message(errno);
    return false;
  }
  path_ = path;
  start_ = std::chrono::steady_clock::now();
  return true;
}

void AccessTrace::OnAccess(const LineAnswer& answer) {
  if (!file_) return;
  const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::steady_clock::now() - start_);
  const Access& access = *answer.access;
  std::fprintf(file_.get(), "%lld %c %02X %02X ->", static_cast<long long>(elapsed.count()),
               access.is_write ? 'W' : 'R', access.address, access.value);
  if (answer.hang_up) std::fputs(" hang-up", file_.get());
  if (!answer.hang_up && answer.count == 0) std::fputs(" none", file_.get());
  for (std::size_t i = 0; i < answer.count; ++i) {
    std::fprintf(file_.get(), " %02X", answer.bytes[i]);
  }
  std::fputc('\n', file_.get());
  if (std::fflush(file_.get()) == 0) return;
  Complain(path_ + ": " + std::generic_category().message(errno) + "; the trace ends here");
  file_.reset();
}

}  // namespace vt63x
