// SPDX-License-Identifier: MIT

#include <windows.h>

#include <cwchar>
#include <random>
#include <string>
#include <utility>

#include "simulator/card_file.h"

namespace vt63x {
namespace {

// A new file, under a name that is `path` and a random number, which ends up in `name`.
HANDLE CreateUnfinished(const std::wstring& path, std::wstring& name) {
  std::random_device random;
  wchar_t suffix[16];
  std::swprintf(suffix, std::size(suffix), L".%08x", random());
  name = path + suffix;
  return CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                     nullptr);
}

class WindowsCardFile final : public CardFile {
 public:
  WindowsCardFile(std::wstring path, HANDLE lock) : path_(std::move(path)), lock_(lock) {}
  ~WindowsCardFile() override { CloseHandle(lock_); }  // removes the lock file as well

  // Who may read the new file the folder says, as for every file.
  bool Replace(std::span<const std::uint8_t> bytes) override {
    std::wstring unfinished;
    const HANDLE file = CreateUnfinished(path_, unfinished);
    if (file == INVALID_HANDLE_VALUE) return false;
    DWORD written = 0;
    const auto size = static_cast<DWORD>(bytes.size());
    const bool complete =
        WriteFile(file, bytes.data(), size, &written, nullptr) != FALSE && written == size;
    CloseHandle(file);
    if (complete &&
        MoveFileExW(unfinished.c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE) {
      return true;
    }
    DeleteFileW(unfinished.c_str());
    return false;
  }

 private:
  const std::wstring path_;
  const HANDLE lock_;
};

}  // namespace

// The system shares an opened file with nobody that was not asked for, and removes it at the end of
// the program that opened it, however that ends.
CardFile::Taking CardFile::Take(const std::filesystem::path& path,
                                std::unique_ptr<CardFile>& file) {
  const std::wstring lock_path = path.wstring() + L".lock";
  const HANDLE lock = CreateFileW(lock_path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                  FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (lock == INVALID_HANDLE_VALUE) {
    return GetLastError() == ERROR_SHARING_VIOLATION ? Taking::kInUse : Taking::kDenied;
  }
  file = std::make_unique<WindowsCardFile>(path.wstring(), lock);
  return Taking::kTaken;
}

}  // namespace vt63x
