#!/usr/bin/env bash
# The updater is killed at random moments, half of them while it unpacks, and after each kill the
# next run ends in the right tree with the user's files as they were.
. "$(dirname "$0")/update_lib.bash"
. "$(dirname "$0")/lib_kill.bash"

kills=${E2E_KILLS:-12}
echo "$kills kills, E2E_SEED=$E2E_SEED"

install_release old "$SCRATCH/old"
echo "mine" >"$SCRATCH/old/my flights.txt"
echo "mine" >"$SCRATCH/old/Aircraft/General Aviation/Little Wren/notes.txt"
echo "changed by me" >"$SCRATCH/old/Instructions/Pilot's Guide.txt"
echo "changed by me" >"$SCRATCH/old/Airfoils/Clark Y.afl"
give "$SCRATCH/old"

# Two roads: over the slow one most moments fall into the transfer of a file, over the fast one into
# verification and unpacking.
serve_release new
fast=$PORT
serve_release new 'limit_rate 400k; limit_rate_after 20k;'
slow=$PORT

# tree COPY: its files and links. An emptied folder is removed by the run that empties it, so one
# that was killed in between may leave it.
tree() {
  prints "$1" | grep -v ' d [0-7]*$'
}

fresh_old_copy() {
  rm -rf "$COPY"
  cp -a "$SCRATCH/old" "$COPY"
}

# What it is to be: a run that nobody kills, checked against the source tree.
declare -A length
for PORT in "$fast" "$slow"; do
  fresh_old_copy
  begin=${EPOCHREALTIME/./}
  update
  length[$PORT]=$((${EPOCHREALTIME/./} - begin))
  want_status 0
  want_count 2 "files kept, because you have modified them"
done
tree "$COPY" >"$SCRATCH/want_tree.txt"
cp -a "$COPY" "$SCRATCH/checked"
(cd "$SCRATCH/checked" && rm "my flights.txt" "Airfoils/Clark Y.afl" && rm -r "Aircraft/General Aviation/Little Wren" &&
  cp "$FIXTURE/sample/new/All/Instructions/Pilot's Guide.txt" Instructions/ && chmod 444 "Instructions/Pilot's Guide.txt")
same_tree "$FIXTURE/sample/new" Linux "$SCRATCH/checked"

# exec_updater: in place of this process, so that its id is the program's.
exec_updater() {
  local drop=()
  [ "$(id -u)" != 0 ] || drop=(setpriv --reuid="$ORDINARY" --regid="$ORDINARY" --clear-groups)
  exec "${drop[@]}" env -u DISPLAY "$SCRATCH/bin/skyvane-web-updater" --unattended --copy="$COPY" \
    $(through_proxy "$PORT")
}

want_healed() {
  want_status 0
  want_count 2 "files kept, because you have modified them"
  tree "$COPY" >"$SCRATCH/have_tree.txt"
  diff "$SCRATCH/want_tree.txt" "$SCRATCH/have_tree.txt" >"$SCRATCH/diff.txt" ||
    fail "$label: $(head -n 5 "$SCRATCH/diff.txt")"
}

# A run that ends before its moment is none of the kills: the moments are then drawn from a shorter
# span. How fast a run is depends on what else this machine does.
killed=0
for try in $(seq $((3 * kills))); do
  [ "$killed" -lt "$kills" ] || break
  [ $((killed % 4)) = 2 ] && PORT=$slow || PORT=$fast
  label="kill $killed"
  fresh_old_copy
  (exec_updater) >"$OUT" 2>&1 </dev/null &
  if [ $((killed % 2)) = 0 ]; then
    kill_at_work $! "${length[$PORT]}"
  else
    kill_unpacking $! $((length[$PORT] * 3 / 4)) "$COPY"
  fi
  if [ "$FOUND" = late ] || grep -q '^Finished' "$OUT"; then
    length[$PORT]=$((length[$PORT] * 4 / 5))
    continue
  fi
  killed=$((killed + 1))
  length[$PORT]=$((length[$PORT] * 21 / 20))
  PORT=$fast
  update
  want_healed
  [ -z "$(ls "$TMPDIR" | grep '^skyvane-run-')" ] || fail "$label: working files were left"
done
[ "$killed" = "$kills" ] || fail "only $killed runs could be killed in time"
echo "$killed killed, $UNPACKING of them while a file was half written; all healed"
