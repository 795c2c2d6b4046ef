// SPDX-License-Identifier: MIT

#include "script/command_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <unordered_map>

namespace vt63x {
namespace {

constexpr char kEndOfText = 0x1A;

// The next piece of at most LONGEST_LINE characters, its line end included, in which CR LF counts
// as one; `rest` moves on.
std::string_view TakePiece(std::string_view& rest) {
  std::string_view piece = rest.substr(0, LONGEST_LINE);
  const std::size_t line_end = piece.find('\n');
  if (line_end != std::string_view::npos) {
    piece = piece.substr(0, line_end + 1);
  } else if (piece.ends_with('\r') && rest.substr(piece.size()).starts_with('\n')) {
    piece = rest.substr(0, piece.size() + 1);
  }
  rest.remove_prefix(piece.size());
  return piece;
}

// How many lines are not plainly empty: few enough to make room for, whatever the file.
std::size_t CountFilledLines(std::string_view text) {
  std::size_t count = text.size() / LONGEST_LINE + 1;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '\n' && text[i - 1] != '\n' && text[i - 1] != '\r') ++count;
  }
  return count;
}

std::string_view UpToTerminator(std::string_view piece) {
  return piece.substr(0, piece.find_first_of(std::string_view("\r\n\0", 3)));
}

// A signal that arrives while a FIFO waits for its writer changes nothing.
std::FILE* OpenForReading(const char* path) {
  while (true) {
    std::FILE* const file = std::fopen(path, "rb");
    if (file != nullptr || errno != EINTR) return file;
  }
}

// The label token at `text`, as long as a token can be.
std::string_view LabelAt(const char* text) {
  token_buffer token;
  const char* const end = ScanToken(text, token);
  const std::string_view name(token);
  if (name.empty()) return {};
  // The token's run ends at `end`; its name is the run's first characters.
  const char* start = end;
  while (start > text && IsTokenChar(start[-1])) --start;
  return {start, name.size()};
}

}  // namespace

CommandFile::CommandFile(std::string_view content) {
  const std::string_view kept = content.substr(0, content.find(kEndOfText));
  text_.reserve(kept.size() + kept.size() / LONGEST_LINE + 2);
  lines_.reserve(CountFilledLines(kept));
  std::string_view rest = kept;
  std::uint32_t file_line = 1;
  bool continued = false;
  while (!rest.empty()) {
    const std::string_view piece = TakePiece(rest);
    if (continued && (long_lines_.empty() || long_lines_.back() != file_line)) {
      long_lines_.push_back(file_line);
    }
    AddPiece(UpToTerminator(piece), file_line);
    continued = piece.back() != '\n';
    if (!continued) ++file_line;
  }
  if (content.size() > kept.size() + 1) cut_line_ = file_line;
  ResolveJumps();
}

void CommandFile::AddPiece(std::string_view piece, std::uint32_t file_line) {
  const bool after_idle = !lines_.empty() && IsIdle(lines_.back());
  if (piece.empty() && after_idle) {
    ++line_count_;
    return;
  }
  const std::size_t start = text_.size();
  text_.append(piece);
  text_.push_back('\0');
  DecodedLine decoded = DecodeLine(text_.data() + start);
  decoded.text += static_cast<std::uint32_t>(start);
  decoded.file_line = file_line;
  decoded.number = line_count_++;
  if (!IsIdle(decoded)) {
    lines_.push_back(decoded);
    return;
  }
  text_.resize(start);
  if (after_idle) return;
  decoded.text = static_cast<std::uint32_t>(start);
  text_.push_back('\0');
  lines_.push_back(decoded);
}

std::uint32_t CommandFile::LinesOf(std::size_t index) const {
  const std::uint32_t end = index + 1 < lines_.size() ? lines_[index + 1].number : line_count_;
  return end - lines_[index].number;
}

std::size_t CommandFile::Find(std::uint32_t number) const {
  if (number >= line_count_) return lines_.size();
  const auto behind = std::upper_bound(
      lines_.begin(), lines_.end(), number,
      [](std::uint32_t wanted, const DecodedLine& line) { return wanted < line.number; });
  return static_cast<std::size_t>(behind - lines_.begin()) - 1;
}

void CommandFile::ResolveJumps() {
  std::unordered_map<std::string_view, std::uint32_t> labels;
  for (std::uint32_t index = 0; index < lines_.size(); ++index) {
    if (lines_[index].command != kLabel) continue;
    const std::string_view name = LabelAt(text(lines_[index]));
    if (name.empty()) continue;
    const auto [first, added] = labels.emplace(name, index);
    if (added) continue;
    duplicate_labels_.push_back({name, lines_[index].file_line, lines_[first->second].file_line});
  }
  for (DecodedLine& line : lines_) {
    if (!IsJump(line)) continue;
    const auto label = labels.find(LabelAt(text(line)));
    if (label != labels.end()) line.target = label->second;
  }
}

int ReadWholeFile(const char* path, std::string& content) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return EISDIR;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(OpenForReading(path), std::fclose);
  if (file == nullptr) return errno;
  content.clear();
  char buffer[65536];
  while (true) {
    errno = 0;
    const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get());
    const int read_error = errno;
    if (content.size() + count > LARGEST_COMMAND_FILE) return EFBIG;
    content.append(buffer, count);
    if (std::ferror(file.get()) != 0 && read_error != EINTR) return EIO;
    const bool ended = std::feof(file.get()) != 0;
    if (ended) return 0;
    std::clearerr(file.get());
  }
}

}  // namespace vt63x
