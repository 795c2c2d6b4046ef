// SPDX-License-Identifier: MIT

#ifndef VT63X_SCRIPT_COMMAND_FILE_H
#define VT63X_SCRIPT_COMMAND_FILE_H

// A command file, read and decoded once for a run that may pass its lines many times.
//
// The file is a text in which CR LF and LF end a line and Ctrl-Z (0x1A) ends the text, on every
// system. A line of more than 199 characters is read in pieces of 199, each a line of its own. A
// line ends for the interpreter at its first carriage return or zero byte.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "script/decoded_line.h"

namespace vt63x {

// The longest piece, in characters; a line end within it counts.
inline constexpr std::size_t LONGEST_LINE = 199;

// The largest command file, in bytes: a device that never ends must not fill the memory.
inline constexpr std::size_t LARGEST_COMMAND_FILE = std::size_t{64} * 1024 * 1024;

struct DuplicateLabel {
  std::string_view name;
  std::uint32_t line;        // place in the file, from 1
  std::uint32_t first_line;  // where jumps to that name land
};

class CommandFile {
 public:
  // Decodes `content` and finds the label of every jump; the first label of a name counts.
  explicit CommandFile(std::string_view content);

  CommandFile(const CommandFile&) = delete;
  CommandFile& operator=(const CommandFile&) = delete;

  // Lines by their place among those that are kept: each run of idle lines is one, so that a file
  // of empty lines takes no memory.
  std::size_t size() const { return lines_.size(); }
  const DecodedLine& line(std::size_t index) const { return lines_[index]; }
  // How many lines of the file `line(index)` stands for: 1, or more where it is idle.
  std::uint32_t LinesOf(std::size_t index) const;
  // The index under which line number `number`, from 0, stands; size() behind the last.
  std::size_t Find(std::uint32_t number) const;
  // All lines of the file, pieces of long ones included.
  std::uint32_t line_count() const { return line_count_; }
  // The line's text behind its command and cell operands, folded to capitals.
  const char* text(const DecodedLine& line) const { return text_.data() + line.text; }

  // What a check of the file reports, by place in the file. Views into this object.
  const std::vector<DuplicateLabel>& duplicate_labels() const { return duplicate_labels_; }
  const std::vector<std::uint32_t>& long_lines() const { return long_lines_; }
  // The line with a Ctrl-Z behind which there is more; 0 for none.
  std::uint32_t cut_line() const { return cut_line_; }

 private:
  void AddPiece(std::string_view piece, std::uint32_t file_line);
  void ResolveJumps();

  std::string text_;  // all pieces but idle ones, each terminated
  std::vector<DecodedLine> lines_;
  std::vector<DuplicateLabel> duplicate_labels_;
  std::vector<std::uint32_t> long_lines_;
  std::uint32_t cut_line_ = 0;
  std::uint32_t line_count_ = 0;
};

// Reads the bytes of a file, also while signals arrive. 0, or the errno value of what went wrong
// (EISDIR for a directory, EFBIG above LARGEST_COMMAND_FILE).
int ReadWholeFile(const char* path, std::string& content);

}  // namespace vt63x

#endif
