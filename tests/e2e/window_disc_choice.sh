#!/usr/bin/env bash
# The install from three discs by hand: sectors are painted on the map, discs are changed, a wrong
# one is put in, the install is cancelled and done again.
. "$(dirname "$0")/lib_window_disc.bash"

own_home
speak 3
copy="$HOME/Desktop/$RELEASE"

start_display

echo "Welcome: Next opens when the disc is put in"
open_wizard skyvane-disc-installer
wait_grey
shot disc_0_no_disc
insert_disc 1
learn_faces
shot disc_1_welcome

echo "Destination, licence"
next_to 1
wait_open
shot disc_2_destination
next_to 2
wait_grey
click_away 230 103
wait_open
shot disc_3_licence
press_next

echo "Map: all at first, with the figures of all"
wait_step 3
look_at_sectors
needed_first=$(needed)
learn_sectors
saw_selected "${!SECTOR[@]}" || fail "not all sectors are selected at first"
[ "$needed_first" = "$NEEDED_ALL" ] || fail "the figures at first are not those of all sectors"

echo "A drag paints what the band touches, and the figures follow under way"
# Each drag begins and ends a cell beside the sectors that are looked at, where neither the band's
# lines nor the pointer are in the way.
move_to $(cell_xy 5 11)
xdotool mousedown 1
move_to $(cell_xy 19 15)
# The picture in which the last sector turns has the new figures as well. One look more is allowed,
# for a look that falls into the middle of a frame.
turned=
display_file=$FRAME_FILE
for ((look = 0; look < 2000; ++look)); do
  cp "$display_file" "$SCRATCH/frame"
  FRAME_FILE=$SCRATCH/frame
  if sector_differs +50+000 "${DARK[+50+000]}"; then
    turned=$((turned + 1))
    if needs_other "$NEEDED_NONE" || [ "$turned" = 2 ]; then break; fi
  fi
done
[ -n "$turned" ] || fail "the band paints nothing"
needs_other "$NEEDED_NONE" || fail "the figures come later than the sectors"
FRAME_FILE=$display_file
wait_selected +30-120 +40-080 +50+000
shot disc_4_map
xdotool mouseup 1
xdotool mousemove $((SCREEN_DX - 1)) $((SCREEN_DY - 1))

echo "A drag from a selected sector takes away; one from outside does as the last one did"
# drag FROM-X FROM-Y TO-X TO-Y SECTOR...: these are selected before the button is let go.
drag() {
  move_to "$1" "$2"
  xdotool mousedown 1
  move_to "$3" "$4"
  shift 4
  wait_selected "$@"
  xdotool mouseup 1
  xdotool mousemove $((SCREEN_DX - 1)) $((SCREEN_DY - 1))
}
drag $(cell_xy 9 12) $(cell_xy 19 15) +30-120
drag 238 311 $(cell_xy 7 13)
wait_for "the figures without scenery" needs "$NEEDED_NONE"
click_sector +30-120
wait_selected +30-120
click_sector +40-080
wait_selected +30-120 +40-080

echo "Install: the next disc is asked for; a wrong one is ejected again"
press_next
change_disc 1 3
wait_for "the end of the wrong disc" is_out 3
wait_for "the page that asks for a disc" no_step_is_lit
shot disc_5_change
grep -qxF "$copy/" "$XDG_CONFIG_HOME"/*/skyvane_install.txt || fail "not registered"

echo "Back asks; Continue leads to the same page, Cancel deletes the partial copy"
back_asks
shot choice_1_question
press_go_on
wait_disc_asked
[ -n "$(find "$copy" -type f)" ] || fail "nothing was installed before the cancel"
back_asks
press_give_up
wait_for "the partial copy's end" is_gone "$copy"
wait_no_dialog
wait_step 3
wait_selected +30-120 +40-080
[ -z "$(ls -A "$HOME/Desktop")" ] || fail "left on the desktop: $(ls -A "$HOME/Desktop")"

echo "Once more, from the first disc to the last"
press_next
change_disc 2 1
change_disc 1 2
change_disc 2 3
wait_step 5
shot disc_7_finish
SECTORS='\\+30-120|\\+40-080' same_tree "$SOURCE" Linux "$copy"

echo "The new copy is started"
start_skyvane 1
want_no_leftovers
