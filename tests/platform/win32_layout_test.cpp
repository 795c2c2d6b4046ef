// SPDX-License-Identifier: MIT

// Sizes, offsets and values that programs and drivers agree on without a header between them.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

static_assert(sizeof(void*) == 8);
static_assert(sizeof(BOOL) == 4 && sizeof(BYTE) == 1 && sizeof(WORD) == 2 && sizeof(DWORD) == 4);
static_assert(sizeof(UINT) == 4 && sizeof(LONG) == 4 && sizeof(LONGLONG) == 8);
static_assert(sizeof(HANDLE) == 8 && sizeof(ULONG_PTR) == 8 && sizeof(SIZE_T) == 8);
static_assert(sizeof(WPARAM) == 8 && sizeof(LPARAM) == 8 && sizeof(LRESULT) == 8);
static_assert(static_cast<DWORD>(-1) > 0 && static_cast<LONG>(-1) < 0 && static_cast<BYTE>(-1) > 0);

static_assert(sizeof(LARGE_INTEGER) == 8 && offsetof(LARGE_INTEGER, QuadPart) == 0 &&
              offsetof(LARGE_INTEGER, u.HighPart) == 4);
static_assert(sizeof(SECURITY_ATTRIBUTES) == 24 &&
              offsetof(SECURITY_ATTRIBUTES, bInheritHandle) == 16);
static_assert(sizeof(OVERLAPPED) == 32 && offsetof(OVERLAPPED, Internal) == 0 &&
              offsetof(OVERLAPPED, InternalHigh) == 8 && offsetof(OVERLAPPED, hEvent) == 24);
static_assert(sizeof(DCB) == 28 && offsetof(DCB, DCBlength) == 0 && offsetof(DCB, BaudRate) == 4 &&
              offsetof(DCB, wReserved) == 12 && offsetof(DCB, XonLim) == 14 &&
              offsetof(DCB, XoffLim) == 16 && offsetof(DCB, ByteSize) == 18 &&
              offsetof(DCB, Parity) == 19 && offsetof(DCB, StopBits) == 20 &&
              offsetof(DCB, XonChar) == 21 && offsetof(DCB, XoffChar) == 22 &&
              offsetof(DCB, ErrorChar) == 23 && offsetof(DCB, EofChar) == 24 &&
              offsetof(DCB, EvtChar) == 25 && offsetof(DCB, wReserved1) == 26);
static_assert(sizeof(COMMTIMEOUTS) == 20 && offsetof(COMMTIMEOUTS, ReadIntervalTimeout) == 0 &&
              offsetof(COMMTIMEOUTS, ReadTotalTimeoutMultiplier) == 4 &&
              offsetof(COMMTIMEOUTS, ReadTotalTimeoutConstant) == 8 &&
              offsetof(COMMTIMEOUTS, WriteTotalTimeoutMultiplier) == 12 &&
              offsetof(COMMTIMEOUTS, WriteTotalTimeoutConstant) == 16);
static_assert(sizeof(RECT) == 16 && offsetof(RECT, bottom) == 12);
static_assert(sizeof(POINT) == 8 && offsetof(POINT, y) == 4);
static_assert(sizeof(OPENFILENAMEA) == 152 && offsetof(OPENFILENAMEA, lpstrFile) == 48 &&
              offsetof(OPENFILENAMEA, nMaxFile) == 56 && offsetof(OPENFILENAMEA, Flags) == 96);

