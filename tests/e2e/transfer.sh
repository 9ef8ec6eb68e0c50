#!/usr/bin/env bash
# How a mirror may answer: it keeps connections, closes them after a few files or after each, sends
# bodies in chunks, or closes a connection that is idle without saying so. The release has
# files with names that mean something in a request. The install is whole each time.
. "$(dirname "$0")/lib.sh"

tree=$SCRATCH/tree
cp -a "$FIXTURE/sample/new" "$tree"
names=('100%.txt' '%41.txt' 'No #1?.txt' 'say "so".txt' "it's & more+;=@,.txt" '[x] {y} ^|`~.txt' '<z>.txt'
  "$(printf 'caf\xe9 \xc3\xa9.txt')" 'two  blanks.txt')
for name in "${names[@]}"; do echo "this is $name" >"$tree/All/Resources/$name"; done
want 0 run skyvane-demo-installer --build_master --type=0 --name=Odd --source="$tree" \
  --output="$SCRATCH/master" --previous=none

root=$SCRATCH/web
mkdir -p "$root/updates"
ln -s "$SCRATCH/master/disk_0/Odd" "$root/updates/Odd"
server_list Odd mirror.example >"$root/serverlist9.txt"

# install LABEL LEAST MOST CONFIG: an install from such a server, over LEAST to MOST connections, in
# which r is the number of its requests.
install() {
  serve "$root" "location = /count { stub_status; } $4"
  rm -rf "$SCRATCH/Copy"
  want 0 install_demo Copy
  same_tree "$tree" Linux "$SCRATCH/Copy"
  ! grep -q "HTTP Error" "$SCRATCH/bin/Skyvane Installer Log.txt" || fail "$1: a fetch has failed"
  curl -s "http://127.0.0.1:$PORT/count" | awk 'NR == 3 { print $1 - 1, $3 - 1 }' >"$SCRATCH/count.txt"
  awk "{ r = \$2; exit !(\$1 >= $2 && \$1 <= $3) }" "$SCRATCH/count.txt" ||
    fail "$1: connections and requests were $(cat "$SCRATCH/count.txt")"
}

install "keeps its connections" 4 6 ""
install "closes after three answers, and says so" r/3 r/3+6 "keepalive_requests 3;"
install "closes after each" r r "keepalive_timeout 0;"
install "chunks" 4 6 "ssi on; ssi_types *;"
install "closes what is idle for a moment, without a word" 4 r "keepalive_timeout 1ms;"
