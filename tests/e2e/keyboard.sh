#!/usr/bin/env bash
# Each flow by keys alone, from the first page to the last: the demo is installed, a copy is updated,
# and the discs are installed with sectors that are chosen on the map. The pointer never comes near.
. "$(dirname "$0")/lib_window_disc.bash"

move_to() { fail "a mouse is used"; }
click_away() { fail "a mouse is used"; }
press_next() { press_key Return; }
press_back() { press_key Escape; }
tab() { press_key $(yes Tab | head -n "$1"); }

export HOME=$SCRATCH/home
mkdir -p "$HOME/Desktop"
old_root=$(web_root "Skyvane old" "$FIXTURE/master-old")
new_root=$(web_root "Skyvane new" "$FIXTURE/master-new")

# installed NAME: what a run without a display installs from the present server.
installed() {
  run skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH" --name="$1" \
    $(through_proxy "$PORT")
  want_status 0
}
same_copies() { diff -r --no-dereference "$1" "$2" >"$OUT" || fail "$2 is not what $1 is"; }

serve "$old_root"
installed Old
start_display

echo "The demo: a page by Return, back by Escape, a box by Space"
open_window skyvane-demo-installer $(through_proxy "$PORT")
wait_step 0
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
press_next
wait_step 1
wait_grey
press_next
tab 1
press_key space
wait_open
press_key space
wait_grey
step_is_lit 1 || fail "a grey Next moved on"
press_key Escape
wait_step 0
press_next
wait_step 1
tab 1
press_key space
wait_open
shot key_1_licence
press_next
wait_step 3
wait_open
press_next
wait_step 5
shot key_3_finish
demo=$(echo "$HOME/Desktop"/*)
same_copies "$SCRATCH/Old" "$demo"
press_next
window_ended 0

echo "The update: the second of two copies, by Tab and Space"
cp -a "$demo" "$SCRATCH/Two"
printf '%s/\n' "$SCRATCH/Old" "$SCRATCH/Two" >"$XDG_CONFIG_HOME/skyvane/skyvane_install.txt"
serve "$new_root"
installed New
cp -a "$demo" "$SCRATCH/Old before"
open_window skyvane-web-updater $(through_proxy "$PORT")
wait_step 0
press_next
wait_step 1
tab 2
press_key space
wait_open
shot key_5_copies
press_next
wait_step 3
wait_open
press_next
wait_step 5
same_copies "$SCRATCH/New" "$SCRATCH/Two"
same_copies "$SCRATCH/Old before" "$SCRATCH/Old"
press_next
window_ended 0

echo "The discs: the map's frame goes by arrows, Space turns a cell, Shift paints"
rm -r "$demo" "$XDG_CONFIG_HOME/skyvane/skyvane_install.txt"
copy="$HOME/Desktop/$RELEASE"
insert_disc 1
open_window skyvane-disc-installer
wait_step 0
wait_open
press_next
wait_step 1
wait_open
press_next
wait_step 2
tab 1
press_key space
wait_open
press_next
wait_step 3
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
