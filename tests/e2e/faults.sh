#!/usr/bin/env bash
# One call of the system fails in each of the four jobs: an install from the web, an update of a copy
# with the user's files in it, an install from discs, and a build of a master. Arguments, and what
# must hold, are in faults.py.
. "$(dirname "$0")/disc_lib.bash"

for disc in 1 2 3; do insert_disc "$disc"; done

# The copy that is updated.
serve_release old
want 0 install_demo old
for mine in "my flights.txt" "Aircraft/General Aviation/Little Wren/notes.txt"; do
  printf mine >"$SCRATCH/old/$mine"
done
for changed in "Instructions/Pilot's Guide.txt" "Airfoils/Clark Y.afl"; do
  printf 'changed by me' >"$SCRATCH/old/$changed"
done

serve_release new
export SCRATCH PORT
python3 -B "$(dirname "$0")/faults.py" "$@"
