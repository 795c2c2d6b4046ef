// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WIN32_MESSAGES_H
#define VT63X_PLATFORM_WIN32_MESSAGES_H

// Messages, notifications and virtual keys of the window subset, with the values of Windows.

// --- windows ---
#define WM_NULL 0x0000U
#define WM_DESTROY 0x0002U
#define WM_SIZE 0x0005U
#define WM_SETFOCUS 0x0007U
#define WM_KILLFOCUS 0x0008U
#define WM_ENABLE 0x000AU
#define WM_SETTEXT 0x000CU
#define WM_GETTEXT 0x000DU
#define WM_GETTEXTLENGTH 0x000EU
#define WM_CLOSE 0x0010U
#define WM_QUIT 0x0012U
// Asked before a window with a sizing frame is shown; the window manager hears of the answer.
#define WM_GETMINMAXINFO 0x0024U
#define WM_NEXTDLGCTL 0x0028U
#define WM_SETFONT 0x0030U
#define WM_GETFONT 0x0031U
#define WM_SETICON 0x0080U
#define WM_NCDESTROY 0x0082U
#define WM_GETDLGCODE 0x0087U
#define WM_KEYDOWN 0x0100U
#define WM_KEYUP 0x0101U
#define WM_CHAR 0x0102U
#define WM_SYSCHAR 0x0106U
#define WM_INITDIALOG 0x0110U
#define WM_COMMAND 0x0111U
#define WM_TIMER 0x0113U
#define WM_CUT 0x0300U
#define WM_COPY 0x0301U
#define WM_PASTE 0x0302U
#define WM_UNDO 0x0304U
#define WM_USER 0x0400U
#define WM_APP 0x8000U

// wParam of WM_SIZE
#define SIZE_RESTORED 0U
#define SIZE_MINIMIZED 1U
#define SIZE_MAXIMIZED 2U

// wParam of WM_SETICON
#define ICON_BIG 1

// --- dialogs ---
#define DM_GETDEFID (WM_USER + 0)
#define DM_SETDEFID (WM_USER + 1)
#define DC_HASDEFID 0x534B

#define DLGC_WANTARROWS 0x0001
#define DLGC_WANTTAB 0x0002
#define DLGC_WANTALLKEYS 0x0004
#define DLGC_HASSETSEL 0x0008
#define DLGC_DEFPUSHBUTTON 0x0010
#define DLGC_UNDEFPUSHBUTTON 0x0020
#define DLGC_WANTCHARS 0x0080
#define DLGC_STATIC 0x0100
#define DLGC_BUTTON 0x2000

// --- buttons ---
#define BM_GETCHECK 0x00F0U
#define BM_SETCHECK 0x00F1U
#define BM_SETSTYLE 0x00F4U
#define BM_CLICK 0x00F5U
#define BST_UNCHECKED 0x0000
#define BST_CHECKED 0x0001
#define BN_CLICKED 0

// --- edits ---
#define EM_GETSEL 0x00B0U
#define EM_SETSEL 0x00B1U
#define EM_SCROLLCARET 0x00B7U
#define EM_GETMODIFY 0x00B8U
#define EM_SETMODIFY 0x00B9U
#define EM_GETLINECOUNT 0x00BAU
#define EM_REPLACESEL 0x00C2U
#define EM_SETLIMITTEXT 0x00C5U
#define EM_GETFIRSTVISIBLELINE 0x00CEU
#define EN_SETFOCUS 0x0100
#define EN_KILLFOCUS 0x0200
#define EN_CHANGE 0x0300
#define EN_UPDATE 0x0400
#define EN_MAXTEXT 0x0501

// --- list boxes ---
#define LB_ADDSTRING 0x0180U
#define LB_SETCURSEL 0x0186U
#define LB_GETCURSEL 0x0188U
#define LB_GETTEXT 0x0189U
#define LB_GETTEXTLEN 0x018AU
#define LB_GETCOUNT 0x018BU
#define LB_ERR (-1)
#define LBN_SELCHANGE 1
#define LBN_DBLCLK 2
#define LBN_SETFOCUS 4
#define LBN_KILLFOCUS 5

// --- drop-down lists ---
#define CB_ADDSTRING 0x0143U
#define CB_GETCOUNT 0x0146U
#define CB_GETCURSEL 0x0147U
#define CB_GETLBTEXT 0x0148U
#define CB_INSERTSTRING 0x014AU
#define CB_SETCURSEL 0x014EU
#define CB_ERR (-1)
#define CBN_SELCHANGE 1
#define CBN_SETFOCUS 3
#define CBN_KILLFOCUS 4
#define CBN_DROPDOWN 7
#define CBN_CLOSEUP 8
#define CBN_SELENDOK 9
#define CBN_SELENDCANCEL 10

// --- virtual keys; letters and digits are their capital ASCII codes ---
#define VK_BACK 0x08
#define VK_TAB 0x09
#define VK_RETURN 0x0D
#define VK_ESCAPE 0x1B
#define VK_SPACE 0x20
#define VK_PRIOR 0x21
#define VK_NEXT 0x22
#define VK_END 0x23
#define VK_HOME 0x24
#define VK_LEFT 0x25
#define VK_UP 0x26
#define VK_RIGHT 0x27
#define VK_DOWN 0x28
#define VK_INSERT 0x2D
#define VK_DELETE 0x2E
#define VK_F4 0x73

#endif
