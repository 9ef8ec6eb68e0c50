#!/usr/bin/env bash
# Damaged discs, and discs that are taken out: each failure is told with its file, counted, and
# mended by a later repair from a good disc.
. "$(dirname "$0")/disc_lib.bash"

copy="$SCRATCH/Copy"

both() { "$1" "$2" && "$1" "$3"; }
install_from() {
  rm -rf "$copy"
  all_discs_of "$1"
  run_with_discs --accept_eula --dest="$SCRATCH" --name=Copy
}
want_errors() {
  want_status 1 "An error occurred during installation:"
  want_text "You can continue with the installation and attempt to repair the damaged files later"
  want_text "Finished Installing Skyvane: There were errors during the install; your copy of Skyvane may not be usable."
  want_no_leftovers
}
one_of() { (cd "$MASTER" && find . -path "$1" -size +2k | sort | sed -n 1p); }

zip=$(one_of '*/All/Aircraft/*.zip')
tile=$(one_of '*/All/Global Scenery/*.7z')
[ -n "$zip" ] && [ -n "$tile" ] || fail "nothing to damage"

for way in flip rm; do
  damaged both "$way" "$zip" "$tile"
  install_from "$BAD"
  want_errors
  if [ "$way" = rm ]; then
    want_text "I was unable to copy the file $DISCS/"
    want_text "$(basename "$tile") from the DVD to the hard drive."
  else
    want_text "I was unable to unzip the file $TMPDIR/"
    want_text " to the folder $copy/$(dirname "${tile#*/"$RELEASE"/All/}")/."
  fi
  told=$(grep -c "An error occurred" "$OUT")
  [ "$told" -ge 1 ] && [ "$told" -le 2 ] || fail "two failures, $told questions"
  repair_all
done

# A disc is known by any of the next files that are wanted of it: the first may be missing.
lose_first() {
  first=$(unzip -p "disk_0/$RELEASE/directory.txt.zip" |
    awk '$1 == "DIR" { dir = substr($0, 5) } $1 == "FILE" { sub(/.* [0-9a-f]+ /, ""); print dir $0 }' |
    while IFS= read -r path; do [ ! -e "disk_1/$RELEASE/$path.zip" ] || echo "$path"; done | sed -n 1p)
  rm "disk_1/$RELEASE/$first.zip"
  echo "$first" >"$SCRATCH/first"
}
damaged lose_first
install_from "$BAD"
want_errors
want_text "$(basename "$(cat "$SCRATCH/first")")"
repair_all

# An alert that ends the program is an event as well, and the last one is the end.
damaged truncate -s 100 "disk_0/$RELEASE/directory.txt.zip"
all_discs_of "$BAD"
want 1 run skyvane-disc-installer --unattended --accept_eula --json --dest="$SCRATCH" --name=Copy
[ "$(tail -n 2 "$OUT" | grep -cE '"event": *"(error|end)"')" = 2 ] || fail "not told to who reads events"

# A disc that is pulled out in the middle: few questions for what was in hand, then the wish for the
# disc, and with it the rest. The installer is held while it is pulled; a hand that came when most of the
# disc was done tries again.
pull_out() {
  until compgen -G "$copy/Aircraft/*/*/*.*" >/dev/null; do :; done
  local pid
  pid=$(pgrep -f "^$SCRATCH/bin/skyvane-disc-installer")
  kill -STOP "$pid"
  if [ "$(find "$copy" -type f | wc -l)" -lt 60 ]; then take_out 1 && : >"$SCRATCH/pulled"; fi
  kill -CONT "$pid"
}
while [ ! -e "$SCRATCH/pulled" ]; do
  rm -rf "$copy"
  all_discs_of "$IMAGES"
  pull_out &
  CHILDREN+=($!)
  run_with_discs --accept_eula --dest="$SCRATCH" --name=Copy
done
want_errors
want_text "I was unable to copy the file $DISCS/1/"
want_asked_for "1 "
# Those in the two queues fail, in as many questions as there are frames that see one.
[ "$(grep -c "An error occurred" "$OUT")" -le 60 ] || fail "a question for every file"
missing=$(comm -23 <(shipped "$SOURCE" Linux | cut -f1) <(cd "$copy" && find . ! -type d | sed 's#^\./##' | sort) | wc -l)
[ "$missing" -ge 1 ] && [ "$missing" -le 61 ] || fail "$missing files are missing"
repair_all

# Nobody puts it in again: the run is given up, and a repair mends that as well.
rm -rf "$copy"
all_discs_of "$IMAGES"
take_out 3
: >"$OUT"
want 3 run skyvane-disc-installer --unattended --accept_eula --give_up_after=2 --dest="$SCRATCH" --name=Copy
want_text "Given up: no progress for 2 seconds. Installing Skyvane - Please Change DVDs: Please insert DVD number 3 and click Next."
repair_all
