#!/usr/bin/env bash
# A release on three discs becomes a copy that equals its source, with the discs changed on the way.
. "$(dirname "$0")/disc_lib.bash"

# The run begins with no disc at all, and waits for the first one.
(until grep -qs "DVD number one to begin" "$OUT"; do sleep 0.05; done; insert_disc 1) &
CHILDREN+=($!)
run_with_discs --accept_eula --dest="$SCRATCH" --name="My copy"
want_status 0 "Please insert Skyvane 9 DVD number one to begin."
want_text "Finished Installing Skyvane: Installation was successful."
want_asked_for "2 3 "
same_tree "$SOURCE" Linux "$SCRATCH/My copy"
want_no_leftovers
! is_in 1 && ! is_in 2 || fail "a disc that was done with was not ejected"
grep -qxF "$SCRATCH/My copy/" "$XDG_CONFIG_HOME"/*/skyvane_install.txt || fail "not registered"

# The next run knows the copy, and offers another one. All discs in drives of their own: none is asked
# for, none is ejected; and without scenery none comes.
all_discs_of "$IMAGES"
want 0 run_with_discs --accept_eula --dest="$SCRATCH" --name=None --sectors=none
want_asked_for ""
SECTORS=nothing same_tree "$SOURCE" Linux "$SCRATCH/None"
is_in 1 && is_in 2 && is_in 3 || fail "a disc was ejected without need"

want_no_leftovers
