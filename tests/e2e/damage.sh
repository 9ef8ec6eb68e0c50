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

# put_manifest COMMAND...: publishes the manifest as the command makes it out of the good one.
put_manifest() {
  mkdir -p "$SCRATCH/made"
  "$@" <"$FIXTURE/manifest-new/directory.txt" >"$SCRATCH/made/directory.txt"
  rm -f "$release/directory.txt.zip"
  (cd "$SCRATCH/made" && zip -q "$release/directory.txt.zip" directory.txt)
}

# A file's archive that is damaged at every mirror: the alert names it, the last page says what
# happened, and the file never gets to its place. What else an archive may be, and mirrors of which
# one is sound, are rows of hostile_rows.py.
heron="All/Aircraft/General Aviation/Heron 172/Heron 172.acf"
good=$release/$heron.zip
cp "$good" "$SCRATCH/good.zip"
printf '\xA5\x5A\xA5\x5A' | dd of="$good" bs=1 seek=$(($(stat -c %s "$good") / 2)) conv=notrunc status=none
install_copy --dest="$SCRATCH"
want_status 1
want_text "The installer cannot extract a file."
want_text "Finished Web Demo Install: There were problems installing the Skyvane 9 web demo - it may not be usable."
[ ! -e "$SCRATCH/Copy/${heron#All/}" ] || fail "a wrong file was installed"
rm -rf "$SCRATCH/Copy"
mv "$SCRATCH/good.zip" "$good"

# A manifest of a later format.
put_manifest sed '2s/900/901/'
install_copy --dest="$SCRATCH"
want_status 1
want_text "In other words, you need to get a new installer!"

# A manifest whose archive is cut off.
cp "$FIXTURE/master-new/disk_0/$name/directory.txt.zip" "$SCRATCH/whole.zip"
head -c 1000 "$SCRATCH/whole.zip" >"$release/directory.txt.zip"
install_copy --dest="$SCRATCH"
want_status 1
want_text "We were unable to open a zip file. It may be missing or damaged"

# A manifest cut in the middle of a line, ahead of the name: the program stops before it does harm.
lines=$(wc -l <"$FIXTURE/manifest-new/directory.txt")
put_manifest sh -c "head -n $((lines / 2)); printf 'FILE 0 0 91001 3'"
install_copy --dest="$SCRATCH"
want_status 1
want_text "I am reading the directory text file and found a path that has no file!"
[ ! -e "$SCRATCH/Copy" ] || fail "a copy by half a manifest"

# A manifest that points out of the destination.
put_manifest sh -c 'cat; printf "\nDIR All/../../\nFILE 0 0 91001 0 1 00112233445566778899aabbccddeeff escaped.txt\n"'
install_copy --dest="$SCRATCH"
want_status 0
[ ! -e "$SCRATCH/escaped.txt" ] && [ ! -e "$(dirname "$SCRATCH")/escaped.txt" ] || fail "a file escaped"
rm -rf "$SCRATCH/Copy"

cp "$FIXTURE/master-new/disk_0/$name/directory.txt.zip" "$release/directory.txt.zip"
need_root "mounting small volumes"

# A volume that is too small from the start is refused by the page.
mkdir "$SCRATCH/small"
mount -t tmpfs -o size=1m tmpfs "$SCRATCH/small"
MOUNTS+=("$SCRATCH/small")
install_copy --dest="$SCRATCH/small"
want_status 2
want_text "You do not have enough free disk space to install the Skyvane 9 demo at this location."

# A volume that fills up on the way: the sizes of the manifest are a little below what files take.
raw=$(shipped "$FIXTURE/sample/new" Linux | cut -f2 | (cd "$FIXTURE/sample/new" && tr '\n' '\0' | xargs -0 stat -c %s) | awk '{ s += int($1 / 1000) } END { print s }')
mkdir "$SCRATCH/tight"
mount -t tmpfs -o size=$((raw * 1000 + 40000)) tmpfs "$SCRATCH/tight"
MOUNTS+=("$SCRATCH/tight")
install_copy --dest="$SCRATCH/tight"
want_status 1
want_text "The installer cannot extract a file."
want_text "No space left on device. Perhaps your hard drive is full"

# A destination that cannot be written at all.
mkdir "$SCRATCH/frozen"
mount -t tmpfs -o ro,size=200m tmpfs "$SCRATCH/frozen"
MOUNTS+=("$SCRATCH/frozen")
install_copy --dest="$SCRATCH/frozen"
want_status 2
want_text "I am unable to install or update Skyvane. An error occurred while creating new folders."
want_text "The destination file system is read-only"
