# Shared by the tests that go through the flows by hand, which source it in place of lib.sh.
. "$(dirname "${BASH_SOURCE[0]}")/lib_window.sh"

# The middle of the left panel. No step and no mirror is there, and every dialog covers it.
DIALOG_SPOT=(150 300)
PANEL=      # its colour while no dialog is up

wait_other_colour() { wait_for "another colour than $3 at $1, $2" shows_other "$@"; }

# wait_still: until two looks running see the same; a frame may be half drawn when one falls.
wait_still() { wait_for "a picture that stands still" is_still; }
is_still() {
  local before
  before=$(md5sum "$FRAME_FILE")
  sleep 0.05
  [ "$(md5sum "$FRAME_FILE")" = "$before" ]
}

# learn_faces: on a page with no dialog up and with Next open. Next is in the lowest rows, which reach
# the display last: what is above it is whole when it is there.
learn_faces() {
  wait_open
  wait_still
  PANEL=$(colour_at "${DIALOG_SPOT[@]}")
}

dialog_is_up() { shows_other "${DIALOG_SPOT[@]}" "$PANEL"; }
dialog_is_gone() { shows "${DIALOG_SPOT[@]}" "$PANEL"; }
wait_dialog() { wait_for "a dialog" dialog_is_up; }
wait_no_dialog() { wait_for "the page behind the dialog" dialog_is_gone; }

# walk_to_place: from the demo's first page, over the licence, to the one that asks for the destination.
walk_to_place() {
  next_to 1
  accept_licence
  next_to 3
  wait_open
}

open_options() {
  click_away 145 23
  wait_dialog
}
close_options() {
  click_away 116 480
  wait_no_dialog
}

# back_asks: whether to give up.
back_asks() {
  press_back
  wait_dialog
}

no_step_is_lit() {
  local step
  for step in 0 1 2 3 4 5; do
    if step_is_lit "$step"; then return 1; fi
  done
}

# The question with two answers: the one that gives up stands above the one that goes on.
press_give_up() { click_away 146 253; }
press_go_on() { click_away 146 228; }

# The page's extra button N, from 0, and the radio button of the list's copy N.
press_extra() { click_away 500 $((350 - 25 * $1)); }
pick_copy() { click_away 250 $((403 - 25 * $1)); }

# start_skyvane REVISION: by the last page's button; the copy's program takes the wizard's place.
start_skyvane() {
  press_extra 0
  # The process that the wizard was ends with 1 when it has handed over.
  window_ended 1
  wait_file_text "$OUT" "Started: Linux/Skyvane.app (revision $1)"
}

# slow_scan FILE: one of a copy takes longer to read than a hand to move; quick_scan takes that back.
slow_scan() {
  BIG=$1
  mv "$BIG" "$SCRATCH/kept.afl"
  truncate -s 20G "$BIG"
}
quick_scan() { mv "$SCRATCH/kept.afl" "$BIG"; }
is_scanning() { find "/proc/$WINDOW_PID/fd" -lname "$BIG" | grep -q .; }
is_not_scanning() { ! is_scanning; }

# --- the question about a modified file ------------------------------------------------------------

declare -A ANSWER_AT=(
  [overwrite]="146 280" [keep]="146 255"
  [overwrite-folder]="358 280" [keep-folder]="358 255" [cancel]="634 255"
)
# Where it names the file.
QUESTION_PATH=(70 313 600 14)
QUESTION=  # what stood there last

# wait_question: until one is put that is about another file than the last.
wait_question() {
  wait_dialog
  wait_for "the question about another file" picture_differs "$QUESTION" "${QUESTION_PATH[@]}"
  QUESTION=$(picture_of "${QUESTION_PATH[@]}")
}

# answer ANSWER: a key of ANSWER_AT.
answer() { click_away ${ANSWER_AT[$1]}; }

# asked_about: the files of all questions of the program's last run, in order, once it has ended.
asked_about() {
  sed -n 's/^File: \(.*\)  sig_want=.*/\1/p' "$SCRATCH/bin/Skyvane Installer Log.txt"
}
