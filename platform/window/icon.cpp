// SPDX-License-Identifier: MIT

#include "platform/window/icon.h"

#include <QImage>
#include <QPixmap>

#include "platform/window/main_thread.h"
#include "platform/window/resource_file.h"

namespace ui = vt63x::ui;

namespace vt63x::ui {
namespace {

constexpr WORD kIconResource = 3;
constexpr WORD kGroupIconResource = 14;
constexpr WORD kMostImages = 64;

// One image as a file of the icon format, which the toolkit reads: a header, one entry, the image.
QImage OneImage(const QByteArray& entry, ResourceData image) {
  QByteArray file("\0\0\1\0\1\0", 6);
  file += entry;
  const auto size = static_cast<DWORD>(image.size());
  const DWORD offset = 22;
  file.append(reinterpret_cast<const char*>(&size), sizeof size);
  file.append(reinterpret_cast<const char*>(&offset), sizeof offset);
  file.append(reinterpret_cast<const char*>(image.data()), static_cast<qsizetype>(image.size()));
  return QImage::fromData(file, "ICO");
}

}  // namespace

QIcon LoadIconResource(WORD number) {
  QIcon icon;
  ByteReader group(FindResource(kGroupIconResource, number));
  group.DoubleWord();  // reserved, type
  const WORD count = group.Word();
  for (WORD i = 0; i < count && i < kMostImages; ++i) {
    const ResourceData head = group.Skip(8);  // width, height, colours, planes, bits
    group.DoubleWord();                       // size
    const WORD image_number = group.Word();
    if (group.failed() || head.size() != 8) break;
    const QByteArray entry(reinterpret_cast<const char*>(head.data()), 8);
    const QImage image = OneImage(entry, FindResource(kIconResource, image_number));
    if (!image.isNull()) icon.addPixmap(QPixmap::fromImage(image));
  }
  return icon;
}

// The handle is the resource's number: icons are shared and never freed.
QIcon IconOf(HICON icon) {
  return LoadIconResource(static_cast<WORD>(reinterpret_cast<ULONG_PTR>(icon)));
}

}  // namespace vt63x::ui

HICON WINAPI LoadIconA(HINSTANCE, LPCSTR name) {
  const auto number = reinterpret_cast<ULONG_PTR>(name);
  if (number == 0 || number > 0xffff ||
      ui::FindResource(ui::kGroupIconResource, static_cast<WORD>(number)).empty()) {
    SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
    return nullptr;
  }
  return reinterpret_cast<HICON>(number);
}
