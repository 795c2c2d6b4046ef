// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>

#include "simulator/card_file.h"
#include "simulator/unique_fd.h"

namespace vt63x {
namespace {

bool WriteAll(int fd, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(fd, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return true;
}

// Whether the lock file that `fd` has locked still has its name: its last owner may have removed it
// after it was opened here.
bool IsStillThere(int fd, const std::string& path) {
  struct stat opened {};
  struct stat named {};
  return ::fstat(fd, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

class PosixCardFile final : public CardFile {
 public:
  PosixCardFile(std::string path, std::string lock_path, UniqueFd lock)
      : path_(std::move(path)), lock_path_(std::move(lock_path)), lock_(std::move(lock)) {}
  // While the lock is still held, so that nobody else's lock file can be meant.
  ~PosixCardFile() override { ::unlink(lock_path_.c_str()); }

  bool Replace(std::span<const std::uint8_t> bytes) override {
    std::string unfinished = path_ + ".XXXXXX";
    const UniqueFd file(::mkostemp(unfinished.data(), O_CLOEXEC));
    if (!file) return false;
    struct stat old {};
    const bool mode_kept = ::lstat(path_.c_str(), &old) != 0 || !S_ISREG(old.st_mode) ||
                           ::fchmod(file.get(), old.st_mode & 0777) == 0;
    if (mode_kept && WriteAll(file.get(), bytes) &&
        ::rename(unfinished.c_str(), path_.c_str()) == 0) {
      return true;
    }
    ::unlink(unfinished.c_str());
    return false;
  }

 private:
  const std::string path_;
  const std::string lock_path_;
  const UniqueFd lock_;
};

}  // namespace

CardFile::Taking CardFile::Take(const std::filesystem::path& path,
                                std::unique_ptr<CardFile>& file) {
  const std::string lock_path = path.string() + ".lock";
  while (true) {
    UniqueFd lock(::open(lock_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!lock) return Taking::kDenied;
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
      return errno == EWOULDBLOCK ? Taking::kInUse : Taking::kDenied;
    }
    if (!IsStillThere(lock.get(), lock_path)) continue;
    file = std::make_unique<PosixCardFile>(path.string(), lock_path, std::move(lock));
    return Taking::kTaken;
  }
}

}  // namespace vt63x
