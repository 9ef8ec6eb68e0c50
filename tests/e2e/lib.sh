# Shared by the end-to-end tests; each of them sources this file.
#
# Expects in the environment: BIN, the folder of the programs; FIXTURE, the folder that setup.sh
# filled; both absolute. Gives each test a scratch folder of its own, programs of its own (so that
# the log beside them is its own too), settings of its own, and takes everything down at the end.
set -euo pipefail
export LC_ALL=C  # names are bytes; sorting and matching go by them
PATH=$PATH:/usr/sbin:/sbin  # nginx, which is not in an ordinary user's

# The filters of the builder refuse paths that hold certain words, so the folder's name is plain.
SCRATCH=$(mktemp -d "${TMPDIR:-/tmp}/skyvane-e2e-XXXXXX")
echo $$ >"$SCRATCH/pid"  # whose folder it is, for script/clean
export XDG_CONFIG_HOME=$SCRATCH/config XDG_STATE_HOME=$SCRATCH/state
# Of the driver's; its own choice is a home that an ordinary user who is root in a namespace cannot write.
export XDG_CACHE_HOME=${XDG_CACHE_HOME:-$FIXTURE/cache}
unset http_proxy no_proxy
# No test meets the services of the desktop that it runs on.
export DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent
export ASAN_OPTIONS=detect_leaks=0:abort_on_error=0:exitcode=99
export UBSAN_OPTIONS=print_stacktrace=1
OUT=$SCRATCH/out.txt  # standard output and error of the last program run
STATUS=0              # and its exit status
MOUNTS=()
CHILDREN=()

finish() {
  local code=$?
  for pid in "${CHILDREN[@]}"; do stop_process "$pid"; done
  for conf in "$SCRATCH"/nginx-*/nginx.pid; do
    [ -s "$conf" ] && stop_process "$(cat "$conf")"
  done
  for mount in "${MOUNTS[@]}"; do umount "$mount"; done
  if [ "$code" -ne 0 ] && [ "$code" -ne 77 ]; then
    echo "--- last output (status $STATUS)"
    tail -n 40 "$OUT" 2>/dev/null
    echo "--- log"
    tail -n 40 "$SCRATCH/bin/Skyvane Installer Log.txt" 2>/dev/null
  fi
  rm -rf "$SCRATCH"
  exit "$code"
}
trap finish EXIT

stop_process() {
  kill "$1" 2>/dev/null || return 0
  for _ in $(seq 100); do
    kill -0 "$1" 2>/dev/null || return 0
    sleep 0.05
  done
}

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

# A part that only root can set up; ctest counts 77 as skipped and says so.
need_root() {
  [ "$(id -u)" = 0 ] || { echo "needs root: $1"; exit 77; }
}

# A test for which `script/bootstrap --minimal` has no program is skipped as well.
need_tools() {
  local tool
  for tool in "$@"; do
    command -v "$tool" >/dev/null || { echo "misses $tool"; exit 77; }
  done
}

# own_network SCRIPT: goes on in a network of its own, in which port 80 of every loopback address is
# free, whatever this machine serves.
own_network() {
  need_root "a network namespace"
  if [ -z "${IN_OWN_NETWORK:-}" ]; then
    rm -rf "$SCRATCH"
    trap - EXIT
    exec env IN_OWN_NETWORK=1 unshare --net "$1"
  fi
  ip link set lo up
}

# program NAME: its path, in a folder of this test, with the language files beside it.
program() {
  if [ ! -e "$SCRATCH/bin" ]; then
    mkdir -p "$SCRATCH/bin/Resources"
    cp -r "$BIN/Resources/text" "$SCRATCH/bin/Resources/"
  fi
  [ -e "$SCRATCH/bin/$1" ] || ln "$BIN/$1" "$SCRATCH/bin/$1" 2>/dev/null || cp "$BIN/$1" "$SCRATCH/bin/$1"
  echo "$SCRATCH/bin/$1"
}

# linked_copy FROM TO: a tree whose files are links to the other's, where both are on one file system.
linked_copy() {
  cp -al "$1" "$2" 2>/dev/null || { rm -rf "$2" && cp -a "$1" "$2"; }
}

# words_of LANGUAGE KEY: a text's translation as a terminal shows it; LANGUAGE as in --pref:_lang. Of
# English, and where there is none, nothing.
LANGUAGE_FOLDERS=(english french german italian spanish portugese korean)
words_of() {
  [ "$1" != 0 ] || return 0
  awk -v start="STRING $2====" 'index($0, start) == 1 { print substr($0, length(start) + 1) }' \
    "$BIN/Resources/text/${LANGUAGE_FOLDERS[$1]}/Installer2.txt" | iconv -f latin1 -t utf-8
}

# run PROGRAM ARGS...: runs it with no display and no input; leaves OUT and STATUS.
run() {
  local path
  path=$(program "$1")
  shift
  STATUS=0
  env -u DISPLAY timeout 300 "$path" "$@" >"$OUT" 2>&1 </dev/null || STATUS=$?
}

