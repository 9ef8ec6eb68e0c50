#!/usr/bin/env bash
# A repair by hand: from the menu of an owner, over the question about a changed file, to the start
# of the copy that is whole again.
. "$(dirname "$0")/lib_window_disc.bash"

copy="$SCRATCH/Copy"
only_disc 1
run_with_discs --accept_eula --dest="$SCRATCH" --name=Copy --sectors=+30-120
want_status 0
same() { SECTORS='\\+30-120' same_tree "$SOURCE" Macintosh "$copy"; }
same
rm "$copy/Instructions/Manual.txt"
echo mine >"$copy/Airfoils/NACA 0012.afl"
# All discs in drives of their own: none has to be changed.
only_disc 1
insert_disc 2
insert_disc 3

start_display
open_window skyvane-disc-installer
wait_step 0
wait_still
PANEL=$(colour_at "${DIALOG_SPOT[@]}")

echo "The menu, the one copy, the scan, the confirmation"
press_extra 2
wait_step 1
wait_still
OPEN_FACE=$(next_face)
press_next
wait_step 3
wait_next "$OPEN_FACE"

echo "Cancel leads back to the confirmation; the copy is as it was"
press_next
wait_question
answer cancel
wait_no_dialog
wait_step 3
[ "$(cat "$copy/Airfoils/NACA 0012.afl")" = mine ] || fail "a cancelled repair has overwritten a file"
[ ! -e "$copy/Instructions/Manual.txt" ] || fail "a cancelled repair has put a file back"

echo "Overwrite: the copy is whole, and starts"
wait_next "$OPEN_FACE"
press_next
wait_dialog
answer overwrite
wait_step 5
same
start_skyvane 1
want_no_leftovers
