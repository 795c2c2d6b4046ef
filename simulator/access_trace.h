// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_ACCESS_TRACE_H
#define VT63X_SIMULATOR_ACCESS_TRACE_H

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include "simulator/access_observer.h"

namespace vt63x {

// Writes one line for each access to a file: microseconds since the trace was opened, R or W,
// address, value, and after -> the bytes that went back, or "none", or "hang-up"; addresses, values
// and bytes as two hexadecimal digits each:
//
//   1204518 R 37 91 -> 91
//   1204731 W 01 0F -> 01
//
// Lines are in the file as soon as they are complete. A file that takes no more is complained of
// once, and left as it is.
class AccessTrace final : public AccessObserver {
 public:
  // Replaces what the file holds. False and a line for the user in `error` on failure.
  bool Open(const std::string& path, std::string& error);
  void OnAccess(const LineAnswer& answer) override;

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::unique_ptr<std::FILE, Close> file_;  // null once it takes no more
  std::string path_;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace vt63x

#endif
