#!/usr/bin/env bash
# The sample release brought from old to new and on to newer: the copy ends as a fresh install
# would, with the user's own files untouched.
. "$(dirname "$0")/update_lib.bash"

# An old copy to start each case from, and the server of the new release.
install_release old "$SCRATCH/old"
serve_release new
root=$ROOT

# What a user adds: files of her own everywhere, also in a folder that the release drops, some with
# names like those of the program's own files.
own_files=("my flights.txt" .hidden "Aircraft/General Aviation/Mine/Mine.acf" Output/logbooks/log.txt
  "Aircraft/General Aviation/Little Wren/my notes.txt" Resources/preferences/Skyvane.prf
  "Airfoils/My wing.afl" "Instructions/$(printf 'Fran\xe7ais').txt" "Resources/fonts/a/b/mine.ttf")

make_copy() {
  local file
  rm -rf "$COPY"
  cp -a "$SCRATCH/old" "$COPY"
  for file in "${own_files[@]}"; do
    mkdir -p "$COPY/$(dirname "$file")"
    echo "mine: $file" >"$COPY/$file"
  done
  ln -s "my flights.txt" "$COPY/my link"
  give "$COPY"
}

# want_release VERSION [COPY]: the copy equals the release once the user's files are moved aside.
want_release() {
  local file copy=${2:-$COPY}
  for file in "${own_files[@]}"; do
    [ "$(cat "$copy/$file")" = "mine: $file" ] || fail "the user's file was touched: $file"
    rm "$copy/$file"
  done
  [ "$(readlink "$copy/my link")" = "my flights.txt" ] || fail "the user's link was touched"
  rm "$copy/my link"
  # The folders that only the user's files have kept.
  (cd "$copy" && rmdir -p --ignore-fail-on-non-empty "Aircraft/General Aviation/Mine" \
    "Aircraft/General Aviation/Little Wren" Resources/fonts/a/b)
  same_tree "$FIXTURE/sample/$1" Linux "$copy"
}

# --- from old to new, and then nothing left to do ------------------------------------------------

# The figures of the summary, by comparing the two source trees.
shipped "$FIXTURE/sample/old" Linux >"$SCRATCH/old.tsv"
shipped "$FIXTURE/sample/new" Linux >"$SCRATCH/new.tsv"
content_of() { cut -f2 "$SCRATCH/$1.tsv" | seen_below "$FIXTURE/sample/$1" | grep -v '^f '; }  # and links
fetched=$(comm -13 <(content_of old) <(content_of new) | wc -l)
dropped=$(comm -23 <(cut -f1 "$SCRATCH/old.tsv") <(cut -f1 "$SCRATCH/new.tsv") | wc -l)
total=$(($(wc -l <"$SCRATCH/new.tsv") + dropped))

make_copy
update
want_status 0 "Finished Web Update: I have finished updating $COPY/."
want_count "$total" "files checked"
want_count "$fetched" "files fetched"
want_count "$dropped" "files deleted"
want_count 0 "files kept, because you have modified them"
served=$(awk '{ sum += $10 } END { print sum }' "$SCRATCH/nginx-$PORT/access.log")
want_count "$served" "bytes moved"
grep -qxE '[0-9]+\.[0-9] seconds' "$OUT" || fail "no time in the summary"

prints "$COPY" >"$SCRATCH/before.txt"
update
want_status 0 "This copy of Skyvane ($COPY/) is already up to date."
want_count "$total" "files checked"
want_count 0 "files fetched"
prints "$COPY" | cmp -s - "$SCRATCH/before.txt" || fail "a current copy was touched"

# --- one small thing left to do is not nothing ---------------------------------------------------

rm "$COPY/Instructions/one byte.txt"
want 0 update
want_count 1 "files fetched"
cp "$SCRATCH/old/Weapons/Flare.wpn" "$COPY/Weapons/"
give "$COPY"
want 0 update
want_count 1 "files deleted"
want_release new

# --- on to the next release, in which dropped files return; and from old to it, one release left
# out ---------------------------------------------------------------------------------------------

new_port=$PORT
serve_release newer
newer_port=$PORT
for way in "$new_port $newer_port" "$newer_port"; do
  make_copy
  for PORT in $way; do
    want 0 update
  done
  want_release newer
done

PORT=$new_port

# --- the test release ----------------------------------------------------------------------------

# The next release is out as a test only: who wants it gets it, and the others stay.
ln -s "$FIXTURE/master-newer/disk_0/Skyvane newer" "$root/updates/Skyvane newer"
sed -i 's/^FINAL Skyvane new$/&\nBETA Skyvane newer/' "$root/serverlist9.txt"
make_copy
want 0 update
want 0 update --pref:_get_beta=1
want_release newer

# --- a volume without room -----------------------------------------------------------------------

need_root "mounting a small volume"
make_copy
size=$(du -s --block-size=4096 "$SCRATCH/old" | cut -f1)
volume "$SCRATCH/volume" "size=$(((size + 400) * 4096))"
cp -a "$SCRATCH/old" "$SCRATCH/volume/sim"
give "$SCRATCH/volume"
prints "$SCRATCH/volume/sim" >"$SCRATCH/before.txt"
COPY=$SCRATCH/volume/sim
want 2 update
want_text "There is a newer version of Skyvane 9 available, but you do not have enough free disk space to download and install the update."
want_text "Please free some space on your hard drive."
prints "$COPY" | cmp -s - "$SCRATCH/before.txt" || fail "no room, and yet touched"

# It fills up on the way: what is there stays whole, old or new, and none of it is later taken for
# the user's work.
mount -o "remount,size=$(((size + 4000) * 4096))" "$SCRATCH/volume"
serve "$root" 'limit_rate 500k;'
(until grep -q '^Installing' "$OUT"; do sleep 0.02; done
  head -c 100M /dev/zero >"$SCRATCH/volume/ballast" 2>"$SCRATCH/full.txt" || true) &
: >"$OUT"
update
wait
want_status 1 "Error: No space left on device. Perhaps your hard drive is full"
want_text "There were problems updating Skyvane."
rm "$SCRATCH/volume/ballast"
want 0 update
want_count 0 "files kept, because you have modified them"
cut -f1 "$SCRATCH/new.tsv" | while read -r rel; do
  [ -e "$COPY/$rel" ] || [ -L "$COPY/$rel" ] || fail "missing after the disk was full: $rel"
done
update
want_text "is already up to date."
