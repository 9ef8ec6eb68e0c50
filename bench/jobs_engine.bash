# Parts of the engine by themselves: reading a manifest, deciding, unpacking. Sourced by script/bench.

# manifest FILES: of that many files, forty a folder, every third with an earlier version.
manifest() {
  awk -v files="$1" 'BEGIN {
    printf "I\n900 version\nINSTALLER\n\n"
    for (i = 0; i < files; ++i) {
      if (i % 40 == 0) printf "\nDIR ALL_os/Custom Scenery/region %04d/objects/\n", i / 40
      for (version = i % 3 != 0; version < 2; ++version)
        printf "FILE 0 0 %d 12 %d %032x building %06d.obj\n", 90500 + 501 * version, i % 50, i * 2 + version, i
    }
  }' >"$SCRATCH/directory.txt"
}

# probe ARGS...: a lap of one call of the engine, timed by itself; leaves FOUND, what came of it.
probe() {
  lap "$BIN/probe" "$@"
  read -r WALL FOUND <"$OUT"
}

by_read() { probe read "$SCRATCH/directory.txt"; }
by_awk() { lap awk '{ n++; s += $6 } END { print s }' "$SCRATCH/directory.txt"; }
read_the_same() { [ "$FOUND" = "500000 $(cat "$OUT")" ]; }

job_manifest() {
  manifest 375000
  contest manifest 1.5 by_read by_awk read_the_same "500,000 lines"
}

by_decide() { probe decide "$SCRATCH/directory.txt"; }

job_decide() {
  manifest 500000
  figure decide 0.02 s by_decide "500,000 histories, none on disk"
  [ "$FOUND" = 500000 ] || fail "not all of the files are to be fetched"
}

# --- unpacking -------------------------------------------------------------------------------------

by_unpack() {
  rm -rf "$TO"
  mkdir -p "$TO/ours" "$TO/peer"
  sync
  probe unpack "$MANIFEST" "$SCRATCH/zips/" "$TO/ours/"
}
by_unzip() {
  sync
  lap unzip -q -o "$SCRATCH/zips/*.zip" -d "$TO/peer"
}
unpacked_the_same() { same_files "$TO/ours" "$TO/peer"; }

job_unpack() {
  release small-5000 small_files 5000
  mkdir "$SCRATCH/zips"
  find "$MASTER" -name '*.bin.zip' -exec cp -t "$SCRATCH/zips" {} +
  local note="5,000 archives of 5 to 10 KB; ours with a thread a processor, and compared with their signatures"
  # A file system in memory, which goes with the job.
  mkdir "$SCRATCH/memory"
  mount -t tmpfs none "$SCRATCH/memory"
  MOUNTS+=("$SCRATCH/memory")
  TO=$SCRATCH/memory/unpacked
  contest unpack-tmpfs 4.5 by_unpack by_unzip unpacked_the_same "$note"
  TO=$SCRATCH/unpacked
  contest unpack-disk 2.3 by_unpack by_unzip unpacked_the_same "$note"
}