static_assert(FALSE == 0 && TRUE == 1 && MAX_PATH == 260 && MAXDWORD == 0xFFFFFFFF &&
              INFINITE == 0xFFFFFFFF && GENERIC_READ == 0x80000000 && GENERIC_WRITE == 0x40000000 &&
              OPEN_EXISTING == 3 && FILE_FLAG_OVERLAPPED == 0x40000000 && NOPARITY == 0 &&
              ONESTOPBIT == 0 && DTR_CONTROL_DISABLE == 0 && RTS_CONTROL_DISABLE == 0 &&
              PURGE_TXABORT == 1 && PURGE_RXABORT == 2 && PURGE_TXCLEAR == 4 &&
              PURGE_RXCLEAR == 8 && MS_CTS_ON == 0x10 && MS_DSR_ON == 0x20 && MS_RING_ON == 0x40 &&
              MS_RLSD_ON == 0x80 && EV_RING == 0x100 && WAIT_OBJECT_0 == 0 && WAIT_TIMEOUT == 258 &&
              WAIT_FAILED == 0xFFFFFFFF && STATUS_PENDING == 0x103 && STILL_ACTIVE == 259);
static_assert(ERROR_INVALID_FUNCTION == 1 && ERROR_NOT_SUPPORTED == 50 && ERROR_SUCCESS == 0 &&
              ERROR_FILE_NOT_FOUND == 2 && ERROR_ACCESS_DENIED == 5 && ERROR_INVALID_HANDLE == 6 &&
              ERROR_NOT_ENOUGH_MEMORY == 8 && ERROR_BAD_COMMAND == 22 && ERROR_GEN_FAILURE == 31 &&
              ERROR_INVALID_PARAMETER == 87 && ERROR_SEM_TIMEOUT == 121 && ERROR_BUSY == 170 &&
              ERROR_OPERATION_ABORTED == 995 && ERROR_IO_INCOMPLETE == 996 &&
              ERROR_BAD_NETPATH == 53 && ERROR_CONNECTION_REFUSED == 1225 &&
              ERROR_HOST_UNREACHABLE == 1232 && ERROR_IO_PENDING == 997 &&
              ERROR_DEVICE_NOT_CONNECTED == 1167 && ERROR_RESOURCE_NAME_NOT_FOUND == 1814 &&
              ERROR_INVALID_WINDOW_HANDLE == 1400 && ERROR_INVALID_MENU_HANDLE == 1401 &&
              ERROR_CONTROL_ID_NOT_FOUND == 1421);

// Of windows, their messages and styles: resource compilers and other programs have them too.
static_assert(SW_HIDE == 0 && SW_SHOWNORMAL == 1 && SW_SHOW == 5 && GWLP_WNDPROC == -4 &&
              GWL_STYLE == -16 && GW_HWNDNEXT == 2 && GW_OWNER == 4 && GW_CHILD == 5 &&
              FW_NORMAL == 400 && ANSI_CHARSET == 0 && OUT_DEFAULT_PRECIS == 0 &&
              CLIP_DEFAULT_PRECIS == 0 && DEFAULT_QUALITY == 0 && FIXED_PITCH == 1 &&
              OFN_PATHMUSTEXIST == 0x800 && OFN_FILEMUSTEXIST == 0x1000 && OFN_EXPLORER == 0x80000);
static_assert(MF_BYCOMMAND == 0 && MF_BYPOSITION == 0x400 && MF_STRING == 0 && MF_ENABLED == 0 &&
              MF_GRAYED == 0x1 && MF_POPUP == 0x10 && MF_SEPARATOR == 0x800 && MF_HELP == 0x4000);
static_assert(WM_NULL == 0x0000 && WM_DESTROY == 0x2 && WM_SIZE == 0x5 && WM_SETFOCUS == 0x7 &&
              WM_KILLFOCUS == 0x8 && WM_ENABLE == 0xA && WM_SETTEXT == 0xC && WM_GETTEXT == 0xD &&
              WM_GETTEXTLENGTH == 0xE && WM_CLOSE == 0x10 && WM_QUIT == 0x12 &&
              WM_NEXTDLGCTL == 0x28 && WM_SETFONT == 0x30 && WM_GETFONT == 0x31 &&
              WM_SETICON == 0x80 && WM_NCDESTROY == 0x82 && WM_GETDLGCODE == 0x87 &&
              WM_KEYDOWN == 0x100 && WM_KEYUP == 0x101 && WM_CHAR == 0x102 && WM_SYSCHAR == 0x106 &&
              WM_INITDIALOG == 0x110 && WM_COMMAND == 0x111 && WM_TIMER == 0x113 &&
              WM_CUT == 0x300 && WM_COPY == 0x301 && WM_PASTE == 0x302 && WM_UNDO == 0x304 &&
              WM_USER == 0x400 && WM_APP == 0x8000 && SIZE_RESTORED == 0 && SIZE_MINIMIZED == 1 &&
              SIZE_MAXIMIZED == 2 && ICON_BIG == 1);
