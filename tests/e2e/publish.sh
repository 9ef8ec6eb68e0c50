#!/usr/bin/env bash
# A release is published to mirrors that speak WebDAV and SFTP and to a folder, looked at, damaged and
# looked at again; what was published is installed through nginx. Old releases are taken away.
. "$(dirname "$0")/lib_publish.bash"
need_tools rclone curl
name="Skyvane new" web=$SCRATCH/web dav=$SCRATCH/web/dav sftp=$SCRATCH/web/sftp
mkdir -p "$dav/updates" "$sftp/updates" "$web/disk/updates"
list=$SCRATCH/serverlist9.txt
server_list "$name" dav sftp disk >"$list"

serve_rclone "$SCRATCH/dav.log" webdav "$dav" --dir-cache-time 0s
printf '[dav]\ntype = webdav\nurl = http://%s\nvendor = other\n' "$ADDRESS" >"$RCLONE_CONFIG"
serve_rclone "$SCRATCH/sftp.log" sftp "$sftp" --user maker --pass secret --dir-cache-time 0s
printf '[sftp]\ntype = sftp\nhost = %s\nport = %s\nuser = maker\npass = %s\n' \
  "${ADDRESS%:*}" "${ADDRESS##*:}" "$(rclone obscure secret)" >>"$RCLONE_CONFIG"
# Nothing listens on port 1.
printf '[away]\ntype = webdav\nurl = http://127.0.0.1:1\nvendor = other\n' >>"$RCLONE_CONFIG"

mirrors=(dav:updates sftp:updates "$web/disk/updates")
publish_to() { publish --download --list="$list" --list_remote=dav:serverlist9.txt "$FIXTURE/master-new" "$@"; }
want 0 publish_to "${mirrors[@]}" --dry_run
[ -z "$(find "$web" -type f)" ] || fail "a dry run sends"
want_text "publish: WARNING: 1 names are not UTF-8, which object storage changes, so that no installer finds them"
want 0 publish_to "${mirrors[@]}"
for host in dav sftp disk; do
  diff -r "$FIXTURE/master-new/disk_0/$name" "$web/$host/updates/$name" || fail "not what was published: $host"
done

# A file that has gone comes back, and a mirror that is away keeps no other from that; but not from the
# list, which goes out when all is in place.
archive=$(find "$sftp" -name '*.zip' -size +1k ! -name 'directory*' | sort | sed -n 1p)  # which reads to the end
rm "$archive" "$dav/serverlist9.txt"
publish_to away:updates "${mirrors[@]}"
want_status 1 "publish: away:updates does not hold the whole of $name; what is wrong stands above"
want_text "publish: the server list stays as it is: mend the mirrors and say the same again, or leave"
[ -s "$archive" ] || fail "the mirrors behind one that is away are not filled"
[ ! -e "$dav/serverlist9.txt" ] || fail "the list goes out with a mirror away"
# One that differs is not written to.
echo damaged >>"$archive"
publish_to "${mirrors[@]}"
want_status 1 "publish: sftp:updates does not hold the whole of $name"
[ "$(grep -c "^publish: .* does not hold" "$OUT")" = 1 ] || fail "others are said to differ"
[ ! -e "$dav/serverlist9.txt" ] && [ "$(tail -n 1 "$archive" | tr -d '\0' | tail -c 8)" = damaged ] ||
  fail "a mirror that differs is written to, or the list goes out"
# The mirrors are whole, but the list has no place to go.
mkdir "$SCRATCH/full"
publish --list="$list" --list_remote=away:serverlist9.txt "$FIXTURE/master-new" "$SCRATCH/full"
want_status 1 "publish: the server list could not be sent; the mirrors are whole"

while IFS='|' read -r said flags; do
  # shellcheck disable=SC2086  # words
  want 2 publish $flags
  [ -z "$said" ] || [ "$(cat "$OUT")" = "publish$said" ] || fail "$flags: does not say: $said"
done <<ROWS
: unknown option --bad|--bad x y
: no master in $SCRATCH/none|$SCRATCH/none dav:updates
: --list wants --list_remote|--list=x $FIXTURE/master-new dav:
: no such file: $SCRATCH/none|--list=$SCRATCH/none --list_remote=dav:x $FIXTURE/master-new dav:
: $list does not name Skyvane old|--list=$list --list_remote=dav:x $FIXTURE/master-old dav:updates
: --prune comes first|x --prune
 --prune: --list_remote is wanted: it says which release is out|--prune dav:updates
 --prune: unknown option --bad|--prune --bad
 --estimate: --users needs a number, not "many"|--estimate --users=many x
 --estimate: no master in $SCRATCH|--estimate $SCRATCH
