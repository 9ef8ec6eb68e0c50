# An install from a disc image, beside cp and unzip. Sourced by script/bench.

insert_disc() {
  DISC=$SCRATCH/disc
  mkdir "$DISC"
  fuseiso -n "$1" "$DISC" 2>/dev/null || mount -o loop,ro "$1" "$DISC" 2>/dev/null ||
    fail "no disc image can be mounted here"
  MOUNTS+=("$DISC")
  # Read once, so that no pair finds it colder than another.
  cat "$1" >/dev/null
}

by_disc_install() {
  rm -rf "$SCRATCH/ours"
  sync
  lap "$(program skyvane-disc-installer)" --unattended --accept_eula --dest="$SCRATCH" --name=ours
}
by_cp_and_unzip() {
  rm -rf "$SCRATCH/peer" "$SCRATCH/archives"
  mkdir "$SCRATCH/peer"
  sync
  lap cp_and_unzip "$DISC/$NAME" "$SCRATCH/archives" "$SCRATCH/peer"
}
# A process a folder, and as many at once as there are processors.
cp_and_unzip() {  # RELEASE ARCHIVES TO
  cp -r "$1" "$2"
  cd "$2"
  find . -name '*.zip' ! -name directory.txt.zip -printf '%h\n' | sort -u | tr '\n' '\0' |
    xargs -0 -P "$(nproc)" -I{} sh -c 'to=$2/${1#./*/}; mkdir -p "$to"; exec unzip -q -o "$1/*.zip" -d "$to"' _ {} "$3"
}
disc_installed_the_same() { same_files "$SCRATCH/ours" "$SCRATCH/peer"; }

job_disc() {
  release disc-5000 grown_files 5000 1
  [ -e "$MASTER.iso" ] || {
    "$ROOT/script/make_discs" "${MASTER%/*/*}" "${MASTER%/*/*}" >/dev/null
    mv "${MASTER%/*/*}/disc_1.iso" "$MASTER.iso"
  }
  insert_disc "$MASTER.iso"
  contest disc 1.5 by_disc_install by_cp_and_unzip disc_installed_the_same "$SHIPPED files of at most 64 KB"
}
