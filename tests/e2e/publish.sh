#!/usr/bin/env bash
# A master is published to a WebDAV server and to a folder, looked at, damaged, looked at again; what
# was published is then installed through nginx.
. "$(dirname "$0")/lib.sh"
need_tools rclone
publish=$(realpath "$(dirname "$0")/../../script/publish")
export RCLONE_CONFIG=$SCRATCH/rclone.conf
name="Skyvane new" web=$SCRATCH/web
mkdir -p "$web/updates" "$SCRATCH/second"
server_list "$name" mirror.example >"$SCRATCH/serverlist9.txt"

rclone serve webdav "$web" --addr 127.0.0.1:0 --dir-cache-time 0s >"$SCRATCH/dav.log" 2>&1 &
CHILDREN+=($!)
for _ in $(seq 200); do
  url=$(grep -o 'http://127[^ "]*' "$SCRATCH/dav.log" | head -n 1) && [ -n "$url" ] && break
  sleep 0.05
done
printf '[dav]\ntype = webdav\nurl = %s\nvendor = other\n' "$url" >"$RCLONE_CONFIG"

go() { STATUS=0; "$publish" "$@" >"$OUT" 2>&1 || STATUS=$?; }
all=(--download --list="$SCRATCH/serverlist9.txt" --list_remote=dav:serverlist9.txt
  "$FIXTURE/master-new" dav:updates "$SCRATCH/second")
go --dry_run "${all[@]}"
want_status 0
[ -z "$(find "$web" "$SCRATCH/second" -type f)" ] || fail "a dry run sends"
go "${all[@]}"
want_status 0
for folder in "$web/updates" "$SCRATCH/second"; do
  diff -r "$FIXTURE/master-new/disk_0/$name" "$folder/$name" || fail "not what was published"
done
# A file that has gone comes back; one that differs is told of and not replaced, and the list stays.
archive=$(find "$SCRATCH/second" -name '*.zip' -size +1k ! -name 'directory*' | sort | head -n 1)
rm "$archive" "$web/serverlist9.txt"
go "${all[@]}"
want_status 0
[ -s "$archive" ] && [ -s "$web/serverlist9.txt" ] || fail "a second run does not complete the first"
echo damaged >>"$archive"
rm "$web/serverlist9.txt"
go "${all[@]}"
[ "$STATUS" != 0 ] || fail "a mirror that differs is no failure"
[ ! -e "$web/serverlist9.txt" ] && [ "$(tail -n 1 "$archive" | tr -d '\0' | tail -c 8)" = damaged ] ||
  fail "a mirror that differs is written to, or the list is published"
for row in "--bad x y" "$SCRATCH/none dav:updates" "--list=x $FIXTURE/master-new dav:"; do
  # shellcheck disable=SC2086  # words
  go $row
  want_status 2
done

cp "$SCRATCH/serverlist9.txt" "$web/"
serve "$web"
mkdir "$SCRATCH/dest"
# shellcheck disable=SC2046  # two options
run skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH/dest" --name=Trial $(through_proxy "$PORT")
want_status 0
