# Shared by the end-to-end tests of the discs; each sources this file in place of lib.sh.
#
# A test runs in a mount namespace of its own, so that tests side by side do not find each other's
# discs. The discs are real images, mounted by fuseiso or by the kernel; where neither can mount
# one, the disc's folder is bound below /media instead.

if [ -z "${DISC_NAMESPACE:-}" ]; then
  unshare_options=(--mount --propagation private)
  [ "$(id -u)" = 0 ] || unshare_options+=(--user --map-root-user)
  unshare "${unshare_options[@]}" true 2>/dev/null || {
    echo "no mount namespace of its own can be had, so no disc can be mounted"
    exit 77
  }
  DISC_NAMESPACE=1 exec unshare "${unshare_options[@]}" "$0" "$@"
fi

. "$(dirname "$0")/lib.sh"
need_tools xorriso 7z
# An ordinary user is root in the namespace alone, and cannot make a folder below /media.
[ -w /media ] || mount -t tmpfs tmpfs /media 2>/dev/null || { echo "needs root: a folder below /media"; exit 77; }

RELEASE="Skyvane 9"
SOURCE=$FIXTURE/sample-discs/new  # what is on the discs
IMAGES=$FIXTURE/discs             # disc_1.iso and on
MASTER=$FIXTURE/master-discs      # disk_0 and on
DISCS=$SCRATCH/discs              # where this test mounts them
export TMPDIR=$SCRATCH/tmp
mkdir -p "$DISCS" "$TMPDIR"

# Made by the first test that comes here: a release with ready scenery archives, on three discs.
make_fixture() {
  [ -e "$IMAGES/made" ] && return
  rm -rf "$FIXTURE/sample-discs" "$MASTER" "$IMAGES"
  "$BIN/make-sample" --7z=all "$FIXTURE/sample-discs"
  "$(program skyvane-disc-installer)" --build_master --type=1 --name="$RELEASE" \
    --source="$SOURCE" --output="$MASTER" --disk_kb=3850
  "$(dirname "$0")/../../script/make_discs" --program="$BIN/skyvane-disc-installer" \
    --resources="$BIN/Resources" \
    "$MASTER" "$IMAGES"
  touch "$IMAGES/made"
}
(
  flock 9
  make_fixture >"$SCRATCH/fixture.txt" 2>&1 || { cat "$SCRATCH/fixture.txt"; exit 1; }
) 9>"$FIXTURE/discs.lock"

disc_finish() {
  local code=$?
  set +e
  for disc in "$DISCS"/* "/media/skyvane-e2e-$$"/*; do
    mountpoint -q "$disc" && umount -l "$disc"
  done
  [ -d "/media/skyvane-e2e-$$" ] && rm -r "/media/skyvane-e2e-$$"
  (exit "$code")
  finish
}
trap disc_finish EXIT

# insert_disc N [IMAGES]: mounts disc N; leaves DISC, its mount point.
insert_disc() {
  DISC=$DISCS/$1
  local image=${2:-$IMAGES}/disc_$1.iso folder=/media/skyvane-e2e-$$/$1
  mkdir -p "$DISC"
  fuseiso -n "$image" "$DISC" 2>/dev/null && return
  mount -o loop,ro "$image" "$DISC" 2>/dev/null && return
  DISC=$folder
  mkdir -p "$folder"
  if [ ! -d "$SCRATCH/folder_$1" ]; then
    xorriso -osirrox on -indev "$image" -extract / "$SCRATCH/folder_$1" 2>/dev/null
  fi
  mount --bind "$SCRATCH/folder_$1" "$folder" && return
  echo "needs root: a disc image, which cannot be mounted here by fuse, as iso9660 or as a folder"
  exit 77
}

is_in() { mountpoint -q "$DISCS/$1" || mountpoint -q "/media/skyvane-e2e-$$/$1"; }

take_out() { ! is_in "$1" || umount -l "$DISCS/$1" 2>/dev/null || umount -l "/media/skyvane-e2e-$$/$1"; }

# only_disc N [IMAGES]: that one, and no other.
only_disc() {
  for disc in 1 2 3; do take_out "$disc"; done
  insert_disc "$@"
}

all_discs_of() {  # IMAGES
  for disc in 1 2 3; do take_out "$disc"; insert_disc "$disc" "$1"; done
}

# damaged COMMAND...: images in BAD from the master as the command leaves it (run in its copy).
BAD=$SCRATCH/bad
damaged() {
  rm -rf "$SCRATCH/master" "$BAD"
  cp -r "$MASTER" "$SCRATCH/master"
  (cd "$SCRATCH/master" && "$@")
  "$(dirname "$0")/../../script/make_discs" "$SCRATCH/master" "$BAD" >/dev/null
}

# repair_all: two runs from good discs make $copy whole, whatever was wrong with it.
repair_all() {
  all_discs_of "$IMAGES"
  want 0 run_with_discs --do=repair --on_modified=overwrite
  want 0 run_with_discs --do=scenery --sectors=all --on_modified=overwrite
  same_tree "$SOURCE" Linux "$copy"
  want_no_leftovers
}

# The hand that changes discs: puts in each disc that the program asks for.
attend() {
  local served=0
  while sleep 0.02; do
    mapfile -t asked < <(grep -oP '^Please insert DVD number \K\d+' "$OUT" 2>/dev/null)
    while [ "$served" -lt ${#asked[@]} ]; do
      insert_disc "${asked[served]}"
      served=$((served + 1))
    done
  done
}

# attended COMMAND...: one that leaves OUT and STATUS, with somebody who changes the discs.
attended() {
  : >"$OUT"
  attend &
  local hand=$!
  "$@"
  kill "$hand" && wait "$hand" || true
}

# run_with_discs ARGS...: the disc installer, attended.
run_with_discs() {
  attended run "${DISC_PROGRAM:-skyvane-disc-installer}" --unattended --give_up_after=60 "$@"
}

# install_some: the copy $copy by the name Copy, with one sector's scenery.
install_some() {
  copy="$SCRATCH/Copy" SECTORS='\\+30-120'
  only_disc 1
  want 0 run_with_discs --accept_eula --dest="$SCRATCH" --name=Copy --sectors=+30-120
}

asked_for() { grep -oP '^Please insert DVD number \K\d+' "$OUT" | tr '\n' ' ' || true; }

want_asked_for() {
  [ "$(asked_for)" = "$1" ] || fail "asked for the discs '$(asked_for)', wanted '$1'"
}

want_no_leftovers() {
  [ -z "$(ls "$TMPDIR")" ] || fail "working files were left: $(ls "$TMPDIR")"
}

# What is shipped on discs: the scenery of the sectors in SECTORS, a regular expression, too.
SECTORS='.*'
shipped() {
  candidates "$1" "$2" '\.7z$' '/900 red terrain/|/Earth Orbit Textures/' |
    awk -F'\t' -v want="/($SECTORS)/" '!/(Global Scenery|default scenery\/DSF 820).*dsf$/ || $0 ~ want'
}
