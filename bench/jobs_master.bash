# The makers' side, beside zip and md5sum. Sourced by script/bench.

by_build() {
  rm -rf "$SCRATCH/master"
  sync
  build_master "$SOURCE" "$SCRATCH/master" --previous=none
}

by_zip_and_md5sum() {
  rm -f "$SCRATCH/all.zip"
  sync
  lap zip_and_sum "$SOURCE" "$SCRATCH/all.zip" "$SCRATCH/sums.txt"
}
zip_and_sum() {  # TREE ZIP SUMS
  cd "$1"
  zip -q -r "$2" All &
  find All -type f -print0 | xargs -0 md5sum >"$3"
  wait $!
}

# The sum of each entry's bytes, as the archives have it.
crcs() { unzip -v "$@" 2>/dev/null | awk '$8 != "" && $7 ~ /^[0-9a-f]{8}$/ && $1 > 0 { print $7 }'; }
built_the_same() {
  cmp <(cut -c1-32 "$SCRATCH/sums.txt" | sort) <(unzip -p "$SCRATCH/master/disk_0/$NAME/directory.txt.zip" |
    awk '$1 == "FILE" { print $7 }' | sort) &&
    cmp <(crcs "$SCRATCH/all.zip" | sort) <(
      find "$SCRATCH/master/disk_0/$NAME/All" -name '*.zip' -printf '%h\n' | sort -u |
        while read -r folder; do crcs "$folder/*.zip"; done | sort)
}

archive_bytes() { find "$SCRATCH/master" -name '*.zip' ! -name directory.txt.zip -printf '%s\n' | awk '{ s += $1 } END { printf "%.0f", s }'; }

job_master() {
  whole_release
  contest master 3.5 by_build by_zip_and_md5sum built_the_same "$SHIPPED files"
  awk -v ours="$(archive_bytes)" -v zip="$(stat -c %s "$SCRATCH/all.zip")" \
    'BEGIN { printf "master: our archives have %.4f of the size of zip'\''s\n", ours / zip }'
}

# --- the next release, 5 % changed -----------------------------------------------------------------

NEXT=       # the tree of the next release
LAST=$SCRATCH/last  # the master before it

build_next() {  # OUTPUT OPTIONS...
  build_master "$NEXT" "$1" --release=91100 --previous="$MANIFEST" "${@:2}"
}
by_next_build() {
  rm -rf "$SCRATCH/reused"
  sync
  build_next "$SCRATCH/reused" --reuse="$LAST"
}
next_is_right() { diff -rq "$SCRATCH/anew" "$SCRATCH/reused"; }

job_master_next() {
  whole_release
  NEXT=${SOURCE%/*}/next
  rm -rf "$NEXT"
  cp -al "$SOURCE" "$NEXT"
  # A file of its own in place of the link, and one byte more in it.
  find "$NEXT/All" -type f | awk 'NR % 20 == 7' | while read -r path; do
    cp -p "$path" "$path.new"
    echo >>"$path.new"
    mv "$path.new" "$path"
  done
  build_master "$SOURCE" "$LAST" --previous=none
  build_next "$SCRATCH/anew"
  contest master-next 10 by_next_build by_build next_is_right "$SHIPPED files, 5 % changed; the peer is our first build"
}
