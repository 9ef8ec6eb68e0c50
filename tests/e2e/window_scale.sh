#!/usr/bin/env bash
# The window at twice its size, and at a size and shape that the user gives it: the picture keeps its
# shape, and the pointer finds what it is on.
SCALE=1 # the sizes here are pixels
. "$(dirname "$0")/lib_window.sh"
own_home
speak 0
SCREEN_DX=1700 SCREEN_DY=1300 WINDOW_DY=1200

serve_release new

window_size() { xwininfo -id "$WINDOW" | sed -n 's/.*Width: *//p; s/.*Height: *//p' | paste -sd x; }
has_size() { [ "$(window_size)" = "$1" ]; }
# lit N SCALE FOOT: whether step N is lit, with the picture so many times as large, FOOT pixels up.
lit() {
  area $((30 * $2 / 2)) $((($3 * 2 + (480 - 20 * $1 - 2) * $2) / 2)) $((100 * $2 / 2)) $((10 * $2 / 2)) | is_blue
}

start_display
echo "Twice as large by the command line"
open_window skyvane-demo-installer --scale=2 $(through_proxy "$PORT")
wait_for "1600 by 1200 pixels" has_size 1600x1200
wait_for "the first page" lit 0 4 0
[ -z "${SHOTS:-}" ] || convert "xwd:$FRAME_FILE" "png24:$SHOTS/scale_2.png"
click_away $((720 * 2)) $((23 * 2))
wait_for "Next to lead on" lit 1 4 0

echo "A higher window: bars above and below, and nothing to press there"
xdotool windowsize "$WINDOW" 1200 1100
WINDOW_DY=1100
wait_for "the new size" has_size 1200x1100
wait_for "the page, at one and a half" lit 1 3 100
wait_for "a bar below" shows 600 50 000000
wait_for "a bar above" shows 600 1050 000000
[ -z "${SHOTS:-}" ] || convert "xwd:$FRAME_FILE" "png24:$SHOTS/scale_bars.png"
click_away 906 34
click_away $((604 * 3 / 2)) $((100 + 23 * 3 / 2))
wait_for "Back to lead to the first page, so a press on the bar to have done nothing" lit 0 3 100
kill "$WINDOW_PID"
want_all_in_place

echo "By the desktop's own setting"
xrdb_line='Xft.dpi:	192'
wait_for "the program's end" has_ended "$WINDOW_PID"
WINDOW_PID=
xprop -root -f RESOURCE_MANAGER 8s -set RESOURCE_MANAGER "$xrdb_line"
open_window skyvane-demo-installer $(through_proxy "$PORT")
wait_for "1600 by 1200 pixels" has_size 1600x1200
kill "$WINDOW_PID"
