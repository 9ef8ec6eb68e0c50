#!/usr/bin/env bash
# Signed releases, from keys that minisign has made to installed copies, and what an attacker can do
# about them: a part for each row of the table in docs/security.md. An older program that knows
# nothing of signatures installs them as well: OLDER=FOLDER names one's folder.
. "$(dirname "$0")/lib.sh"
[ -x "$BIN/skyvane-web-signed" ] && need_tools minisign zip || { echo "misses minisign"; exit 77; }

KEYS=$BIN/e2e_keys
SITE=$SCRATCH/site
mkdir -p "$SITE/updates"
serve "$SITE"

# part TEXT: says which attack is tried.
part() { echo "--- $1"; }

# builder ARGS...: the makers' side.
builder() {
  want 0 run skyvane-web-updater "$@"
}
# release VERSION KEY ARGS...: a signed copy of the fixture's master; leaves MASTER. Archives are
# links to the fixture's, and so are replaced and never written to.
release() {
  MASTER=$SCRATCH/master-$1-$((++MADE))
  linked_copy "$FIXTURE/master-$1" "$MASTER"
  builder --sign_master="$MASTER" --sign="$KEYS/$2.key" "${@:3}"
}
MADE=0
publish() {  # VERSION: MASTER is what the list leads to
  NAME="Skyvane $1"
  ln -sfn "$MASTER/disk_0/$NAME" "$SITE/updates/$NAME"
}
# list KEY ARGS...: the signed server list of the site.
list() {
  server_list "$NAME" mirror.example >"$SITE/serverlist9.txt"
  builder --sign_list="$SITE/serverlist9.txt" --sign="$KEYS/$1.key" "${@:2}"
}
ZIP() { echo "$SITE/updates/$NAME/directory.signed.zip"; }
replace() { cp --remove-destination "$1" "$2"; }  # the links of the fixture stay as they are

install() {  # PROGRAM: a new copy, of which nothing is there before
  rm -rf "$SCRATCH/Copy"
  run "$1" --unattended --accept_eula --dest="$SCRATCH" --name=Copy --give_up_after=3 \
    $(through_proxy "$PORT")
}
update() { run skyvane-web-signed --unattended --copy="$SCRATCH/Copy" --give_up_after=3 $(through_proxy "$PORT"); }
is_whole() { same_tree "$FIXTURE/sample/$1" Linux "$SCRATCH/Copy"; }  # VERSION
refuses() {  # TEXT: what the signed edition says, with nothing installed
  install skyvane-demo-signed
  [ "$STATUS" = 1 ] || [ "$STATUS" = 3 ] || fail "status $STATUS, wanted a refusal"
  want_status "$STATUS" "$1"
  [ -z "$(find "$SCRATCH/Copy" -type f 2>/dev/null | head -n 1)" ] || fail "files were installed"
}
UNSIGNED="It is not signed by the makers of Skyvane"
NOT_THAT="It is not what the makers of Skyvane have signed"
STRANGER="It is signed with a key that this program does not know"

part "a signed release, by all programs"
release new present
publish new
list present
for program in skyvane-demo-signed skyvane-demo-installer; do
  want 0 install "$program"
  is_whole new
done
if [ -n "${OLDER:-}" ]; then
  cp "$OLDER/skyvane-demo-installer" "$SCRATCH/bin/older"
  want 0 install older
  is_whole new
fi
# minisign verifies a list that we have signed: a statement and its signature, parted.
sed '1,/^ENDOFLIST/d' "$SITE/serverlist9.txt" >"$SCRATCH/list.sig"
sed '/^untrusted comment:/,$d' "$SCRATCH/list.sig" >"$SCRATCH/list"
sed -n '/^untrusted comment:/,$p' "$SCRATCH/list.sig" >"$SCRATCH/list.minisig"
minisign -Vq -p "$KEYS/present.pub" -m "$SCRATCH/list" || fail "minisign does not take the list"

part "arbitrary installation: a list, a manifest and archives of others' making"
replace "$SITE/serverlist9.txt" "$SCRATCH/good_list"
sed -i 's/mirror.example/evil.example/' "$SITE/serverlist9.txt"
refuses "$NOT_THAT"
server_list "$NAME" mirror.example >"$SITE/serverlist9.txt"
refuses "$UNSIGNED"
list foreign
refuses "$STRANGER"
cp "$SCRATCH/good_list" "$SITE/serverlist9.txt"
replace "$(ZIP)" "$SCRATCH/good.zip"
rm "$(ZIP)"
refuses "$UNSIGNED"
cp "$(dirname "$(ZIP)")/directory.txt.zip" "$(ZIP)"
refuses "The installer cannot extract a file."
rm "$(ZIP)"
release new foreign --sign_serial=9007199254740991
publish new
refuses "$STRANGER"

# again: the good release, with archives that may be replaced.
again() {
  release new present
  publish new
  list present
}
a_file="All/Airfoils/$(basename "$(find "$FIXTURE/sample/new/All/Airfoils" -type f | sort | head -n 1)")"
archive() { echo "$SITE/updates/$NAME/$a_file.zip"; }

part "arbitrary installation: an archive of the same file that the makers have not made"
again
# Of the same length, and with the same file in it: only its date is another.
cp "$(archive)" "$SCRATCH/other.zip"
printf '\x11' | dd of="$SCRATCH/other.zip" bs=1 seek=11 conv=notrunc status=none
replace "$SCRATCH/other.zip" "$(archive)"
install skyvane-demo-signed
want_status 1 "$NOT_THAT"

