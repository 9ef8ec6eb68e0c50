#!/usr/bin/env bash
# Mirrors with faults, reached directly on port 80 of loopback addresses: one refuses connections,
# one answers 404, one stalls in mid-body. The install completes all the same.
. "$(dirname "$0")/lib.sh"
own_network "$0"

root=$(web_root "Skyvane new" "$FIXTURE/master-new")
# 127.0.0.2 is the product's web server of the program under test; nothing listens on 127.0.0.3.
server_list "Skyvane new" 127.0.0.3 127.0.0.4 127.0.0.5 >"$root/serverlist9.txt"
serve_at 127.0.0.2 "$root"
serve_at 127.0.0.4 "$root" 'location /updates/ { return 404; }'
coproc FLAKY { exec "$BIN/flaky-server" 127.0.0.5 80 "$root" 2; }
CHILDREN+=("$FLAKY_PID")
read -r ready <&"${FLAKY[0]}" && [ "$ready" = ready ] || fail "the flaky server does not listen"

run skyvane-demo-loopback --unattended --accept_eula --dest="$SCRATCH" --name=Copy
want_status 0
same_tree "$FIXTURE/sample/new" Macintosh "$SCRATCH/Copy"
