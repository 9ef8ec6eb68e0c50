#!/usr/bin/env bash
# A release on object storage: published to a server that speaks S3, looked at, broken, looked at
# again, mended, and installed from there through nginx, which stands before it as a cache would.
. "$(dirname "$0")/lib_publish.bash"
need_tools rclone curl node
S3RVER=$BIN/../tools/s3rver/node_modules/.bin/s3rver
[ -x "$S3RVER" ] || { echo "misses s3rver, which script/bootstrap gets by npm"; exit 77; }
name="Skyvane new" web=$SCRATCH/web
unset "${!AWS_@}" # keys and certificates of whoever runs this
mkdir -p "$web" "$SCRATCH/objects"
# Keys are UTF-8: a tree that is meant for object storage has no other names.
cp -a "$FIXTURE/sample/new" "$SCRATCH/tree"
find "$SCRATCH/tree" -name 'Fran*ais*' -delete
run skyvane-demo-installer --build_master --type=0 --name="$name" --source="$SCRATCH/tree" --output="$SCRATCH/master" \
  --previous="$FIXTURE/manifest-old/directory.txt"
want_status 0
server_list "$name" bucket.example >"$SCRATCH/serverlist9.txt"

node "$S3RVER" -a 127.0.0.1 -p 0 -d "$SCRATCH/objects" --no-vhost-buckets --configure-bucket updates \
  >"$SCRATCH/s3.log" 2>&1 &
CHILDREN+=($!)
ADDRESS=$(wait_for_text "$SCRATCH/s3.log" '127\.0\.0\.1:[1-9][0-9]*')
cat >"$RCLONE_CONFIG" <<CONF
[bucket]
type = s3
provider = Other
access_key_id = S3RVER
secret_access_key = S3RVER
endpoint = http://$ADDRESS
region = us-east-1
force_path_style = true
no_check_bucket = true
CONF
mirror_hosts "$web" "location /updates/ { proxy_pass http://$ADDRESS; }"

publish_all() { publish --list="$SCRATCH/serverlist9.txt" --list_remote=bucket:updates/serverlist9.txt "$SCRATCH/master" bucket:updates; }
want 0 publish_all
rclone check --fast-list --download "$SCRATCH/master/disk_0/$name" "bucket:updates/$name" 2>"$OUT" || fail "not what was published"
archive="$name/All/Airfoils/flat plate.afl.zip"
headers() { curl -q -s -I "http://$ADDRESS/updates/$1" | tr -d '\r'; }
headers serverlist9.txt >"$OUT"
want_line "Cache-Control: no-cache"
headers "${archive// /%20}" >"$OUT"
want_line "Cache-Control: public, max-age=31536000, immutable"

want 0 check_mirrors --sample=1000 "$SCRATCH/serverlist9.txt"
rclone deletefile "bucket:updates/$archive"
echo another | rclone rcat "bucket:updates/$name/All/Aircraft/Latest.zip"
want 1 check_mirrors --sample=1000 "$SCRATCH/serverlist9.txt"
want_line "bucket.example/updates/: misses ${archive#*/} (404)"
want_line "bucket.example/updates/: lies: All/Aircraft/Latest.zip is damaged"
# What is missing comes back; what differs is left alone, and has to be taken away by hand.
want 1 publish_all
rclone deletefile "bucket:updates/$name/All/Aircraft/Latest.zip"
want 0 publish_all
want 0 check_mirrors "$SCRATCH/serverlist9.txt"
rclone copyto bucket:updates/serverlist9.txt "$SCRATCH/fetched"
install_through_mirrors "$SCRATCH/fetched" "$SCRATCH/tree"

# The release before goes, when another two are there.
publish "$FIXTURE/master-old" bucket:updates
want 0 publish "$FIXTURE/master-newer" bucket:updates
sed 's/^FINAL .*/FINAL Skyvane newer/' "$SCRATCH/serverlist9.txt" | rclone rcat bucket:updates/serverlist9.txt
want 0 publish --prune --list_remote=bucket:updates/serverlist9.txt bucket:updates
want_line "bucket:updates: Skyvane old (90900) is deleted"
[ "$(rclone lsf --dirs-only bucket:updates | sort | tr '\n' ' ')" = "Skyvane new/ Skyvane newer/ " ] || fail "not pruned"
