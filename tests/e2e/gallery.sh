#!/usr/bin/env bash
# The gallery: the whole page as a picture without a display, and in a window the wheel, the bar and
# a widget far down the page.
SCALE=1 # the page's picture, which the window is held against, has a pixel a unit
. "$(dirname "$0")/lib_window.sh"
mkdir -p "$SCRATCH/bin"
cp "$BIN/gallery/skyvane-gallery" "$SCRATCH/bin/"
page=$SCRATCH/page.png

echo "The page as a picture"
want 0 run skyvane-gallery --png="$page"
# One more time gives the same bytes: nothing in it depends on the clock or the pointer.
want 0 run skyvane-gallery --png="$SCRATCH/again.png"
cmp "$page" "$SCRATCH/again.png" || fail "two runs draw different pages"
run skyvane-gallery --png="$SCRATCH/no such folder/page.png"
want_status 1 "cannot be written"

echo "The page in a window: it is the same, wherever it is scrolled to"
# shows_page DOWN: whether the window shows the picture from this row on. A line may end a pixel
# sooner or later, as the driver rounds.
shows_page() {
  local differing
  screenshot "$SCRATCH/now.png"
  convert "$page" -crop "800x600+0+$1" +repage "$SCRATCH/want.png"
  # compare's own status says whether there is any difference.
  differing=$(compare -metric AE -extract 700x600+40+0 "$SCRATCH/now.png" "$SCRATCH/want.png" \
    null: 2>&1) || true
  [ "$differing" -lt 100 ]
}
turn=60  # rows that a notch of the wheel moves the page
start_display
open_window skyvane-gallery
wait_for "the page's top" shows_page 0
move_to 8 300
wheel down 24
wait_for "the page 24 notches down" shows_page $((24 * turn))
echo "An idle page is not drawn, but when another window has lain over it"
at_rest=$(picture_of 0 0 800 600)
shows_rest() { [ "$(picture_of 0 0 800 600)" = "$at_rest" ]; }
hides_rest() { ! shows_rest; }
mkdir "$SCRATCH/over"
cp "$SCRATCH/bin/skyvane-gallery" "$SCRATCH/over/"
"$SCRATCH/over/skyvane-gallery" >/dev/null 2>&1 </dev/null &
over=$!
CHILDREN+=("$over")
wait_for "the window over it" hides_rest
kill -9 "$over"
wait_for "the page again" shows_rest
echo "A box far down the page answers"
box=(91 276 18 18)
before=$(picture_of "${box[@]}")
click 100 285
wait_for "the box" picture_differs "$before" "${box[@]}"
echo "The scroll bar: its lower arrow goes on step by step"
click 784 22
wait_for "the page a step down" shows_page $((24 * turn + 20))
kill -TERM "$WINDOW_PID"
window_ended 0

echo "The dialogs that no page opens, in every language: each is written, and its texts fit"
mkdir "$SCRATCH/dialogs"
for language in ${SPEAK:-0 1 2 3 4 5}; do
  rm -f "$SCRATCH/dialogs"/*
  want 0 run skyvane-gallery --dialogs="$SCRATCH/dialogs" --check_layout \
    --texts="$BIN/Resources/text/${LANGUAGE_FOLDERS[language]}/Installer2.txt"
  [ "$(ls "$SCRATCH/dialogs" | wc -l)" -ge 9 ] || fail "only $(ls "$SCRATCH/dialogs")"
  want_all_in_place
done
[ -z "${SHOTS:-}" ] || cp "$page" "$SHOTS/gallery.png"
[ -z "${SHOTS:-}" ] || cp "$SCRATCH/dialogs"/*.png "$SHOTS/"
for scenes in ${SHOTS:+pages states}; do  # those that no flow comes to among them
  want 0 run skyvane-gallery --$scenes="$SHOTS" --texts="$BIN/Resources/text/${LANGUAGE_FOLDERS[language]}/Installer2.txt"
done
