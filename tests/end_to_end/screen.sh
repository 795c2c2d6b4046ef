# SPDX-License-Identifier: MIT
# Sourced by the end-to-end tests: a screen and a window manager of the test's own, and what its user
# does with keys, mouse and eyes. The test sets `case`, which its complaints begin with.

work=$(mktemp -d)
pids=()

cleanup() {
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  wait 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

fail() {
  echo "$case: $*" >&2
  [ ! -e "$work/err" ] || head -20 "$work/err" >&2
  [ -z "${KEEP_SCREEN:-}" ] || import -window root "$KEEP_SCREEN" || true
  exit 1
}

# wait_for SECONDS COMMAND...: until it succeeds.
wait_for() {
  local end=$((SECONDS + $1))
  shift
  until "$@"; do
    [ $SECONDS -lt $end ] || return 1
    sleep 0.05
  done
}

# Without -noreset the screen starts anew whenever the last program leaves it.
start_screen() {
  Xvfb -displayfd 7 -noreset -screen 0 1280x1024x24 -nolisten tcp >"$work/xvfb" 2>&1 7>"$work/display" &
  pids+=($!)
  wait_for 20 test -s "$work/display" || fail 'no screen'
  export DISPLAY=:$(tr -d '\n' <"$work/display")
  openbox >"$work/openbox" 2>&1 &
  pids+=($!)
  wait_for 20 manager_answers 7 || fail 'no window manager'
}
# manager_answers NUMBER: when it has done what it was asked for before. The number of desktops, which
# nothing but the event loop of a window manager sets, must be a new one, and none that is the default.
manager_answers() {
  wmctrl -n "$1" && [ "$(xdotool get_num_desktops)" = "$1" ]
} 2>/dev/null

# find_window TITLE: waits until it is shown and prints its id. A window that comes or goes meanwhile
# makes a search fail.
find_window() {
  wait_for 20 there_is "$1" >&2 && xdotool search --onlyvisible --name "^$1\$" | head -1
}
is_active() { [ "$(xdotool getactivewindow)" = "$1" ]; } 2>/dev/null
# activate TITLE: as find_window, and gives it the keyboard.
activate() {
  local window
  window=$(find_window "$1") || return 1
  xdotool windowactivate "$window" && wait_for 20 is_active "$window" && echo "$window"
}
there_is() { xdotool search --onlyvisible --name "^$1\$" >/dev/null 2>&1; }
there_is_no() { ! there_is "$1"; }

keys() { xdotool key --delay 30 "$@"; }
# window_is_back: the main window has the keyboard (again): keys that are pressed while a dialog comes or
# goes belong to nobody.
window_is_back() { wait_for 20 is_active "$main" || fail 'the window does not come back'; }

# type_line TEXT: into the command line, and Enter.
type_line() {
  window_is_back
  keys alt+l
  xdotool type --delay 5 "$1"
  keys Return
}

# select_file PATH: through the file dialog.
select_file() {
  keys alt+s
  activate '.*(Open|Select).*' >/dev/null || fail 'no file dialog'
  xdotool type --delay 5 "$1"
  keys Return
  wait_for 10 there_is_no '.*(Open|Select).*' || fail 'the file dialog stays'
  window_is_back
}
