#!/usr/bin/env bash
# The makers' side of signing: where the key is and where it is not, passwords, what is refused, and
# that two signatures of one hour are the same bytes. minisign makes the keys and looks at the results.
. "$(dirname "$0")/lib.sh"
need_tools minisign unzip script
sign=$(realpath "$(dirname "$0")/../../script/sign")
KEYS=$SCRATCH/keys
mkdir "$KEYS"
minisign -G -W -f -p "$KEYS/open.pub" -s "$KEYS/open.key" >/dev/null
printf 'a password\na password\n' | minisign -G -f -p "$KEYS/locked.pub" -s "$KEYS/locked.key" >/dev/null 2>&1
name="Skyvane new"

# master: a fresh MASTER to sign; its archives are links, and so are replaced and never written to.
MADE=0
master() {
  MASTER=$SCRATCH/master-$((++MADE))
  linked_copy "$FIXTURE/master-new" "$MASTER"
  SIGNED="$MASTER/disk_0/$name/directory.signed.zip"
}
program=$(program skyvane-web-updater)
go() { STATUS=0; timeout 300 "$sign" --program="$program" "$@" >"$OUT" 2>&1 <"${INPUT:-/dev/null}" || STATUS=$?; }
is_signed() {  # KEY: by minisign's own judgement
  unzip -p "$SIGNED" directory.sig >"$SCRATCH/sig"
  sed '/^untrusted comment:/,$d' "$SCRATCH/sig" >"$SCRATCH/stated"
  sed -n '/^untrusted comment:/,$p' "$SCRATCH/sig" >"$SCRATCH/stated.minisig"
  minisign -Vq -p "$KEYS/$1.pub" -m "$SCRATCH/stated" || fail "minisign does not take it"
  # What is stated, by other programs.
  local text
  for text in directory.txt directory.sum; do
    unzip -p "$SIGNED" "$text" >"$SCRATCH/$text"
    grep -qx "SHA256 $(sha256sum <"$SCRATCH/$text" | cut -c1-64) $(stat -c %s "$SCRATCH/$text") $text" "$SCRATCH/stated" ||
      fail "what is stated of $text"
  done
  unzip -p "$MASTER/disk_0/$name/directory.txt.zip" | cmp - "$SCRATCH/directory.txt" || fail "another manifest"
}
not_signed() { [ ! -e "$SIGNED" ] || fail "it was signed"; }

# The key is here. Each line of the sums, by other programs.
master
want 0 go --key="$KEYS/open.key" "$MASTER"
is_signed open
tail -n +5 "$SCRATCH/directory.sum" >"$SCRATCH/lines"
[ "$(wc -l <"$SCRATCH/lines")" = "$(find "$MASTER/disk_0/$name" -mindepth 2 -name '*.zip' | wc -l)" ] || fail "lines of sums"
while read -r _ sha bytes file_sha file_bytes mode path; do
  archive="$MASTER/disk_0/$name/$path.zip" source="$FIXTURE/sample/new/$path"
  [ "$sha $bytes" = "$(sha256sum <"$archive" | cut -c1-64) $(stat -c %s "$archive")" ] || fail "the archive of $path"
  content() { if [ -L "$source" ]; then readlink -n "$source"; else cat "$source"; fi; }
  [ "$file_sha $file_bytes" = "$(content | sha256sum | cut -c1-64) $(content | wc -c)" ] || fail "the file $path"
  [ -L "$source" ] || [ "$mode" = "100$(stat -c %a "$source")" ] || fail "the mode of $path: $mode"
done <"$SCRATCH/lines"
# Once more: a serial that is not higher is refused, and the old signature stays.
cp "$SIGNED" "$SCRATCH/before.zip"
go --key="$KEYS/open.key" --serial=5 "$MASTER"
want_status 1 "The serial 5 is not above that of the last signature"
cmp "$SIGNED" "$SCRATCH/before.zip" || fail "the old signature went"

# A password, from a descriptor and on a terminal, right and wrong.
master
want 0 go --key="$KEYS/locked.key" --password_fd=3 "$MASTER" 3<<<"a password"
is_signed locked
master
INPUT=<(echo another) go --key="$KEYS/locked.key" --password_fd=0 "$MASTER"
want_status 2 "The password is not that of the signing key."
not_signed
STATUS=0
setsid "$sign" --program="$program" --key="$KEYS/locked.key" "$MASTER" >"$OUT" 2>&1 </dev/null || STATUS=$?
want_status 2 "There is no terminal to ask for the key's password on"
not_signed
typed() {  # TEXT: what is typed at the prompt; leaves what the terminal showed, and its settings at the end
  rm -f "$OUT"
  # The shell outlives the signal that ends the program.
  { until grep -qs Password "$OUT"; do sleep 0.05; done; printf '%b' "$1"; } |
    timeout 60 script -qfec "trap : INT; stty -a >'$SCRATCH/tty'; '$sign' --program='$program' --key='$KEYS/locked.key' '$MASTER'; stty -a >>'$SCRATCH/tty'" \
      "$OUT" >/dev/null || true
  grep -q a\ password "$OUT" && fail "the password was shown"
  [ "$(grep -c ' echo ' "$SCRATCH/tty")" = 2 ] || fail "the terminal was left without echo"
}
typed 'a password\n'
is_signed locked
master
typed '\003'
not_signed

