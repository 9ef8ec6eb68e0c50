#!/usr/bin/env bash
# A repair by hand: from the menu of an owner, over the question about a changed file, a damaged disc
# and a stop, to the start of the copy that is whole again.
. "$(dirname "$0")/lib_window_disc.bash"

install_some
same_tree "$SOURCE" Linux "$copy"
manual=Instructions/Manual.txt
late="Notes for this platform.txt"
rm "$copy/$manual" "$copy/$late"
echo mine >"$copy/Airfoils/NACA 0012.afl"
# All discs in drives of their own: none has to be changed. The first has an archive that is damaged.
damaged flip "disk_0/$RELEASE/All/$manual.zip"
all_discs_of "$BAD"

# to_confirmation: from the menu, over the one copy and the scan.
to_confirmation() {
  press_extra 2
  wait_step 1
  [ -n "$PANEL" ] || learn_faces
  next_to 3
  wait_open
}

speak 5
start_display
open_wizard skyvane-disc-installer
wait_still
shot disc_8_menu
to_confirmation
shot disc_9_repair_confirm

echo "Back out of the scan and on again: it begins anew, and ends well"
slow_scan "$copy/Airfoils/NACA 0027.afl"
back_to 1
wait_open
press_next
for again in 1 2; do
  wait_for "the scan" is_scanning
  back_to 1
  wait_for "the scan's end" is_not_scanning
  wait_open
  [ "$again" = 2 ] || press_next
done
quick_scan
next_to 3
wait_open

echo "Cancel leads back to the confirmation; the copy is as it was"
press_next
wait_question
shot repair_1_changed_file
answer cancel
wait_no_dialog
wait_step 3
[ "$(cat "$copy/Airfoils/NACA 0012.afl")" = mine ] || fail "a cancelled repair has overwritten a file"
[ ! -e "$copy/$manual" ] || fail "a cancelled repair has put a file back"

echo "Overwrite, and stop at the damaged archive: that is the end, with the errors told"
wait_open
press_next
wait_dialog
answer overwrite
wait_error_logged "$TMPDIR/"
wait_dialog
shot repair_error
press_give_up
wait_no_dialog
wait_errors_told
shot repair_errors
[ ! -e "$copy/$manual" ] || fail "something was made of a damaged archive"

echo "Good discs, but the last is out: a stop keeps what is repaired, and the next repair does the rest"
all_discs_of "$IMAGES"
rm -f "$copy/$late"
take_out 3
back_to 0
to_confirmation
press_next
wait_disc_asked
back_asks
shot repair_stop
press_go_on
wait_disc_asked
back_asks
press_give_up
wait_no_dialog
wait_step 3
cmp "$SOURCE/All/$manual" "$copy/$manual" || fail "a stopped repair was rolled back"
[ ! -e "$copy/$late" ] || fail "a file came from nowhere"
wait_open
press_next
wait_disc_asked
insert_disc 3
next_to 5
shot repair_2_finish
same_tree "$SOURCE" Linux "$copy"

echo "From the menu the one copy is started without a choice"
back_to 0
start_skyvane 1
want_no_leftovers
