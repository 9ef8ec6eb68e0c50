#!/usr/bin/env bash
# A real tree: files that this machine's packages brought are built into a master, served, installed,
# verified, damaged in one of twenty, and brought back.
#
# E2E_FILES  how many files (default 3000)
. "$(dirname "$0")/update_lib.bash"

files=${E2E_FILES:-3000}
name="Skyvane large"
source=$SCRATCH/source
here=All/Resources/real

cp -a "$FIXTURE/sample/new" "$source"
real_tree "$files" "$source/$here"
give "$source"
files=$(wc -l <"$SCRATCH/list.txt")
echo "$files files, $(du -sh --apparent-size "$source/$here" | cut -f1)"

mkdir "$SCRATCH/master"
give "$SCRATCH/master"
as_user "$SCRATCH/bin/skyvane-demo-installer" --build_master --type=0 --name="$name" \
  --source="$source" --output="$SCRATCH/master" --previous=none >"$OUT" 2>&1
serve "$(web_root "$name" "$SCRATCH/master")"
want 0 run_as_user skyvane-demo-installer --accept_eula --dest="$SCRATCH" --name=sim

# real FOLDER: the files in it, their bytes and their modes.
real() {
  prints "$1" | grep -v ' d [0-7]*$'
}
real "$source/$here" >"$SCRATCH/want.txt"
[ "$(wc -l <"$SCRATCH/want.txt")" = $((2 * files)) ] || fail "the tree has not all files"

same_real() {
  real "$COPY/Resources/real" | diff "$SCRATCH/want.txt" - >"$SCRATCH/diff.txt" ||
    fail "$1: $(head -n 3 "$SCRATCH/diff.txt")"
}
same_real "after the install"

update
want_status 0 "is already up to date."

# Damage one of twenty, and bring it back.
damaged=0
while read -r path; do
  file=$COPY/Resources/real$path
  if [ $((damaged % 2)) = 0 ]; then mv "$file" "$file.mine"; else truncate -s -1 "$file"; fi
  damaged=$((damaged + 1))
done < <(awk 'NR % 20 == 7' "$SCRATCH/list.txt")

want 0 update --on_modified=overwrite
want_count "$damaged" "files fetched"
want_count $((damaged / 2)) "files replaced or deleted, though you had modified them"
[ "$(find "$COPY/Resources/real" -name '*.mine' -print -delete | wc -l)" = $(((damaged + 1) / 2)) ] ||
  fail "the user's own files are not all there"
same_real "after the repair"
