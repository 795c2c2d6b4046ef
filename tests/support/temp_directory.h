// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_SUPPORT_TEMP_DIRECTORY_H
#define VT63X_TESTS_SUPPORT_TEMP_DIRECTORY_H

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vt63x {

// A directory of its own for one test, removed with it.
class TempDirectory {
 public:
  TempDirectory() {
    static std::atomic<int> count = 0;
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    path_ = std::filesystem::temp_directory_path() /
            ("vt63x-test-" + std::to_string(now) + "-" + std::to_string(++count));
    std::filesystem::create_directory(path_);
  }
  ~TempDirectory() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;

  std::string File(const std::string& name) const { return (path_ / name).string(); }
  std::string Write(const std::string& name, const std::string& content) const {
    std::ofstream(path_ / name, std::ios::binary) << content;
    return File(name);
  }
  std::string Read(const std::string& name) const {
    std::ifstream file(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace vt63x

#endif
