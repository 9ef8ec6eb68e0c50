#!/usr/bin/env bash
# Scenery added and removed by hand: the map shows what is installed, and the copy becomes what the
# map shows; a job is stopped, and meets a damaged disc.
. "$(dirname "$0")/lib_window_disc.bash"

install_some
all_discs_of "$IMAGES"

# to_map: from the menu; the first time with the faces to be learnt.
to_map() {
  press_extra 1
  wait_step 1
  [ -n "$PANEL" ] || learn_faces
  next_to 3
  look_at_sectors
}

# want_scenery PATTERN: the copy holds this, and nothing else of it has changed.
want_scenery() { SECTORS=$1 same_tree "$SOURCE" Linux "$copy"; }

speak 2
start_display
open_wizard skyvane-disc-installer
wait_still

echo "The map shows what is installed, also after it was left"
to_map
learn_sectors
saw_selected +30-120 || fail "the map does not show what is installed"
back_to 1
next_to 3
wait_selected +30-120

echo "One sector more, one less: without the disc, what goes is gone, and the rest waits"
click_sector +40-080
wait_selected +30-120 +40-080
click_sector +30-120
wait_selected +40-080
shot scenery_1_map
take_out 1
press_next
wait_disc_asked
shot scenery_disc
back_asks
shot scenery_stop
press_go_on
wait_disc_asked
back_asks
press_give_up
wait_no_dialog
wait_step 3
wait_selected
[ -z "$(find "$copy/Global Scenery" -type d -empty 2>/dev/null)" ] || fail "folders for what never came"
want_scenery nothing

echo "Again with the disc in the end: the stopped job left nothing in its way"
click_sector +40-080
wait_selected +40-080
press_next
wait_disc_asked
back_asks
press_go_on
wait_disc_asked
insert_disc 1
next_to 5
want_scenery '\\+40-080'
shot scenery_2_finish

echo "A disc with a damaged tile and a missing one: told, gone on, told again at the end"
tiles="disk_0/$RELEASE/All/Global Scenery/-global terrain-/Earth nav data/+50+000"
damage() {
  flip "$tiles/+51+000.dsf.7z"
  rm "$tiles/+59+000.dsf.7z"
}
damaged damage
all_discs_of "$BAD"
back_to 0
to_map
saw_selected +40-080 || fail "the map does not show the change"
click_sector +50+000
press_next
wait_dialog
shot scenery_error
go_on_over_errors
wait_errors_told
shot scenery_errors
wait_error_logged "$TMPDIR/"
wait_error_logged "$DISCS/1/$RELEASE/All/Global Scenery/-global terrain-/Earth nav data/+50+000/+59+000.dsf.7z"

echo "From a good disc the same choice brings what was missed"
all_discs_of "$IMAGES"
back_to 0
to_map
saw_selected +40-080 +50+000 || fail "the map does not show what was installed of a sector"
next_to 5
want_scenery '\\+40-080|\\+50\\+000'

echo "No scenery at all"
back_to 0
to_map
press_none
wait_selected
next_to 5
shot scenery_3_removed
want_scenery nothing

echo "The copy is started"
start_skyvane 1
want_no_leftovers
