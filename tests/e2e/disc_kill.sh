#!/usr/bin/env bash
# An installer that is killed at any moment leaves a copy that the next runs make whole.
. "$(dirname "$0")/disc_lib.bash"

copy="$SCRATCH/Copy"
killed_in_work=0
for round in 1 2 3 4 5 6 7 8; do
  rm -rf "$copy" "$TMPDIR"/*
  for disc in 1 2 3; do is_in "$disc" || insert_disc "$disc"; done
  path=$(program skyvane-disc-installer)
  "$path" --unattended --accept_eula --dest="$SCRATCH" --name=Copy >"$OUT" 2>&1 &
  pid=$!
  # At another file each time, counted from the first that arrives.
  while kill -0 "$pid" 2>/dev/null &&
    [ "$(find "$copy" -type f 2>/dev/null | wc -l)" -lt $((round * round * 5)) ]; do :; done
  kill -KILL "$pid" 2>/dev/null && killed_in_work=$((killed_in_work + 1))
  wait "$pid" 2>/dev/null || true
  [ -d "$copy" ] || fail "no copy to mend"

  repair_all  # which leaves no working files, nor those of the killed run
done
[ "$killed_in_work" -ge 4 ] || fail "only $killed_in_work runs were killed before their end"

# Interrupted politely, it says so and leaves no working files.
rm -rf "$copy" "$TMPDIR"/*
take_out 3
path=$(program skyvane-disc-installer)
"$path" --unattended --accept_eula --dest="$SCRATCH" --name=Copy >"$OUT" 2>&1 &
pid=$!
CHILDREN+=("$pid")
until grep -qF "Please insert DVD number 3" "$OUT"; do sleep 0.05; done
kill -TERM "$pid"
STATUS=0
wait "$pid" || STATUS=$?
want_status 3
want_text "Given up: interrupted."
want_no_leftovers
