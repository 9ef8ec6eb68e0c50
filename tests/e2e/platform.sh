#!/usr/bin/env bash
# Which platform a copy is for: this machine's unless the user says otherwise, and once it is
# installed the one that it has, whatever the next run is told.
. "$(dirname "$0")/lib.sh"

serve_release old
for row in "Linux" "Macintosh --platform=mac" "Windows --platform=windows"; do
  set -- $row
  want 0 install_demo "$1" ${2:-}
  same_tree "$FIXTURE/sample/old" "$1" "$SCRATCH/$1"
done

serve_release new
cp -a "$SCRATCH/Macintosh" "$SCRATCH/damaged"
rm -r "$SCRATCH/damaged/Skyvane.app" "$SCRATCH/damaged/Resources/plugins"
for row in "Linux linux" "Linux mac" "Macintosh linux" "Windows linux"; do
  set -- $row
  for copy in "$SCRATCH/$1" $([ "$1" != Macintosh ] || echo "$SCRATCH/damaged"); do
    want 0 run skyvane-web-updater --unattended --copy="$copy" --platform="$2" $(through_proxy "$PORT")
    same_tree "$FIXTURE/sample/new" "$1" "$copy"
  done
done
"$SCRATCH/Linux/Skyvane.app" >"$OUT"
want_text "Started: Linux/Skyvane.app (revision 1)"

# A file of the user in the place of one that another platform is shipped decides nothing.
echo data >"$SCRATCH/Macintosh/Skyvane.exe"
want 0 run skyvane-web-updater --unattended --copy="$SCRATCH/Macintosh" $(through_proxy "$PORT")
rm "$SCRATCH/Macintosh/Skyvane.exe"
same_tree "$FIXTURE/sample/new" Macintosh "$SCRATCH/Macintosh"
grep -qF "is for Macintosh and stays so" "$SCRATCH/bin/Skyvane Installer Log.txt" ||
  fail "the log does not say what the copy is for"

install_demo No --platform=beos
want_status 2 "--platform wants mac|windows|linux, not 'beos'."
[ ! -e "$SCRATCH/No" ] || fail "a copy for no platform"
