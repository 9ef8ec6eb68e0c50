#!/usr/bin/env bash
# Scenery is added to a copy and removed from it, to the letter of the choice.
. "$(dirname "$0")/disc_lib.bash"

change() {
  only_disc 1
  run_with_discs --do=scenery "$@"
}
want_scenery() {
  SECTORS=$1 same_tree "$SOURCE" Linux "$copy"
  want_no_leftovers
}

# With no copy there is nothing to change, and no copy is made.
change --sectors=all
want_status 2 "Welcome to the Skyvane 9 Installer."

install_some
want_scenery '\\+30-120'

rows=(
  "+30-120,+50+000|installed more|\\\\+30-120|\\\\+50\\\\+000"
  "-40+150|added and removed|-40\\\\+150"
  "none|removed|nothing"
  "all|installed more|.*"
)
for row in "${rows[@]}"; do
  IFS='|' read -r sectors verb pattern <<<"$row"
  want 0 change --sectors="$sectors"
  want_text "Finished With Add/Remove Scenery: I have successfully $verb scenery to match your choices on the map."
  want_scenery "$pattern"
done

# Without a choice, what is there stays, and a tile that is missing comes back.
rm "$copy/Global Scenery/-global terrain-/Earth nav data/+50+000/+51+000.dsf"
want 0 change
want_scenery '.*'

# A tile that the user has changed is asked about before it is removed; the answer is to keep it.
tile="$copy/Global Scenery/-global terrain-/Earth nav data/-40+150/-34+151.dsf"
echo mine >"$tile"
change --sectors=none
want_status 0 "Kept, because you have modified it: $tile"
[ "$(cat "$tile")" = mine ] || fail "the user's own tile was touched"
[ "$(find "$copy/Global Scenery" -type f | wc -l)" = 1 ] || fail "other tiles were left"

# Of two copies one has to be named; a folder that is none is refused.
only_disc 1
want 0 run_with_discs --accept_eula --dest="$SCRATCH" --name=Second --sectors=none
change --sectors=+30-120
want_status 2 "You have more than one copy of Skyvane 9 installed on this computer."
want 0 change --sectors=+30-120 --copy="$SCRATCH/Second"
copy="$SCRATCH/Second" want_scenery '\\+30-120'
change --copy="$SCRATCH/bin"
want_status 2 "There is no installed copy at $SCRATCH/bin/."
