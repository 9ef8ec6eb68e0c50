# Shared by the tests of the disc flows by hand; sourced in place of lib.sh.
. "$(dirname "${BASH_SOURCE[0]}")/disc_lib.bash"
. "$(dirname "${BASH_SOURCE[0]}")/lib_window.sh"
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

# --- the map -----------------------------------------------------------------------------------

# The sectors of the sample, by their place on the map: columns from the west, rows from the south.
# But for +80+170, which is all sea: only land shows that a sector is selected.
declare -A SECTOR=(
  [+30-120]="6 12" [+40-080]="10 13" [+50+000]="18 14" [-40+150]="33 5"
  [-90-180]="0 0" [+00+010]="19 9"
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
