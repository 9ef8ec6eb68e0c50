#!/usr/bin/env bash
# A demo install that is killed on the way: the same command goes on with it, with the user's own
# files as they were; the updater finds it, too; and a window offers to go on.
. "$(dirname "$0")/lib_flows.sh"
. "$(dirname "$0")/lib_kill.bash"

# While a file "slow" lies beside it, each stream trickles.
serve_release new "if (-f $SCRATCH/slow) { set \$limit_rate 20k; }"
requests=$SCRATCH/nginx-$PORT/access.log
copy="$SCRATCH/My copy"
path=$(program skyvane-demo-installer)
command=(--unattended --accept_eula "--dest=$SCRATCH" "--name=My copy" $(through_proxy "$PORT"))

files_there() { [ "$(find "$copy" -type f 2>/dev/null | wc -l)" -ge "$1" ]; }
# start_and_kill FILES ARGS...: until so many files are in the copy.
start_and_kill() {
  local files=$1
  touch "$SCRATCH/slow"
  start skyvane-demo-installer "${command[@]}"
  wait_for "$files files" files_there "$files"
  kill -KILL "$PID"
  wait_end "$PID"
  rm "$SCRATCH/slow"
}
whole_files() { { find "$copy" ! -type d ! -name ".skyvane_part_*" 2>/dev/null || true; } | wc -l; }
is_listed() { grep -qxF "$copy/" "$XDG_CONFIG_HOME/skyvane/skyvane_install.txt"; }
# The user's own work in a half-made copy: a file of his, and one of the release that he changed.
make_own() {
  local file
  own=("Output/situations/My flight.sit" "Aircraft/My own.acf")
  for file in "${own[@]}"; do
    mkdir -p "$(dirname "$copy/$file")"
    echo "my $file" >"$copy/$file"
  done
  changed=$(cd "$copy" && find . -type f -name '*.acf' ! -name 'My own.acf' -print -quit)
  [ -z "$changed" ] || echo mine >"$copy/$changed"
}
want_healed() {
  local file from
  for file in "${own[@]}"; do
    [ "$(cat "$copy/$file")" = "my $file" ] || fail "the user's $file was touched"
    rm "$copy/$file"
  done
  if [ -n "$changed" ]; then
    [ "$(cat "$copy/$changed")" = mine ] || fail "what the user changed was replaced"
    from=$(shipped "$FIXTURE/sample/new" Linux | awk -F'\t' -v rel="${changed#./}" '$1 == rel { print $2 }')
    cp -p "$FIXTURE/sample/new/$from" "$copy/$changed"
  fi
  same_tree "$FIXTURE/sample/new" Linux "$copy"
}

kills=${E2E_KILLS:-6}
echo "Killed $kills times, a run once to three times, then left to end; E2E_SEED=$E2E_SEED"
from=$(now)
want 0 run skyvane-demo-installer "${command[@]}"
length=$(($(now) - from))
killed=0 late=0 shipped=$(shipped "$FIXTURE/sample/new" Linux | wc -l)
while [ "$killed" -lt "$kills" ]; do
  rm -rf "$copy"
  own=() changed=
  for again in $(seq $((1 + RANDOM % 3))); do
    env -u DISPLAY "$path" "${command[@]}" >"$OUT" 2>&1 </dev/null &
    if [ $((killed % 2)) = 0 ]; then
      kill_at_work $! "$length"
    else
      kill_unpacking $! $((length * 3 / 4)) "$copy"
    fi
    [ "$FOUND" != late ] || break
    killed=$((killed + 1))
    [ -d "$copy" ] && [ ${#own[@]} = 0 ] || continue
    is_listed || fail "an interrupted install is not on the list"
    make_own
  done
  before=$(whole_files)
  if [ "$FOUND" = late ] || [ "$before" = $((shipped + ${#own[@]})) ]; then
    late=$((late + 1))
    [ "$late" -le $((kills + 5)) ] || fail "only $killed runs could be killed in time"
    length=$((length * 4 / 5))
  else
    length=$((length * 21 / 20))
    : >"$requests"
    want 0 run skyvane-demo-installer "${command[@]}"
    [ ${#own[@]} = 0 ] || want_text "I will go on with the installation in the folder 'My copy' in the folder '$SCRATCH/'."
    fetched=$(grep -c '/updates/.*[^t]\.zip HTTP' "$requests" || true)
    [ $((fetched + before)) -le $((shipped + ${#own[@]})) ] ||
      fail "$fetched files were fetched for a copy that had $before"
  fi
  want_healed
done
echo "$killed killed, $UNPACKING of them while a file was half written; all healed"

echo "A copy that is whole, and one of an earlier release, are not gone on with"
run skyvane-demo-installer "${command[@]}"
want_status 2 "The folder 'My copy' already exists in the folder '$SCRATCH/'."
shipped "$FIXTURE/sample/new" Linux >"$SCRATCH/shipped.tsv"
while IFS=$'\t' read -r rel from; do
  old=$FIXTURE/sample/old/$from
  if [ -f "$old" ] && ! cmp -s "$old" "$FIXTURE/sample/new/$from"; then break; fi
done <"$SCRATCH/shipped.tsv"
cp -p "$old" "$copy/$rel"
rm "$copy/Airfoils/NACA 0012.afl"
run skyvane-demo-installer "${command[@]}"
want_status 2 "The folder 'My copy' already exists"

echo "The updater finds what was interrupted, and heals it"
rm -rf "$copy"
start_and_kill 5
make_own
run skyvane-web-updater --unattended $(through_proxy "$PORT")
want_status 0 "I have finished updating $copy/."
want_healed

echo "A window goes on as well; Back out of that asks nothing and deletes nothing"
own_home
copy="$HOME/Desktop/Skyvane new Demo"  # what the page proposes
command=(--unattended --accept_eula "--dest=$HOME/Desktop" $(through_proxy "$PORT"))
start_and_kill 5
make_own
touch "$SCRATCH/slow"
start_display
open_wizard skyvane-demo-installer $(through_proxy "$PORT")
learn_faces
walk_to_place
shot demo_9_goes_on
press_next
[ -z "$changed" ] || { wait_question; answer keep; }
wait_step 4
before=$(find "$copy" -type f | wc -l)
wait_for "files" files_there $((before + 3))
back_to 3
dialog_is_gone || fail "Back asks"
rm "$SCRATCH/slow"
files_there $((before + 3)) || fail "Back has deleted files"
wait_open
press_next  # the answer of before holds
wait_step 5
quit_last_page
want_healed
