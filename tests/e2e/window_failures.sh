#!/usr/bin/env bash
# What goes wrong, by hand: the pages and alerts that say so, and the way on from each.
. "$(dirname "$0")/lib_window_disc.bash"
need_root "mounting small volumes"

own_home
unset DBUS_SESSION_BUS_ADDRESS  # folders are chosen in the program's own browser
name="Skyvane new"
master=$SCRATCH/web-master
cp -r "$FIXTURE/master-new" "$master"
release=$master/disk_0/$name
serve "$(web_root "$name" "$master")" "
  location ~ directory\.txt\.zip\$ { }
  location ~ \.zip\$ {
    if (-f $SCRATCH/down) { return 503; }
    if (-f $SCRATCH/slow) { set \$limit_rate 4k; }
  }"
requests=$SCRATCH/nginx-$PORT/access.log
was_refused() { [ "$(grep -c '/updates/.* 503 ' "$requests")" -ge 8 ]; }

browser_colour=f1f4f8  # below the list of the larger dialog
# alert NAME: waits for it, and presses its button.
alert() {
  wait_dialog
  wait_other_colour 400 80 "$browser_colour"
  wait_still
  shot "$1"
  click_away 400 193
}
# at_last X Y: whether the last page is there; presses that place of a dialog in its way. There may
# be one for each stream or file.
at_last() {
  ! step_is_lit 5 || return 0
  ! dialog_is_up || click_away "$1" "$2"
  return 1
}
no_volume() {  # on which the Desktop, the proposed destination, lies
  umount "$HOME/Desktop"
  MOUNTS=()
}

want 0 install_demo Copy
cp -a "$SCRATCH/Copy" "$SCRATCH/Other"
rm -f "$XDG_CONFIG_HOME/skyvane/skyvane_install.txt"
speak 4
start_display

echo "No copy is known: Next leads to the page that finds one, and no farther"
open_wizard skyvane-web-updater $(through_proxy "$PORT")
wait_open
shot failure_1_no_copy
next_to 1
wait_grey
quit_wizard

echo "A folder that is no copy: handed over, and found"
open_wizard skyvane-web-updater -path "$HOME" $(through_proxy "$PORT")
wait_grey
shot failure_1_no_copy_handed_over
press_next
step_is_lit 0 || fail "a grey Next moved on"
quit_wizard
[ -z "$(ls "$HOME/Desktop")" ] && [ "$(ls "$HOME")" = Desktop ] || fail "a home folder was filled"
printf '%s/\n' "$SCRATCH/Copy" "$SCRATCH/Other" >"$XDG_CONFIG_HOME/skyvane/skyvane_install.txt"
open_wizard skyvane-web-updater $(through_proxy "$PORT")
wait_open
learn_faces
next_to 1
wait_grey
click_away 605 353
wait_dialog
wait_still
shot failure_2_browser
click_away 541 87
alert failure_2_no_copy_there
wait_no_dialog
step_is_lit 1 || fail "another page after the alert"
wait_grey
quit_wizard

echo "The same with a copy chosen, which stays chosen"
mkdir "$SCRATCH/fake"
printf '#!/bin/sh\necho "$HOME"\n' >"$SCRATCH/fake/zenity"
chmod +x "$SCRATCH/fake/zenity"
PATH=$SCRATCH/fake:$PATH open_wizard skyvane-web-updater $(through_proxy "$PORT")
next_to 1
pick_copy 1
wait_open
wait_still
marks=$(picture_of 240 370 20 45)
click_away 605 353
alert failure_2_choice_stays
wait_no_dialog
wait_open
wait_still
[ "$(picture_of 240 370 20 45)" = "$marks" ] || fail "the choice was changed"
quit_wizard

echo "The destination is too small, then cannot be written"
open_wizard skyvane-demo-installer $(through_proxy "$PORT")
wait_open
shot failure_3_copy_there
next_to 1
accept_licence
volume "$HOME/Desktop" size=1m
next_to 3
wait_grey
shot failure_3_too_small
no_volume
volume "$HOME/Desktop" ro,size=200m
wait_open
press_next
alert failure_4_no_folder
wait_no_dialog
wait_step 3
no_volume

echo "A mirror that has nothing, then one with a damaged file"
touch "$SCRATCH/down"
next_to 4
wait_for "refusals" was_refused
wait_still
shot failure_5_server_down
complains() { has_ink 230 370 500 40; }
complains || fail "nothing is said of a mirror that has nothing"
# The last file of the release, so that others come before it.
flip "$release/All/Weapons/Gun.wpn.zip"
touch "$SCRATCH/slow"
rm "$SCRATCH/down"
goes_on() { ! complains; }
wait_for "the complaint's end, as soon as the mirror answers" goes_on
[ -z "$(find "$HOME/Desktop/" -name '*.acf' -o -name '*.afl')" ] || fail "the complaint stood until a file was whole"
rm "$SCRATCH/slow"
alert failure_6_damaged_file
wait_for "the last page" at_last 400 193
wait_no_dialog
shot failure_6_finish
quit_last_page

echo "A manifest of a later format"
mkdir "$SCRATCH/made"
sed '2s/900/901/' "$FIXTURE/manifest-new/directory.txt" >"$SCRATCH/made/directory.txt"
rm "$release/directory.txt.zip"
(cd "$SCRATCH/made" && zip -q "$release/directory.txt.zip" directory.txt)
open_wizard skyvane-web-updater -path "$SCRATCH/Copy" $(through_proxy "$PORT")
press_next
alert failure_7_new_format
window_ended 0

echo "Discs: another's, then one with damaged files, which are counted"
rm "$XDG_CONFIG_HOME/skyvane/skyvane_install.txt"
damaged sh -c "printf 'I\n900 version\nDVD\n\nVERSION ../Skyvane 9\n' >disk_0/dvd_version.txt"
insert_disc 1 "$BAD"
open_wizard skyvane-disc-installer
wait_grey
shot failure_8_no_disc_of_ours
take_out 1
damaged sh -c 'find disk_0 -path "*/Instructions/*.zip" -delete'
all_discs_of "$BAD"
wait_open
for step in 1 2 3 5; do
  press_next
  [ "$step" = 5 ] || wait_step "$step"
  [ "$step" != 2 ] || click_away 230 103
  [ "$step" = 5 ] || wait_open
done
wait_dialog
wait_still
shot failure_9_question
wait_for "the last page" at_last 146 228
shot failure_9_finish
quit_last_page

echo "A disc whose manifest cannot be unpacked"
damaged cut_short "disk_0/$RELEASE/directory.txt.zip"
take_out 1
insert_disc 1 "$BAD"
open_window skyvane-disc-installer
wait_shown ".*directory[.]txt.*"  # a window that has drawn nothing yet looks like a dialog
alert failure_11_disc
window_ended 1
