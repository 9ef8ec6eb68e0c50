#!/usr/bin/env bash
# How regular the wizard's pictures stay while a copy is verified, beside a page with nothing to do.
#
# A release of many real files is installed, and some of them made huge, so that the processors hash
# for some seconds. The updater is then opened on a display of its own. What counts is the time from
# one picture to the next: on the first page with the pointer in motion, and during the verification
# with the pointer at rest and in motion. At rest a working page is shown 20 times a second, in motion
# up to 60 times, by design.
set -euo pipefail

if [ "${1:-}" = --help ]; then
  echo "usage: bench/frames.sh [BUILD] [FILES] [GB]"
  echo "BUILD is build/release, FILES 20000, GB (hashed on top of them) 8, unless given"
  exit 0
fi
root=$(cd "$(dirname "$0")/.." && pwd)
BIN=$(realpath "${1:-$root/build/release}")
files=${2:-20000} gb=${3:-8}
. "$root/tests/e2e/update_lib.bash"
. "$root/tests/e2e/lib_window.sh"
export SWAP_CLOCK=$SCRATCH/swaps.txt

"$BIN/make-sample" "$SCRATCH/sample" >/dev/null
real_tree "$files" "$SCRATCH/sample/new/All/Resources/real"
mkdir "$SCRATCH/master"
"$SCRATCH/bin/skyvane-demo-installer" --build_master --type=0 --name=Frames --previous=none \
  --source="$SCRATCH/sample/new" --output="$SCRATCH/master" >"$OUT" 2>&1
serve "$(web_root Frames "$SCRATCH/master")"
run skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH" --name=sim \
  $(through_proxy "$PORT")
want_status 0
# Holes take no room and are read as fast as memory.
find "$COPY/Resources/real" -type f | awk -v every=$((files / (32 * gb))) 'NR % every == 0' |
  xargs -d '\n' truncate -s 32M

# sway: starts to move the pointer to and fro over the page, once a hundredth of a second.
SWAYING=
sway() {
  move_to 400 300
  yes 'mousemove_relative 20 0 sleep 0.01 mousemove_relative -- -20 0 sleep 0.01' | head -n 10000 |
    xdotool - 2>/dev/null &
  SWAYING=$!
}
rest() {
  [ -z "$SWAYING" ] || stop_quietly "$SWAYING"
  SWAYING=
}
stop_quietly() {
  kill -9 "$1"
  wait "$1" 2>/dev/null || true
}

# gaps LABEL FROM TO: of the pictures shown between the two times.
gaps() {
  awk -v from="$2" -v to="$3" '$1 >= from && $1 <= to { if (last) print 1000 * ($1 - last); last = $1 }' \
    "$SWAP_CLOCK" | sort -n | awk -v label="$1" -v span="$(awk "BEGIN { print $3 - $2 }")" '
      { gap[NR] = $1 }
      END {
        if (NR < 10) { print label ": too few pictures"; exit 1 }
        printf "%-38s %5.1f s %5d pictures; gaps in ms: median %5.1f, 95%% %5.1f, longest %5.1f (%.1f x median)\n",
          label, span, NR + 1, gap[int((NR + 1) / 2)], gap[int(NR * 0.95)], gap[NR], gap[NR] / gap[int((NR + 1) / 2)]
      }'
}

# verify LABEL HAND: goes from the first page through a verification. HAND is "moving" or "resting".
verify() {
  local from to
  LD_PRELOAD="$BIN/bench/libswap_clock.so" open_window skyvane-web-updater -path "$COPY" \
    $(through_proxy "$PORT")
  wait_step 0
  if [ "$2" = moving ]; then
    sway
    from=$EPOCHREALTIME
    sleep 3
    gaps "first page, pointer moving" "$from" "$EPOCHREALTIME"
    rest
  fi
  press_next
  wait_step 1
  from=$EPOCHREALTIME
  [ "$2" = resting ] || sway
  WAIT_SECONDS=600 wait_step 2
  to=$EPOCHREALTIME
  rest
  gaps "$1" "$from" "$to"
  stop_quietly "$WINDOW_PID"
  WINDOW_PID=
}

start_display
verify "verification, pointer at rest" resting
verify "verification, pointer moving" moving
