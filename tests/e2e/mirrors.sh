#!/usr/bin/env bash
# Mirrors with faults, reached directly on port 80 of loopback addresses: one refuses connections,
# one answers 404, one stalls in mid-body and wakes up again. The install completes all the same.
. "$(dirname "$0")/lib.sh"
own_network "$0"

root=$(web_root "Skyvane new" "$FIXTURE/master-new")
# 127.0.0.2 is the product's web server of the program under test; nothing listens on 127.0.0.3.
server_list "Skyvane new" 127.0.0.3 127.0.0.4 127.0.0.5 >"$root/serverlist9.txt"
serve_at 127.0.0.2 "$root"
serve_at 127.0.0.4 "$root" 'location /updates/ { return 404; }'
serve_at 127.0.0.5 "$root" "location ~ directory\.txt\.zip\$ { }
  location / { if (-f $SCRATCH/slow) { set \$limit_rate 50; } }"
touch "$SCRATCH/slow"

# A file that is under way for a second is in the midst of its body. Then the mirror stands still for
# longer than a client waits.
under_way() { grep -q . <(awk '$2 == "0500007F:0050" && $4 == "01"' /proc/net/tcp); }
stall() {
  local server=$(cat "$SCRATCH/nginx-127.0.0.5/nginx.pid")
  until under_way && sleep 1 && under_way; do sleep 0.05; done
  pkill -STOP -P "$server"
  rm "$SCRATCH/slow"
  sleep 40
  pkill -CONT -P "$server"
}
stall &
CHILDREN+=("$!")

want 0 run skyvane-demo-loopback --unattended --accept_eula --dest="$SCRATCH" --name=Copy
[ ! -e "$SCRATCH/slow" ] || fail "no mirror has stalled"
same_tree "$FIXTURE/sample/new" Linux "$SCRATCH/Copy"
