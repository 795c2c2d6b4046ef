// SPDX-License-Identifier: MIT

#include "platform/window/font.h"

#include <QFontMetrics>
#include <map>

#include "platform/window/main_thread.h"
#include "platform/window/text_codec.h"

namespace ui = vt63x::ui;

namespace vt63x::ui {
namespace {

constexpr int kLargestFont = 200;  // pixels

struct FontTable {
  std::map<HFONT, QFont> fonts;
  std::uintptr_t last_handle = 0x20001;
};

FontTable& Table() {
  static FontTable* const table = new FontTable;
  return *table;
}

// The largest size whose lines are not higher than `height` pixels.
QFont FixedPitch(int height, const char* face) {
  QFont font(face == nullptr || *face == '\0' ? QStringLiteral("Monospace") : FromProgram(face));
  font.setStyleHint(QFont::Monospace);
  font.setFixedPitch(true);
  // Letters of one width need neither; scripts that need shaping get it all the same.
  font.setStyleStrategy(QFont::PreferNoShaping);
  font.setKerning(false);
  int pixels = height;
  do {
    font.setPixelSize(pixels);
  } while (QFontMetrics(font).height() > height && --pixels > 1);
  return font;
}

}  // namespace

const QFont* FontOf(HFONT font) {
  const auto found = Table().fonts.find(font);
  return found == Table().fonts.end() ? nullptr : &found->second;
}

QFont DialogFont(const std::string& name, int points) {
  QFont font(FromProgram(name));
  font.setStyleHint(QFont::SansSerif);
  font.setPointSize(points > 0 ? points : 8);
  return font;
}

}  // namespace vt63x::ui

HFONT WINAPI CreateFontA(int height, int width, int escapement, int orientation, int weight,
                         DWORD italic, DWORD underline, DWORD strike_out, DWORD charset,
                         DWORD out_precision, DWORD clip_precision, DWORD quality,
                         DWORD pitch_and_family, LPCSTR face) {
  const bool plain = width == 0 && escapement == 0 && orientation == 0 && weight == FW_NORMAL &&
                     italic == 0 && underline == 0 && strike_out == 0 && charset == ANSI_CHARSET &&
                     out_precision == OUT_DEFAULT_PRECIS && clip_precision == CLIP_DEFAULT_PRECIS &&
                     quality == DEFAULT_QUALITY && pitch_and_family == FIXED_PITCH;
  if (!plain || height <= 0 || height > ui::kLargestFont) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  ui::NeedApplication();
  return ui::CallOnMain<HFONT>(nullptr, [&] {
    ui::FontTable& table = ui::Table();
    const auto handle = reinterpret_cast<HFONT>(table.last_handle += 2);
    table.fonts.emplace(handle, ui::FixedPitch(height, face));
    return handle;
  });
}

BOOL WINAPI DeleteObject(HGDIOBJ object) {
  return ui::CallOnMain<BOOL>(FALSE, [&] {
    return ui::Table().fonts.erase(static_cast<HFONT>(object)) != 0 ? TRUE : FALSE;
  });
}
