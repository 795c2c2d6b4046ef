// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_BYTE_READER_H
#define VT63X_PLATFORM_WINDOW_BYTE_READER_H

#include <windows.h>

#include <QString>
#include <cstring>
#include <span>
#include <string>

#include "platform/window/text_codec.h"

namespace vt63x::ui {

using ResourceData = std::span<const unsigned char>;

// Reads a binary resource (little endian) from start to end. Reading past the end gives zeros and
// leaves failed() true.
class ByteReader {
 public:
  explicit ByteReader(ResourceData data) : data_(data) {}

  bool failed() const { return failed_; }
  bool at_end() const { return position_ >= data_.size(); }
  std::size_t position() const { return position_; }

  template <typename Number>
  Number Read() {
    Number number{};
    if (data_.size() - position_ < sizeof number) {
      failed_ = true;
      position_ = data_.size();
      return number;
    }
    std::memcpy(&number, data_.data() + position_, sizeof number);
    position_ += sizeof number;
    return number;
  }
  WORD Word() { return Read<WORD>(); }
  DWORD DoubleWord() { return Read<DWORD>(); }

  // UTF-16 up to its terminator, as the program's text.
  std::string Text() {
    QString text;
    for (WORD unit = Word(); unit != 0; unit = Word()) text += QChar(unit);
    return ToProgram(text);
  }

  // Positions count from the start of the data, which is aligned itself.
  void Align(std::size_t boundary) { Skip((boundary - position_ % boundary) % boundary); }
  ResourceData Skip(std::size_t count) {
    if (data_.size() - position_ < count) {
      // The padding behind the last item may be missing.
      failed_ = failed_ || count > 3;
      count = data_.size() - position_;
    }
    const ResourceData skipped = data_.subspan(position_, count);
    position_ += count;
    return skipped;
  }

 private:
  ResourceData data_;
  std::size_t position_ = 0;
  bool failed_ = false;
};

}  // namespace vt63x::ui

#endif
