# Installs from a mirror on this machine, beside curl and unzip. Sourced by script/bench.

install_begin() {  # HEADER...: options of curl
  PEER=$SCRATCH/peer
  serve_release
  write_curl_config "$PORT"
}

# What curl is to fetch, and where each archive goes.
write_curl_config() {
  (cd "$MASTER" && find . -name '*.zip' ! -name directory.txt.zip -printf '%P\n') |
    awk -v from="http://127.0.0.1:$1/updates/$NAME/" -v to="$PEER/zips/" '
      { name = $0; gsub(/ /, "%20", name); printf "url = \"%s%s\"\noutput = \"%s%s\"\n", from, name, to, $0 }' \
      >"$SCRATCH/curl.txt"
}

fetch_and_unpack() {  # PEER CONFIG CURL-OPTIONS...
  curl -Zsfg --parallel-max 4 --create-dirs -K "$2" "${@:3}"
  cd "$1/zips"
  find . -name '*.zip' -printf '%h\n' | sort -u | while read -r folder; do
    mkdir -p "$1/files/${folder#./*/}"
    unzip -q -o "$folder/*.zip" -d "$1/files/${folder#./*/}"
  done
}
by_install() { fresh_install "$SCRATCH/ours"; }
fresh_fetch() {
  rm -rf "$PEER"
  mkdir -p "$PEER/files"
  sync
  lap fetch_and_unpack "$PEER" "$SCRATCH/curl.txt" "$@"
}
by_curl_and_unzip() { fresh_fetch -H 'Connection: close'; }
by_curl_keeping() { fresh_fetch; }
installed_the_same() { same_files "$SCRATCH/ours" "$PEER/files"; }

job_install_loopback() {
  whole_release
  install_begin
  contest install-loopback 3 by_install by_curl_and_unzip installed_the_same "$SHIPPED archives"
}

job_install_small() {
  release "small-5000" small_files 5000
  [ "$(find "$MASTER" -name '*.bin.zip' -size +4999c -size -10001c | wc -l)" = 5000 ] ||
    fail "the archives are not of 5 to 10 KB"
  install_begin
  contest install-small 3 by_install by_curl_and_unzip installed_the_same "$SHIPPED archives of 5 to 10 KB"
}

# --- what signatures cost ---------------------------------------------------------------------------

by_signed_install() {
  local kept=$PORT
  PORT=$SIGNED_PORT
  rm -rf "$PEER/files"
  sync
  ours skyvane-demo-signed --accept_eula --dest="$PEER" --name=files
  PORT=$kept
}

# Ours beside ours: the keys are the tests', whose programs differ in nothing else.
job_install_signed() {
  local site=$SCRATCH/signed sign=("$(program skyvane-web-signed)" --sign="$BIN/e2e_keys/present.key") master
  whole_release
  PEER=$SCRATCH/peer
  mkdir -p "$PEER" "$site/updates"
  serve_release
  # Archives are links: signing replaces what it writes.
  master=${MANIFEST%/*}/signed
  rm -rf "$master"
  cp -al "${MASTER%/disk_0/*}" "$master"
  ln -s "$master/disk_0/$NAME" "$site/updates/$NAME"
  server_list "$NAME" mirror.example >"$site/serverlist9.txt"
  lap "${sign[@]}" --sign_master="$master"
  lap "${sign[@]}" --sign_list="$site/serverlist9.txt"
  serve "$site"
  SIGNED_PORT=$PORT
  serve_release
  contest install-signed 0.8 by_signed_install by_install installed_the_same \
    "$SHIPPED archives, all signed for; the peer is ours without keys"
}

# --- the transfer alone ----------------------------------------------------------------------------

by_fetch() {
  rm -rf "$SCRATCH/ours"
  mkdir "$SCRATCH/ours"
  sync
  lap "$BIN/probe" fetch "$PORT" "$SCRATCH/paths.txt" "$SCRATCH/ours/"
}
by_curl_alone() {
  rm -rf "$PEER"
  mkdir "$PEER"
  sync
  lap curl -Zsfg --parallel-max 4 -K "$SCRATCH/curl.txt"
}
fetched_the_same() { same_files "$SCRATCH/ours" "$PEER"; }

job_fetch_small() {
  release "small-5000" small_files 5000
  PEER=$SCRATCH/peer
  serve_release
  (cd "$MASTER" && find . -name '*.zip' -printf "/updates/$NAME/%P\n") >"$SCRATCH/paths.txt"
  awk -v from="http://127.0.0.1:$PORT" -v to="$PEER" '
    { name = $0; gsub(/ /, "%20", name); printf "url = \"%s%s\"\noutput = \"%s/%d\"\n", from, name, to, NR - 1 }' \
    "$SCRATCH/paths.txt" >"$SCRATCH/curl.txt"
  contest fetch-small 1.0 by_fetch by_curl_alone fetched_the_same "$SHIPPED archives of 5 to 10 KB"
}

# --- over a slow line ------------------------------------------------------------------------------

# slow_line: puts a line of 40 ms and 50 Mbit/s in front of PORT, which becomes the line's.
slow_line() {
  local said=$SCRATCH/line-$PORT
  mkfifo "$said"
  "$BIN/slow_line" "$PORT" 40 50 >"$said" &
  CHILDREN+=($!)
  read -r PORT <"$said"
}
by_install_closing() {
  local kept=$PORT
  PORT=$CLOSING_PORT
  fresh_install "$PEER/files"
  PORT=$kept
}

job_install_line() {
  local note
  release "small-1000" small_files 1000
  note="$SHIPPED archives of 5 to 10 KB, 40 ms round trip, 50 Mbit/s"
  PEER=$SCRATCH/peer
  serve_release "keepalive_timeout 0;"
  slow_line
  CLOSING_PORT=$PORT
  serve_release
  slow_line
  write_curl_config "$PORT"
  contest install-line 1.0 by_install by_curl_keeping installed_the_same "$note"
  contest install-line-close 2 by_install by_install_closing installed_the_same \
    "$note; ours with a connection a file, as the server closes each"
}
