#!/usr/bin/env bash
# What goes wrong, by hand: the pages and alerts that say so, and the way on from each.
. "$(dirname "$0")/lib_flows.sh"

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
  wait_other_colour 400 80 "$browser_colour"
  wait_dialog
  wait_still
  shot "$1"
  click_away 400 193
}
# Whether the last page is there; presses the button of an alert in its way. There may be one for each
# stream or file.
at_last() {
  ! step_is_lit 5 || return 0
  ! dialog_is_up || click_away 400 193
  return 1
}

want 0 install_demo Copy
cp -a "$SCRATCH/Copy" "$SCRATCH/Other"
speak 4
start_display

echo "A folder that is no copy, found in the program's own browser, with a copy chosen, which stays chosen"
printf '%s/\n' "$SCRATCH/Copy" "$SCRATCH/Other" >"$XDG_CONFIG_HOME/skyvane/skyvane_install.txt"
open_wizard skyvane-web-updater $(through_proxy "$PORT")
wait_open
learn_faces
next_to 1
wait_grey
pick_copy 1
wait_open
wait_still
marks=$(picture_of 240 370 20 45)
click_away 605 353
wait_dialog
wait_still
shot failure_2_browser
before=$(picture_of 140 420 400 16)
click_away 247 377
wait_for "the home folder" picture_differs "$before" 140 420 400 16
click_away 541 87
alert failure_2_choice_stays
wait_no_dialog
step_is_lit 1 || fail "another page after the alert"
wait_open
choice_stays() { [ "$(picture_of 240 370 20 45)" = "$marks" ]; }
wait_for "the choice of before" choice_stays

echo "Found inside a copy that is on no list: the copy is put on it, and chosen"
dot=$(colour_at 250 377) third=$HOME/Third
cp -a "$SCRATCH/Copy" "$third"
click_away 605 353
wait_dialog
click_away 247 377
wait_shown "$HOME/"
move_to 200 326
xdotool click --repeat 2 --delay 50 1
wait_shown "$third/"
click_away 200 340  # its first folder
click_away 541 87
wait_no_dialog
wait_for "the third copy's mark" shows 250 352 "$dot"
wait_open
grep -qxF "$third/" "$XDG_CONFIG_HOME/skyvane/skyvane_install.txt" || fail "not put on the list"
quit_wizard

echo "A mirror that has nothing, then one with a damaged file"
open_wizard skyvane-demo-installer $(through_proxy "$PORT")
walk_to_place
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
wait_for "the last page" at_last
wait_no_dialog
shot failure_6_finish
quit_last_page
