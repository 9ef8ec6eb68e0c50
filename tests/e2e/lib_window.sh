# Shared by the tests with a window, which source it in place of lib.sh.
#
# A display of their own (Xvfb with a window manager), a real pointer and real keys (xdotool), and
# eyes: Xvfb keeps what it shows in a file, so a pixel is read without asking anybody. Places are
# the wizard's own: units of the window, origin at its lower left; SCALE pixels each, 1 unless the
# environment says 2. Whatever is waited for is looked at every 50th of a second, for WAIT_SECONDS at
# most.

declare -F finish >/dev/null || . "$(dirname "${BASH_SOURCE[0]}")/lib.sh"  # the tests of the discs have theirs
need_tools Xvfb xdotool openbox xprop setxkbmap import

ART=$(dirname "${BASH_SOURCE[0]}")/../../art
WAIT_SECONDS=${WAIT_SECONDS:-30}
SCALE=${SCALE:-1}
SCREEN_DX=$((1024 * SCALE)) SCREEN_DY=$((768 * SCALE))
WINDOW_DY=600 # units
WINDOW=       # the X window of the program
WINDOW_PID=   # its process
UNDER=()      # what stands before the program, such as env
FRAME_FILE=   # what the display shows, in the form of xwd
FRAME_START=0 # where its pixels begin, 4 bytes each: blue, green, red, nothing

# fail TEXT...: as in lib.sh; where pictures are wanted, one of the window as it was then.
fail() {
  echo "FAILED: $*" >&2
  if [ -n "${SHOTS:-}" ] && [ -n "$WINDOW" ]; then
    (fail() { exit 1; } && screenshot "$SHOTS/failed_$(basename "$0" .sh).png") || true
  fi
  exit 1
}

# wait_for WHAT COMMAND...: until the command succeeds.
wait_for() {
  local what=$1 end=$((SECONDS + WAIT_SECONDS))
  shift
  until "$@"; do
    [ "$SECONDS" -lt "$end" ] || fail "waited in vain for $what"
    if [ -n "$WINDOW_PID" ] && ! kill -0 "$WINDOW_PID" 2>/dev/null; then
      # A last look: the end of the program may be what makes it true.
      "$@" && return 0
      fail "the program ended before $what"
    fi
    sleep 0.02
  done
}

# start_display: on a display number that is free; returns once the window manager is there.
start_display() {
  local dir=$SCRATCH/display header
  mkdir -p "$dir"
  mkfifo "$dir/number"
  Xvfb -displayfd 9 -screen 0 "${SCREEN_DX}x${SCREEN_DY}x24" -fbdir "$dir" -nolisten tcp -noreset \
    9>"$dir/number" 2>"$dir/xvfb.log" &
  CHILDREN+=($!)
  # Xvfb writes its number once it takes clients.
  read -r -t "$WAIT_SECONDS" DISPLAY <"$dir/number" || fail "no display: $(cat "$dir/xvfb.log")"
  export DISPLAY=:$DISPLAY
  unset SDL_VIDEODRIVER WAYLAND_DISPLAY
  FRAME_FILE=$dir/Xvfb_screen0
  # The header's own size, then as many colours of 12 bytes as its word 19 says.
  mapfile -t header < <(od -An -v -w4 -tu4 --endian=big -N 80 "$FRAME_FILE" | tr -d ' ')
  FRAME_START=$((header[0] + 12 * header[19]))
  [ "${header[4]}x${header[5]}" = "${SCREEN_DX}x${SCREEN_DY}" ] || fail "an odd frame file"
  # A window manager that takes presses to raise windows by hands them on when it has the time, which
  # on a busy machine is behind the keys that were pressed after them.
  cat >"$dir/rc.xml" <<RC
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <keyboard><keybind key="A-F4"><action name="Close"/></keybind></keyboard>
  <mouse/>
</openbox_config>
RC
  openbox --config-file "$dir/rc.xml" >"$dir/openbox.log" 2>&1 &
  CHILDREN+=($!)
  wait_for "the window manager" has_window_manager
}

has_window_manager() {
  xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'
}

# speak LANGUAGE: from the next start on the program speaks it, as if the user had once chosen it; a
# number of --pref:_lang. SPEAK in the environment goes before it.
speak() {
  mkdir -p "$XDG_CONFIG_HOME/skyvane"
  printf 'I\n9002 version\nno-copyright-string\n\n_lang %s\n' "${SPEAK:-$1}" \
    >"$XDG_CONFIG_HOME/skyvane/Skyvane Installer.prf"
}

