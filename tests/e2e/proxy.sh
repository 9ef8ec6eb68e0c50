#!/usr/bin/env bash
# Through a real proxy: tinyproxy asks the product's web server and the mirror on port 80.
. "$(dirname "$0")/lib.sh"
need_tools tinyproxy ip
own_network "$0"

root=$(web_root "Skyvane new" "$FIXTURE/master-new")
server_list "Skyvane new" 127.0.0.7 >"$root/serverlist9.txt"
serve_at 127.0.0.2 "$root"
serve_at 127.0.0.7 "$root"

for port in $(shuf -i 32001-40000 -n 30); do
  printf '%s\n' "Port $port" "Listen 127.0.0.1" "Timeout 60" "MaxClients 20" \
    "LogFile \"$SCRATCH/tinyproxy.log\"" "LogLevel Connect" >"$SCRATCH/tinyproxy.conf"
  tinyproxy -d -c "$SCRATCH/tinyproxy.conf" >"$SCRATCH/tinyproxy.out" 2>&1 &
  pid=$!
  CHILDREN+=("$pid")
  for _ in $(seq 100); do
    kill -0 "$pid" 2>/dev/null || break
    (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null && break 2
    sleep 0.05
  done
done

want 0 run skyvane-demo-loopback --unattended --accept_eula --dest="$SCRATCH" --name=Copy \
  $(through_proxy "$port")
same_tree "$FIXTURE/sample/new" Linux "$SCRATCH/Copy"
grep -q "127.0.0.7" "$SCRATCH/tinyproxy.log" || fail "the mirror was not asked through the proxy"
