#!/usr/bin/env bash
# The update by hand, in Spanish, which is chosen in Options: one of two copies is chosen, and the
# file that its owner has changed is kept.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/lib_window.sh"

export HOME=$SCRATCH/home
mkdir -p "$HOME"
one="$HOME/Skyvane 9"
two="$HOME/Skyvane 9 at work"
own="Aircraft/General Aviation/Heron 172/Heron 172.acf"  # which the new release changes

echo "Two copies of the old release"
serve "$(web_root "Skyvane old" "$FIXTURE/master-old")"
run skyvane-demo-installer --unattended --accept_eula --dest="$HOME" --name="Skyvane 9" \
  $(through_proxy "$PORT")
want_status 0
cp -a "$one" "$two"
echo "a line of the owner's" >>"$two/$own"
cp "$two/$own" "$SCRATCH/own.txt"
printf '%s/\n' "$one" "$two" >"$XDG_CONFIG_HOME/skyvane/skyvane_install.txt"

serve "$(web_root "Skyvane new" "$FIXTURE/master-new")" \
  "if (-f $SCRATCH/slow) { set \$limit_rate 300k; }"
requests=$SCRATCH/nginx-$PORT/access.log
touch "$SCRATCH/slow"
has_fetched() { [ "$(grep -c '/updates/.*\.zip HTTP' "$requests")" -ge "$1" ]; }

start_display
echo "Options: the language is chosen, and all changes at once; it is kept; Quit, at the left, ends"
language=${SPEAK:-4}
steps=(30 370 170 120) title=(300 472 200 16)
open_window skyvane-web-updater
wait_step 0
wait_open
panel=$(colour_at 150 300)
english=$(picture_of "${steps[@]}")
press_options
wait_for "the options" shows_other 150 300 "$panel"
english_title=$(picture_of "${title[@]}") closed=$(picture_of 310 240 60 90)
click 330 341
wait_for "the list of languages" picture_differs "$closed" 310 240 60 90
shot web_0_languages
click_away 330 $((324 - 14 * language))
[ "$language" = 0 ] || wait_for "other words" picture_differs "$english_title" "${title[@]}"
shot web_0_options
click_away 116 480
wait_for "the page behind the options" shows 150 300 "$panel"
[ "$language" = 0 ] || wait_for "other words" picture_differs "$english" "${steps[@]}"
press_quit
window_ended 0
grep -qx "_lang $language" "$XDG_CONFIG_HOME/skyvane/Skyvane Installer.prf" || fail "not kept"

open_window skyvane-web-updater $(through_proxy "$PORT")

echo "Welcome, and the choice of a copy"
wait_step 0
wait_open
[ "$language" = 0 ] || picture_differs "$english" "${steps[@]}" || fail "English again"
shot web_1_welcome
press_next
wait_step 1
wait_grey
click_away 250 378
wait_open
shot web_2_copy
press_next

echo "What is to be fetched"
wait_step 3
shot web_3_sizes
press_next

echo "The changed file is asked for, and kept"
wait_for "the question" shows_other 150 300 "$panel"
shot web_4_changed_file
click_away 146 255
wait_for "the page behind the question" shows 150 300 "$panel"
wait_step 4
wait_for "files" has_fetched 3
shot web_5_transfer
rm "$SCRATCH/slow"
wait_step 5
shot web_6_finish
press_last_quit
window_ended 0

cmp "$SCRATCH/own.txt" "$two/$own" || fail "the changed file was not kept"
cp -p "$FIXTURE/sample/new/All/$own" "$two/$own"
same_tree "$FIXTURE/sample/new" Macintosh "$two"
same_tree "$FIXTURE/sample/old" Macintosh "$one"
