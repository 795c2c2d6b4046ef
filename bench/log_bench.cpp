// SPDX-License-Identifier: MIT

// Log lines a second with the log near empty and near full, beside the simplest thing that could
// do it: strcat, which walks over the log.

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "shell/state/log.h"

namespace {

constexpr int kRounds = 15;
constexpr int kLines = 300;
constexpr std::size_t kNearFull = 80'000;
constexpr char kLine[] = "GR  37          // data == 91  // (Status: 0x0000)";

struct Log {
  Log() : buffer(vt63x::LOG_CAPACITY, '\0') {
    state.log_buf = buffer.data();
    action.app_state = &state;
  }
  void FillTo(std::size_t length) {
    vt63x::log_clear(&action);
    vt63x::log_append(&action, std::string(length, 'x').c_str(), 0);
  }

  std::vector<char> buffer;
  vt63x::AppState state;
  vt63x::action_param action{};
};

template <typename Append>
double Measure(Log& log, std::size_t fill, const Append& append) {
  std::vector<double> times;
  for (int round = 0; round < kRounds; ++round) {
    log.FillTo(fill);
    times.push_back(vt63x::NanosecondsPerUnit(1, kLines, [&] {
      for (int i = 0; i < kLines; ++i) append();
    }));
  }
  return vt63x::Median(times);
}

}  // namespace

int main() {
  Log log;
  const auto own = [&] { vt63x::log_append(&log.action, kLine, 1); };
  const auto simple = [&] {
    std::strcat(log.buffer.data(), kLine);
    std::strcat(log.buffer.data(), "\r\n");
  };
  std::printf("a log line                  near empty    near full\n");
  std::printf("log_append               %10.1f ns %10.1f ns\n", Measure(log, 1, own),
              Measure(log, kNearFull, own));
  std::printf("strcat                   %10.1f ns %10.1f ns\n", Measure(log, 1, simple),
              Measure(log, kNearFull, simple));
  return 0;
}
