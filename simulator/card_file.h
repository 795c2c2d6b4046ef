// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CARD_FILE_H
#define VT63X_SIMULATOR_CARD_FILE_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace vt63x {

// A file that one program at a time has for itself, from Take to the end of the object. What shows
// that is a second, empty file beside it with ".lock" added to its name: not the file itself, which
// every change replaces and which need not be there at first. The lock file goes with the object;
// one that a program left that did not end well keeps nobody out.
class CardFile {
 public:
  enum class Taking {
    kTaken,
    kInUse,   // by another program, or by this one already
    kDenied,  // the lock file cannot be made
  };

  // `path` without links. The file need not exist; its folder does.
  static Taking Take(const std::filesystem::path& path, std::unique_ptr<CardFile>& file);

  virtual ~CardFile() = default;
  CardFile(const CardFile&) = delete;
  CardFile& operator=(const CardFile&) = delete;

  // Puts a file with these bytes in the place of the one that is there, with its permissions; a new
  // one is its owner's alone. The bytes are gathered in a file of a name that nobody can foresee
  // and that nobody else may read. False, with the old file as it was, on failure.
  virtual bool Replace(std::span<const std::uint8_t> bytes) = 0;

 protected:
  CardFile() = default;
};

}  // namespace vt63x

#endif
