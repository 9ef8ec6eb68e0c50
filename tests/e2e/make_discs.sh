#!/usr/bin/env bash
# script/make_discs and what makers do wrong with it: what it says, its status, and that no image is
# left; then that an image takes what was said, and that a disc without files gets none.
. "$(dirname "$0")/lib.sh"
need_tools xorriso
make_discs=$(realpath "$(dirname "$0")/../../script/make_discs")
master=$SCRATCH/master discs=$SCRATCH/discs
# Three discs' folders, as the builder makes them, and files on two.
mkdir -p "$master"/disk_{0,1,2}/"Skyvane 9/All/Weapons"
echo label >"$master/disk_0/dvd_version.txt"
for number in $(seq 200); do echo "$number" >"$master/disk_0/Skyvane 9/All/Weapons/gun $number.wpn.zip"; done
head -c 300000 /dev/urandom >"$master/disk_1/Skyvane 9/All/Weapons/cannon.wpn.zip"
head -c 500000 /dev/urandom >"$SCRATCH/program"

go() { STATUS=0; "$make_discs" "$@" >"$OUT" 2>&1 || STATUS=$?; }
# Status, what is said, and flags.
while IFS='|' read -r status said flags; do
  # shellcheck disable=SC2086  # several flags
  go $flags
  want_status "$status" "$said"
  [ ! -e "$discs" ] || fail "$flags: something is made"
done <<ROWS
2|make_discs: no master in $SCRATCH|$SCRATCH $discs
2|make_discs: a label may have up to 14 of A to Z, 0 to 9 and "_", unlike "Skyvane"|--label=Skyvane $master $discs
2|make_discs: a label may have up to 14 of A to Z, 0 to 9 and "_", unlike "SKYVANE_SKYVANE"|--label=SKYVANE_SKYVANE $master $discs
2|make_discs: --disc_capacity needs a number, in units of 1,000 bytes, not "0.7e6"|--disc_capacity=0.7e6 $master $discs
2|make_discs: no such program: $SCRATCH/none|--program=$SCRATCH/none $master $discs
2|make_discs: no such folder: $SCRATCH/none|--resources=$SCRATCH/none $master $discs
2|make_discs: not a folder: $SCRATCH/program|$master $SCRATCH/program
2|make_discs: unknown option --lable=X|--lable=X $master $discs
1|make_discs: disc 1 does not fit: it takes |--disc_capacity=600 --program=$SCRATCH/program $master $discs
1|make_discs: disc 2 does not fit: it takes |--disc_capacity=400 $master $discs
ROWS

# 200 files of a few bytes take a block of 2,048 bytes each, and the program comes on top.
mkdir "$discs"
: >"$discs/disc_3.iso"
go --disc_capacity=1600 --program="$SCRATCH/program" "$master" "$discs"
want_status 0 "make_discs: of an earlier master, and not of this one: $discs/disc_3.iso"
for number in 1 2; do
  bytes=$(stat -c %s "$discs/disc_$number.iso")
  want_text "disc $number takes $(((bytes + 999) / 1000)) KB"
done
[ "$(stat -c %s "$discs/disc_1.iso")" -gt $((200 * 2048 + 500000)) ] || fail "the first disc is too small to hold all"
[ "$(cd "$discs" && echo *)" = "disc_1.iso disc_2.iso disc_3.iso" ] || fail "not the discs that have files"
