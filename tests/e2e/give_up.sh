#!/usr/bin/env bash
# Servers that never deliver: the run gives up with a status of its own and names the file.
. "$(dirname "$0")/lib.sh"

options=(--unattended --accept_eula --give_up_after=4 --dest="$SCRATCH" --name=Copy)

# Mirrors that do not work at present: that is waited for, and a mirror is left alone for a while.
serve_release new 'location ~ "Skyvane new/.*[.]zip$" { if ($request_filename !~ directory.txt.zip) { return 503; } }'
run skyvane-demo-installer "${options[@]}" $(through_proxy "$PORT")
want_status 3 "Given up: no progress for 4 seconds." "http://mirror.example/updates/Skyvane%20new/"
want_text ".zip: the server answered 503 Service Temporarily Unavailable"
most=$(awk '$9 == 503 { print $4 }' "$SCRATCH/nginx-$PORT/access.log" | uniq -c | sort -n | awk 'END { print $1 }')
[ "$most" -gt 0 ] && [ "$most" -le 12 ] || fail "$most requests in one second to a mirror that refuses"
rm -r "$SCRATCH/Copy"

# No manifest anywhere.
serve_release new 'location /updates/ { return 500; }'
want 3 run skyvane-demo-installer "${options[@]}" $(through_proxy "$PORT")
want_text "http://mirror.example/updates/Skyvane%20new/directory.txt.zip: the server answered 500 Internal Server Error"

# The proxy's name is nobody's.
run skyvane-demo-installer "${options[@]}" --pref:_proxy_host=nobody.invalid --pref:_proxy_port_int=80
want_status 3 "/serverlist9.txt: there is no host 'nobody.invalid'"

# A list without a mirror is as good as none.
serve_release new
server_list "Skyvane new" >"$ROOT/serverlist9.txt"
run skyvane-demo-installer "${options[@]}" $(through_proxy "$PORT")
want_status 3 "/serverlist9.txt: the server sent something else"