static_assert(DM_GETDEFID == 0x400 && DM_SETDEFID == 0x401 && DC_HASDEFID == 0x534B && IDOK == 1 &&
              IDCANCEL == 2);
static_assert(DLGC_WANTARROWS == 0x1 && DLGC_WANTTAB == 0x2 && DLGC_WANTALLKEYS == 0x4 &&
              DLGC_HASSETSEL == 0x8 && DLGC_DEFPUSHBUTTON == 0x10 && DLGC_UNDEFPUSHBUTTON == 0x20 &&
              DLGC_WANTCHARS == 0x80 && DLGC_STATIC == 0x100 && DLGC_BUTTON == 0x2000);
static_assert(BM_GETCHECK == 0xF0 && BM_SETCHECK == 0xF1 && BM_SETSTYLE == 0xF4 &&
              BM_CLICK == 0xF5 && BST_UNCHECKED == 0x0000 && BST_CHECKED == 0x1 && BN_CLICKED == 0);
static_assert(EM_GETSEL == 0xB0 && EM_SETSEL == 0xB1 && EM_SCROLLCARET == 0xB7 &&
              EM_GETMODIFY == 0xB8 && EM_SETMODIFY == 0xB9 && EM_GETLINECOUNT == 0xBA &&
              EM_REPLACESEL == 0xC2 && EM_SETLIMITTEXT == 0xC5 && EM_GETFIRSTVISIBLELINE == 0xCE &&
              EN_SETFOCUS == 0x100 && EN_KILLFOCUS == 0x200 && EN_CHANGE == 0x300 &&
              EN_UPDATE == 0x400 && EN_MAXTEXT == 0x501);
static_assert(LB_ADDSTRING == 0x180 && LB_SETCURSEL == 0x186 && LB_GETCURSEL == 0x188 &&
              LB_GETTEXT == 0x189 && LB_GETTEXTLEN == 0x18A && LB_GETCOUNT == 0x18B &&
              LB_ERR == -1 && LBN_SELCHANGE == 1 && LBN_DBLCLK == 2 && LBN_SETFOCUS == 4 &&
              LBN_KILLFOCUS == 5);
static_assert(CB_ADDSTRING == 0x143 && CB_GETCOUNT == 0x146 && CB_GETCURSEL == 0x147 &&
              CB_GETLBTEXT == 0x148 && CB_INSERTSTRING == 0x14A && CB_SETCURSEL == 0x14E &&
              CB_ERR == -1 && CBN_SELCHANGE == 1 && CBN_SETFOCUS == 3 && CBN_KILLFOCUS == 4 &&
              CBN_DROPDOWN == 7 && CBN_CLOSEUP == 8 && CBN_SELENDOK == 9 && CBN_SELENDCANCEL == 10);
static_assert(VK_BACK == 0x8 && VK_TAB == 0x9 && VK_RETURN == 0xD && VK_ESCAPE == 0x1B &&
              VK_SPACE == 0x20 && VK_PRIOR == 0x21 && VK_NEXT == 0x22 && VK_END == 0x23 &&
              VK_HOME == 0x24 && VK_LEFT == 0x25 && VK_UP == 0x26 && VK_RIGHT == 0x27 &&
              VK_DOWN == 0x28 && VK_INSERT == 0x2D && VK_DELETE == 0x2E && VK_F4 == 0x73);
