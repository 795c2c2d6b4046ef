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

start_screen() {
  Xvfb -displayfd 7 -screen 0 1280x1024x24 -nolisten tcp >"$work/xvfb" 2>&1 7>"$work/display" &
  pids+=($!)
  wait_for 20 test -s "$work/display" || fail 'no screen'
  export DISPLAY=:$(tr -d '\n' <"$work/display")
  openbox >"$work/openbox" 2>&1 &
  pids+=($!)
  wait_for 20 xprop_root || fail 'no window manager'
}
xprop_root() { xdotool get_desktop >/dev/null 2>&1; }

# find_window TITLE: waits for it and prints its id.
find_window() { timeout 20 xdotool search --sync --onlyvisible --name "^$1\$" | head -1; }
there_is() { xdotool search --onlyvisible --name "^$1\$" >/dev/null 2>&1; }
there_is_no() { ! there_is "$1"; }

keys() { xdotool key --delay 30 "$@"; }
# type_line TEXT: into the command line, and Enter.
type_line() {
  keys alt+l
  xdotool type --delay 5 "$1"
  keys Return
}

# select_file PATH: through the file dialog.
select_file() {
  keys alt+s
  find_window '.*(Open|Select).*' >/dev/null || fail 'no file dialog'
  xdotool type --delay 5 "$1"
  keys Return
  wait_for 10 there_is_no '.*(Open|Select).*' || fail 'the file dialog stays'
}
