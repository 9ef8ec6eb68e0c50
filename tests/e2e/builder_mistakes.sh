#!/usr/bin/env bash
# A maker's mistakes, as the program meets them: what it says, its status, and that nothing is left.
# Then a tree of real files with hundreds of faults, all of them told in one run.
. "$(dirname "$0")/lib.sh"

TREE=$SCRATCH/tree MASTERS=$SCRATCH/masters
cp -a "$FIXTURE/sample/new" "$TREE"
rm -r "$TREE/All/Custom Scenery/"*World-Wide
mkdir "$MASTERS"
previous=$FIXTURE/manifest-old/directory.txt
master=$FIXTURE/master-old/disk_0/Skyvane\ old
cp "$master/directory.txt.zip" "$SCRATCH/manifest.zip"
cp "$master/All/Airfoils/flat plate.afl.zip" "$SCRATCH/another.zip"
head -c 5000 "$SCRATCH/manifest.zip" >"$SCRATCH/cut.zip"
: >"$SCRATCH/empty"

# build FLAG...: of the tree, by flags that would succeed but for the last ones, which win.
build() {
  run skyvane-demo-installer --build_master --type=0 --release=91001 --source="$TREE" \
    --output="$MASTERS" --previous="$previous" "$@"
}
nothing_left() {
  [ -z "$(find "$MASTERS" -mindepth 1 -print -quit)" ] || fail "left behind: $(find "$MASTERS" | head)"
}

# Status, what is said ("@" is a line end) and flags.
while IFS='|' read -r status said flags; do
  # shellcheck disable=SC2086  # several flags
  want "$status" build $flags
  grep -qF -- "$said" <(tr '\n' '@' <"$OUT") || fail "$flags: does not say: $said"
  nothing_left
done <<ROWS
1|I could not read the old directory!|--previous=/etc/passwd
1|@  /etc/passwd: it is no manifest of ours, |--previous=/etc/passwd
1|/empty: it is no manifest of ours, |--previous=$SCRATCH/empty
1|/another.zip: it is no manifest of ours, |--previous=$SCRATCH/another.zip
1|/cut.zip: it is a damaged zip, |--previous=$SCRATCH/cut.zip
1|/none.txt: there is no such file. |--previous=$SCRATCH/none.txt
1|This version is there already: version_number 90900.000000@in file |--release=90900
1|Give this build a number of its own, above all earlier ones, by --release=N.|--release=90900
1|@There is no Mars scenery in this tree!@|--type=2
1|--type=3 builds Moon scenery, and no file of it is there. |--type=3
1|3 discs of 0 MB are full, with this file and others still to come. Raise --disk_kb.@|--disk_kb=100
2|There is no flag "--relese"|--relese=91200
2|There is no flag "extra"|extra
2|--reuse needs the output folder of a build|--reuse=$SCRATCH
2|--threads needs a whole number from 1 to 256|--threads=0
0|Skyvane 9: |--check
0|Nothing is wrong, and nothing was written.@|--check --previous=$SCRATCH/manifest.zip
ROWS

# Both files of a collision are named, and it is no more than a warning.
echo one >"$TREE/All/Weapons/Same.wpn"
mkdir -p "$TREE/Linux/Weapons"
echo two >"$TREE/Linux/Weapons/same.wpn"
want 0 build --check
want_text "WARNING: two files of this release install to the same place where the case of letters does \
not count: All/Weapons/Same.wpn and Linux/Weapons/same.wpn"

# No program, and one that may not be written to, which only an ordinary user notices.
echo "no program" >"$TREE/Windows/Tool.exe"
want 1 build
want_text "/Windows/Tool.exe: every .exe in Windows/ is made large-address-aware, and this one cannot be: \
it has no header of a Windows program. "
nothing_left
rm "$TREE/Windows/Tool.exe"

# --- a real tree, as packages bring it ----------------------------------------------------------
real=$TREE/All/Resources/real
mkdir -p "$real"
usable() { find usr/share usr/include -xdev -type f -readable -size +0 -size -200k "$@" -print0 | sort -z; }
(
  cd /
  { usable \( -path '*copy*' -o -name '*:*' -o -path '*.cpp*' \)
    usable ! -path '*copy*' ! -name '*:*' | head -zn "${E2E_FILES:-3000}" || true; } |
    sort -zu | tar --null -T - -cf - | tar -C "$real" -xf -
)
files=$(find "$real" -type f | wc -l)
[ "$files" -ge 1000 ] || { echo "only $files usable files below /usr/share and /usr/include"; exit 77; }

# What the rules make of it, said in other words: the first part of each path that has to be renamed.
wanted() {
  (cd "$TREE" && find All -type f -path '*copy*') |
    awk '{ n = split($0, part, "/"); path = part[1]
           for (i = 1; i <= n; i++) {
             if (i > 1) path = path "/" part[i]
             if (part[i] ~ /copy/) { print path; next }
           } }' | sort -u
}
copies=$(wanted | wc -l)
[ "$copies" -ge 100 ] || fail "the tree has too few faults to prove anything: $copies"
want 1 build --json
nothing_left
grep -qE "^[0-9]+ faults, of which [0-9]+ are shown; the log has all of them: .*copy $copies[,.]" "$OUT" ||
  fail "the count of copies is not $copies"
[ "$(grep -c '^  /' "$OUT")" -le 50 ] || fail "more than 50 faults on the terminal"
grep -qE "\"result\": \"failed\", \"status\": 1, .*\"files\": [0-9]+, .*\"faults\": [0-9]+" "$OUT" ||
  fail "no summary: $(tail -n 1 "$OUT")"

# One run was enough: with every place that the log names mended, nothing is wrong any more.
log=$SCRATCH/bin/Skyvane\ Installer\ Log.txt
grep -aoE '^  /.*: (nothing with|source code|these characters|a path may|other platforms|whoever)' "$log" |
  sed -E 's#^  (.*): [^:]*$#\1#' >"$SCRATCH/places"
[ "$(wc -l <"$SCRATCH/places")" = "$(sed -nE 's/^([0-9]+) faults, of.*/\1/p' "$OUT")" ] ||
  fail "the log does not have all faults"
while IFS= read -r place; do rm -rf "$place"; done <"$SCRATCH/places"
want 0 build --check

# --- ended by the maker -------------------------------------------------------------------------
# On a terminal the line of progress is rewritten, and "q" ends the build; elsewhere a signal does.
wait_for_master() { until [ -d "$MASTERS/disk_0" ]; do sleep 0.02; done; }
command="'$(program skyvane-demo-installer)' --build_master --type=0 --name=X --source='$TREE' \
  --output='$MASTERS' --previous=none --threads=1"
STATUS=0
rm "$OUT"  # of the build before
(until grep -qas "now doing" "$OUT"; do sleep 0.02; done; printf q) | timeout 100 script -qec "$command" /dev/null >"$OUT" || STATUS=$?
want_status 1 "You have pressed Q."
grep -qaP '\rreg: 0: total files to compress: \d+\. now doing: \d+\. \d+ of \d+ MB' "$OUT" || fail "no progress"
nothing_left
for signal in INT TERM; do
  bash -c "exec $command" >"$OUT" 2>&1 </dev/null &
  wait_for_master
  kill -"$signal" $!
  wait_end $!
  want_status $((128 + $(kill -l "$signal")))
  want_text "Ended by a signal: no part of a master is left."
  nothing_left
done
echo "$files real files, $(wc -l <"$SCRATCH/places") faults"
