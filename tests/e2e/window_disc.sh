#!/usr/bin/env bash
# The discs by hand: scenery is painted on the map, discs are changed, and the copy is repaired.
. "$(dirname "$0")/disc_lib.bash"
. "$(dirname "$0")/lib_window.sh"

export HOME=$SCRATCH/home
speak 2
mkdir -p "$HOME/Desktop"
copy="$HOME/Desktop/$RELEASE"

# While the program asks for a disc, no step of the list is lit and Next is open.
disc_is_asked() {
  local step
  next_is_open || return 1
  for step in 0 1 2 3 4 5; do ! step_is_lit "$step" || return 1; done
}
lit_or_asked() { step_is_lit "$1" || disc_is_asked; }

# wait_step_with_discs N: until step N is lit; puts in the next disc whenever one is asked for.
wait_step_with_discs() {
  local number question=(230 432 300 16) text
  for number in 2 3 none; do
    wait_for "step $1 or the question for a disc" lit_or_asked "$1"
    step_is_lit "$1" && return
    [ "$number" != none ] || fail "a disc too many is asked for"
    shot "disc_5_change_to_$number"
    # The question for the one after may follow at once: it has another number.
    text=$(picture_of "${question[@]}")
    only_disc "$number"
    press_next
    wait_for "disc $number to be taken" picture_differs "$text" "${question[@]}"
  done
}

start_display
open_window skyvane-disc-installer
echo "Welcome: without a disc there is no Next"
wait_step 0
wait_grey
shot disc_0_no_disc
only_disc 1
wait_open
shot disc_1_welcome
press_next
wait_step 1
wait_open
shot disc_2_destination
press_next
wait_step 2
click_away 230 103
wait_open
shot disc_3_licence
press_next

echo "The map: none, then all; a drag with the pointer takes away"
wait_step 3
map=(248 150 504 252)
first=$(picture_of "${map[@]}")
click_away 690 131
wait_for "no sector" picture_differs "$first" "${map[@]}"
none=$(picture_of "${map[@]}")
click_away 530 131
wait_for "all sectors" picture_differs "$none" "${map[@]}"
all=$(picture_of "${map[@]}")
move_to 300 340
xdotool mousedown 1
move_to 340 320
move_to 420 200
wait_for "the drag's band" picture_differs "$all" "${map[@]}"
shot disc_4_map
xdotool mouseup 1
click_away 530 131
picture_is() { [ "$(picture_of "${map[@]}")" = "$1" ]; }
wait_for "all sectors again" picture_is "$all"
press_next

echo "The install, with its discs"
wait_step_with_discs 5
shot disc_7_finish
same_tree "$SOURCE" Macintosh "$copy"

echo "Back to the menu, and a repair"
rm "$copy/Instructions/Manual.txt"
only_disc 1
press_back
wait_step 0
shot disc_8_menu
click_away 500 300
wait_step 1
wait_open
shot disc_9_repair_copy
press_next
wait_step 3
wait_open
shot disc_9_repair_confirm
press_next
wait_step_with_discs 5
shot disc_9_repaired
press_last_quit
window_ended 0
same_tree "$SOURCE" Macintosh "$copy"
want_no_leftovers
