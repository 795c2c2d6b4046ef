// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WIN32_WINDOW_H
#define VT63X_PLATFORM_WIN32_WINDOW_H

// Windows, dialogs, controls, menus and file dialogs of the Win32 subset.
//
// Threads: windows live on the main thread, the one that made the first window. Every function
// here may be called from any thread; what concerns a window runs on the main thread, and another
// thread that calls it blocks until it has run (with ERROR_INVALID_WINDOW_HANDLE and a result of 0
// when the windows are gone). Only PostMessageA and PostQuitMessage never block.
//
// Texts are UTF-8; bytes that are not are kept as they are and shown as a substitute. Sizes and
// positions are pixels; the decoration that a window manager puts around a window does not count
// as part of it, so that the window rectangle is the menu bar and the client area. A handle that
// is stale or was never given out gives ERROR_INVALID_WINDOW_HANDLE (menus:
// ERROR_INVALID_MENU_HANDLE) and the result for failure. Messages, styles and values outside the
// list are refused: ERROR_INVALID_PARAMETER.

#include "win32/messages.h"
#include "win32/styles.h"
#include "win32/types.h"

using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using LPRECT = struct RECT*;
using LPPOINT = struct POINT*;
using HICON = struct HICON__*;
using HCURSOR = HICON;
using HHOOK = struct HHOOK__*;
using HGDIOBJ = void*;
using DLGPROC = INT_PTR(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);
using HOOKPROC = LRESULT(CALLBACK*)(int, WPARAM, LPARAM);
using TIMERPROC = void(CALLBACK*)(HWND, UINT, UINT_PTR, DWORD);

struct RECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};

struct POINT {
  LONG x;
  LONG y;
};

struct MSG {
  HWND hwnd;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
  DWORD time;
  POINT pt;
};

// lParam of WM_GETMINMAXINFO. Of the answer only the track sizes count.
struct MINMAXINFO {
  POINT ptReserved;
  POINT ptMaxSize;
  POINT ptMaxPosition;
  POINT ptMinTrackSize;
  POINT ptMaxTrackSize;
};

// A file dialog's request and answer. Fields that the list of GetOpenFileNameA does not name are 0.
struct OPENFILENAMEA {
  DWORD lStructSize;
  HWND hwndOwner;
  HINSTANCE hInstance;
  LPCSTR lpstrFilter;
  LPSTR lpstrCustomFilter;
  DWORD nMaxCustFilter;
  DWORD nFilterIndex;
  LPSTR lpstrFile;
  DWORD nMaxFile;
  LPSTR lpstrFileTitle;
  DWORD nMaxFileTitle;
  LPCSTR lpstrInitialDir;
  LPCSTR lpstrTitle;
  DWORD Flags;
  WORD nFileOffset;
  WORD nFileExtension;
  LPCSTR lpstrDefExt;
  LPARAM lCustData;
  void* lpfnHook;
  LPCSTR lpTemplateName;
  void* pvReserved;
  DWORD dwReserved;
  DWORD FlagsEx;
};

#define LOWORD(value) (static_cast<WORD>(static_cast<DWORD_PTR>(value) & 0xffff))
#define HIWORD(value) (static_cast<WORD>((static_cast<DWORD_PTR>(value) >> 16) & 0xffff))
#define MAKELONG(low, high) \
  (static_cast<LONG>(static_cast<DWORD>(LOWORD(low)) | (static_cast<DWORD>(LOWORD(high)) << 16)))
#define MAKEWPARAM(low, high) (static_cast<WPARAM>(static_cast<DWORD>(MAKELONG(low, high))))
#define MAKELPARAM(low, high) (static_cast<LPARAM>(static_cast<DWORD>(MAKELONG(low, high))))
#define MAKEINTRESOURCEA(number) \
  (reinterpret_cast<LPSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(number))))

#define ERROR_RESOURCE_NAME_NOT_FOUND 1814U
#define ERROR_INVALID_WINDOW_HANDLE 1400U
#define ERROR_INVALID_MENU_HANDLE 1401U
#define ERROR_CONTROL_ID_NOT_FOUND 1421U

#define SW_HIDE 0
#define SW_SHOWNORMAL 1
#define SW_SHOW 5

#define GWLP_WNDPROC (-4)
#define GWL_STYLE (-16)

#define GW_HWNDNEXT 2U
#define GW_OWNER 4U
#define GW_CHILD 5U

