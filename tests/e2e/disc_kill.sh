#!/usr/bin/env bash
# An installer that is killed at any moment: the next start offers the copy, and makes it whole.
#
# E2E_WINDOW_KILLS  how many runs with a window are killed beside those without (default 1)
. "$(dirname "$0")/lib_window_disc.bash"
. "$(dirname "$0")/lib_kill.bash"

kills=${E2E_KILLS:-6} window_kills=${E2E_WINDOW_KILLS:-1}
own_home
copy="$HOME/Desktop/$RELEASE"
path=$(program skyvane-disc-installer)
arguments=(--unattended --accept_eula "--dest=$HOME/Desktop" "--name=$RELEASE")
killed=0 early=0 unlisted=0 late=0

fresh_start() {
  rm -rf "$copy" "$TMPDIR"/* "$XDG_CONFIG_HOME"
  for disc in 1 2 3; do is_in "$disc" || insert_disc "$disc"; done
}

# kill_it: kills the program PID, every other time while it unpacks, and counts what that met.
kill_it() {
  if [ $((killed % 2)) = 0 ]; then
    kill_at_work "$pid" "$whole"
  else
    kill_unpacking "$pid" $((whole / 2)) "$copy"
  fi
  killed=$((killed + 1))
  [ "$FOUND" != late ] || late=$((late + 1))
  grep -qsxF "$copy/" "$XDG_CONFIG_HOME"/*/skyvane_install.txt || FOUND=unlisted
  [ -d "$copy" ] || FOUND=early
  case $FOUND in early) early=$((early + 1)) ;; unlisted) unlisted=$((unlisted + 1)) ;; esac
}

fresh_start
from=$(now)
"$path" "${arguments[@]}" >"$OUT" 2>&1 </dev/null || fail "no install"
whole=$(($(now) - from))

while [ "$killed" -lt "$kills" ]; do
  fresh_start
  "$path" "${arguments[@]}" >"$OUT" 2>&1 </dev/null &
  pid=$!
  kill_it
  case $FOUND in
    early)
      want 0 run_with_discs "${arguments[@]}"
      same_tree "$SOURCE" Linux "$copy"
      ;;
    # Only its folders were made: they are nobody's, and are left alone like any others.
    unlisted) [ -z "$(find "$copy" -type f)" ] || fail "files in a copy that nobody knows" ;;
    *) repair_all ;;  # which leaves no working files, nor those of the killed run
  esac
done

[ "$window_kills" = 0 ] || start_display
for ((round = 0; round < window_kills; ++round)); do
  fresh_start
  open_window skyvane-disc-installer
  walk_to_map
  press_next
  until [ -d "$copy" ]; do :; done
  pid=$WINDOW_PID
  kill_it
  [ "$FOUND" != unlisted ] || continue
  open_wizard skyvane-disc-installer
  wait_still
  press_extra 2
  wait_step 1
  next_to 3
  next_to 5
  quit_last_page
  repair_all
done
echo "E2E_SEED=$E2E_SEED: of $kills kills and $window_kills with a window, $UNPACKING while a file was half" \
  "written, $early before the copy, $unlisted before it was listed, $late too late; all healed"

# Interrupted politely, it says so and leaves no working files.
fresh_start
take_out 3
start skyvane-disc-installer "${arguments[@]}"
until grep -qF "Please insert DVD number 3" "$OUT"; do sleep 0.05; done
kill -TERM "$PID"
wait_end "$PID"
want_status 3 "Given up: interrupted."
want_no_leftovers

# So does one with a window, in the middle of the work and under the question whether to delete the
# copy: an end from outside is no answer to that.
[ "$window_kills" != 0 ] || exit 0
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
    back_asks
  fi
  kill -TERM "$WINDOW_PID"
  window_ended 0
  want_no_leftovers
  [ -n "$(find "$copy" -type f)" ] || fail "the copy was deleted by the end of the program"
done
