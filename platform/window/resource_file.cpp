// SPDX-License-Identifier: MIT

#include "platform/window/resource_file.h"

extern "C" {
extern const unsigned char vt63x_resources[];
extern const unsigned long vt63x_resources_size;
}

namespace vt63x::ui {
namespace {

constexpr WORD kNumberFollows = 0xffff;

// A type or a name: its number, or 0 for one that is a text.
WORD NumberOrText(ByteReader& reader) {
  const WORD first = reader.Word();
  if (first == kNumberFollows) return reader.Word();
  if (first != 0) reader.Text();
  return 0;
}

}  // namespace

ResourceData FindResourceIn(ResourceData file, WORD type, WORD name) {
  while (file.size() >= 2 * sizeof(DWORD)) {
    ByteReader reader(file);
    const std::size_t data_size = reader.DoubleWord();
    const std::size_t header_size = reader.DoubleWord();
    const WORD found_type = NumberOrText(reader);
    const WORD found_name = NumberOrText(reader);
    if (reader.failed() || header_size < reader.position() || header_size > file.size()) return {};
    if (data_size > file.size() - header_size) return {};
    if (found_type == type && found_name == name) return file.subspan(header_size, data_size);
    const std::size_t padded = (data_size + 3) / 4 * 4;
    file = file.subspan(std::min(file.size(), header_size + padded));
  }
  return {};
}

ResourceData FindResource(WORD type, WORD name) {
  return FindResourceIn({vt63x_resources, vt63x_resources_size}, type, name);
}

}  // namespace vt63x::ui
