#!/usr/bin/env bash
# Each flow by keys alone, from the first page to the last: the demo is installed, a copy is updated,
# and the discs are installed with sectors that are chosen on the map. The pointer never comes near.
. "$(dirname "$0")/lib_window_disc.bash"

move_to() { fail "a mouse is used"; }
click_away() { fail "a mouse is used"; }
press_next() { press_key Return; }
press_back() { press_key Escape; }
accept_licence() {
  tab 1
  press_key space
  wait_open
}
tab() { press_key $(yes Tab | head -n "$1"); }

own_home
same_copies() { diff -r --no-dereference "$1" "$2" >"$OUT" || fail "$2 is not what $1 is"; }

serve_release old
want 0 install_demo Old
start_display

echo "The demo: a page by Return, back by Escape, a box by Space; at last the display answers with an error"
UNDER=(env LD_PRELOAD="$BIN/tests/libfaults.so" FAULT_DISPLAY=1 ASAN_OPTIONS="$ASAN_OPTIONS:verify_asan_link_order=0")
open_wizard skyvane-demo-installer $(through_proxy "$PORT")
learn_faces

echo "Options: an open list takes the keys, and the field behind it gets none of them"
options() { picture_of 100 110 600 380; }
shows_french() { picture_differs "$title" 300 472 200 16; }
options_are() { [ "$(options)" = "$1" ]; }
tab 2
press_key space
wait_dialog
wait_still
in_english=$(options) title=$(picture_of 300 472 200 16)
for way in Down Up; do
  press_key shift+Tab
  before=$(options)
  press_key space
  wait_for "the open list" picture_differs "$before" 100 110 600 380
  type_text "xyz7"
  press_key $way Return
  # The whole dialog is in the other language then, with the focus where it began.
  if [ $way = Down ]; then wait_for "French" shows_french; fi
done
wait_for "the dialog as it was" options_are "$in_english"
press_key Escape
wait_no_dialog

press_back
next_to 1
wait_grey
press_next
accept_licence
press_key space
wait_grey
step_is_lit 1 || fail "a grey Next moved on"
back_to 0
next_to 1
accept_licence
shot key_1_licence
next_to 3
next_to 5
shot key_3_finish
demo=$(echo "$HOME/Desktop"/*)
same_copies "$SCRATCH/Old" "$demo"
press_next
window_ended 0
UNDER=()

echo "The update: the second of two copies, by Tab and Space"
cp -a "$demo" "$SCRATCH/Two"
printf '%s/\n' "$SCRATCH/Old" "$SCRATCH/Two" >"$XDG_CONFIG_HOME/skyvane/skyvane_install.txt"
serve_release new
want 0 install_demo New
cp -a "$demo" "$SCRATCH/Old before"
open_wizard skyvane-web-updater $(through_proxy "$PORT")
next_to 1
tab 2
press_key space
wait_open
shot key_5_copies
next_to 3
next_to 5
same_copies "$SCRATCH/New" "$SCRATCH/Two"
same_copies "$SCRATCH/Old before" "$SCRATCH/Old"
press_next
window_ended 0

echo "The discs: the map's frame goes by arrows, Space turns a cell, Shift paints"
rm -r "$demo" "$XDG_CONFIG_HOME/skyvane/skyvane_install.txt"
copy="$HOME/Desktop/$RELEASE"
insert_disc 1
open_window skyvane-disc-installer
walk_to_map
wait_still
needed_all=$(needed)
tab 3  # over the map and All to None
press_key space
wait_for "less to be needed" needs_other "$needed_all"
needed_none=$(needed)
press_key shift+Tab shift+Tab Up space
wait_for "a sector's figures" needs_other "$needed_none"
shot key_6_map
press_key space
wait_for "the figures without it" needs "$needed_none"
press_key Left Left Left Left Left Left Left Left Down shift+Left shift+Left shift+Left shift+Left shift+Down
wait_for "the rectangle's figures" needs_other "$needed_none"
shot key_7_rectangle
press_next
change_disc 1 2
change_disc 2 3
wait_step 5
SECTORS='\\+30-120|\\+40-080' same_tree "$SOURCE" Linux "$copy"
press_next
window_ended 0