part "endless data: an archive that does not end where it should"
again
{ cat "$(archive)"; head -c 100000 /dev/zero; } >"$SCRATCH/long.zip"
replace "$SCRATCH/long.zip" "$(archive)"
install skyvane-demo-signed
want_status 1 "File too large"

part "extraneous dependencies: a file that nobody has signed for"
again
unzip -q "$(ZIP)" -d "$SCRATCH/parts"
printf 'DIR All/\nFILE 0 0 91001 1 1 %032d extra.txt\n' 0 >>"$SCRATCH/parts/directory.txt"
(cd "$SCRATCH/parts" && zip -q "$SCRATCH/extra.zip" directory.txt directory.sum directory.sig)
replace "$SCRATCH/extra.zip" "$(ZIP)"
refuses "$NOT_THAT"
(cd "$SCRATCH/parts" && echo >more.txt && zip -q "$SCRATCH/more.zip" directory.txt directory.sum directory.sig more.txt)
replace "$SCRATCH/more.zip" "$(ZIP)"
refuses "The installer cannot extract a file."

part "malicious mirror: the others are asked"
again
server_list "$NAME" lies-{1..9}.example honest.example >"$SITE/serverlist9.txt"
builder --sign_list="$SITE/serverlist9.txt" --sign="$KEYS/present.key" --sign_serial=$(($(date +%s) + 10))
mkdir -p "$SCRATCH/lies/updates"
cp -rL "$SITE/updates/$NAME" "$SCRATCH/lies/updates/"
for file in "$SCRATCH/lies/updates/$NAME"/All/Airfoils/*.zip; do replace "$SCRATCH/other.zip" "$file"; done
serve "$SITE" "location / { if (\$host ~ lies) { root $SCRATCH/lies; } }"
for _ in 1 2 3; do  # the first mirror is drawn
  want 0 install skyvane-demo-signed
  is_whole new
  cat "$SCRATCH/bin/Skyvane Installer Log.txt" >>"$SCRATCH/logs.txt"
done
grep -q 'example sent something else in place of .*: It is not what' "$SCRATCH/logs.txt" || fail "no mirror has lied"

part "indefinite freeze: what has expired is told, with its dates"
SOURCE_DATE_EPOCH=1600000000 builder --sign_master="$MASTER" --sign="$KEYS/present.key" --sign_serial=$(($(date +%s) + 10))
server_list "$NAME" mirror.example >"$SITE/serverlist9.txt"
SOURCE_DATE_EPOCH=1600000000 builder --sign_list="$SITE/serverlist9.txt" --sign="$KEYS/present.key" \
  --sign_serial=$(($(date +%s) + 20))
want 0 install skyvane-demo-signed
want_text "It was to be replaced by 2020-12-22, and today is $(date -u +%F)."  # the list
want_text "It was to be replaced by 2021-10-18, and today is $(date -u +%F)."  # the release
is_whole new

part "mix-and-match: parts of two releases, and one release in the other's place"
old_zip=$(ZIP)
release newer present --sign_serial=$(($(date +%s) + 30))
mkdir "$SCRATCH/two"
unzip -q "$MASTER/disk_0/Skyvane newer/directory.signed.zip" -d "$SCRATCH/two"
unzip -q -o "$old_zip" directory.sum -d "$SCRATCH/two"
(cd "$SCRATCH/two" && zip -q "$SCRATCH/mixed.zip" directory.txt directory.sum directory.sig)
publish newer
server_list "$NAME" mirror.example >"$SITE/serverlist9.txt"
builder --sign_list="$SITE/serverlist9.txt" --sign="$KEYS/present.key" --sign_serial=$(($(date +%s) + 30))
cp "$(ZIP)" "$SCRATCH/newer.zip"
replace "$SCRATCH/mixed.zip" "$(ZIP)"
refuses "$NOT_THAT"
replace "$old_zip" "$(ZIP)"
refuses "It was signed for another use than this one"
replace "$SCRATCH/newer.zip" "$(ZIP)"

part "rollback: neither an older list nor an older release"
want 0 install skyvane-demo-signed
replace "$SITE/serverlist9.txt" "$SCRATCH/newest_list"
replace "$SCRATCH/good_list" "$SITE/serverlist9.txt"
update
want_status 3 "It is older than what this program has seen before"
replace "$SCRATCH/newest_list" "$SITE/serverlist9.txt"
MASTER=$SCRATCH/master-older
linked_copy "$FIXTURE/master-newer" "$MASTER"
builder --sign_master="$MASTER" --sign="$KEYS/present.key" --sign_serial=1000
replace "$MASTER/disk_0/Skyvane newer/directory.signed.zip" "$(ZIP)"
update
want_status 1 "It is older than what this program has seen before"
replace "$SCRATCH/newer.zip" "$(ZIP)"
want 0 update
is_whole newer

part "fast-forward: a high number under a key that is not known changes nothing"
list foreign --sign_serial=9007199254740991
refuses "$STRANGER"
replace "$SCRATCH/newest_list" "$SITE/serverlist9.txt"
want 0 install skyvane-demo-signed

part "key compromise: the reserve takes over"
release newer reserve --sign_serial=$(($(date +%s) + 40))
publish newer
list reserve --sign_serial=$(($(date +%s) + 40))
want 0 update
is_whole newer
