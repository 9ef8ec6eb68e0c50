#!/usr/bin/env bash
# An installer that is killed at any moment: the next start offers the copy, and makes it whole.
#
# KILLS moments of a run without a window and WINDOW_KILLS of one with; SEED draws the same again.
. "$(dirname "$0")/lib_window_disc.bash"

KILLS=${KILLS:-6} WINDOW_KILLS=${WINDOW_KILLS:-1} SEED=${SEED:-$RANDOM}
RANDOM=$SEED
export HOME=$SCRATCH/home
mkdir -p "$HOME/Desktop"
copy="$HOME/Desktop/$RELEASE"
path=$(program skyvane-disc-installer)
arguments=(--unattended --accept_eula "--dest=$HOME/Desktop" "--name=$RELEASE")
early=0 unlisted=0 in_work=0 late=0

now() { echo "${EPOCHREALTIME/./}"; }

fresh_start() {
  rm -rf "$copy" "$TMPDIR"/* "$XDG_CONFIG_HOME"
  for disc in 1 2 3; do is_in "$disc" || insert_disc "$disc"; done
}

# kill_within MICROSECONDS: kills the program PID at a moment within them, and counts what it met.
kill_within() {
  local moment=$((RANDOM * $1 / 32768)) status=0
  sleep "$(printf '%d.%06d' $((moment / 1000000)) $((moment % 1000000)))"
  kill -KILL "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || status=$?
  found=in_work
  [ "$status" = 137 ] || found=late
  grep -qsxF "$copy/" "$XDG_CONFIG_HOME"/*/skyvane_install.txt || found=unlisted
  [ -d "$copy" ] || found=early
  eval "$found=\$(($found + 1))"
}

fresh_start
from=$(now)
"$path" "${arguments[@]}" >"$OUT" 2>&1 </dev/null || fail "no install"
whole=$(($(now) - from))

for ((round = 0; round < KILLS; ++round)); do
  fresh_start
  "$path" "${arguments[@]}" >"$OUT" 2>&1 </dev/null &
  pid=$!
  kill_within "$whole"
  case $found in
    early)
      run_with_discs "${arguments[@]}"
      want_status 0
      same_tree "$SOURCE" Linux "$copy"
      ;;
    # Only its folders were made: they are nobody's, and are left alone like any others.
    unlisted) [ -z "$(find "$copy" -type f)" ] || fail "files in a copy that nobody knows" ;;
    *) repair_all ;;  # which leaves no working files, nor those of the killed run
  esac
done

[ "$WINDOW_KILLS" = 0 ] || start_display
for ((round = 0; round < WINDOW_KILLS; ++round)); do
  fresh_start
  open_window skyvane-disc-installer
  walk_to_map
  press_next
  until [ -d "$copy" ]; do :; done
  pid=$WINDOW_PID
  kill_within "$whole"
  [ "$found" != unlisted ] || continue
  open_window skyvane-disc-installer
  wait_step 0
  wait_still
  press_extra 2
  wait_step 1
  wait_open
  press_next
  wait_step 3
  wait_open
  press_next
  wait_step 5
  press_last_quit
  window_ended 0
  repair_all
done
echo "seed $SEED: of $KILLS kills and $WINDOW_KILLS with a window, $early before the copy, $unlisted" \
  "before it was listed, $in_work in the work, $late too late"

# Interrupted politely, it says so and leaves no working files.
fresh_start
take_out 3
"$path" "${arguments[@]}" >"$OUT" 2>&1 &
pid=$!
CHILDREN+=("$pid")
until grep -qF "Please insert DVD number 3" "$OUT"; do sleep 0.05; done
kill -TERM "$pid"
STATUS=0
wait "$pid" || STATUS=$?
want_status 3
want_text "Given up: interrupted."
want_no_leftovers

# So does one with a window, in the middle of the work and under the question whether to delete the
# copy: an end from outside is no answer to that.
[ "$WINDOW_KILLS" != 0 ] || exit 0
for asked in no yes; do
  fresh_start
  [ "$asked" = no ] || take_out 3
  open_window skyvane-disc-installer
  walk_to_map
  press_next
  if [ "$asked" = no ]; then
    until [ -n "$(find "$copy" -type f 2>/dev/null)" ]; do :; done
  else
    wait_disc_asked
    press_back
    wait_dialog
  fi
  kill -TERM "$WINDOW_PID"
  window_ended 0
  want_no_leftovers
  [ -n "$(find "$copy" -type f)" ] || fail "the copy was deleted by the end of the program"
done
