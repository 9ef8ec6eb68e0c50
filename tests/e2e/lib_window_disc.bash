# Shared by the tests of the disc flows by hand; sourced in place of lib.sh.
. "$(dirname "${BASH_SOURCE[0]}")/disc_lib.bash"
. "$(dirname "${BASH_SOURCE[0]}")/lib_flows.sh"

is_out() { ! is_in "$1"; }

# change_disc GONE WANTED: when the page asks for a disc, which has no step and comes with the end of
# the one before, puts in the wanted one and leads on.
change_disc() {
  wait_for "the end of disc $1" is_out "$1"
  wait_for "the page that asks for a disc" no_step_is_lit
  insert_disc "$2"
  press_next
}

# walk_to_map: from the first page, on which Next is open, over the next two. Learns the faces.
walk_to_map() {
  wait_step 0
  wait_open
  learn_faces
  next_to 1
  next_to 2
  accept_licence
  next_to 3
}

# --- a job that goes wrong -------------------------------------------------------------------------

# wait_disc_asked: until the page that asks for a disc is there, with no question over it.
wait_disc_asked() {
  wait_no_dialog
  wait_for "the page that asks for a disc" no_step_is_lit
}

# go_on_over_errors: Continue at each question about a failed file, until the last page.
# The next one may stand in the place of the last within a frame, so each look answers what it sees.
go_on_over_errors() { wait_for "the last page" last_or_answered; }
last_or_answered() {
  if dialog_is_up; then press_go_on; fi
  step_is_lit 5
}

# has_red_sign: beside the heading, the disc of the sign of failure.
has_red_sign() { [ "$(area 230 474 540 16 | grep -cx cd3e3a)" -gt 10 ]; }

# wait_errors_told: until the last page says, by its sign, in two paragraphs and with no button, that
# all did not go well.
wait_errors_told() {
  wait_step 5
  wait_for "the sign of failure" has_red_sign
  wait_for "the last page's advice" has_ink 230 395 500 18
  ! has_ink 440 345 120 22 || fail "a copy with errors is offered to be started"
}

# --- the map -----------------------------------------------------------------------------------

# The sectors of the sample, by their place on the map: columns from the west, rows from the south.
# +80+170 is all sea.
declare -A SECTOR=(
  [+30-120]="6 12" [+40-080]="10 13" [+50+000]="18 14" [-40+150]="33 5"
  [-90-180]="0 0" [+00+010]="19 9" [+80+170]="35 17"
)
declare -A LIT=() DARK=() SEEN=()  # what each looks like when it is selected, and when not

# cell_xy COLUMN ROW, sector_xy SECTOR: the middle.
cell_xy() { echo $((248 + 14 * $1 + 7)) $((150 + 14 * $2 + 7)); }
sector_xy() { cell_xy ${SECTOR[$1]}; }
sector_picture() {
  local xy
  xy=($(sector_xy "$1"))
  picture_of $((xy[0] - 6)) $((xy[1] - 6)) 12 12
}
click_sector() { click_away $(sector_xy "$1"); }
press_all() { click_away 527 131; }
press_none() { click_away 686 131; }

# The line that says how much is needed; the free space above it may change by itself.
needed() { picture_of 220 107 300 12; }
needs() { [ "$(needed)" = "$1" ]; }
needs_other() { [ "$(needed)" != "$1" ]; }

sector_differs() { [ "$(sector_picture "$1")" != "$2" ]; }

# look_at_sectors: takes pictures of how they are; saw_selected then says which these show, as
# selected does.
look_at_sectors() {
  local sector
  wait_still
  for sector in "${!SECTOR[@]}"; do SEEN[$sector]=$(sector_picture "$sector"); done
}

# learn_sectors: by all and none, which leaves none.
learn_sectors() {
  local sector before
  press_all
  wait_still
  for sector in "${!SECTOR[@]}"; do LIT[$sector]=$(sector_picture "$sector"); done
  NEEDED_ALL=$(needed)
  press_none
  wait_for "less to be needed" needs_other "$NEEDED_ALL"
  wait_still
  for sector in "${!SECTOR[@]}"; do DARK[$sector]=$(sector_picture "$sector"); done
  NEEDED_NONE=$(needed)
  for sector in "${!SECTOR[@]}"; do
    [ "${LIT[$sector]}" != "${DARK[$sector]}" ] || fail "sector $sector looks the same in and out"
  done
}

# selected SECTOR...: the map shows these and no others.
selected() {
  local sector
  for sector in "${!SECTOR[@]}"; do
    [ "$(sector_picture "$sector")" = "$(face_of "$sector" "$@")" ] || return 1
  done
}
wait_selected() { wait_for "the sectors: $*" selected "$@"; }
saw_selected() {
  local sector
  for sector in "${!SECTOR[@]}"; do
    [ "${SEEN[$sector]}" = "$(face_of "$sector" "$@")" ] || return 1
  done
}
face_of() {
  local sector=$1
  shift
  case " $* " in *" $sector "*) echo "${LIT[$sector]}" ;; *) echo "${DARK[$sector]}" ;; esac
}

# wait_error_logged PATH: until a failure with that file is in the log, in whatever language.
wait_error_logged() { wait_for "an error with $1 in the log" error_is_logged "$1"; }
error_is_logged() {
  grep -aqF -- "$1" <(grep -as '^WARNING: ' "$SCRATCH/bin/Skyvane Installer Log.txt")
}
