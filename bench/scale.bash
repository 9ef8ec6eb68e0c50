# What script/scale runs: the programs where size could break them. Sourced by it, behind bench/lib.bash.

HANDLES=$SCRATCH/handles.txt

# counted STATUS COMMAND...: runs it, which is to end with that status; the most file handles that it
# had go to HANDLES.
counted() {
  local wanted=$1 most=0 status=0 now pid
  "${@:2}" &
  pid=$!
  while now=("/proc/$pid/fd/"*) && [ -L "${now[0]}" ]; do
    [ ${#now[@]} -le "$most" ] || most=${#now[@]}
    sleep 0.02
  done
  wait $pid || status=$?
  echo "$most" >"$HANDLES"
  [ "$status" = "$wanted" ]
}

# Leaves PROXY, the options that lead to the mirror at PORT; without one, nowhere.
proxied() { read -r -a PROXY < <(through_proxy "${PORT:-9}"); }

# row WHAT STATUS PROGRAM OPTIONS...: a run without a display, as a row of the table.
row() {
  proxied
  lap counted "$2" "$(program "$3")" --unattended "${@:4}" "${PROXY[@]}"
  printf '| %s | %.1f s | %.1f s | %.0f MB | %d |\n' "$1" "$WALL" "$CPU" "$PEAK" "$(cat "$HANDLES")"
}

# --- a large copy ----------------------------------------------------------------------------------

small=100000 giants=120 giant_bytes=500000000
random_files() {  # COUNT FOLDER
  python3 - "$1" "$2" <<'PYTHON'
import os, random, sys
random.seed(9)
for i in range(int(sys.argv[1])):
    if i % 40 == 0:
        os.makedirs("%s/%04d" % (sys.argv[2], i // 40))
    with open("%s/%04d/%06d.bin" % (sys.argv[2], i // 40, i), "wb") as file:
        file.write(random.randbytes(1000 + 17 * (i % 1000)))
PYTHON
}

# Leaves COPY, the small files as links to the makers', the giants sparse and empty; a mirror and an image
# whose manifest has both.
large_copy() {
  local i digest
  release "many" random_files $small
  COPY=$BENCH/many/installed
  if [ ! -e "$COPY.made" ]; then
    rm -rf "$COPY"
    mkdir -p "$COPY"
    cp -al "$SOURCE/All/." "$SOURCE/Linux/." "$COPY"
    mkdir "$COPY/Resources/giants"
    for i in $(seq -w $giants); do truncate -s $giant_bytes "$COPY/Resources/giants/$i.bin"; done
    digest=$(md5sum "$COPY/Resources/giants/$i.bin")
    {
      printf '\nDIR All/Resources/giants/\n'
      for i in $(seq -w $giants); do
        echo "FILE 0 0 91001 486 $((giant_bytes / 1000)) ${digest%% *} $i.bin"
      done
    } >>"$MANIFEST"
    zip -q -j "$MASTER/directory.txt.zip" "$MANIFEST"
    "$ROOT/script/make_discs" "${MASTER%/*/*}" "${MASTER%/*/*}" >/dev/null
    touch "$COPY.made"
  fi
}

# lose REST: takes a hundredth of the small files away. came_back: whether all of it is there again.
lose() { (cd "$COPY" && find Resources/real -name '*.bin' | awk "NR % 100 == $1" | tee "$SCRATCH/lost.txt" | xargs rm); }
came_back() {
  while read -r file; do
    cmp "$SOURCE/All/$file" "$COPY/$file" || fail "it did not come back: $file"
  done <"$SCRATCH/lost.txt"
}

job_copy() {
  large_copy
  serve_release
  row "the web updater, nothing to do" 0 skyvane-web-updater --copy="$COPY"
  lose 7
  row "1 % of the small files gone, fetched" 0 skyvane-web-updater --copy="$COPY"
  came_back
  insert_disc "${MASTER%/*/*}/disc_1.iso"
  lose 13
  row "1 % of the small files gone, repaired from the disc" 0 skyvane-disc-installer --do=repair --copy="$COPY"
  came_back
}

# --- a long manifest -------------------------------------------------------------------------------

job_lines() {
  local lines=2000000
  release "bare" random_files 1
  COPY=$SCRATCH/copy
  mkdir -p "$COPY" "$SCRATCH/long"
  cp -r "$SOURCE/All/." "$SOURCE/Linux/." "$COPY"
  { cat "$MANIFEST"; awk -v lines=$((lines - SHIPPED)) 'BEGIN {
      for (i = 0; i < lines; ++i) {
        if (i % 40 == 0) printf "\nDIR All/Custom Scenery/region %05d/objects/\n", i / 40
        printf "FILE 0 0 91001 %d %d %08x%08x%08x%08x building %07d.obj\n", i % 5, i % 9,
          rand() * 2 ^ 32, rand() * 2 ^ 32, rand() * 2 ^ 32, rand() * 2 ^ 32, i
      } }'; } >"$SCRATCH/long/directory.txt"
  MASTER=$SCRATCH/long
  zip -q -j "$MASTER/directory.txt.zip" "$MASTER/directory.txt"
  for what in read decide; do
    lap "$BIN/probe" $what "$SCRATCH/long/directory.txt"
    printf '| %s | %.2f s | %.1f s | %.0f MB | |\n' $what "$(cut -d' ' -f1 "$OUT")" "$CPU" "$PEAK"
  done
  serve_release
  row "--check: fetched, read, verified, decided, told" 10 skyvane-web-updater --check --copy="$COPY"
}

# --- three days ------------------------------------------------------------------------------------

job_hours() {
  local faster=600 pid passed
  . "$ROOT/tests/e2e/lib_window.sh"
  start_display
  LD_PRELOAD=$BIN/bench/libhours.so HOURS_FASTER=$faster "$(program skyvane-web-updater)" >"$OUT" 2>&1 &
  pid=$!
  CHILDREN+=("$pid")
  for passed in 1 23 24 24; do
    sleep $((passed * 3600 / faster))
    awk '/^VmRSS|^voluntary/ { printf "%s %s ", $1, $2 }' "/proc/$pid/status" || fail "the program ended"
    printf 'after %d more hours; %d file handles\n' "$passed" "$(find "/proc/$pid/fd" -type l | wc -l)"
  done
}

# --- no room ---------------------------------------------------------------------------------------

# fill BYTES: leaves so many on the volume at TIGHT, which counts in pages of 4,096: one of less is for the
# ballast alone.
fill() {
  cat /dev/zero >"$TIGHT/ballast" 2>/dev/null || true
  truncate -s "-$1" "$TIGHT/ballast"
}
sums() { (cd "$TIGHT" && find . -type f ! -name ballast -exec md5sum {} + | sort); }

# full JOB BYTES PROGRAM OPTIONS...: what it says, that nothing is lost, and that it heals.
full() {
  local status=0
  proxied
  echo mine >"$TIGHT/mine.txt"
  fill "$2"
  sums >"$SCRATCH/before.txt"
  "$(program "$3")" "${@:4}" "${PROXY[@]}" --give_up_after=4 >"$OUT" 2>&1 </dev/null || status=$?
  [ $status = 1 ] || [ $status = 2 ] || fail "$1 with $2 bytes left: status $status"
  grep -qF "$TIGHT" "$OUT" || fail "$1 with $2 bytes left: the volume is not named"
  sums | comm -13 - "$SCRATCH/before.txt" | grep . && fail "$1 with $2 bytes left: lost"
  printf '| %s, %d left | %d | %s |\n' "$1" "$2" $status "$(tail -n 3 "$OUT" | sed "s|$SCRATCH||g" | tr '\n' ' ')"
  rm "$TIGHT/ballast"
  "$(program "$3")" "${@:4}" "${PROXY[@]}" >"$OUT" 2>&1 </dev/null || fail "$1: the next run fails"
  rm -r "${TIGHT:?}"/*
}

job_room() {
  local left web=(--unattended --accept_eula)
  need_root "mounting a volume"
  release "room" random_files 400
  [ -e "$BENCH/room/disc_1.iso" ] || "$ROOT/script/make_discs" "${MASTER%/*/*}" "$BENCH/room" >/dev/null
  serve_release
  insert_disc "$BENCH/room/disc_1.iso"
  TIGHT=$SCRATCH/room
  mkdir "$TIGHT"
  mount -t tmpfs -o size=40m tmpfs "$TIGHT"
  MOUNTS+=("$TIGHT")
  for left in 0 1 4096; do
    full "demo install" $left skyvane-demo-installer "${web[@]}" --dest="$TIGHT" --name=Copy
    cp -r "$SOURCE/All" "$TIGHT/Copy"
    find "$TIGHT/Copy" -name '*7.bin' -delete
    full "update" $left skyvane-web-updater --unattended --copy="$TIGHT/Copy"
    full "disc install" $left skyvane-disc-installer "${web[@]}" --dest="$TIGHT" --name=Copy
    mkdir "$TIGHT/out"
    full "master" $left skyvane-demo-installer --build_master --type=0 --name="$NAME" --source="$SOURCE" \
      --output="$TIGHT/out" --previous=none
  done
}
