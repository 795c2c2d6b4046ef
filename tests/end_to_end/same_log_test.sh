#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# same_log_test.sh BIN_DIR WINDOWS_BIN_DIR: the program for Linux and the one for Windows, which runs
# under Wine, go through the same session: a typed line, a command file, a card read in its
# reader, the log saved. The logs have to be equal byte for byte, and so have the bytes that went
# through the chip's FIFO, which are those to and from the card. scripts/test-windows prepares Wine.
set -euo pipefail
: "${VT63X_WINE_LINE:?}" "${WINEPREFIX:?}"
here=$(cd "$(dirname "$0")" && pwd)
bin=$(realpath "$1")
windows_bin=$(realpath "$2")
case=same_log
title='VT63x Serial RS 232 Test Program'
. "$here/screen.sh"

# session NAME FOLDER COMMAND...: FOLDER is the one that `work` is for the program.
session() {
  local name=$1 folder=$2
  shift 2
  mkdir "$work/$name"
  cd "$work/$name"
  # The first line of a run's log names the file, whose path is not the same.
  { echo CLL; cat "$here/../../examples/tour.wcf"; } >tour.wcf
  "$bin/vt63x-sim" --link "$VT63X_WINE_LINE" --trace "$work/$name.trace" --card 5A3C1E78 \
    --card 04A1B2C3D4E5F6:ostrel-page >/dev/null 2>"$work/err" &
  local simulator=$!
  pids+=($simulator)
  wait_for 10 test -e "$VT63X_WINE_LINE" || fail 'no chip'
  VT63X_COM1=$VT63X_WINE_LINE "$@" >"$work/out" 2>"$work/err" &
  program=$!
  pids+=($program)
  main=$(activate "$title") || fail "$name: no window"
  keys alt+o
  type_line 'gr 37'
  select_file "$folder$name${folder: -1}tour.wcf"
  keys alt+w
  wait_for 20 grep -q 'W 1F EB' "$work/$name.trace" || fail "$name: the command file did not run"
  wait_for 10 there_is_no 'Processing\.\.\.' || fail "$name: the run does not end"
  window_is_back
  type_line 'sav session'
  wait_for 10 test -s "$work/$name/SESSION.txt" || fail "$name: the log was not saved"
  keys alt+o  # "&Open" is disabled now: the reader
  activate 'Ostrel Reader' >/dev/null || fail "$name: no card reader"
  keys alt+t alt+e alt+r
  [ -z "${KEEP_SCREEN:-}" ] || import -window root "$KEEP_SCREEN-$name.png"
  keys alt+x
  wait_for 10 there_is_no 'Ostrel Reader' || fail "$name: the reader stays"
  # The reader has emptied the log.
  type_line 'gr 36'
  type_line 'sav session'
  wait_for 10 grep -q 'GR  36' "$work/$name/SESSION.txt" || fail "$name: the log was not saved again"
  keys alt+f
  keys x
  wait_for 10 there_is_no "$title" || fail "$name: the program stays"
  kill "$simulator" 2>/dev/null || true
  wait "$simulator" 2>/dev/null || true
  rm -f "$VT63X_WINE_LINE"
}

# The accesses to the FIFO's data register, without their times.
fifo() { sed -nE 's/^[0-9]+ ([RW] 09 .*)/\1/p' "$work/$1.trace"; }

start_screen
QT_QPA_PLATFORM=xcb session linux "$work/" "$bin/wps"
session windows "Z:${work//\//\\}\\" wine "$windows_bin/wps.exe"

cmp "$work/linux/SESSION.txt" "$work/windows/SESSION.txt" ||
  fail "the logs differ: $(diff "$work/linux/SESSION.txt" "$work/windows/SESSION.txt")"
grep -q '//< Done' "$work/linux/SESSION.txt" || fail 'the command file did not come to its end'
diff <(fifo linux) <(fifo windows) || fail 'other bytes went to the card'
# A block is 16 bytes, its CRC stays in the chip; 30 is the read command.
[ "$(fifo linux | sed '1,/^W 09 30/d' | grep -c '^R 09')" -ge 16 ] || fail 'the card was not read'
echo "equal: $(wc -c <"$work/linux/SESSION.txt") bytes of log, $(fifo linux | wc -l) bytes to and from the card"
