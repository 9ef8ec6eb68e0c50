#!/usr/bin/env bash
# The web update by hand, in Spanish, which is chosen in Options: one copy known and several, every
# answer to the question about a modified file, a way back out of the transfer, and a copy that needs
# nothing.
. "$(dirname "$0")/lib_flows.sh"
. "$(dirname "$0")/lib_tree.bash"

serve_release old
# While a file of that name lies in the scratch folder, the manifest or the streams trickle.
serve_new() {
  serve_release new "
    location ~ directory\.txt\.zip\$ { if (-f $SCRATCH/slow-manifest) { set \$limit_rate 1; } }
    location / { if (-f $SCRATCH/slow) { set \$limit_rate 20k; } }"
}

one=$SCRATCH/One two=$SCRATCH/Two
for copy in "$one" "$two"; do
  want 0 install_demo "$(basename "$copy")"
done
registry=$XDG_CONFIG_HOME/skyvane/skyvane_install.txt  # the disc installer writes it
printf '%s/\n' "$one" "$two" >"$registry"
serve_new
requests=$SCRATCH/nginx-$PORT/access.log

fetched() { grep -c '/updates/.*[^t]\.zip HTTP' "$requests" || true; }
has_fetched() { [ "$(fetched)" -ge "$1" ]; }
no_streams() { [ "$(streams)" = 0 ]; }
asks_for_manifest() { [ "$(streams)" -gt 0 ]; }
streams() { awk -v port="$(printf ':%04X' "$PORT")" '$3 ~ port "$" && $4 == "01"' /proc/net/tcp | wc -l; }

start_display
echo "Options: the language is chosen, and all changes at once; it is kept; Quit, at the left, ends"
language=${SPEAK:-4}
steps=(30 370 170 120) title=(300 472 200 16)
open_wizard skyvane-web-updater
learn_faces
english=$(picture_of "${steps[@]}")
open_options
english_title=$(picture_of "${title[@]}") closed=$(picture_of 310 240 60 90)
click 330 341
wait_for "the list of languages" picture_differs "$closed" 310 240 60 90
shot web_0_languages
click_away 330 $((324 - 14 * language))
[ "$language" = 0 ] || wait_for "other words" picture_differs "$english_title" "${title[@]}"
shot web_0_options
close_options
[ "$language" = 0 ] || wait_for "other words" picture_differs "$english" "${steps[@]}"
quit_wizard
grep -qx "_lang $language" "$XDG_CONFIG_HOME/skyvane/Skyvane Installer.prf" || fail "not kept"

echo "Two copies: Next opens when one is chosen from the list"
open_wizard skyvane-web-updater $(through_proxy "$PORT")
learn_faces
[ "$language" = 0 ] || picture_differs "$english" "${steps[@]}" || fail "English again"
shot web_1_welcome
next_to 1
wait_grey
pick_copy 0
wait_open
radios=$(picture_of 240 370 20 45)
pick_copy 1
wait_for "the other copy's mark" picture_differs "$radios" 240 370 20 45
shot web_2_copy

echo "Back to the welcome drops the choice"
back_to 0
next_to 1
wait_grey
pick_copy 1
wait_open
press_next

echo "Search, disk space, transfer, finish"
wait_step 3
shot web_3_sizes
next_to 5
shot web_6_finish
same_tree "$FIXTURE/sample/new" Linux "$two"
same_tree "$FIXTURE/sample/old" Linux "$one"

echo "A copy without its program: the start button says so, and the page stays"
mv "$two/Skyvane.app" "$SCRATCH/Skyvane.app"
press_extra 0
wait_dialog
wait_still
shot web_6_nothing_to_start
click_away 400 193
wait_no_dialog
step_is_lit 5 || fail "the page has gone"
mv "$SCRATCH/Skyvane.app" "$two/"
start_skyvane 1

echo "A copy that is current, handed over by a relative path, goes to the last page at once"
fetched_before=$(fetched)
open_wizard skyvane-web-updater -path "$(realpath --relative-to=. "$two")" $(through_proxy "$PORT")
next_to 4
shot web_7_current
[ "$(fetched)" = "$fetched_before" ] || fail "a file was fetched for a copy that is current"
quit_last_page

echo "Options: the user wants one stream only"
echo "$one/" >"$registry"
open_wizard skyvane-web-updater $(through_proxy "$PORT")
open_options
unticked=$(picture_of 121 257 18 18)
click_away 130 263
wait_for "the tick" picture_differs "$unticked" 121 257 18 18
shot web_9_options
close_options

# The user's changes, a row each: what is changed, and the answer to the question.
# In the order in which the program asks, which is that of the manifest.
questions=(
  "Aircraft/General Aviation/Heron 172/Heron 172.acf|keep"
  "Airfoils/NACA 0012.afl|overwrite-folder"
  "Instructions/Pilot's Guide.txt|overwrite"
  "Resources/bitmaps/world/sheet 0.png|keep-folder"
  "Weapons/Flare.wpn|keep"
)
unasked=("Airfoils/NACA 0020.afl" "Resources/bitmaps/world/sheet 5.png")
kept=("Aircraft/General Aviation/Heron 172/Heron 172.acf" "Weapons/Flare.wpn"
  "Resources/bitmaps/world/sheet 0.png" "Resources/bitmaps/world/sheet 5.png")