# The key is elsewhere: a master, then a list with its program.
master
want 0 go --statement="$SCRATCH/release.txt" "$MASTER"
not_signed
printf 'a password\n' | minisign -S -s "$KEYS/locked.key" -m "$SCRATCH/release.txt" >/dev/null 2>&1
want 0 go --statement="$SCRATCH/release.txt" "$MASTER"
is_signed locked
server_list "$name" mirror.example >"$SCRATCH/list"
cp "$SCRATCH/list" "$SCRATCH/serverlist9.txt"
want 0 go --statement="$SCRATCH/list.txt" --list="$SCRATCH/serverlist9.txt" --final="$SIGNED"
minisign -S -s "$KEYS/open.key" -m "$SCRATCH/list.txt" >/dev/null 2>&1
cp "$SCRATCH"/list.txt* "$KEYS/"
want 0 go --statement="$SCRATCH/list.txt" --list="$SCRATCH/serverlist9.txt"
[ ! -e "$SCRATCH/list.txt.minisig" ] || fail "the next signing would put it in again"
cp "$KEYS"/list.txt* "$SCRATCH/"
go --statement="$SCRATCH/list.txt" --list="$SCRATCH/serverlist9.txt"
want_status 1 "is not above that of the last signature"
cmp <(head -c "$(stat -c %s "$SCRATCH/list")" "$SCRATCH/serverlist9.txt") "$SCRATCH/list" || fail "the list itself changed"
grep -qx "SHA256 $(sha256sum <"$SIGNED" | cut -c1-64) $(stat -c %s "$SIGNED") FINAL_INSTALLER_MAC" "$SCRATCH/serverlist9.txt" ||
  fail "the program is not vouched for"
# A statement of another list or master is not put in.
sed -i /ENDOFLIST/d "$SCRATCH/list"
go --statement="$SCRATCH/list.txt" --list="$SCRATCH/list"
want_status 1 "A list that is to be signed ends in ENDOFLIST"
sed 's/mirror.example/evil.example/' "$SCRATCH/serverlist9.txt" >"$SCRATCH/list"
go --statement="$SCRATCH/list.txt" --list="$SCRATCH/list"
want_status 1 "The statement is not of this list"

# The same hour, the same bytes; with the build, and after it.
build() {  # FOLDER ARGS...
  SOURCE_DATE_EPOCH=1700000000 want 0 run skyvane-web-updater --build_master --type=0 --name="$name" --release=91001 \
    --source="$FIXTURE/sample/new" --output="$SCRATCH/$1" --previous="$FIXTURE/manifest-old/directory.txt" "${@:2}"
}
build one --sign="$KEYS/open.key"
build two
SOURCE_DATE_EPOCH=1700000000 want 0 go --key="$KEYS/open.key" "$SCRATCH/two"
diff -r "$SCRATCH/one/disk_0" "$SCRATCH/two/disk_0" || fail "two signed masters differ"

# What is not whole is not signed: an archive that is changed, one that is missing; a key that is none.
master
archive="$MASTER/disk_0/$name/$(sed -n '3s/^\([^ ]* \)\{6\}//p' "$SCRATCH/lines").zip"
cp --remove-destination "$FIXTURE/master-old/disk_0/Skyvane old/directory.txt.zip" "$archive"
go --key="$KEYS/open.key" "$MASTER"
want_status 1 "it does not hold the file that the manifest lists" "The master was not signed."
not_signed
rm "$archive"
go --key="$KEYS/open.key" "$MASTER"
want_status 1 "the master lacks its archive"
not_signed
for row in "--key=$KEYS/open.pub $MASTER" "--key=$KEYS/none $MASTER" "--key=$KEYS/open.key --serial=x $MASTER" \
  "--key=$KEYS/open.key" "$MASTER" "--bad $MASTER" "--key=$KEYS/open.key --statement=x $MASTER"; do
  # shellcheck disable=SC2086  # words
  want 2 go $row
  not_signed
done
