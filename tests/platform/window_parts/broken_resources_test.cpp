// SPDX-License-Identifier: MIT

// Resources that a broken tool or disk left: whatever the bytes, they are read within their bounds
// and refused or understood.

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "platform/window/dialog.h"
#include "platform/window/dialog_template.h"
#include "platform/window/main_thread.h"
#include "platform/window/menu_template.h"
#include "platform/window/resource_file.h"
#include "tests/platform/window/window_test_ids.h"

namespace vt63x::ui {
namespace {

constexpr WORD kMenuType = 4;
constexpr WORD kDialogType = 5;

// In a block of exactly its size, so that AddressSanitizer sees a read behind its end.
using Bytes = std::vector<unsigned char>;

Bytes Copy(ResourceData data) { return {data.begin(), data.end()}; }

Bytes Words(std::initializer_list<WORD> words) {
  Bytes bytes;
  for (const WORD word : words) {
    bytes.push_back(static_cast<unsigned char>(word & 0xff));
    bytes.push_back(static_cast<unsigned char>(word >> 8));
  }
  return bytes;
}

// Every byte of `good` in turn with every value of a few that hurt.
template <typename Parse>
void ParseWithDamage(const Bytes& good, const Parse& parse) {
  for (std::size_t i = 0; i < good.size(); ++i) {
    for (const int damage : {0x00, 0x01, 0x7f, 0x80, 0xff}) {
      Bytes bytes = good;
      bytes[i] = static_cast<unsigned char>(damage);
      parse(bytes);
    }
  }
}

TEST(BrokenResourcesTest, DialogCutShortIsRefused) {
  const Bytes good = Copy(FindResource(kDialogType, ALL_CONTROLS));
  ASSERT_TRUE(ParseDialogTemplate(good));
  for (std::size_t size = 0; size < good.size(); ++size) {
    const Bytes cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_FALSE(ParseDialogTemplate(cut)) << size;
  }
}

TEST(BrokenResourcesTest, DamagedDialogHasAtMostTheItemsThatItHolds) {
  const Bytes good = Copy(FindResource(kDialogType, ALL_CONTROLS));
  ParseWithDamage(good, [&](const Bytes& bytes) {
    const auto parsed = ParseDialogTemplate(bytes);
    EXPECT_LE(parsed ? parsed->items.size() : 0, bytes.size() / 18);
  });
}

TEST(BrokenResourcesTest, MenuOfAnotherVersionCutShortOrTooDeepIsRefused) {
  const Bytes good = Copy(FindResource(kMenuType, TEST_MENU));
  ASSERT_TRUE(ParseMenuTemplate(good));
  for (std::size_t size = 0; size + 1 < good.size(); ++size) {
    const Bytes cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_FALSE(ParseMenuTemplate(cut)) << size;
  }
  ParseWithDamage(good, [](const Bytes& bytes) { ParseMenuTemplate(bytes); });

  EXPECT_FALSE(ParseMenuTemplate(Words({1, 0, 0x80, 1, 'a', 0})));
  Bytes deep = Words({0, 0});
  const Bytes popup = Words({MF_POPUP | 0x80, 'a', 0});
  for (int i = 0; i < 10'000; ++i) deep.insert(deep.end(), popup.begin(), popup.end());
  EXPECT_FALSE(ParseMenuTemplate(deep));
}

TEST(BrokenResourcesTest, DamagedFileGivesNothingOutsideIt) {
  // An empty entry, then resource 7 of type 5 with four bytes of data.
  Bytes file = Words({0, 0, 32, 0, 0xffff, 0, 0xffff, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  const Bytes entry = Words({4, 0, 32, 0, 0xffff, 5, 0xffff, 7, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2});
  file.insert(file.end(), entry.begin(), entry.end());
  EXPECT_EQ(FindResourceIn(file, kDialogType, 7).size(), 4U);
  EXPECT_TRUE(FindResourceIn(file, kDialogType, 8).empty());
  ParseWithDamage(file, [](const Bytes& bytes) {
    const ResourceData found = FindResourceIn(bytes, kDialogType, 7);
    if (found.empty()) return;
    EXPECT_GE(found.data(), bytes.data());
    EXPECT_LE(found.data() + found.size(), bytes.data() + bytes.size());
  });
}

dialog_item Item(ControlClass control_class, DWORD style) {
  return {control_class,
          1,
          style | static_cast<DWORD>(WS_CHILD | WS_VISIBLE),
          0,
          {0, 0, 10, 10},
          "",
          0};
}

INT_PTR CALLBACK Nothing(HWND, UINT, WPARAM, LPARAM) { return FALSE; }

TEST(BrokenResourcesTest, StylesThatAreNotCarriedOutAreRefused) {
  NeedApplication();
  using row = std::tuple<dialog_item, bool>;
  constexpr DWORD kNotify = 0x4000;    // BS_NOTIFY
  constexpr DWORD kPassword = 0x0020;  // ES_PASSWORD
  constexpr DWORD kRight = 0x0002;     // SS_RIGHT
  constexpr DWORD kSort = 0x0002;      // LBS_SORT
  constexpr DWORD kSimple = 0x0001;    // CBS_SIMPLE
  constexpr DWORD kRadio = 0x0004;     // BS_RADIOBUTTON
  dialog_item extended = Item(ControlClass::kEdit, 0);
  extended.ex_style = 0x20;  // WS_EX_TRANSPARENT
  for (const auto& [item, known] : {
           row{Item(ControlClass::kButton, BS_DEFPUSHBUTTON), true},
           row{Item(ControlClass::kButton, kNotify), false},
           row{Item(ControlClass::kButton, kRadio), false},
           row{Item(ControlClass::kEdit, ES_MULTILINE), true},
           row{Item(ControlClass::kEdit, kPassword), false},
           row{extended, false},
           row{Item(ControlClass::kStatic, SS_SUNKEN), true},
           row{Item(ControlClass::kStatic, kRight), false},
           row{Item(ControlClass::kListBox, LBS_NOTIFY), true},
           row{Item(ControlClass::kListBox, kSort), false},
           row{Item(ControlClass::kComboBox, CBS_DROPDOWNLIST), true},
           row{Item(ControlClass::kComboBox, kSimple), false},
       }) {
    dialog_template source;
    source.style = WS_CAPTION;
    source.rect = {0, 0, 50, 50};
    source.items.push_back(item);
    Dialog* const dialog = Dialog::Make(source, nullptr, Nothing);
    EXPECT_EQ(dialog != nullptr, known)
        << static_cast<int>(item.control_class) << ' ' << std::hex << item.style;
    if (dialog != nullptr) dialog->Destroy();
  }
  Window::FreeDestroyed();
}

}  // namespace
}  // namespace vt63x::ui
