#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# window_test.sh BIN_DIR CASE: the program as its user has it: a screen (Xvfb), a window manager, real
# keys and a real mouse, and a simulated chip with a card on COM1:. What the program did is read
# from what the user would have: its files, its windows, the bytes on the line.
set -euo pipefail
bin=$(realpath "$1")
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
  main=$(activate "$title") || fail "no window: $(cat "$work/err")"
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

# log_is LINE...: the saved log, without what stands behind the commands.
log_is() {
  save_log
  diff <(printf '%s\n' "$@") <(tr -d '\r' <"$log" | sed 's| *//.*||') || fail 'another log'
}

# at_once WHAT...: keys, :texts and +X+Y clicks without a pause, all of which reach the program in one
# batch, as when a slow line keeps it from looking.
at_once() {
  local pid what
  pid=$(xdotool getwindowpid "$main")
  kill -STOP "$pid"
  for what in "$@"; do
    case $what in
      :*) xdotool type --delay 0 "${what#:}" ;;
      +*) xdotool mousemove $(tr + ' ' <<<"$what") click 1 ;;
      *) xdotool key --delay 0 "$what" ;;
    esac || true
  done
  kill -CONT "$pid"
}

# Each key is handled when everything that the one before brought along is done: Escape asks the
# window to close and takes that back, Enter goes by way of a button, a dialog gets what is typed for
# it before it is there, and nothing more once its end was asked for.
case_typed_ahead() {
  keys alt+o
  place
  local process=+$((X + WIDTH * 464 / 511))+$((Y + HEIGHT - 282 * 13 / 8))
  at_once alt+l :nonsense Escape Escape ':gr 37' Return Up Return ':gr 36' $process ':gr 35' $process \
    ':gr 34' Return alt+r alt+g
  activate 'Access RF Front End Registers' >/dev/null || fail 'no register dialog'
  wait_for 10 grep -q ' R 00' "$work/trace" || fail 'the register dialog got no key'
  keys alt+q
  window_is_back
  log_is 'GR  37' 'GR  37' 'GR  36' 'GR  35' 'GR  34'
  keys alt+o
  activate 'Ostrel Reader' >/dev/null || fail 'no card reader'
  at_once alt+h alt+x p
  wait_for 10 there_is_no 'Ostrel Reader' || fail 'the reader stays'
  window_is_back
  type_line 'gr 32'
  log_is 'GR  32'
  ! grep -q 'W 09 A2' "$work/trace" || fail 'a key behind Exit wrote to the card'
}

# A button that the mouse or its letter brought the focus to is the one that Enter presses.
case_default_button() {
  keys alt+o alt+r
  local dialog
  dialog=$(activate 'Access RF Front End Registers') || fail 'no register dialog'
  reads() { [ "$(grep -c ' R 00' "$work/trace")" -eq "$1" ]; }
  place "$dialog"
  xdotool mousemove $((X + WIDTH * 183 / 325)) $((Y + HEIGHT * 42 / 92)) click 1
  keys Return
  wait_for 10 reads 2 || fail "not read twice: $(cat "$work/trace")"
  keys alt+v alt+g Return
  wait_for 10 reads 4 || fail "not read by the letter and Enter: $(cat "$work/trace")"
  keys alt+v Return
  wait_for 10 grep -q 'W 00' "$work/trace" || fail 'away from the button Enter does not set'
}

case_mnemonics() {
  # "&Process" is disabled while the port is closed, so Alt+P is the menu "&Port" and S its item.
  keys alt+p
  keys s
  activate 'RS 232' >/dev/null || fail 'Alt+P S does not open the port settings'
  keys Tab Tab  # to the list and on
  keys alt+s
  keys Down
  keys alt+v
  keys alt+a
  wait_for 10 there_is_no 'RS 232' || fail 'Alt+A does not apply'
  keys F10
  keys f
  keys x
  wait_for 10 gone || fail 'F10 F X does not end the program'
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
  taller() { place; [ "$HEIGHT" -gt $((height + 50)) ] && [ "$WIDTH" -eq "$width" ]; }
  wait_for 5 taller || fail "taller: $(size), was $width $height"
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
  processing=$(activate 'Processing\.\.\.') || fail 'no processing dialog'
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
    activate '.*Save.*' >/dev/null || fail 'no file dialog'
    xdotool type --delay 5 "$work/saved.txt"
    keys Return
    wait_for 10 there_is_no '.*Save.*' || fail 'the file dialog stays'
  done
  printf 'GR  37          // data == 91  // (Status: 0x0000)\r\n%.0s' 1 2 >"$work/twice"
  wait_for 10 cmp -s "$work/twice" "$work/saved.txt" ||
    fail "another text saved: $(cat "$work/saved.txt")"
}

# While a run lasts neither its dialog, which has no close box, nor the main window, which it
# disables, can be closed; with Break both can.
case_close_in_run() {
  start_endless_run
  keys alt+F4
  wmctrl -i -c "$processing"
  wmctrl -i -c "$main"
  wait_for 10 manager_answers 6 || fail 'the window manager does not answer'
  keys alt+b
  wait_for 10 there_is_no 'Processing\.\.\.' || fail 'Break does not end the run'
  window_is_back
  expect_log 'User Break recognised.'  # so nothing had closed the dialog before
  wmctrl -i -c "$main"
  wait_for 10 gone || fail 'the program stays'
  [ "$(cat "$work/wps_start.cfg")" = 0 ] || fail 'the port is not remembered'
}

# leave_others: closes what is open beside the main window; true when that was nothing.
leave_others() {
  local id others
  others=$(wmctrl -l | grep -vF "$title" | cut -d' ' -f1) || return 0
  for id in $others; do wmctrl -i -c "$id"; done
  return 1
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
      sleep 0.1  # the pace of the hand
      leave_others || true
      gone && fail "gone after a double click at $x, $y"
    done
  done
  wait_for 20 leave_others || fail "other windows stay: $(wmctrl -l)"
  keys Escape
  window_is_back
  keys alt+o
  type_line 'gr 37'
  expect_log 'GR  37'
}

# Twice as large, the window does not fit the screen: caption and menu bar do.
case_scaled() {
  keys alt+F4
  wait_for 10 gone || fail 'the program stays'
  QT_SCALE_FACTOR=2 start_program
  wait_for 10 below_the_caption || fail "at $X $Y"
}
below_the_caption() {
  place
  [ "$X" -ge 0 ] && [ "$Y" -ge 10 ]
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