own=("Output/situations/My flight.sit" "Aircraft/My own/My own.acf")
for file in "${questions[@]%|*}" "${unasked[@]}" "${own[@]}"; do
  mkdir -p "$(dirname "$one/$file")"
  echo "my $file" >"$one/$file"
done
prints "$one" >"$SCRATCH/one.txt"

echo "Cancel on the third question: the page before is back, and nothing was touched"
touch "$SCRATCH/slow"
next_to 2
wait_open
press_next
for reply in overwrite keep cancel; do
  wait_question
  shot web_4_changed_file
  answer "$reply"
done
wait_no_dialog
wait_step 2
wait_open
prints "$one" | diff -q "$SCRATCH/one.txt" - || fail "a cancelled update has touched the copy"

echo "Every answer; one stream, as the options say"
before=$(fetched)
press_next
for row in "${questions[@]}"; do
  wait_question
  answer "${row##*|}"
done
wait_no_dialog
wait_step 3
for some in 1 2 3; do
  wait_for "files" has_fetched $((before + some))
  [ "$(streams)" -le 1 ] || fail "$(streams) streams, and the user wants one"
done

shot web_5_transfer
echo "Back during the transfer asks nothing, and throws away what is under way"
back_to 2
dialog_is_gone || fail "Back in the transfer asks"
wait_for "the end of the stream" no_streams
[ -z "$(find "$one" -name '*.zip')" ] || fail "a partial download was left in the copy"

echo "Next goes on with what remains, and with the answers that were given"
rm "$SCRATCH/slow"
next_to 4
for file in "${kept[@]}" "${own[@]}"; do
  [ "$(cat "$one/$file")" = "my $file" ] || fail "the user's $file was touched"
done
# But for what is the user's, the copy is the release.
for file in "${kept[@]}"; do
  from=$(shipped "$FIXTURE/sample/new" Linux | awk -F'\t' -v rel="$file" '$1 == rel { print $2 }')
  rm "$one/$file"
  [ -z "$from" ] || cp -p "$FIXTURE/sample/new/$from" "$one/$file"
done
rm "${own[@]/#/"$one/"}"
rmdir "$one/Aircraft/My own"
same_tree "$FIXTURE/sample/new" Linux "$one"

echo "Quit, at the right; the log holds the questions in the order in which they were put"
quit_last_page
asked_about | sed "s#^$one/##" >"$SCRATCH/asked.txt"
{
  printf '%s\n' "${questions[@]%|*}" | head -n 2
  echo "Airfoils/NACA 0020.afl"  # the one beside it was kept by itself
  printf '%s\n' "${questions[@]%|*}"
} | diff - "$SCRATCH/asked.txt" || fail "not the questions that belong here"
grep -qx '_stream_count 1' "$XDG_CONFIG_HOME/skyvane/Skyvane Installer.prf" ||
  fail "the option was not kept"

echo "The box for the beta counts also when it is ticked after the list was read"
ln -s "$FIXTURE/master-newer/disk_0/Skyvane newer" "$ROOT/updates/Skyvane newer"
sed -i 's/^FINAL Skyvane new$/&\nBETA Skyvane newer/' "$ROOT/serverlist9.txt"
touch "$SCRATCH/slow-manifest"
open_wizard skyvane-web-updater $(through_proxy "$PORT")
on_list() { no_step_is_lit && "$1"; }
next_to 1
wait_for "the manifest's request" asks_for_manifest
shot web_8_search
press_back
# The copy that the first page has chosen is still chosen.
wait_for "the list" on_list next_is_open
back_to 0
open_options
unticked=$(picture_of 121 297 18 18)
click_away 130 303
wait_for "the tick" picture_differs "$unticked" 121 297 18 18
close_options
rm "$SCRATCH/slow-manifest"
press_next
# The first page leads by turns to the search and to the list.
wait_for "the list, with no copy chosen" on_list next_is_grey
pick_copy 0
next_to 2
shot web_10_beta
next_to 4
same_tree "$FIXTURE/sample/newer" Linux "$one"
quit_last_page

echo "Back out of the scan and on again, twice: it begins anew each time, and ends well"
slow_scan "$one/Airfoils/NACA 0012.afl"
open_wizard skyvane-web-updater -path "$one" $(through_proxy "$PORT")
press_next
for again in 1 2; do
  wait_step 1
  wait_for "the scan" is_scanning
  press_back
  wait_for "the list" on_list next_is_open
  wait_for "the scan's end" is_not_scanning
  [ "$again" = 2 ] || press_next
done
quick_scan
next_to 4
quit_last_page