# open_window PROGRAM ARGS...: starts it and returns when its window is there, with the pointer out
# of the way. Leaves WINDOW, WINDOW_PID, and its place; the file texts tells what it shows.
open_window() {
  local path
  local watch="--check_layout --list_texts=$SCRATCH/texts"
  [ "$1" != skyvane-gallery ] || watch=  # its page is taller than the window, and shows oddities
  path=$(program "$1")
  shift
  [ "$SCALE" = 1 ] || watch+=" --scale=$SCALE"
  rm -f "$SCRATCH/texts"  # of the program before
  "${UNDER[@]}" "$path" "$@" $watch >"$OUT" 2>&1 </dev/null &
  WINDOW_PID=$!
  CHILDREN+=("$WINDOW_PID")
  wait_for "the window" find_window
  # The window manager may still move it: its place is asked for with every use, not kept.
  xdotool mousemove $((SCREEN_DX - 1)) $((SCREEN_DY - 1))
}

# open_wizard PROGRAM ARGS...: the same until the first page is there.
open_wizard() {
  open_window "$@"
  wait_step 0
}

find_window() {
  WINDOW=$(xdotool search --onlyvisible --pid "$WINDOW_PID" 2>/dev/null | sed -n 1p)
  [ -n "$WINDOW" ]
}

# window_ended STATUS: waits for the program's end and its exit status. All of its texts were in
# their places.
window_ended() {
  local pid=$WINDOW_PID
  wait_for "the program's end" has_ended "$pid"
  WINDOW_PID=
  STATUS=0
  wait "$pid" || STATUS=$?
  want_status "$1"
  want_all_in_place
}

want_all_in_place() {
  if grep -as '^LAYOUT: ' "$SCRATCH/bin/"*Log.txt; then fail "a text is out of place"; fi
  if grep -as 'OpenGL error' "$SCRATCH/bin/"*Log.txt; then fail "the driver complains"; fi
}

has_ended() { ! kill -0 "$1" 2>/dev/null; }
is_gone() { [ ! -e "$1" ]; }

# Its left and top edge on the screen: LEFT, TOP.
locate_window() {
  local info
  info=$(xwininfo -id "$WINDOW") || fail "the window is gone"
  [[ $info =~ Absolute\ upper-left\ X:\ *(-?[0-9]+).*Absolute\ upper-left\ Y:\ *(-?[0-9]+) ]]
  LEFT=${BASH_REMATCH[1]} TOP=${BASH_REMATCH[2]}
}

# --- hand ------------------------------------------------------------------------------------------

move_to() {
  xdotool mousemove --window "$WINDOW" $(($1 * SCALE)) $(((WINDOW_DY - 1 - $2) * SCALE))
}

click() {
  move_to "$1" "$2"
  xdotool click 1
}

# click_away X Y: clicks, and takes the pointer off, so that nothing stays lit under it.
click_away() {
  click "$1" "$2"
  xdotool mousemove $((SCREEN_DX - 1)) $((SCREEN_DY - 1))
}

# wheel up|down N: at the pointer.
wheel() { xdotool click --repeat "$2" --delay 10 "$([ "$1" = up ] && echo 4 || echo 5)"; }

type_text() { xdotool type --delay 20 "$1"; }
press_key() { xdotool key --delay 20 "$@"; }

# --- eye -------------------------------------------------------------------------------------------

# area X Y DX DY: the colours of a rectangle by its lower left, rrggbb, a line each, from the top. Of a
# unit the pixel at its upper left is taken.
area() {
  local LEFT TOP
  locate_window
  "$BIN/tests/area" "$FRAME_FILE" "$FRAME_START" "$SCREEN_DX" $((LEFT + $1 * SCALE)) \
    $((TOP + (WINDOW_DY - $2 - $4) * SCALE)) "$3" "$4" "$SCALE"
}

colour_at() { area "$1" "$2" 1 1; }
picture_of() { area "$@" | md5sum; }

shows() { [ "$(colour_at "$1" "$2")" = "$3" ]; }
shows_other() { [ "$(colour_at "$1" "$2")" != "$3" ]; }
picture_differs() {
  local before=$1
  shift
  [ "$(picture_of "$@")" != "$before" ]
}