|--estimate
ROWS

# --- as a cron job and an installer see it --------------------------------------------------------
cp "$list" "$dav/serverlist9.txt"
mirror_hosts "$web"
want 1 check_mirrors "$list"
want_line "sftp/updates/: lies: ${archive#"$sftp/updates/$name/"} has $(stat -c %s "$archive") bytes, another mirror has $(($(stat -c %s "$archive") - 8))"
want_line "disk/updates/: $name is whole: $(find "$web/disk" -name '*.zip' ! -name directory.txt.zip | wc -l) files, 10 of them compared"
cp "$FIXTURE/master-new/disk_0/$name/${archive#"$sftp/updates/$name/"}" "$archive"
want 0 check_mirrors --quiet "$list"
[ ! -s "$OUT" ] || fail "without a fault something is said"

rm -r "$dav/updates" # a mirror that the list names first has nothing any more
want 1 check_mirrors --quiet "$list"
[ "$(cat "$OUT")" = "dav/updates/: is behind: it has no manifest of $name (404)" ] || fail "not what there is to say"
install_through_mirrors "$dav/serverlist9.txt" "$FIXTURE/sample/new"

# --- old releases go ------------------------------------------------------------------------------
disk=$web/disk/updates
cp -r "$FIXTURE/master-old/disk_0/Skyvane old" "$FIXTURE/master-newer/disk_0/Skyvane newer" "$disk"
cp -r "$disk/Skyvane old" "$disk/Skyvane old again"
mkdir "$disk/no release"
echo x >"$disk/no release/file"
folders() { (cd "$disk" && printf '%s|' *); }
all="Skyvane new|Skyvane newer|Skyvane old|Skyvane old again|no release|"
# What is out, flags, status, and what is left; the last row's mirrors are away.
while IFS=';' read -r final beta flags status left; do
  { echo "FINAL $final"; [ -z "$beta" ] || echo "BETA $beta"; } >"$SCRATCH/list"
  # shellcheck disable=SC2086  # several flags
  want "$status" publish --prune $flags --list_remote="$SCRATCH/list" "$disk"
  [ "$(folders)" = "$left" ] || fail "$final, $flags: $(folders) is left"
done <<ROWS
Skyvane newest;;;1;$all
Skyvane old;;;0;$all
Skyvane new;;--dry_run;0;$all
Skyvane new;;--keep=Odl;2;$all
Skyvane newer;Skyvane old;--dry_run;0;$all
Skyvane newer;Skyvane old;;0;Skyvane new|Skyvane newer|Skyvane old|no release|
Skyvane newer;;--dry_run;0;Skyvane new|Skyvane newer|Skyvane old|no release|
Skyvane newer;;;0;Skyvane new|Skyvane newer|no release|
ROWS
want_line "$disk: Skyvane newer (91100) is kept: the list names it"
want_line "$disk: Skyvane new (91001) is kept: it came before Skyvane newer"
want_line "$disk: Skyvane old (90900) is deleted"
want_line "$disk: no release is kept: it holds no manifest of ours"
want 1 publish --prune --list_remote="$SCRATCH/list" away:updates "$disk"
want_line "publish --prune: away:updates: it could not be read"
want_line "$disk: Skyvane newer (91100) is kept: the list names it"

# --- what it costs --------------------------------------------------------------------------------
# By the builder's own manifests: each platform's files, and those whose signature another manifest has not.
want 0 publish --estimate --users=1000 --previous="$FIXTURE/manifest-old/directory.txt" "$FIXTURE/master-newer"
current() { # MANIFEST: path and signature of what a Linux copy wants
  awk '/^DIR /{ folder = substr($0, 5) } /^FILE /{ if ($3 != 0 && $3 != 3 && $3 != 6) next
    line = $0; for (i = 0; i < 7; i++) sub(/^[^ ]+ /, "", line); state[folder line] = $7 }
    END { for (path in state) if (state[path] != "GONE") print path "\t" state[path] }' "$1" | sort
}
newer=$FIXTURE/manifest-newer/directory.txt
for row in "full install|$(current "$newer" | wc -l)" \
  "update from 90900|$(comm -23 <(current "$newer") <(current "$FIXTURE/manifest-old/directory.txt") | wc -l)"; do
  got=$(awk -v row="${row%|*}" 'index($0, row) == 1 { mine = 1 } mine && / Linux / { sub(/.* Linux +/, ""); print $1, $3; exit }' "$OUT")
  wanted=$((${row##*|} + 2))
  [ "$got" = "$wanted $((wanted * 1000))" ] || fail "${row%|*}: $got requests, wanted $wanted"
done
