#!/usr/bin/env bash
# What is written can be read: every text of the pages on the way to the map, of the map and of the
# options is measured on its ground, and so are the faces and the states of a sector.
. "$(dirname "$0")/lib_window_disc.bash"

need_tools identify convert
measure=$(dirname "$0")/../../script/contrast
SHOTS=$SCRATCH/shots
mkdir "$SHOTS"
measured() { STATUS=0; "$measure" "$@" >"$OUT" 2>&1 || STATUS=$?; }

# page NAME: its picture, once nothing moves.
page() {
  wait_still
  shot "$1"
}

all_discs_of "$IMAGES"
speak 2
start_display
open_window skyvane-disc-installer

echo "The pages, with a face under the pointer and one that is grey, and a dialog"
wait_step 0
wait_open
page welcome
learn_faces
open_options
page options
close_options
next_to 1
wait_open
page destination
next_to 2
wait_grey
page licence_grey
accept_licence
move_to 720 23
wait_for "Next to light up" shows_other "$NEXT_X" "$NEXT_Y" "$FACE_OPEN"
page licence_hover
press_next
wait_step 3
learn_sectors
click_sector +40-080
wait_selected +40-080
page scenery_1_map
kill -TERM "$WINDOW_PID"
window_ended 0

echo "All of it stands out"
want 0 measured "$SHOTS"
for seen in "face Next, hover" "available by plain land" "the frame of a selected one" \
  "$(words_of 2 Options)"; do
  want_text "$seen"
done

echo "A text that is too pale, a picture without its texts, and none at all are told"
pale=$SCRATCH/pale
mkdir "$pale"
cp "$SHOTS/welcome".* "$pale"
sed -i 's/ 000000 / 808080 /' "$pale/welcome.texts"
measured "$pale"
want_status 1 "LOW"
cp "$SHOTS/welcome.texts" "$pale"
convert "$SHOTS/welcome.png" -fill white -colorize 100 "png24:$pale/welcome.png"
measured "$pale"
want_status 1 "not in the picture"
rm "$pale"/*
measured "$pale"
want_status 1 "no list of texts"
