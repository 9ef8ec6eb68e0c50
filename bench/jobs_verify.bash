# Verification and update, beside programs that read the same files. Sourced by script/bench.

verify_begin() {
  whole_release
  serve_release
  installed_release
  signatures >"$SCRATCH/signatures.txt"
}

LOG="$SCRATCH/bin/Skyvane Installer Log.txt"
# What the last run says its verification took, in seconds.
pass_seconds() {
  awk '/^ Start of MD5 at / { from = $NF } /^ End of MD5 at / { to = $NF }
    END { if (to == "") exit 1; print to - from }' "$LOG"
}

by_update() {
  update "$COPY"
  cp "$OUT" "$SCRATCH/update.txt"
}
by_pass() {
  by_update
  WALL=$(pass_seconds)
}
by_md5deep() {
  lap md5deep -r -l "$COPY"
  cut -c1-32 "$OUT" | sort >"$SCRATCH/md5deep.txt"
}

found_all_right() {
  grep -qxF "$SHIPPED files checked" "$SCRATCH/update.txt" &&
    grep -qF "is already up to date." "$SCRATCH/update.txt"
}
found_the_same() { found_all_right && cmp "$SCRATCH/signatures.txt" "$SCRATCH/md5deep.txt"; }

job_verify_warm() {
  local goal with
  verify_begin
  by_update  # so that the copy is in memory, and the log says what it is hashed with
  with=$(sed -n 's/^ Files side by side: .*(\(.*\)).*/\1/p' "$LOG")
  case $with in
    AVX-512) goal=7 ;;
    AVX2) goal=4.5 ;;
    *) goal=1.6 ;;
  esac
  contest verify-warm "$goal" by_pass by_md5deep found_the_same "${with:-scalar}, $SHIPPED files; the pass alone"
}

job_verify_run() {
  verify_begin
  contest verify-run 5 by_update by_md5deep found_the_same "$SHIPPED files"
}

# Nothing of the copy is in memory. What is being written by others would stay there.
chill() {
  sync
  vmtouch -q -e "$COPY"
  [ "$(vmtouch "$COPY" | awk '/Resident Pages/ { split($3, at, "/"); print (at[1] * 50 > at[2]) }')" = 0 ] ||
    fail "the copy does not leave the page cache"
}
by_cold_update() {
  chill
  by_update
}
by_two_cats() {
  chill
  lap cat_all "$COPY"
}
cat_all() {
  find "$1" -type f -print0 | xargs -0 -P 2 -n 500 cat >/dev/null
}

job_verify_cold() {
  verify_begin
  contest verify-cold 0.95 by_cold_update by_two_cats found_all_right "$SHIPPED files, none in the page cache"
}

# --- an update of 5 % ------------------------------------------------------------------------------

lose_some() {
  tr '\n' '\0' <"$SCRATCH/lost.txt" | (cd "$COPY" && xargs -0 rm)
  sync
}
by_lossy_update() {
  lose_some
  by_update
  grep -qxF "$(wc -l <"$SCRATCH/lost.txt") files fetched" "$OUT" || fail "not all were brought back"
}
by_rsync() {
  lose_some
  lap rsync -rlc "$SOURCE/All/" "$COPY/"
}
by_rsync_md5() {
  lose_some
  lap rsync -rlc --cc=md5 "$SOURCE/All/" "$COPY/"
}
copy_is_whole() { same_files "$SOURCE/All" "$COPY"; }

job_update() {
  verify_begin
  (cd "$COPY" && find . -type f | sort | awk 'NR % 20 == 7') >"$SCRATCH/lost.txt"
  local note
  note="$(wc -l <"$SCRATCH/lost.txt") of $SHIPPED files gone"
  contest update 1.0 by_lossy_update by_rsync copy_is_whole "$note; rsync -rlc"
  contest update-md5 5 by_lossy_update by_rsync_md5 copy_is_whole "$note; rsync -rlc --cc=md5"
}