# start PROGRAM ARGS...: the same in the background; leaves PID and OUT.
start() {
  local path
  path=$(program "$1")
  shift
  : >"$OUT"
  env -u DISPLAY "$path" "$@" >"$OUT" 2>&1 </dev/null &
  PID=$!
  CHILDREN+=("$PID")
}

# wait_end PID: until it ends; leaves STATUS.
wait_end() {
  STATUS=0
  wait "$1" 2>/dev/null || STATUS=$?
}

# want STATUS COMMAND...: one that leaves STATUS and OUT, such as run, ends with that status.
want() {
  "${@:2}"
  want_status "$1"
}

# want_status STATUS [TEXT...]: of what has run last, which has also said these.
want_status() {
  local text
  [ "$STATUS" = "$1" ] || fail "status $STATUS, wanted $1"
  if grep -qE 'ERROR: (Address|Thread|Leak)Sanitizer|runtime error:' "$OUT"; then
    fail "a sanitizer complained"
  fi
  for text in "${@:2}"; do want_text "$text"; done
}

want_text() {
  grep -qF -- "$1" "$OUT" || fail "no such text in the output: $1"
}

# serve ROOT [CONFIG]: starts nginx on a free loopback port over ROOT; leaves PORT. It answers
# requests for every host, and the absolute form that a client sends to a proxy. CONFIG is put into
# the server block. nginx returns once it listens, so nothing has to wait for it.
serve() {
  local root=$1 extra=${2:-}
  for PORT in $(shuf -i 20000-32000 -n 30); do
    start_nginx "$PORT" "127.0.0.1:$PORT" "$root" "$extra" && return 0
    rm -r "$SCRATCH/nginx-$PORT"
  done
  fail "nginx found no free port"
}

# serve_at ADDRESS ROOT [CONFIG]: the same on port 80 of a loopback address.
serve_at() {
  start_nginx "$1" "$1:80" "$2" "${3:-}" || fail "nginx on $1: $(cat "$SCRATCH/nginx-$1/start.log")"
}

start_nginx() {  # NAME ADDRESS ROOT CONFIG
  local dir=$SCRATCH/nginx-$1
  mkdir -p "$dir"
  nginx_conf "$dir" "${@:2}" >"$dir/nginx.conf"
  nginx -p "$dir" -c "$dir/nginx.conf" 2>"$dir/start.log"
}

nginx_conf() {
  cat <<CONF
pid $1/nginx.pid;
error_log $1/error.log;
worker_processes 1;
events { worker_connections 64; }
http {
  access_log $1/access.log;
  client_body_temp_path $1/body;
  proxy_temp_path $1/proxy;
  fastcgi_temp_path $1/fastcgi;
  uwsgi_temp_path $1/uwsgi;
  scgi_temp_path $1/scgi;
  server {
    listen $2;
    root "$3";
    $4
  }
}
$([ "$(id -u)" = 0 ] && echo "user root;")
CONF
}

# through_proxy PORT: the options that lead every host name to that port.
through_proxy() {
  echo --pref:_proxy_host=127.0.0.1 "--pref:_proxy_port_int=$1"
}

# web_root NAME MASTER FOLDER...: a web server's folder with the server list and a master, as the
# makers publish it. Prints the folder.
web_root() {
  local name=$1 master=$2 root=$SCRATCH/web-$1
  mkdir -p "$root/updates"
  ln -sfn "$master/disk_0/$name" "$root/updates/$name"
  server_list "$name" "mirror.example" >"$root/serverlist9.txt"
  echo "$root"
}

# serve_release VERSION [CONFIG]: a server of that sample release; leaves ROOT, its folder, and PORT.
serve_release() {
  ROOT=$(web_root "Skyvane $1" "$FIXTURE/master-$1")
  serve "$ROOT" "${2:-}"
}

# install_demo NAME ARGS...: what is served at PORT, into a copy in the scratch folder.
install_demo() {
  run skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH" --name="$1" \
    $(through_proxy "$PORT") "${@:2}"
}

# flip FILE: damages a few bytes in its middle.
flip() { printf '\xA5\x5A\xA5\x5A' | dd of="$1" bs=1 seek=$(($(stat -c %s "$1") / 2)) conv=notrunc status=none; }

# volume FOLDER OPTIONS: a file system of its own, for as long as the test runs.
volume() {
  mkdir -p "$1"
  mount -t tmpfs -o "$2" tmpfs "$1" && MOUNTS+=("$1")
}

# own_home: of a user who has nothing but a desktop.
own_home() {
  export HOME=$SCRATCH/home
  mkdir -p "$HOME/Desktop"
}

