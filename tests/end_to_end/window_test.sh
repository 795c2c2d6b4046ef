#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# window_test.sh BIN_DIR CASE: the program as its user has it: a screen (Xvfb), a window manager, real
# keys and a real mouse, and a simulated chip with a card on COM1:. What the program did is read
# from what the user would have: its files, its windows, the bytes on the line.
set -euo pipefail
bin=$1
case=$2
title='VT63x Serial RS 232 Test Program'
. "$(dirname "$0")/screen.sh"

# start_program [SIM OPTION...]
start_program() {
  cd "$work"
  export HOME=$work/home
  "$bin/vt63x-sim" --card 5A3C1E78 --trace "$work/trace" "$@" -- "$bin/wps" 2>"$work/err" &
  program=$!
  pids+=($program)
  main=$(find_window "$title") || fail "no window: $(cat "$work/err")"
  xdotool windowactivate --sync "$main"
}

gone() { ! kill -0 "$program" 2>/dev/null; }

# place [WINDOW]: X, Y, WIDTH and HEIGHT of the main window, or another, without its frame.
place() {
  eval "$(xwininfo -id "${1:-$main}" | sed -nE \
    's/ *Absolute upper-left ([XY]): *(.*)/\1=\2/p; s/ *Width: *(.*)/WIDTH=\1/p; s/ *Height: *(.*)/HEIGHT=\1/p')"
}

# save_log: into the file $log, by way of the command that does so; each call into another.
saved=0
save_log() {
  saved=$((saved + 1))
  log=$work/L$saved.txt
  type_line "sav l$saved"
  wait_for 10 test -s "$log" || fail 'the log was not saved'
}
log_has() {
  save_log
  grep -qF -- "$1" "$log"
}
expect_log() { log_has "$1" || fail "not in the log: $1"$'\n'"$(cat "$log")"; }

case_typed_line() {
  keys alt+o
  type_line 'gr 37'
  expect_log 'GR  37          // data == 91  // (Status: 0x0000)'
  grep -q ' R 37' "$work/trace" || fail 'no read on the line'
}

# Up shows the line before, Down goes on; what is shown can be sent again.
case_history() {
  keys alt+o
  type_line 'sr 2b 01'
  type_line 'sr 2b 02'
  type_line 'sr 2b 03'
  keys Up Up Return
  save_log
  [ "$(grep -c 'SR  2B  02' "$log")" -eq 2 ] || fail "Up does not bring the line before: $(cat "$log")"
  keys Down Return
  save_log
  [ "$(grep -c 'SR  2B  01' "$log")" -eq 2 ] || fail 'Down does not go on with the oldest line'
}

# In the command line it empties the line, in the log pane it does nothing; neither closes.
case_escape() {
  keys alt+o
  keys alt+l
  xdotool type --delay 5 'gr 99'
  keys Escape
  type_line 'gr 37'
  expect_log 'GR  37'
  log_has 'GR  99' && fail 'Escape left the line'
  place
  xdotool mousemove $((X + WIDTH / 2)) $((Y + HEIGHT - 60)) click 1
  keys Escape
  type_line 'gr 36'
  expect_log 'GR  36'
  # The close request that each Escape brought along is used up: the close box closes at once.
  xdotool key --window "$main" alt+F4 2>/dev/null || true
  keys alt+F4
  wait_for 10 gone || fail 'the close box does not close'
  [ "$(cat "$work/wps_start.cfg")" = 0 ] || fail 'the port is not remembered'
}

case_mnemonics() {
  # "&Process" is disabled while the port is closed, so Alt+P is the menu "&Port" and S its item.
  keys alt+p
  keys s
  find_window 'RS 232' >/dev/null || fail 'Alt+P S does not open the port settings'
  keys Tab Tab  # to the list and on
  keys alt+s
  keys Down
  keys alt+v
  keys alt+a
  wait_for 10 there_is_no 'RS 232' || fail 'Alt+A does not apply'
  keys alt+f
  keys x
  wait_for 10 gone || fail 'Alt+F X does not end the program'
  [ "$(cat "$work/wps_start.cfg")" = 1 ] || fail "port $(cat "$work/wps_start.cfg") instead of 1"
}

size() {
  place
  echo "$WIDTH $HEIGHT"
}
# drag FROM_X FROM_Y BY_X BY_Y, in small steps as a hand does.
drag() {
  xdotool mousemove "$1" "$2" mousedown 1
  local i
  for i in 1 2 3 4 5 6 7 8; do
    xdotool mousemove $(($1 + $3 * i / 8)) $(($2 + $4 * i / 8))
    sleep 0.03
  done
  xdotool mouseup 1
}
size_is() { [ "$(size)" = "$1" ]; }

# The width stays, the height never goes below that at the start, the lower edge can go down.
case_resize() {
  place
  local width=$WIDTH height=$HEIGHT
  drag $((X + WIDTH + 1)) $((Y + HEIGHT / 2)) 120 0
  wait_for 5 size_is "$width $height" || fail "wider: $(size) instead of $width $height"
  drag $((X + WIDTH + 1)) $((Y + HEIGHT / 2)) -120 0
  wait_for 5 size_is "$width $height" || fail "narrower: $(size) instead of $width $height"
  place
  drag $((X + WIDTH / 2)) $((Y + HEIGHT + 1)) 0 -150
  wait_for 5 size_is "$width $height" || fail "shorter: $(size) instead of $width $height"
  place
  drag $((X + WIDTH / 2)) $((Y + HEIGHT + 1)) 0 100
  sleep 0.3
  place
  [ "$WIDTH" -eq "$width" ] || fail "taller: width $WIDTH instead of $width"
  [ "$HEIGHT" -gt "$((height + 50))" ] || fail "taller: height $HEIGHT, was $height"
}