#define MF_BYCOMMAND 0x00000000U
#define MF_BYPOSITION 0x00000400U
#define MF_STRING 0x00000000U
#define MF_ENABLED 0x00000000U
#define MF_GRAYED 0x00000001U
#define MF_POPUP 0x00000010U
#define MF_SEPARATOR 0x00000800U
#define MF_HELP 0x00004000U

#define FW_NORMAL 400
#define ANSI_CHARSET 0U
#define OUT_DEFAULT_PRECIS 0U
#define CLIP_DEFAULT_PRECIS 0U
#define DEFAULT_QUALITY 0U
#define FIXED_PITCH 1U

#define IDC_ARROW MAKEINTRESOURCEA(32512)
#define IDC_WAIT MAKEINTRESOURCEA(32514)

#define WH_MSGFILTER (-1)
#define MSGF_DIALOGBOX 0

#define OFN_PATHMUSTEXIST 0x00000800U
#define OFN_FILEMUSTEXIST 0x00001000U
#define OFN_EXPLORER 0x00080000U

extern "C" {

// --- messages ---

// Through the window's procedure. From another thread: on the main thread, between two messages,
// also while a modal dialog runs there.
LRESULT WINAPI SendMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

// Behind the messages posted before, ahead of input. A posted key goes through the dialog's
// keyboard handling and is followed by its character, as a pressed one.
BOOL WINAPI PostMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

// Ends the innermost modal loop, which passes it on to the one around it: each dialog ends, is
// destroyed, and DialogBoxParamA returns `exit_code`. From any thread: it is the main thread that
// quits.
void WINAPI PostQuitMessage(int exit_code);

// The one callback procedure that a window was made with, or what subclassing put in front.
LRESULT WINAPI CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wparam,
                               LPARAM lparam);

// WM_TIMER to the window every `milliseconds` (10 at least), after all posted messages; `procedure`
// is null. The same id again starts it anew. 0 on failure.
UINT_PTR WINAPI SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure);
BOOL WINAPI KillTimer(HWND window, UINT_PTR id);

// --- dialogs ---

// Templates are the program's dialog resources (DLGTEMPLATEEX and DLGTEMPLATE), named by
// MAKEINTRESOURCEA. A modal dialog disables its owner while it runs. -1 when the template is
// missing or holds something outside the list.
INT_PTR WINAPI DialogBoxParamA(HINSTANCE instance, LPCSTR name, HWND owner, DLGPROC procedure,
                               LPARAM parameter);
HWND WINAPI CreateDialogParamA(HINSTANCE instance, LPCSTR name, HWND owner, DLGPROC procedure,
                               LPARAM parameter);
BOOL WINAPI EndDialog(HWND dialog, INT_PTR result);

// What a program needs elsewhere so that its modeless dialogs have Tab, Enter and Alt letters while
// a modal dialog's loop runs. Here the loop does that by itself and gives nothing to a filter:
// WH_MSGFILTER for the calling thread is accepted and never called, IsDialogMessageA takes nothing.
HHOOK WINAPI SetWindowsHookExA(int kind, HOOKPROC procedure, HINSTANCE instance, DWORD thread);
BOOL WINAPI UnhookWindowsHookEx(HHOOK hook);
LRESULT WINAPI CallNextHookEx(HHOOK hook, int code, WPARAM wparam, LPARAM lparam);
BOOL WINAPI IsDialogMessageA(HWND dialog, MSG* message);

// --- windows and controls ---

BOOL WINAPI DestroyWindow(HWND window);
BOOL WINAPI ShowWindow(HWND window, int command);
BOOL WINAPI EnableWindow(HWND window, BOOL enable);
BOOL WINAPI IsWindow(HWND window);
BOOL WINAPI IsWindowEnabled(HWND window);
BOOL WINAPI IsWindowVisible(HWND window);
HWND WINAPI SetFocus(HWND window);
// On the main thread; null on others, since focus belongs to a thread.
HWND WINAPI GetFocus();
HWND WINAPI GetParent(HWND window);  // a control's dialog, a dialog's owner
HWND WINAPI GetWindow(HWND window, UINT relation);
HWND WINAPI GetDlgItem(HWND dialog, int id);
HWND WINAPI GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous);
int WINAPI GetDlgCtrlID(HWND control);
// The first top-level window with this caption, the topmost first; `class_name` is null or
// "#32770", the class of dialogs.
HWND WINAPI FindWindowA(LPCSTR class_name, LPCSTR caption);

BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text);
// At most size - 1 bytes and a terminator; returns the bytes copied.
int WINAPI GetWindowTextA(HWND window, LPSTR buffer, int size);
int WINAPI GetWindowTextLengthA(HWND window);
BOOL WINAPI SetDlgItemTextA(HWND dialog, int id, LPCSTR text);
UINT WINAPI GetDlgItemTextA(HWND dialog, int id, LPSTR buffer, int size);
LRESULT WINAPI SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wparam, LPARAM lparam);
BOOL WINAPI CheckDlgButton(HWND dialog, int id, UINT check);
UINT WINAPI IsDlgButtonChecked(HWND dialog, int id);

// GWLP_WNDPROC (read and write), GWL_STYLE (read).
LONG_PTR WINAPI SetWindowLongPtrA(HWND window, int index, LONG_PTR value);
LONG_PTR WINAPI GetWindowLongPtrA(HWND window, int index);

BOOL WINAPI GetWindowRect(HWND window, LPRECT rect);  // screen
BOOL WINAPI GetClientRect(HWND window, LPRECT rect);
BOOL WINAPI ClientToScreen(HWND window, LPPOINT point);
BOOL WINAPI MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint);
BOOL WINAPI MapDialogRect(HWND dialog, LPRECT rect);  // dialog units to pixels

// --- menus ---

HMENU WINAPI GetMenu(HWND window);
HMENU WINAPI GetSubMenu(HMENU menu, int position);
HMENU WINAPI CreatePopupMenu();
BOOL WINAPI DestroyMenu(HMENU menu);
// MF_BYPOSITION | MF_STRING: a text item before the item at `position`.
BOOL WINAPI InsertMenuA(HMENU menu, UINT position, UINT flags, UINT_PTR id, LPCSTR text);
// By command, in submenus too: MF_ENABLED or MF_GRAYED. Returns the state before, -1 without item.
BOOL WINAPI EnableMenuItem(HMENU menu, UINT id, UINT state);
int WINAPI GetMenuItemCount(HMENU menu);
UINT WINAPI GetMenuItemID(HMENU menu, int position);
UINT WINAPI GetMenuState(HMENU menu, UINT item, UINT flags);
int WINAPI GetMenuStringA(HMENU menu, UINT item, LPSTR buffer, int size, UINT flags);
// Flags 0: at the screen position, until an item is chosen (posted to `window` as WM_COMMAND) or
// the menu is left.
BOOL WINAPI TrackPopupMenu(HMENU menu, UINT flags, int x, int y, int reserved, HWND window,
                           const RECT* rect);

// --- fonts, icons and cursors ---

// `height` pixels a line (positive), weight 400, fixed pitch, everything else 0 or the default,
// no face name or one.
HFONT WINAPI CreateFontA(int height, int width, int escapement, int orientation, int weight,
                         DWORD italic, DWORD underline, DWORD strike_out, DWORD charset,
                         DWORD out_precision, DWORD clip_precision, DWORD quality,
                         DWORD pitch_and_family, LPCSTR face);
BOOL WINAPI DeleteObject(HGDIOBJ object);  // fonts
HICON WINAPI LoadIconA(HINSTANCE instance, LPCSTR name);
// The system's IDC_ARROW and IDC_WAIT; `instance` is null.
HCURSOR WINAPI LoadCursorA(HINSTANCE instance, LPCSTR name);
// Over all windows of the program, until it is set again; returns the one before.
HCURSOR WINAPI SetCursor(HCURSOR cursor);

// --- file dialogs ---

// Owner, filter, file buffer and its size, and the flags above. The buffer comes in with a pattern
// or a name and goes out with a full path. FALSE when the user leaves it. A path that does not fit
// the buffer is told to the user, and the dialog stays. OFN_FILEMUSTEXIST counts for opening only.
// The dialog starts in the current directory, which becomes the folder of the chosen file.
BOOL WINAPI GetOpenFileNameA(OPENFILENAMEA* request);
BOOL WINAPI GetSaveFileNameA(OPENFILENAMEA* request);

// Null: the program itself.
HINSTANCE WINAPI GetModuleHandleA(LPCSTR name);

// The entry point that a program with windows defines; `command_line` is its own to change, the
// arguments separated by blanks.
int WINAPI WinMain(HINSTANCE instance, HINSTANCE previous, LPSTR command_line, int show);

}  // extern "C"

#endif
