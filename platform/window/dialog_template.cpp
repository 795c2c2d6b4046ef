// SPDX-License-Identifier: MIT

#include "platform/window/dialog_template.h"

#include <algorithm>
#include <cctype>

namespace vt63x::ui {
namespace {

constexpr WORD kNumberFollows = 0xffff;
constexpr DWORD kExtended = 0xffff0001;  // first double word of a DLGTEMPLATEEX: version 1, mark

struct number_or_text {
  WORD number = 0;
  std::string text;
};

number_or_text NumberOrText(ByteReader& reader) {
  ByteReader ahead = reader;
  if (ahead.Word() != kNumberFollows) return {0, reader.Text()};
  const WORD number = ahead.Word();
  reader = ahead;
  return {number, {}};
}

RECT Rect(ByteReader& reader) {
  const auto x = reader.Read<std::int16_t>();
  const auto y = reader.Read<std::int16_t>();
  const auto width = reader.Read<std::int16_t>();
  const auto height = reader.Read<std::int16_t>();
  return {x, y, x + width, y + height};
}

struct class_name {
  const char* name;
  ControlClass control_class;
};

constexpr class_name kClasses[] = {
    {"BUTTON", ControlClass::kButton},     {"EDIT", ControlClass::kEdit},
    {"STATIC", ControlClass::kStatic},     {"LISTBOX", ControlClass::kListBox},
    {"COMBOBOX", ControlClass::kComboBox},
};

std::optional<ControlClass> ClassOf(const number_or_text& found) {
  std::string name = found.text;
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  for (const class_name& entry : kClasses) {
    if (found.number != 0 ? found.number == static_cast<WORD>(entry.control_class)
                          : name == entry.name) {
      return entry.control_class;
    }
  }
  return std::nullopt;
}

std::optional<dialog_item> Item(ByteReader& reader, bool extended) {
  reader.Align(4);
  dialog_item item{};
  if (extended) {
    reader.DoubleWord();  // help identifier
    item.ex_style = reader.DoubleWord();
    item.style = reader.DoubleWord();
  } else {
    item.style = reader.DoubleWord();
    item.ex_style = reader.DoubleWord();
  }
  item.position = Rect(reader);
  item.id =
      extended ? static_cast<int>(reader.DoubleWord()) : static_cast<std::int16_t>(reader.Word());
  const std::optional<ControlClass> control_class = ClassOf(NumberOrText(reader));
  const number_or_text title = NumberOrText(reader);
  item.text = title.text;
  item.resource = title.number;
  reader.Skip(reader.Word());  // creation data
  if (!control_class || reader.failed()) return std::nullopt;
  item.control_class = *control_class;
  item.style |= static_cast<DWORD>(WS_CHILD);
  return item;
}

}  // namespace

std::optional<dialog_template> ParseDialogTemplate(ResourceData data) {
  ByteReader reader(data);
  const bool extended = ByteReader(data).DoubleWord() == kExtended;
  dialog_template result;
  if (extended) {
    reader.DoubleWord();
    reader.DoubleWord();  // help identifier
    result.ex_style = reader.DoubleWord();
    result.style = reader.DoubleWord();
  } else {
    result.style = reader.DoubleWord();
    result.ex_style = reader.DoubleWord();
  }
  const int count = reader.Word();
  result.rect = Rect(reader);
  result.menu = NumberOrText(reader).number;
  NumberOrText(reader);  // window class: the dialog's own
  result.caption = reader.Text();
  if ((result.style & static_cast<DWORD>(DS_SETFONT)) != 0) {
    result.font_points = reader.Word();
    if (extended) reader.DoubleWord();  // weight, italic, character set
    result.font_name = reader.Text();
  }
  for (int i = 0; i < count && !reader.failed(); ++i) {
    std::optional<dialog_item> item = Item(reader, extended);
    if (!item) return std::nullopt;
    result.items.push_back(std::move(*item));
  }
  if (reader.failed()) return std::nullopt;
  return result;
}

}  // namespace vt63x::ui
