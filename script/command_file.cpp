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

// Every line end as LF.
std::string WithLineFeeds(std::string_view content) {
  std::string text(content);
  std::size_t kept = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    text[kept++] = text[i];
  }
  text.resize(kept);
  return text;
}

// The next piece of at most LONGEST_LINE characters, its line end included; `rest` moves on.
std::string_view TakePiece(std::string_view& rest) {
  std::string_view piece = rest.substr(0, LONGEST_LINE);
  const std::size_t line_end = piece.find('\n');
  if (line_end != std::string_view::npos) piece = piece.substr(0, line_end + 1);
  rest.remove_prefix(piece.size());
  return piece;
}

std::string_view UpToTerminator(std::string_view piece) {
  return piece.substr(0, piece.find_first_of(std::string_view("\r\n\0", 3)));
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
  const std::string text = WithLineFeeds(kept);
  const auto line_ends = std::count(text.begin(), text.end(), '\n');
  const std::size_t pieces = static_cast<std::size_t>(line_ends) + text.size() / LONGEST_LINE + 1;
  text_.reserve(text.size() + pieces);
  lines_.reserve(pieces);
  std::string_view rest = text;
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
  const std::size_t start = text_.size();
  text_.append(piece);
  text_.push_back('\0');
  DecodedLine decoded = DecodeLine(text_.data() + start);
  decoded.text += static_cast<std::uint32_t>(start);
  decoded.file_line = file_line;
  lines_.push_back(decoded);
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
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "rb"), std::fclose);
  if (file == nullptr) return errno;
  content.clear();
  char buffer[65536];
  std::size_t count = 0;
  while ((count = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) {
    if (content.size() + count > LARGEST_COMMAND_FILE) return EFBIG;
    content.append(buffer, count);
  }
  return std::ferror(file.get()) != 0 ? EIO : 0;
}

}  // namespace vt63x
