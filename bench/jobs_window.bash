# What the window costs: a verification in it, a shown picture, a page at rest. On a display of their
# own, with a real pointer. Sourced by script/bench.
. "$ROOT/tests/e2e/lib_window.sh"

SWAPS=$SCRATCH/swaps.txt  # when each picture was shown

window_begin() {
  verify_begin
  start_display
}
# open_updater: the updater's first page.
open_updater() {
  export SWAP_CLOCK=$SWAPS
  LD_PRELOAD=$BIN/bench/libswap_clock.so open_window skyvane-web-updater -path "$COPY" $(through_proxy "$PORT")
  wait_step 0
  [ -n "$PROFILE" ] || return 0
  perf record -q -F 2000 -g -p "$WINDOW_PID" -o "$BENCH/perf-$JOB-$who.data" &
  sleep 2  # of threads that begin before perf has looked, it sees nothing
}
close_window() {  # by Quit: the log is whole
  press_quit
  window_ended 0
}

# sway: moves the pointer on and off the Quit face, forty times a second, until rest: each movement makes
# another picture.
sway() {
  local on="mousemove --window $WINDOW 50 578 sleep 0.025" off="mousemove --window $WINDOW 300 300 sleep 0.025"
  yes "$on $off" | head -n 10000 | xdotool - 2>/dev/null &
  SWAYING=$!
}
rest() {
  kill -9 "$SWAYING"
  wait "$SWAYING" 2>/dev/null || true
}

# ticks: processor time of the window's program, in seconds.
ticks() { awk -v hertz="$(getconf CLK_TCK)" '{ sub(/.*\) /, ""); print ($12 + $13) / hertz }' "/proc/$WINDOW_PID/stat"; }

# fine_ticks: the same of the threads that there are now, and finer.
fine_ticks() { cat "/proc/$WINDOW_PID"/task/*/schedstat | awk '{ s += $1 } END { printf "%.6f", s * 1e-9 }'; }

# gaps FROM TO: between the pictures shown in that time: how many, median, 95 % and longest, in ms.
gaps() {
  awk -v from="$1" -v to="$2" '$1 >= from && $1 <= to { if (last) print 1000 * ($1 - last); last = $1 }' "$SWAPS" |
    sort -n | awk '{ gap[NR] = $1 }
      END { if (NR) printf "%d pictures, from one to the next median %.0f ms, 95 %% below %.0f, longest %.0f",
        NR + 1, gap[int((NR + 1) / 2)], gap[int(NR * 0.95) + (NR < 20)], gap[NR] }'
}

# A copy that takes some seconds to hash: many real files, and giants with holes in them, which take no
# room on the disk and are read as fast as memory.
heavy_copy() {
  cp -r "$COPY" "$SCRATCH/heavy"
  COPY=$SCRATCH/heavy
  find "$COPY/Resources/real" -type f | sort | awk -v every=$((SHIPPED / 128)) 'NR % every == 0' |
    xargs -d '\n' truncate -s 32M
  sync
}

by_window_pass() {
  local from
  open_updater
  press_next
  wait_step 1
  from=$EPOCHREALTIME
  WAIT_SECONDS=600 wait_step 2
  GAPS=$(gaps "$from" "$EPOCHREALTIME")
  CPU=$(ticks) PEAK=$(awk '/VmHWM/ { print $2 / 1024 }' "/proc/$WINDOW_PID/status")
  close_window
  WALL=$(pass_seconds)
}
by_unattended_pass() {
  update "$COPY"
  cp "$OUT" "$SCRATCH/update.txt"
  WALL=$(pass_seconds)
}
hashed_all() { grep -qxF "$SHIPPED files checked" "$SCRATCH/update.txt"; }

job_verify_window() {
  window_begin
  heavy_copy
  by_unattended_pass  # the giants are in memory from now on
  contest verify-window 0.7 by_window_pass by_unattended_pass hashed_all \
    "$SHIPPED files and 4 GB more; the peer is our own unattended run"
  echo "verify-window: pointer at rest, $GAPS"
}

# --- a picture, and none ---------------------------------------------------------------------------

SECONDS_WATCHED=5

# A picture's cost: what the program uses while the pointer changes it, by the pictures it shows.
by_picture() {
  local before from
  open_updater
  sway
  before=$(fine_ticks) from=$EPOCHREALTIME
  sleep "$SECONDS_WATCHED"
  CPU=$(awk "BEGIN { print $(fine_ticks) - $before }")
  rest
  GAPS=$(gaps "$from" "$EPOCHREALTIME")
  WALL=$(awk -v from="$from" -v cpu="$CPU" '$1 >= from { ++n } END { print 1000 * cpu / n }' "$SWAPS")
  close_window
}
# A page at rest: the share of a core, in per cent.
by_idle_page() {
  local before
  open_updater
  sleep 1
  before=$(fine_ticks)
  sleep "$SECONDS_WATCHED"
  CPU=$(awk "BEGIN { print $(fine_ticks) - $before }")
  WALL=$(awk "BEGIN { print 100 * $CPU / $SECONDS_WATCHED }")
  close_window
}

job_frame() {
  window_begin
  figure frame 5 "ms of processor a picture" by_picture "first page, pointer on and off a face"
  echo "frame: $GAPS"
  figure frame-idle 1 "% of a core" by_idle_page "first page, nothing happens"
}