static_assert(WS_POPUP == 0x80000000 && WS_CHILD == 0x40000000 && WS_VISIBLE == 0x10000000 &&
              WS_DISABLED == 0x8000000 && WS_CAPTION == 0xC00000 && WS_BORDER == 0x800000 &&
              WS_VSCROLL == 0x200000 && WS_SYSMENU == 0x80000 && WS_THICKFRAME == 0x40000 &&
              WS_GROUP == 0x20000 && WS_TABSTOP == 0x10000 && WS_MINIMIZEBOX == 0x20000 &&
              WS_MAXIMIZEBOX == 0x10000 && DS_SETFONT == 0x40 && DS_MODALFRAME == 0x80 &&
              DS_CENTER == 0x800);
static_assert(BS_PUSHBUTTON == 0 && BS_DEFPUSHBUTTON == 0x1 && BS_AUTOCHECKBOX == 0x3 &&
              BS_GROUPBOX == 0x7 && SS_ICON == 0x3 && SS_SUNKEN == 0x1000 && ES_CENTER == 0x1 &&
              ES_MULTILINE == 0x4 && ES_UPPERCASE == 0x8 && ES_AUTOVSCROLL == 0x40 &&
              ES_AUTOHSCROLL == 0x80 && ES_READONLY == 0x800 && LBS_NOTIFY == 0x1 &&
              LBS_NOINTEGRALHEIGHT == 0x100 && LBS_DISABLENOSCROLL == 0x1000 &&
              CBS_DROPDOWNLIST == 0x3 && CBS_SORT == 0x100);
static_assert(LOWORD(0x12345678) == 0x5678 && HIWORD(0x12345678) == 0x1234);
static_assert(MAKELONG(0x5678, 0x9234) == static_cast<LONG>(0x92345678));
static_assert(MAKEWPARAM(5, 0x8000) == 0x80000005U && MAKELPARAM(0xFFFF, 0xFFFF) == 0xFFFFFFFF);

std::uint32_t FlagWord(const DCB& settings) {
  std::uint32_t word = 0;
  std::memcpy(&word, reinterpret_cast<const char*>(&settings) + 8, sizeof word);
  return word;
}

TEST(Win32Layout, SettingsFlagsSitAtTheirBits) {
  const std::pair<void (*)(DCB&), std::uint32_t> cases[] = {
      {[](DCB& d) { d.fBinary = 1; }, 0x1},
      {[](DCB& d) { d.fParity = 1; }, 0x2},
      {[](DCB& d) { d.fOutxCtsFlow = 1; }, 0x4},
      {[](DCB& d) { d.fOutxDsrFlow = 1; }, 0x8},
      {[](DCB& d) { d.fDtrControl = 3; }, 0x30},
      {[](DCB& d) { d.fDsrSensitivity = 1; }, 0x40},
      {[](DCB& d) { d.fTXContinueOnXoff = 1; }, 0x80},
      {[](DCB& d) { d.fOutX = 1; }, 0x100},
      {[](DCB& d) { d.fInX = 1; }, 0x200},
      {[](DCB& d) { d.fErrorChar = 1; }, 0x400},
      {[](DCB& d) { d.fNull = 1; }, 0x800},
      {[](DCB& d) { d.fRtsControl = 3; }, 0x3000},
      {[](DCB& d) { d.fAbortOnError = 1; }, 0x4000},
  };
  for (const auto& [set, word] : cases) {
    DCB settings{};
    set(settings);
    EXPECT_EQ(FlagWord(settings), word);
  }
}

TEST(Win32Layout, InvalidHandleIsMinusOne) {
  EXPECT_EQ(reinterpret_cast<std::intptr_t>(INVALID_HANDLE_VALUE), -1);
}

}  // namespace
