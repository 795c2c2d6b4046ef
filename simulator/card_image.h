// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CARD_IMAGE_H
#define VT63X_SIMULATOR_CARD_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "simulator/card_file.h"

namespace vt63x {

// The memory of a card, kept in a file when there is one: the bytes of the memory and nothing else.
// The file is replaced as a whole, by a new one that takes its name once it is complete, so that it
// holds the memory before a change or after it and nothing between. One program at a time has it,
// from Open to the end of the object (card_file.h).
class CardImage {
 public:
  // Without a file.
  explicit CardImage(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}

  // What the file holds; where there is none, `fresh`, and the first change makes the file.
  // Nothing, and a line for the user in `error`, when it has not exactly the size of `fresh`, when
  // it does not begin with the first `fixed_count` bytes of `fresh`, or when it cannot be read and
  // written, or is in use. Nothing is written here. Links are followed here and stay: a change
  // replaces the file that they led to. One that leads nowhere is refused.
  static std::optional<CardImage> Open(const std::filesystem::path& path,
                                       std::vector<std::uint8_t> fresh, std::size_t fixed_count,
                                       std::string& error);

  std::span<const std::uint8_t> bytes() const { return bytes_; }

  // Puts `data` at `offset`. False, with memory and file as they were, when it would lie outside
  // or the file cannot be written; store_error() then says so.
  bool Change(std::size_t offset, std::span<const std::uint8_t> data);

  // Why the last change could not be stored, for the user; empty when it was.
  const std::string& store_error() const { return store_error_; }

 private:
  std::vector<std::uint8_t> bytes_;
  std::unique_ptr<CardFile> file_;  // null: no file
  std::string name_;                // as the user wrote it
  std::string store_error_;
};

}  // namespace vt63x

#endif
