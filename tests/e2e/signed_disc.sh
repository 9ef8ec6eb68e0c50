#!/usr/bin/env bash
# Discs and signatures: a program with keys installs from signed discs, refuses what was changed on
# them, and uses unsigned ones only if it is told to.
. "$(dirname "$0")/disc_lib.bash"
[ -x "$BIN/skyvane-disc-signed" ] || { echo "misses minisign"; exit 77; }
DISC_PROGRAM=skyvane-disc-signed

install_from() {  # IMAGES ARGS...
  rm -rf "$SCRATCH/Copy"
  only_disc 1 "$1"
  IMAGES=$1 run_with_discs --accept_eula --sectors=all --dest="$SCRATCH" --name=Copy "${@:2}"
}
sign() { "$(program skyvane-disc-installer)" --sign_master=. --sign="$BIN/e2e_keys/present.key" "$@" 2>/dev/null; }
nothing_is_there() { [ ! -e "$SCRATCH/Copy" ] || fail "something was installed"; }

# Unsigned: refused, with the way out named; with it, installed.
install_from "$IMAGES"
want_text "The list of files on this disc is not signed by the makers of Skyvane."
want_text '"--allow_unsigned" would use it all the same.'
[ "$STATUS" != 0 ] || fail "an unsigned disc was used"
nothing_is_there
want 0 install_from "$IMAGES" --allow_unsigned
same_tree "$SOURCE" Linux "$SCRATCH/Copy"

# Signed, by programs with keys and without.
damaged sign
SIGNED=$BAD
for DISC_PROGRAM in skyvane-disc-signed skyvane-disc-installer; do
  want 0 install_from "$SIGNED"
  same_tree "$SOURCE" Linux "$SCRATCH/Copy"
done
DISC_PROGRAM=skyvane-disc-signed

# One byte of an archive that is nowhere in the file: the copy lacks that file alone, and says so.
changed() {
  sign
  printf '\x11' | dd of="$(find disk_0 -path '*/Airfoils/*.zip' | sort | head -n 1)" bs=1 seek=11 conv=notrunc status=none
}
damaged changed
install_from "$BAD"
want_text "It is not what the makers of Skyvane have signed"
[ "$(find "$SCRATCH/Copy/Airfoils" -type f | wc -l)" = $(($(find "$SOURCE/All/Airfoils" -type f -size +0c | wc -l) - 1)) ] ||
  fail "more or less than that one file is missing"

# The manifest of another release, signed or not signed by those whose keys are known.
foreign() { "$(program skyvane-disc-installer)" --sign_master=. --sign="$BIN/e2e_keys/foreign.key" 2>/dev/null; }
damaged foreign
install_from "$BAD" --allow_unsigned
want_status 1 "It is signed with a key that this program does not know"
nothing_is_there