# picture_pixel FILE X Y: of a picture, counted from its upper left, as rrggbb.
picture_pixel() {
  convert "$1" -crop "1x1+$2+$3" +repage -alpha off -depth 8 rgb:- | od -An -tx1 | tr -d ' \n'
}

# art_pixel NAME X Y: the same of a picture of the wizard's own, in units.
art_pixel() {
  local file=$ART/$1.png
  [ "$SCALE" = 1 ] || file=$ART/$1@${SCALE}x.png
  picture_pixel "$file" $(($2 * SCALE)) $(($3 * SCALE))
}

# has_ink X Y DX DY: letters stand there.
has_ink() { [ "$(area "$@" | grep -c '^[0-5]')" -gt 20 ]; }

# wait_step N: until step N of the list at the left is lit: its letters are blue.
wait_step() { wait_for "step $1" step_is_lit "$1"; }
step_is_lit() { area 30 $((480 - 20 * $1 - 2)) 100 10 | is_blue; }
# step_is_marked N: as done, by a tick in front of it, or as the present one, by a dot.
step_is_marked() { area 10 $((480 - 20 * $1 - 3)) 18 12 | is_blue; }
is_blue() {
  awk '
    function level(at) { return index("0123456789abcdef", substr($0, at, 1)) }
    { if (level(5) - level(1) > 6) ++blue }
    END { exit blue < 20 }'
}

# wait_shown TEXT: until a line of the picture that the window shows is that, in Latin-1.
wait_shown() { wait_for "\"$1\" in the window" grep -qsaE -- "^([^ ]+ ){5}$1\$" "$SCRATCH/texts"; }

# wait_file_text FILE TEXT.
wait_file_text() { wait_for "\"$2\" in $1" grep -qsF -- "$2" "$1"; }

# screenshot FILE: of the window, as PNG.
screenshot() {
  local LEFT TOP
  locate_window
  convert "xwd:$FRAME_FILE" -crop "$((800 * SCALE))x$((WINDOW_DY * SCALE))+$LEFT+$TOP" +repage "png24:$1"
}

# shot NAME: the same into the folder SHOTS, for those who want to see the pages; else nothing. Beside
# it NAME.texts, where its texts are; the picture is taken again until it was one with its list.
shot() {
  [ -n "${SHOTS:-}" ] || return 0
  local try
  for try in {1..10}; do
    cp "$SCRATCH/texts" "$SHOTS/$1.texts"
    screenshot "$SHOTS/$1.png"
    ! cmp -s "$SCRATCH/texts" "$SHOTS/$1.texts" || return 0
  done
}

# --- the wizard's bottom row -----------------------------------------------------------------------
press_quit() { click_away 55 23; }
press_back() { click_away 604 23; }
press_next() { click_away 720 23; }
# Next's face at a place off its letters, as the pictures have it: bright, or, when it leads nowhere,
# half mixed with the sky behind it. (A reading may come between two frames, when the sky alone is
# there, and so neither is taken for the other's absence.)
NEXT_X=675 NEXT_Y=20
FACE_OPEN=$(art_pixel elements $((NEXT_X - 670 + 150)) $((69 - (NEXT_Y - 12 + 46))))
SKY_BEHIND=$(art_pixel background "$NEXT_X" $((WINDOW_DY - 1 - NEXT_Y)))
next_is_open() { shows "$NEXT_X" "$NEXT_Y" "$FACE_OPEN"; }
next_is_grey() {
  local seen at mixed
  seen=$(colour_at "$NEXT_X" "$NEXT_Y")
  for at in 0 2 4; do
    mixed=$(((0x${FACE_OPEN:at:2} + 0x${SKY_BEHIND:at:2}) / 2 - 0x${seen:at:2}))
    [ "${mixed#-}" -le 3 ] || return 1
  done
}
wait_open() { wait_for "Next to open" next_is_open; }
# next_to N, back_to N: leads to step N.
next_to() {
  wait_open
  press_next
  wait_step "$1"
}
back_to() {
  press_back
  wait_step "$1"
}
# accept_licence: on its page, in the box above the bottom row.
accept_licence() {
  click_away 230 103
  wait_open
}
# By the button at the left, which all pages have but the last; and by the last page's.
quit_wizard() {
  press_quit
  window_ended 0
}
quit_last_page() {
  click_away 695 23
  window_ended 0
}
wait_grey() { wait_for "Next to be grey" next_is_grey; }
