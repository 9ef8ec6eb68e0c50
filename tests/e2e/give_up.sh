#!/usr/bin/env bash
# Servers that never deliver: the run gives up with a status of its own and names the file.
. "$(dirname "$0")/lib.sh"

root=$(web_root "Skyvane new" "$FIXTURE/master-new")
options=(--unattended --accept_eula --give_up_after=4 --dest="$SCRATCH" --name=Copy)

# All mirrors down: the manifest is there, but none of the files.
serve "$root" 'location ~ \.zip$ { if ($request_filename !~ directory.txt.zip) { return 404; } }'
run skyvane-demo-installer "${options[@]}" $(through_proxy "$PORT")
want_status 3
want_text "Given up: no progress. The file was mirror.example/updates/Skyvane new/"
# A mirror that refuses is left alone for a while, by all streams.
most=$(awk '$9 == 404 { print $4 }' "$SCRATCH/nginx-$PORT/access.log" | uniq -c | sort -n | awk 'END { print $1 }')
[ "$most" -gt 0 ] && [ "$most" -le 12 ] || fail "$most requests in one second to a mirror that refuses"

# No manifest anywhere.
serve "$root" 'location /updates/ { return 500; }'
run skyvane-demo-installer "${options[@]}" $(through_proxy "$PORT")
want_status 3
want_text "The file was mirror.example/updates/Skyvane new/directory.txt.zip."

# Nobody listens at all.
run skyvane-demo-installer "${options[@]}" $(through_proxy 9)
want_status 3
want_text "/serverlist9.txt."

# A list without a mirror is as good as none.
server_list "Skyvane new" >"$root/serverlist9.txt"
serve "$root"
run skyvane-demo-installer "${options[@]}" $(through_proxy "$PORT")
want_status 3
want_text "/serverlist9.txt."

# An interrupted run says so, and leaves no working folder behind.
serve "$root" 'location / { return 503; }'
path=$(program skyvane-demo-installer)
mkdir "$SCRATCH/tmp"
OUT=$SCRATCH/interrupted.txt
: >"$OUT"
TMPDIR=$SCRATCH/tmp "$path" "${options[@]}" --give_up_after=100 $(through_proxy "$PORT") >"$OUT" 2>&1 &
pid=$!
CHILDREN+=("$pid")
until grep -qF "Check Servers" "$OUT"; do sleep 0.05; done
kill -TERM "$pid"
STATUS=0
wait "$pid" || STATUS=$?
want_status 3
want_text "Given up: interrupted."
[ -z "$(ls "$SCRATCH/tmp")" ] || fail "a working folder was left: $(ls "$SCRATCH/tmp")"
