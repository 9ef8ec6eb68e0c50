#!/usr/bin/env bash
# Damaged things from a server, and destinations that cannot take a copy: each ends with its text
# and status, and nothing but the partial copy is left.
. "$(dirname "$0")/lib.sh"

name="Skyvane new"
master=$SCRATCH/master
cp -r "$FIXTURE/master-new" "$master"
root=$(web_root "$name" "$master")
release=$master/disk_0/$name
serve "$root"

install_copy() {
  run skyvane-demo-installer --unattended --accept_eula --give_up_after=4 --name=Copy \
    $(through_proxy "$PORT") "$@"
}

# A file's archive that is damaged at every mirror: the alert names it, the last page says what
# happened, and the file never gets to its place. What else an archive may be, mirrors of which one is
# sound, and manifests are rows of hostile_rows.py.
heron="All/Aircraft/General Aviation/Heron 172/Heron 172.acf"
good=$release/$heron.zip
cp "$good" "$SCRATCH/good.zip"
flip "$good"
install_copy --dest="$SCRATCH"
want_status 1 "The installer cannot extract a file."
want_text "Finished Web Demo Install: There were problems installing the Skyvane 9 web demo - it may not be usable."
[ ! -e "$SCRATCH/Copy/${heron#All/}" ] || fail "a wrong file was installed"
rm -rf "$SCRATCH/Copy"
mv "$SCRATCH/good.zip" "$good"

need_root "mounting small volumes"

# A volume that is too small from the start is refused by the page.
volume "$SCRATCH/small" size=1m
install_copy --dest="$SCRATCH/small"
want_status 2 "You do not have enough free disk space to install the Skyvane 9 demo at this location."

# A volume that fills up on the way: the sizes of the manifest are a little below what files take.
raw=$(shipped "$FIXTURE/sample/new" Linux | cut -f2 | (cd "$FIXTURE/sample/new" && tr '\n' '\0' | xargs -0 stat -c %s) | awk '{ s += int($1 / 1000) } END { print s }')
volume "$SCRATCH/tight" size=$((raw * 1000 + 40000))
install_copy --dest="$SCRATCH/tight"
want_status 1 "The installer cannot extract a file." "No space left on device. Perhaps your hard drive is full"

# A destination that cannot be written at all.
volume "$SCRATCH/frozen" ro,size=200m
install_copy --dest="$SCRATCH/frozen"
want_status 2 "I am unable to install or update Skyvane. An error occurred while creating new folders."
want_text "The destination file system is read-only"
