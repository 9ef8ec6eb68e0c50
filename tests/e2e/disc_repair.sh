#!/usr/bin/env bash
# Whatever happened to a copy, a repair makes it equal to the discs again; the user's own files and
# the choice of scenery stay.
. "$(dirname "$0")/disc_lib.bash"

install_some

repair() {
  only_disc 1
  run_with_discs --do=repair "$@"
}

# A copy that is whole needs nothing, and no disc but the first.
want 0 repair
want_text "Finished Repairing Skyvane. I have finished repairing $copy/ - click Back to return to the main menu."
want_asked_for ""

# Missing files and folders, cut files, a lost link, a lost execute bit.
cd "$copy"
rm -r Aircraft/"Heavy Metal"
rm Instructions/Manual.txt Instructions/"one byte.txt"
: >Resources/text/English/Skyvane.txt
truncate -s 1 Skyvane.app
chmod 644 Skyvane.app
cd "$SCRATCH"
want 0 repair --on_modified=overwrite
same_tree "$SOURCE" Linux "$copy"
want_no_leftovers

# A damaged file that is there in another spelling is put right under that one, and stays one file.
mv "$copy/Airfoils/NACA 0013.afl" "$copy/Airfoils/naca 0013.AFL"
: >"$copy/Airfoils/naca 0013.AFL"
want 0 repair --on_modified=overwrite
[ ! -e "$copy/Airfoils/NACA 0013.afl" ] || fail "a second file beside the one in another spelling"
mv "$copy/Airfoils/naca 0013.AFL" "$copy/Airfoils/NACA 0013.afl"
same_tree "$SOURCE" Linux "$copy"

# What the user has changed is kept, unless told otherwise; what is the user's own is not seen.
echo mine >"$copy/Airfoils/NACA 0012.afl"
echo mine >"$copy/Airfoils/My own.afl"
rm "$copy/Airfoils/NACA 0013.afl"
repair
want_status 0 "1 files that you have modified were kept."
[ "$(cat "$copy/Airfoils/NACA 0012.afl")" = mine ] || fail "the user's file was overwritten"
want 2 repair --on_modified=cancel
want 0 repair --on_modified=overwrite
[ "$(cat "$copy/Airfoils/My own.afl")" = mine ] || fail "the user's own file was touched"
rm "$copy/Airfoils/My own.afl"
same_tree "$SOURCE" Linux "$copy"

# A repair of something that lies on the last disc alone asks for that one alone.
last=$(cd "$MASTER/disk_2/$RELEASE" && find All Linux -name '*.zip' 2>/dev/null | sed -n 1p)
[ -n "$last" ] || fail "nothing for this platform on the last disc"
last=${last#*/}
rm "$copy/${last%.zip}"
want 0 repair
want_asked_for "3 "
same_tree "$SOURCE" Linux "$copy"

# No room: the page refuses, and nothing is touched.
if [ "$(id -u)" = 0 ]; then
  volume "$SCRATCH/small" size=1m
  mkdir -p "$SCRATCH/small/Copy"/{Airfoils,Instructions,Output,Resources}
  repair --copy="$SCRATCH/small/Copy"
  want_status 2 "You do not have enough free disk space to repair this copy of Skyvane."
fi
