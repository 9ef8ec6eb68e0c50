#!/usr/bin/env bash
# The main job: the sample release, served by nginx, becomes a copy that equals its source.
. "$(dirname "$0")/lib.sh"

root=$(web_root "Skyvane new" "$FIXTURE/master-new")
serve "$root"
run skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH" --name="My copy" \
  $(through_proxy "$PORT")
want_status 0
want_text "I have finished installing the Skyvane 9 web demo at: $SCRATCH/My copy/."
same_tree "$FIXTURE/sample/new" Macintosh "$SCRATCH/My copy"

# Every file's signature in the manifest is the one that md5sum finds; a link's is that of its text.
awk '/^DIR /{ dir = substr($0, 5) }
     /^FILE /{ split($0, f, " "); name = $0; sub(/^FILE [^ ]+ [^ ]+ [^ ]+ [^ ]+ [^ ]+ [^ ]+ /, "", name)
               if (f[7] != "GONE" && (f[3] == 0 || f[3] == 1)) { path = dir name; sub(/^[^\/]*\//, "", path); print f[7] "\t" path } }' \
  "$FIXTURE/manifest-new/directory.txt" >"$SCRATCH/signed.tsv"
checked=0
declare -A last
while IFS=$'\t' read -r sig path; do last[$path]=$sig; done <"$SCRATCH/signed.tsv"
for path in "${!last[@]}"; do
  file="$SCRATCH/My copy/$path"
  if [ -L "$file" ]; then
    have=$(printf %s "$(readlink "$file")" | md5sum)
  elif [ -e "$file" ]; then
    have=$(md5sum <"$file")
  else
    continue
  fi
  [ "${have%% *}" = "${last[$path]}" ] || fail "signature of $path"
  checked=$((checked + 1))
done
[ "$checked" -ge 300 ] || fail "only $checked signatures checked"

# A second run into the same place is refused by the page's own words, and changes nothing.
run skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH" --name="My copy" \
  $(through_proxy "$PORT")
want_status 2
want_text "The folder 'My copy' already exists in the dir '$SCRATCH/'."
same_tree "$FIXTURE/sample/new" Macintosh "$SCRATCH/My copy"

# Without the licence nothing is fetched.
run skyvane-demo-installer --unattended --dest="$SCRATCH" --name=Other $(through_proxy "$PORT")
want_status 2
want_text "I accept this agreement."
[ ! -e "$SCRATCH/Other" ] || fail "a copy without the licence"
