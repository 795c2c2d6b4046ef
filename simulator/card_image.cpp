// SPDX-License-Identifier: MIT

#include "simulator/card_image.h"

#include <algorithm>
#include <fstream>
#include <system_error>
#include <utility>

namespace vt63x {
namespace {

namespace fs = std::filesystem;

// Reads at most one byte more than `limit`.
bool ReadFile(const fs::path& path, std::size_t limit, std::vector<std::uint8_t>& bytes) {
  std::ifstream file(path, std::ios::binary);
  bytes.resize(limit + 1);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return file.is_open() && !file.bad();
}

bool IsWritable(const fs::path& path) {
  return std::fstream(path, std::ios::binary | std::ios::in | std::ios::out).is_open();
}

// Where links end; nothing for one that leads nowhere.
std::optional<fs::path> RealPath(const fs::path& path) {
  std::error_code code;
  fs::path real = fs::weakly_canonical(fs::absolute(path, code), code);
  if (code || fs::is_symlink(real, code)) return std::nullopt;
  return real;
}

}  // namespace

std::optional<CardImage> CardImage::Open(const fs::path& path, std::vector<std::uint8_t> fresh,
                                         std::size_t fixed_count, std::string& error) {
  CardImage image(std::move(fresh));
  const auto refuse = [&](const std::string& why) {
    error = path.string() + ": " + why;
    return std::nullopt;
  };
  const auto real = RealPath(path);
  if (!real) return refuse("is a link that leads nowhere");
  std::error_code code;
  if (!fs::is_directory(real->parent_path(), code)) return refuse("there is no such directory");
  const fs::file_type type = fs::status(*real, code).type();
  if (type != fs::file_type::regular && type != fs::file_type::not_found) {
    return refuse("is not a file that can be read and written");
  }
  switch (CardFile::Take(*real, image.file_)) {
    case CardFile::Taking::kTaken:
      break;
    case CardFile::Taking::kInUse:
      return refuse("is in use by another program, or by another card");
    case CardFile::Taking::kDenied:
      return refuse("cannot be locked: no file of this name and .lock can be made beside it");
  }
  image.name_ = path.string();
  // Only now: before, another program may have changed it.
  if (!fs::exists(*real, code)) return image;
  std::vector<std::uint8_t> stored;
  if (!IsWritable(*real) || !ReadFile(*real, image.bytes_.size(), stored)) {
    return refuse("is not a file that can be read and written");
  }
  if (stored.size() != image.bytes_.size()) {
    return refuse("does not hold the " + std::to_string(image.bytes_.size()) +
                  " bytes of this kind of card");
  }
  if (!std::equal(stored.begin(), stored.begin() + static_cast<std::ptrdiff_t>(fixed_count),
                  image.bytes_.begin())) {
    return refuse("holds the memory of another card");
  }
  image.bytes_ = std::move(stored);
  return image;
}

bool CardImage::Change(std::size_t offset, std::span<const std::uint8_t> data) {
  if (offset > bytes_.size() || data.size() > bytes_.size() - offset) return false;
  std::vector<std::uint8_t> before = bytes_;
  std::ranges::copy(data, bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
  store_error_.clear();
  if (file_ == nullptr || file_->Replace(bytes_)) return true;
  store_error_ = name_ + ": cannot be written";
  bytes_ = std::move(before);
  return false;
}

}  // namespace vt63x
