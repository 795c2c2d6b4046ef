// SPDX-License-Identifier: MIT

#include "platform/window/menu_template.h"

namespace vt63x::ui {
namespace {

constexpr WORD kLastItem = 0x0080;
constexpr int kDeepest = 8;

bool Items(ByteReader& reader, std::vector<menu_template_item>& items, int depth) {
  WORD flags = 0;
  do {
    flags = reader.Word();
    menu_template_item item;
    item.flags = flags & (MF_POPUP | MF_GRAYED | MF_HELP);
    if ((flags & MF_POPUP) == 0) item.id = reader.Word();
    item.text = reader.Text();
    if (reader.failed() || depth > kDeepest) return false;
    if ((flags & MF_POPUP) != 0) {
      if (!Items(reader, item.children, depth + 1)) return false;
    } else if (item.id == 0 && item.text.empty()) {
      item.flags |= MF_SEPARATOR;
    }
    items.push_back(std::move(item));
  } while ((flags & kLastItem) == 0);
  return true;
}

}  // namespace

std::optional<std::vector<menu_template_item>> ParseMenuTemplate(ResourceData data) {
  ByteReader reader(data);
  const WORD version = reader.Word();
  reader.Skip(reader.Word());
  std::vector<menu_template_item> items;
  if (reader.failed() || version != 0 || !Items(reader, items, 0)) return std::nullopt;
  return items;
}

}  // namespace vt63x::ui