# As high as the screen, as wide as before, and back.
case_maximise() {
  place
  local width=$WIDTH height=$HEIGHT
  xprop -id "$main" WM_NORMAL_HINTS | grep -q "maximum size: $width by" || fail 'the width is not told'
  wmctrl -i -b add,maximized_vert,maximized_horz -r "$main"
  higher() { place; [ "$HEIGHT" -gt "$((height + 100))" ] && [ "$WIDTH" -eq "$width" ]; }
  wait_for 5 higher || fail "maximised: $(size), was $width $height"
  xprop -id "$main" _NET_WM_STATE | grep -q MAXIMIZED_VERT || fail 'it is maximised no longer'
  wmctrl -i -b remove,maximized_vert,maximized_horz -r "$main"
  wait_for 5 size_is "$width $height" || fail "restored: $(size), was $width $height"
  keys alt+o
  type_line 'gr 37'
  expect_log 'GR  37'
}

start_endless_run() {
  printf '::: LOOP\nINC ML0\nJMP LOOP\n' >"$work/endless.wcf"
  keys alt+o
  select_file "$work/endless.wcf"
  keys alt+w
  processing=$(find_window 'Processing\.\.\.') || fail 'no processing dialog'
  sleep 0.3
}

case_break() {
  start_endless_run
  place "$processing"
  xdotool mousemove $((X + WIDTH / 2)) $((Y + HEIGHT * 32 / 42)) click 1  # Break
  wait_for 10 there_is_no 'Processing\.\.\.' || fail 'Break does not end the run'
  expect_log 'User Break recognised.'
}

case_file_dialog() {
  mkdir "$work/scripts"
  printf 'GR 37\n' >"$work/scripts/one.wcf"
  printf 'GR 36\n' >"$work/scripts/two.wcf"
  keys alt+o
  select_file scripts/one.wcf
  keys alt+n  # the override name, for another file of the folder
  keys ctrl+a
  xdotool type --delay 5 two
  keys alt+w
  wait_for 10 grep -q ' R 36' "$work/trace" || fail 'the other file did not run'
  log=$work/scripts/L1.txt  # the current folder moved with the file
  type_line 'sav l1'
  wait_for 10 test -s "$log" || fail 'the log is not beside the file'
  grep -qF "Processing $work/scripts/two.wcf" "$log" || fail "another file ran: $(cat "$log")"
  select_file one.wcf
  keys alt+f
  keys x
  wait_for 10 gone || fail 'the program stays'
  [ -e "$work/wps_start.cfg" ] || fail 'the configuration moved too'
  [ ! -e "$HOME/.config" ] || fail "left in the home directory: $(find "$HOME/.config")"
}

# Twice into the same file: it then holds the log twice.
case_save_log() {
  keys alt+o
  type_line 'gr 37'
  keys alt+c
  local i
  for i in 1 2; do
    keys alt+f
    keys Right Right Right s
    find_window '.*Save.*' >/dev/null || fail 'no file dialog'
    xdotool type --delay 5 "$work/saved.txt"
    keys Return
    wait_for 10 there_is_no '.*Save.*' || fail 'the file dialog stays'
  done
  wait_for 10 test -s "$work/saved.txt" || fail 'nothing saved'
  printf 'GR  37          // data == 91  // (Status: 0x0000)\r\n%.0s' 1 2 | cmp - "$work/saved.txt" ||
    fail "another text saved: $(cat "$work/saved.txt")"
}

# While a run lasts neither its dialog, which has no close box, nor the main window, which it
# disables, can be closed; with Break both can.
case_close_in_run() {
  start_endless_run
  keys alt+F4
  wmctrl -i -c "$main"
  sleep 0.5
  there_is 'Processing\.\.\.' || fail 'the processing dialog can be closed'
  keys alt+b
  wait_for 10 there_is_no 'Processing\.\.\.' || fail 'Break does not end the run'
  wmctrl -i -c "$main"
  wait_for 10 gone || fail 'the program stays'
  [ "$(cat "$work/wps_start.cfg")" = 0 ] || fail 'the port is not remembered'
}

# A double click on every control from the first to the last; the program answers afterwards.
case_double_clicks() {
  keys alt+o
  place
  local x y
  for y in 30 50 70 100 130 150 175 215 240 300 400; do
    for x in 30 100 200 350 520 700; do
      [ "$x" -lt "$WIDTH" ] && [ "$y" -lt "$HEIGHT" ] || continue
      xdotool mousemove $((X + x)) $((Y + y)) click --repeat 2 --delay 40 1
      sleep 0.1
      # Whatever opened is left again.
      local i
      for i in 1 2 3; do
        [ "$(xdotool getactivewindow)" = "$main" ] || { keys alt+F4; sleep 0.1; }
      done
      gone && fail "gone after a double click at $x, $y"
    done
  done
  keys Escape
  xdotool windowactivate --sync "$main"
  keys alt+o
  type_line 'gr 37'
  expect_log 'GR  37'
}

# Twice as large, the window does not fit the screen: caption and menu bar do.
case_scaled() {
  keys alt+F4
  wait_for 10 gone || fail 'the program stays'
  QT_SCALE_FACTOR=2 start_program
  place
  [ "$X" -ge 0 ] && [ "$Y" -ge 10 ] || fail "at $X $Y"
}

case_no_display() {
  local code=0
  DISPLAY=:none "$bin/wps" 2>"$work/err" || code=$?
  [ $code -eq 3 ] && [ "$(wc -l <"$work/err")" -eq 1 ] || fail "exit code $code"
  grep -q 'no display' "$work/err" || fail 'it does not say so'
}

start_screen
start_program
"case_$case"
