// SPDX-License-Identifier: MIT

// A resource file with anything in it, read as the window layer reads the program's own.

#include <QGuiApplication>
#include <cstring>

#include "platform/window/dialog_template.h"
#include "platform/window/icon.h"
#include "platform/window/menu_template.h"
#include "tests/fuzz/fuzz_input.h"

// Where the program's resources are, changed from input to input.
extern "C" {
unsigned char vt63x_resources[65536];
unsigned long vt63x_resources_size;
}

namespace {

// Pictures need an application, and this one a screen that is none.
int argument_count = 1;
char name[] = "resources";
char* arguments[] = {name, nullptr};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vt63x;
  [[maybe_unused]] static const bool no_screen = qputenv("QT_QPA_PLATFORM", "offscreen");
  static const QGuiApplication application(argument_count, arguments);
  FuzzInput input(data, size);
  const ui::ResourceData all = input.Bytes(sizeof vt63x_resources);
  std::copy(all.begin(), all.end(), vt63x_resources);
  vt63x_resources_size = all.size();
  constexpr WORD kMenu = 4;
  constexpr WORD kDialog = 5;
  for (const WORD number : {1, 102, 103, 104}) {
    ui::ParseDialogTemplate(ui::FindResource(kDialog, number));
    ui::ParseMenuTemplate(ui::FindResource(kMenu, number));
    ui::LoadIconResource(number);
  }
  // And without the head of a resource file around it.
  ui::ParseDialogTemplate(all);
  ui::ParseMenuTemplate(all);
  return 0;
}
