// SPDX-License-Identifier: MIT

#include "shell/window_size.h"

#include "shell/resources/resource.h"

namespace vt63x {
namespace {

void StretchLogPane(HWND window) {
  const HWND pane = GetDlgItem(window, IDC_LOG);
  RECT place{};
  RECT client{};
  POINT corner{};
  GetWindowRect(pane, &place);
  GetClientRect(window, &client);
  ClientToScreen(window, &corner);
  const int top = place.top - corner.y;
  MoveWindow(pane, place.left - corner.x, top, place.right - place.left, client.bottom - top, TRUE);
  ShowWindow(pane, SW_SHOW);
}

}  // namespace

INT_PTR TellSizeLimits(const action_param* action) {
  const AppState& state = *action->app_state;
  if (state.init_width == 0) return FALSE;  // the window is being made
  auto& limits = *reinterpret_cast<MINMAXINFO*>(action->lparam);
  limits.ptMaxSize.x = state.init_width;
  limits.ptMinTrackSize = {state.init_width, state.init_height};
  limits.ptMaxTrackSize.x = state.init_width;
  return TRUE;
}

INT_PTR KeepWindowSize(const action_param* action) {
  if (action->wparam != SIZE_RESTORED && action->wparam != SIZE_MAXIMIZED) return FALSE;
  const AppState& state = *action->app_state;
  RECT rect{};
  GetWindowRect(action->dialog_wnd, &rect);
  const int width = rect.right - rect.left;
  const int height = rect.bottom - rect.top;
  // Each of the two moves brings another message, which ends with the pane stretched.
  if (height < state.init_height) {
    MoveWindow(action->dialog_wnd, rect.left, rect.top, width, state.init_height, TRUE);
  } else if (width != state.init_width) {
    MoveWindow(action->dialog_wnd, rect.left, rect.top, state.init_width, height, TRUE);
  } else {
    StretchLogPane(action->dialog_wnd);
  }
  return TRUE;
}

}  // namespace vt63x
