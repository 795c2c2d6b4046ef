// SPDX-License-Identifier: MIT

#include "simulator/card_image.h"

#include <algorithm>
#include <fstream>
#include <system_error>
#include <utility>

namespace vt63x {
namespace {

// Reads at most one byte more than `limit`.
bool ReadFile(const std::filesystem::path& path, std::size_t limit,
              std::vector<std::uint8_t>& bytes) {
  std::ifstream file(path, std::ios::binary);
  bytes.resize(limit + 1);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return file.is_open() && !file.bad();
}

bool IsWritable(const std::filesystem::path& path) {
  return std::fstream(path, std::ios::binary | std::ios::in | std::ios::out).is_open();
}

bool WriteFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  file.close();
  return file.good();
}

}  // namespace

std::optional<CardImage> CardImage::Open(const std::filesystem::path& path,
                                         std::vector<std::uint8_t> fresh, std::size_t fixed_count,
                                         std::string& error) {
  CardImage image(std::move(fresh));
  std::error_code code;
  image.path_ = std::filesystem::weakly_canonical(path, code);
  if (code) image.path_ = std::filesystem::absolute(path);
  const std::filesystem::file_status status = std::filesystem::status(path, code);
  if (status.type() == std::filesystem::file_type::not_found) {
    if (std::filesystem::is_directory(image.path_.parent_path(), code)) return image;
    error = path.string() + ": there is no such directory";
    return std::nullopt;
  }
  std::vector<std::uint8_t> stored;
  if (status.type() != std::filesystem::file_type::regular || !IsWritable(path) ||
      !ReadFile(path, image.bytes_.size(), stored)) {
    error = path.string() + ": is not a file that can be read and written";
    return std::nullopt;
  }
  if (stored.size() != image.bytes_.size()) {
    error = path.string() + ": does not hold the " + std::to_string(image.bytes_.size()) +
            " bytes of this kind of card";
    return std::nullopt;
  }
  if (!std::equal(stored.begin(), stored.begin() + static_cast<std::ptrdiff_t>(fixed_count),
                  image.bytes_.begin())) {
    error = path.string() + ": holds the memory of another card";
    return std::nullopt;
  }
  image.bytes_ = std::move(stored);
  return image;
}

bool CardImage::Change(std::size_t offset, std::span<const std::uint8_t> data) {
  if (offset > bytes_.size() || data.size() > bytes_.size() - offset) return false;
  std::vector<std::uint8_t> before = bytes_;
  std::ranges::copy(data, bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
  store_error_.clear();
  if (Store()) return true;
  store_error_ = path_.string() + ": cannot be written";
  bytes_ = std::move(before);
  return false;
}

bool CardImage::Store() const {
  if (path_.empty()) return true;
  std::filesystem::path unfinished = path_;
  unfinished += ".new";
  std::error_code code;
  if (WriteFile(unfinished, bytes_)) {
    const std::filesystem::file_status old = std::filesystem::status(path_, code);
    if (!code) std::filesystem::permissions(unfinished, old.permissions(), code);
    std::filesystem::rename(unfinished, path_, code);
    if (!code) return true;
  }
  std::filesystem::remove(unfinished, code);
  return false;
}

}  // namespace vt63x