# server_list NAME HOST...: a server list with these mirrors, each with its releases in /updates/.
server_list() {
  local name=$1
  shift
  printf 'I\n820 version\nSERVERS\nFINAL_VERSION 91001\nFINAL %s\n' "$name"
  for host in "$@"; do printf 'SERVER %s\n/updates/\nMirror %s\n' "$host" "$host"; done
  echo ENDOFLIST
}

# shipped SOURCE PLATFORM: the files of a source tree that belong on a web master for a platform
# (Macintosh, Windows or Linux), as "relative-location TAB source", sorted; the makers' rules said in
# other words than the builder's.
shipped() {
  candidates "$1" "$2" '\.7z|/-global (overlays|terrain)-' \
    'All/Resources/default scenery/900 red terrain/|bitmaps/Earth Orbit Textures/'
}

# candidates SOURCE PLATFORM PATTERN PATTERN: what every kind of master ships, less the patterns.
candidates() {
  local src=$1 platform=$2
  (
    cd "$src"
    find All "$platform" \( -type l -o -type f -size +0c \) -print0
  ) | grep -zavE "$3" | grep -zavE "$4" |
    grep -zavE 'Thumbs\.db|work\.|\._|\.DS_Store|\.sandboxinfo|\.xSYM|All/install_pfc Aircraft/' |
    grep -zavE '\.(ovw|ac|prf|fms|sit|mov|bak)$|serverlist\.txt|Skyvane Pilot\.txt|\.dsf\.txt' |
    grep -zavE "/DSF 900 (Mars|Moon) World-Wide|$(foreign_plugins "$platform")" | tr '\0' '\n' |
    sed 's#^\([^/]*\)/\(.*\)$#\2\t\1/\2#' | sort
}

# Plug-in libraries in the neutral tree that belong to other platforms than the one named.
foreign_plugins() {
  local base='All/Resources/plugins/(KVLM|KVWidgets)'
  local mac="$base\\.shlb|$base\\.framework/(KVLM|KVWidgets)|plugins/PluginAdminMac\\.kvl"
  local win="$base\\.dll|plugins/PluginAdminWin\\.kvl"
  local lin="$base\\.so|plugins/PluginAdminLin\\.kvl"
  case $1 in
    Macintosh) echo "$win|$lin" ;;
    Windows) echo "$mac|$lin" ;;
    Linux) echo "$mac|$win" ;;
  esac
}

# same_tree SOURCE PLATFORM COPY: the copy holds exactly the shipped files, equal in bytes, mode and
# link target, and no folder but theirs and the fixed ones.
same_tree() {
  local src=$1 platform=$2 copy=$3
  shipped "$src" "$platform" >"$SCRATCH/want.tsv"
  [ -s "$SCRATCH/want.tsv" ] || fail "nothing is shipped from $src"
  cut -f1 "$SCRATCH/want.tsv" >"$SCRATCH/want.txt"
  (cd "$copy" && find . \( -type f -o -type l \) | sed 's#^\./##') | sort >"$SCRATCH/have.txt"
  diff "$SCRATCH/want.txt" "$SCRATCH/have.txt" >"$SCRATCH/diff.txt" ||
    fail "the copy's files differ: $(head -n 10 "$SCRATCH/diff.txt")"
  cut -f2 "$SCRATCH/want.tsv" | seen_below "$src" >"$SCRATCH/want_seen.txt"
  sed "s#^#$(basename "$copy")/#" "$SCRATCH/want.txt" | seen_below "$(dirname "$copy")" |
    diff "$SCRATCH/want_seen.txt" - >"$SCRATCH/diff.txt" ||
    fail "bytes, a mode or a link differ: $(head -n 10 "$SCRATCH/diff.txt")"
  same_folders "$copy"
}

# seen_below FOLDER <NAMES: kind, mode, name without its first folder and a link's target, and files' sums.
seen_below() {
  (
    cd "$1"
    names=$SCRATCH/names.$BASHPID
    tr '\n' '\0' >"$names"
    find -files0-from "$names" -maxdepth 0 -printf '%y %m  %p %l\n'
    find -files0-from "$names" -maxdepth 0 -type f -print0 | xargs -r0 md5sum -z | tr '\0' '\n'
  ) | sed 's#  [^/]*/# #' | sort
}

same_folders() {
  {
    sed 's#/[^/]*$##;t;d' "$SCRATCH/want.txt" | awk -F/ '{p=""; for(i=1;i<=NF;i++){p=p (i>1?"/":"") $i; print p}}'
    printf '%s\n' Output "Output/FMS plans" Output/logbooks Output/movies Output/situations \
      Resources Resources/preferences
  } | sort -u >"$SCRATCH/want_dirs.txt"
  (cd "$1" && find . -mindepth 1 -type d | sed 's#^\./##') | sort >"$SCRATCH/have_dirs.txt"
  diff "$SCRATCH/want_dirs.txt" "$SCRATCH/have_dirs.txt" >"$SCRATCH/diff.txt" ||
    fail "the copy's folders differ: $(head -n 10 "$SCRATCH/diff.txt")"
}
