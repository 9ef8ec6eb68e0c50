#!/usr/bin/env bash
# Started from the disc, the installer leaves it: the disc can be ejected while it works, the caller
# gets its exit status, and nothing but its log stays behind.
. "$(dirname "$0")/disc_lib.bash"

start_from_disc() {
  : >"$OUT"
  attend &
  local hand=$!
  STATUS=0
  (cd "$SCRATCH" && env -u DISPLAY timeout 300 "$DISC/skyvane-disc-installer" --unattended \
    --give_up_after=60 "$@") >"$OUT" 2>&1 </dev/null || STATUS=$?
  kill "$hand" && wait "$hand" || true
}

only_disc 1
start_from_disc --accept_eula --dest=. --name=Copy
want_status 0
want_text "Finished Installing Skyvane: Installation was successful."
want_asked_for "2 3 "
same_tree "$SOURCE" Macintosh "$SCRATCH/Copy"
! is_in 1 || fail "the first disc was not ejected"
want_no_leftovers
log=$(echo "$XDG_CONFIG_HOME"/*/"Skyvane Installer Log.txt")
grep -q "os_dir_this_app.*=$TMPDIR/skyvane-disc-" "$log" || fail "no log of the copy's run"

# A run that fails gives its own status as well; the temporary folder may be a link.
only_disc 1
ln -s tmp "$SCRATCH/link"
TMPDIR=$SCRATCH/link start_from_disc --dest=. --name=Other
want_status 2
want_text "I accept this agreement."
want_no_leftovers

# Where nothing that is copied can run, it works from the disc.
only_disc 1
insert_disc 2
insert_disc 3
DISC=${DISC%/*}/1
mkdir "$SCRATCH/tight"
if [ "$(id -u)" = 0 ]; then
  mount -t tmpfs -o size=200m,noexec tmpfs "$SCRATCH/tight"
  MOUNTS+=("$SCRATCH/tight")
  TMPDIR=$SCRATCH/tight start_from_disc --accept_eula --dest=. --name=Third --sectors=none
  want_status 0
  SECTORS=nothing same_tree "$SOURCE" Macintosh "$SCRATCH/Third"
  [ -z "$(ls "$SCRATCH/tight")" ] || fail "working files were left: $(ls "$SCRATCH/tight")"
fi
