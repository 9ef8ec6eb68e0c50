#!/usr/bin/env bash
# The demo by hand: a real window, a real pointer and keys, from the first page to the last, with
# what a user may do on the way.
. "$(dirname "$0")/lib_flows.sh"

own_home
speak 1
parent="$HOME/Desktop"
word=$(words_of "${SPEAK:-1}" Demo)
taken="$parent/Skyvane new ${word:-Demo}"  # the name that the page proposes
mine="$taken 2"
mkdir "$taken"
echo "the user's own" >"$taken/note.txt"

# While a file "slow" lies beside it, each stream trickles.
serve_release new "if (-f $SCRATCH/slow) { set \$limit_rate 20k; }"
server_list "Skyvane new" alpha.example beta.example >"$ROOT/serverlist9.txt"
requests=$SCRATCH/nginx-$PORT/access.log
touch "$SCRATCH/slow"

fetched() { grep -c '/updates/.*\.zip HTTP' "$requests"; }
has_fetched() { [ "$(fetched)" -ge "$1" ]; }
mirror_now() { grep '/updates/.*\.zip HTTP' "$requests" | tail -n 1 | sed 's#.*http://\([a-z]*\)\..*#\1#'; }
mirror_is() { [ "$(mirror_now)" = "$1" ]; }

start_display
open_window skyvane-demo-installer $(through_proxy "$PORT")

echo "Welcome: Next is open, Back does nothing"
wait_step 0
shot demo_1_welcome
wait_open
# The desktop finds the menu entry by the window's class, and has an icon for where there is none.
entry=$(sed -n 's/^StartupWMClass=//p' "$BIN/packaging/skyvane-demo-installer/edition.desktop")
[ "$(xprop -id "$WINDOW" WM_CLASS)" = "WM_CLASS(STRING) = \"$entry\", \"$entry\"" ] || fail "no class"
[ "$entry" = example.skyvane.skyvane_demo_installer ] || fail "the entry is for another class"
grep -q . <(xprop -id "$WINDOW" -notype 32c _NET_WM_ICON 2>/dev/null) || fail "no icon"
grep -qxF "Screen           : 1024 by 768, 24 bits" "$SCRATCH/bin/Skyvane Installer Log.txt" || fail "no screen in the log"
learn_faces
press_back
step_is_lit 0 || fail "Back moved off the first page"

echo "Options: a box is ticked, and the close box closes"
open_options
unticked=$(picture_of 121 372 18 18)
click_away 130 378
wait_for "the tick" picture_differs "$unticked" 121 372 18 18
shot demo_2_options
close_options

echo "Licence: Next is grey until the box is ticked, and again when it is not"
! step_is_marked 1 || fail "a step to come is marked"
next_to 1
for step in 0 1; do step_is_marked $step || fail "step $step is not marked"; done
! step_is_marked 2 || fail "a step to come is marked"
wait_grey
press_next
accept_licence
step_is_lit 1 || fail "a grey Next moved on"
click_away 230 103
wait_grey
accept_licence

echo "Back to the welcome, which takes the licence back"
back_to 0
next_to 1
wait_grey
accept_licence
shot demo_3_licence
press_next

echo "Destination: the folder is there already, so Next is grey; another name opens it"
wait_step 3
wait_grey
shot demo_4_folder_taken
click_away 500 204
press_key End
type_text " 2"
wait_open
shot demo_5_destination

echo "Transfer: the mirror is changed under way"
next_to 4
wait_for "files" has_fetched 5
case $(mirror_now) in
  alpha) other=beta radio_y=81 ;;
  beta) other=alpha radio_y=121 ;;
  *) fail "fetched from neither mirror" ;;
esac
click_away 30 "$radio_y"
wait_for "files from mirror $other" mirror_is "$other"
shot demo_6_transfer

echo "Back asks; Continue goes on where it was, and so does whatever closes the question"
close_window() { xdotool key --window "$WINDOW" alt+F4; }
# How far the file is that the page names. The number of files would not do: the small ones may have
# come before the last way is tried.
figures=(240 116 520 16)
for way in press_go_on "press_key Return" "press_key Escape" "click_away 62 395" close_window; do
  back_asks
  shot demo_7_question
  $way
  wait_no_dialog
  wait_step 4
  # Of three changes the first may be a look into the middle of a frame.
  for change in 1 2 3; do
    before=$(picture_of "${figures[@]}")
    wait_for "change $change of the figures after $way" picture_differs "$before" "${figures[@]}"
  done
done

echo "Back asks again; Cancel deletes what was made"
back_asks
[ -n "$(find "$mine" -type f ! -name '*.zip')" ] || fail "nothing was installed before the cancel"
twice=$(grep -o 'GET [^"]*\.zip HTTP' "$requests" | sort | uniq -d)
[ -z "$twice" ] || fail "fetched twice: $twice"
press_give_up
wait_for "the partial copy's end" is_gone "$mine"
wait_step 3
wait_no_dialog
wait_open

echo "The whole install"
rm "$SCRATCH/slow"
next_to 5
shot demo_8_finish
# shellcheck disable=SC2046
want 0 run skyvane-web-updater --check --copy="$mine" $(through_proxy "$PORT")  # the window that stands there keeps nobody out
same_tree "$FIXTURE/sample/new" Linux "$mine"
[ "$(cat "$taken/note.txt")" = "the user's own" ] || fail "the folder that was there was touched"
[ "$(ls "$taken")" = note.txt ] || fail "something was put into the folder that was there"

echo "Quit, at the right"
quit_last_page
grep -qx '_log_actions 1' "$XDG_CONFIG_HOME/skyvane/Skyvane Installer.prf" ||
  fail "the option was not kept"
