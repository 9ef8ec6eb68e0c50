#!/usr/bin/env bash
# Three successive masters: every history in their manifests is the one that the source trees, hashed
# here with md5sum, ask for.
. "$(dirname "$0")/lib.sh"

# hashes VERSION: every file of a tree that the builder ships for some platform, as "path TAB md5".
hashes() {
  local src=$FIXTURE/sample/$1 platform from
  for platform in Macintosh Windows Linux; do shipped "$src" "$platform" | cut -f2; done | sort -u |
    while IFS= read -r from; do
      if [ -L "$src/$from" ]; then
        printf '%s\t%s\n' "$from" "$(printf %s "$(readlink "$src/$from")" | md5sum | cut -d' ' -f1)"
      else
        printf '%s\t%s\n' "$from" "$(md5sum <"$src/$from" | cut -d' ' -f1)"
      fi
    done
}

# histories VERSION: a manifest as "path TAB version:signature version:signature ...", sorted.
histories() {
  awk '/^DIR /{ dir = substr($0, 5) }
       /^FILE /{ name = $0; sub(/^FILE [^ ]+ [^ ]+ [^ ]+ [^ ]+ [^ ]+ [^ ]+ /, "", name)
                 h[dir name] = h[dir name] " " $4 ":" $7 }
       END { for (path in h) print path "\t" substr(h[path], 2) }' \
    "$FIXTURE/manifest-$1/directory.txt" | sort
}

for version in old new newer; do hashes "$version" >"$SCRATCH/$version.tsv"; done

# What each manifest must say, from the trees alone: a file that is there has its earlier states,
# oldest first and each under the number it last came with, and last its present one; a file that is
# gone has its states and a "GONE" of the release that dropped it.
awk -F'\t' -v dir="$SCRATCH" '
  function load(name, number,   line, part) {
    delete now
    while ((getline line < (dir "/" name ".tsv")) > 0) { split(line, part, "\t"); now[part[1]] = part[2] }
    for (path in now) {
      kept = ""; n = split(past[path], old, " ")
      for (i = 1; i <= n; i++) {
        split(old[i], state, ":")
        if (state[2] != now[path] && state[2] != "GONE") kept = kept old[i] " "
      }
      past[path] = kept number ":" now[path]
    }
    for (path in past) if (!(path in now) && past[path] !~ /:GONE$/) past[path] = past[path] " " number ":GONE"
    for (path in past) print path "\t" past[path] > (dir "/want-" name ".tsv")
    close(dir "/want-" name ".tsv")
  }
  BEGIN { load("old", 90900); load("new", 91001); load("newer", 91100) }'

for version in old new newer; do
  histories "$version" >"$SCRATCH/have.tsv"
  sort "$SCRATCH/want-$version.tsv" | diff - "$SCRATCH/have.tsv" >"$SCRATCH/diff.txt" ||
    fail "histories of $version: $(head -n 6 "$SCRATCH/diff.txt")"
done
# The sample holds each kind of history at least once, or this test would prove little.
for kind in '90900:[0-9a-f]* 91001:[0-9a-f]*$' '91001:GONE$' '^[^	]*	91001:[0-9a-f]*$'; do
  grep -qE "$kind" "$SCRATCH/want-new.tsv" || fail "no history like $kind"
done
comm -12 <(cut -f1 "$SCRATCH/newer.tsv") <(grep 'GONE$' "$SCRATCH/want-new.tsv" | cut -f1 | sort) |
  grep -q . || fail "nothing returns in the third release"
