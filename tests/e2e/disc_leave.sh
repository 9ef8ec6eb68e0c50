#!/usr/bin/env bash
# Started from the disc, the installer leaves it: the disc can be ejected while it works, the caller
# gets its exit status, and nothing but its log stays behind.
. "$(dirname "$0")/lib_window_disc.bash"

from_disc() {
  STATUS=0
  (cd "$SCRATCH" && env -u DISPLAY timeout 300 "$DISC/skyvane-disc-installer" --unattended \
    --give_up_after=60 "$@") >"$OUT" 2>&1 </dev/null || STATUS=$?
}
start_from_disc() { attended from_disc "$@"; }

only_disc 1
start_from_disc --accept_eula --dest=. --name=Copy
want_status 0 "Finished Installing Skyvane: Installation was successful."
want_asked_for "2 3 "
same_tree "$SOURCE" Linux "$SCRATCH/Copy"
! is_in 1 || fail "the first disc was not ejected"
want_no_leftovers
log=$(echo "$XDG_STATE_HOME"/*/"Skyvane Installer Log.txt")
grep -q "os_dir_this_app.*=$TMPDIR/skyvane-disc-" "$log" || fail "no log of the copy's run"

# A run that fails gives its own status as well; the temporary folder may be a link.
only_disc 1
ln -s tmp "$SCRATCH/link"
TMPDIR=$SCRATCH/link start_from_disc --dest=. --name=Other
want_status 2 "I accept this agreement."
want_no_leftovers

# Where nothing that is copied can run, it works from the disc.
all_discs_of "$IMAGES"
DISC=${DISC%/*}/1
if [ "$(id -u)" = 0 ]; then
  volume "$SCRATCH/tight" size=200m,noexec
  TMPDIR=$SCRATCH/tight want 0 start_from_disc --accept_eula --dest=. --name=Third --sectors=none
  SECTORS=nothing same_tree "$SOURCE" Linux "$SCRATCH/Third"
  [ -z "$(ls "$SCRATCH/tight")" ] || fail "working files were left: $(ls "$SCRATCH/tight")"
fi

# With a window, and in German: the one that was started ends when its copy takes over, with the
# language files; the disc is free from then on.
only_disc 1
export XDG_CONFIG_HOME=$SCRATCH/other XDG_STATE_HOME=$SCRATCH/other_state  # where no copy is known
own_home
copy_pid() { WINDOW_PID=$(pgrep -f "^$TMPDIR/skyvane-disc-"); }
start_display
STATUS=0
"$DISC/skyvane-disc-installer" --pref:_lang=2 >"$OUT" 2>&1 </dev/null || STATUS=$?
want_status 1
wait_for "the copy" copy_pid
wait_for "its window" find_window
xdotool mousemove $((SCREEN_DX - 1)) $((SCREEN_DY - 1))
diff -r "$DISC/Resources" "$TMPDIR"/skyvane-disc-*/Resources || fail "the language files were left behind"
wait_open
wait_for "the disc to be free" umount "$DISC"  # it is looked at now and again
shot leave_disc
insert_disc 1
walk_to_map
press_next
change_disc 1 2
change_disc 2 3
wait_step 5
same_tree "$SOURCE" Linux "$HOME/Desktop/$RELEASE"

# The simulator that it starts stands on its own: the copy is gone, and its folder.
press_extra 0
wait_file_text "$OUT" "Started: Linux/Skyvane.app (revision 1)"
[ "$(grep -vc ^Started "$OUT")" = 0 ] || fail "more was said"
want_no_leftovers
! grep -a "ERROR: language" "$XDG_STATE_HOME"/*/*Log.txt || fail "a language file was not found"
