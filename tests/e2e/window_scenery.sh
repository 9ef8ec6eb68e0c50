#!/usr/bin/env bash
# Scenery added and removed by hand: the map shows what is installed, and the copy becomes what the
# map shows.
. "$(dirname "$0")/lib_window_disc.bash"

copy="$SCRATCH/Copy"
only_disc 1
run_with_discs --accept_eula --dest="$SCRATCH" --name=Copy --sectors=+30-120
want_status 0
only_disc 1
insert_disc 2
insert_disc 3

# to_map: from the menu; the first time with Next's face to be learnt.
to_map() {
  press_extra 1
  wait_step 1
  if [ -z "$OPEN_FACE" ]; then
    wait_still
    OPEN_FACE=$(next_face)
  fi
  wait_next "$OPEN_FACE"
  press_next
  wait_step 3
  look_at_sectors
}

start_display
open_window skyvane-disc-installer
wait_step 0
wait_still

echo "The map shows what is installed, also after it was left"
to_map
learn_sectors
saw_selected +30-120 || fail "the map does not show what is installed"
press_back
wait_step 1
press_next
wait_step 3
wait_selected +30-120

echo "One sector more, one less"
click_sector +40-080
wait_selected +30-120 +40-080
click_sector +30-120
wait_selected +40-080
press_next
wait_step 5
SECTORS='\\+40-080' same_tree "$SOURCE" Macintosh "$copy"

echo "Back to the menu; the map shows the change; no scenery at all"
press_back
wait_step 0
to_map
saw_selected +40-080 || fail "the map does not show the change"
press_none
wait_selected
press_next
wait_step 5
SECTORS=nothing same_tree "$SOURCE" Macintosh "$copy"

echo "The copy is started"
start_skyvane 1
want_no_leftovers
