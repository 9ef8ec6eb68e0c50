#!/usr/bin/env bash
# The main job: the sample release, served by nginx, becomes a copy that equals its source.
. "$(dirname "$0")/lib.sh"

serve_release new
install_demo "My copy"
want_status 0 "I have finished installing the Skyvane 9 web demo at: $SCRATCH/My copy/."
same_tree "$FIXTURE/sample/new" Linux "$SCRATCH/My copy"

# A second run into the same place is refused by the page's own words, and changes nothing.
install_demo "My copy"
want_status 2 "The folder 'My copy' already exists in the folder '$SCRATCH/'."
same_tree "$FIXTURE/sample/new" Linux "$SCRATCH/My copy"

want 0 run skyvane-demo-installer --version
[ "$(cat "$OUT")" = "Skyvane Web Demo Installer 2.01r1" ] || fail "no version"

# Without the licence nothing is fetched.
run skyvane-demo-installer --unattended --dest="$SCRATCH" --name=Other $(through_proxy "$PORT")
want_status 2 "I accept this agreement."
[ ! -e "$SCRATCH/Other" ] || fail "a copy without the licence"
