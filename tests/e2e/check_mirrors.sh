#!/usr/bin/env bash
# script/check_mirrors against mirrors of every kind, behind one server that answers for all of them:
# what it says of each, its status, and that none of them holds it up.
. "$(dirname "$0")/lib_publish.bash"
need_tools curl python3
name="Skyvane new" web=$SCRATCH/web release=$FIXTURE/master-new/disk_0/Skyvane\ new
hosts=(whole misses short changed behind another none moved silent)
for host in "${hosts[@]}"; do
  mkdir -p "$web/$host/updates"
  cp -r "$release" "$web/$host/updates/"
done
mirror() { echo "$web/$1/updates/$name"; }
wheel="All/Aircraft/General Aviation/Heron 172/objects/wheel.obj.zip"
rm "$(mirror misses)/$wheel" "$(mirror misses)/All/Instructions/"Fran*
head -c 5000 "$release/All/Aircraft/Latest.zip" >"$(mirror short)/All/Aircraft/Latest.zip"
truncate -s 5000 "$(mirror short)/All/Aircraft/Latest.zip"
printf '\377\377' | dd of="$(mirror changed)/$wheel" bs=1 seek=80 conv=notrunc status=none
cp "$FIXTURE/master-old/disk_0/Skyvane old/directory.txt.zip" "$(mirror behind)/"
sed 's/ wheel.obj$/ wheels.obj/' "$FIXTURE/manifest-new/directory.txt" >"$SCRATCH/directory.txt"
(cd "$SCRATCH" && zip -q "$(mirror another)/directory.txt.zip" directory.txt)
cp "$release/$wheel" "$(mirror none)/directory.txt.zip"
python3 -c 'import socket, time
s = socket.socket(); s.bind(("127.0.0.1", 0)); s.listen(64)
print("listens on 127.0.0.1:%d." % s.getsockname()[1], flush=True); time.sleep(600)' >"$SCRATCH/silent.log" &
CHILDREN+=($!)
ADDRESS=$(wait_for_text "$SCRATCH/silent.log" '127\.0\.0\.1:[1-9][0-9]*')
mirror_hosts "$web" "
  location ~ \"/All/\" { if (\$host = silent) { proxy_pass http://$ADDRESS; } }
  location ~ /directory { if (\$host = moved) { return 301 https://else.example/; } }"

files=$(find "$release" -name '*.zip' ! -name directory.txt.zip | wc -l)
server_list "$name" "${hosts[@]:0:8}" >"$SCRATCH/list"
want 1 check_mirrors --sample=1000 "$SCRATCH/list"
cat >"$SCRATCH/want" <<LINES
whole/updates/: $name is whole: $files files, $files of them compared
misses/updates/: misses $wheel (404)
misses/updates/: misses All/Instructions/Fran$(printf '\347')ais $(printf '\340') lire.txt.zip (404)
short/updates/: lies: All/Aircraft/Latest.zip has 5000 bytes, the manifest says 0 KB
changed/updates/: lies: $wheel is damaged
behind/updates/: is behind: its manifest of $name is that of 90900, others have 91001
another/updates/: lies: its manifest of $name, number 91001, is not that of the others
none/updates/: lies: its manifest of $name is none
moved/updates/: does not give its manifest of $name (301)
LINES
diff "$SCRATCH/want" "$OUT" || fail "not what there is to say"

# A mirror that falls silent costs the time that it is given, and only its own lines.
server_list "$name" silent whole >"$SCRATCH/list"
want 1 check_mirrors --wait=1 --time=6 --lines=1 --quiet "$SCRATCH/list"
grep -qE "^silent/updates/: does not answer for All/.*\.zip: " "$OUT" || fail "silence is not told"
grep -qE "^silent/updates/: and [0-9]+ faults more$" "$OUT" || fail "its faults are not counted"
[ "$(wc -l <"$OUT")" = 2 ] || fail "something else is said"

# One mirror alone: nothing but the manifest tells what is right, and the list what is new.
(cd "$SCRATCH" && echo "no wheel" >wheel.obj && rm "$(mirror whole)/$wheel" && zip -q "$(mirror whole)/$wheel" wheel.obj)
server_list "$name" whole | sed 's/FINAL_VERSION .*/FINAL_VERSION 91002/' >"$SCRATCH/newer"
server_list "$name" whole >"$SCRATCH/list"
{ server_list "Nothing" whole; echo "BETA $name"; } >"$SCRATCH/two"
sed -i '/^ENDOFLIST/d' "$SCRATCH/two"
signature=$(md5sum <"$SCRATCH/wheel.obj" | cut -c -32)
wanted=$(md5sum <"$FIXTURE/sample/new/${wheel%.zip}" | cut -c -32)
other="whole/updates/: lies: $wheel holds a file of MD5 $signature, the manifest says $wanted"
# Status, a line, and arguments.
while IFS='|' read -r status said arguments; do
  # shellcheck disable=SC2086  # several arguments
  want "$status" check_mirrors --quiet $arguments
  want_line "$said"
done <<ROWS
1|$other|--sample=1000 $SCRATCH/list
1|whole/updates/: is behind: its manifest of $name is that of 91001, the list says 91002|$SCRATCH/newer
1|whole/updates/: is behind: its manifest of $name is that of 91001, others have 91100|--manifest=$FIXTURE/manifest-newer/directory.txt $SCRATCH/list
1|whole/updates/: is behind: it has no manifest of Nothing (404)|$SCRATCH/two
1|$other|--sample=1000 $SCRATCH/two
2|check_mirrors: --wait needs a number, not "long"|--wait=long $SCRATCH/list
2|check_mirrors: no such file: $SCRATCH/nothing|$SCRATCH/nothing
2|check_mirrors: no server list of ours, or an empty one: /etc/passwd|/etc/passwd
2|check_mirrors: no answer from http://whole/none|http://whole/none
2|check_mirrors: no manifest: /etc/passwd|--manifest=/etc/passwd $SCRATCH/list
ROWS
cp "$SCRATCH/list" "$web/whole/list"
want 0 check_mirrors --sample=0 http://whole/list
PORT=1
want 1 check_mirrors "$SCRATCH/list"
grep -q "^whole/updates/: does not answer: .*onnect" "$OUT" || fail "nobody there, and not told"
