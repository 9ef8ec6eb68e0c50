#!/usr/bin/env bash
# The main job: the sample release, served by nginx, becomes a copy that equals its source.
. "$(dirname "$0")/lib.sh"

root=$(web_root "Skyvane new" "$FIXTURE/master-new")
serve "$root"
run skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH" --name="My copy" \
  $(through_proxy "$PORT")
want_status 0
want_text "I have finished installing the Skyvane 9 web demo at: $SCRATCH/My copy/."
same_tree "$FIXTURE/sample/new" Linux "$SCRATCH/My copy"

# A second run into the same place is refused by the page's own words, and changes nothing.
run skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH" --name="My copy" \
  $(through_proxy "$PORT")
want_status 2
want_text "The folder 'My copy' already exists in the folder '$SCRATCH/'."
same_tree "$FIXTURE/sample/new" Linux "$SCRATCH/My copy"

# Without the licence nothing is fetched.
run skyvane-demo-installer --unattended --dest="$SCRATCH" --name=Other $(through_proxy "$PORT")
want_status 2
want_text "I accept this agreement."
[ ! -e "$SCRATCH/Other" ] || fail "a copy without the licence"
