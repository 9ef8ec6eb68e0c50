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

# A slip of the hand installs nothing, and names the option that was meant.
for slip in --dry-run --accept_eula=no --dest --nmae=Other Other "--name=$(printf 'n%.0s' {1..256})" \
  $'--name=a\nb'; do
  run skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH/slips" "$slip" \
    $(through_proxy "$PORT")
  want_status 2
done
run skyvane-demo-installer --unattended --acept_eula $(through_proxy "$PORT")
want_status 2
want_text "There is no option '--acept_eula'. Did you mean --accept_eula?"
[ ! -e "$SCRATCH/slips" ] || fail "a slip has installed something"
run skyvane-demo-installer --version
want_status 0
[ "$(cat "$OUT")" = "Skyvane Web Demo Installer 2.01r1" ] || fail "no version"

# Without the licence nothing is fetched.
run skyvane-demo-installer --unattended --dest="$SCRATCH" --name=Other $(through_proxy "$PORT")
want_status 2
want_text "I accept this agreement."
[ ! -e "$SCRATCH/Other" ] || fail "a copy without the licence"
