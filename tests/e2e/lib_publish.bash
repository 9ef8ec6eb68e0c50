# What the tests of publishing share. Sourced in place of lib.sh.
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
SCRIPTS=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../../script")
export RCLONE_CONFIG=$SCRATCH/rclone.conf XDG_CACHE_HOME=$SCRATCH/cache

# publish ARGS..., check_mirrors ARGS...: the scripts; leave OUT and STATUS.
publish() { STATUS=0; "$SCRIPTS/publish" "$@" >"$OUT" 2>&1 || STATUS=$?; }
check_mirrors() {
  STATUS=0
  http_proxy=http://127.0.0.1:$PORT no_proxy='' "$SCRIPTS/check_mirrors" "$@" >"$OUT" 2>&1 || STATUS=$?
}
want_line() { grep -qxF -- "$1" "$OUT" || fail "no such line in the output: $1"; }

# wait_for_text FILE PATTERN: what a server says once it listens; prints the match.
wait_for_text() {
  local found
  for _ in $(seq 400); do
    found=$(grep -oE -m 1 "$2" "$1" 2>/dev/null | sed -n 1p) && [ -n "$found" ] && echo "$found" && return
    sleep 0.05
  done
  fail "$1: nothing like $2"
}

# serve_rclone LOG PROTOCOL FOLDER FLAG...: on a free port; leaves ADDRESS.
serve_rclone() {
  rclone serve "$2" "$3" --addr 127.0.0.1:0 "${@:4}" >"$1" 2>&1 &
  CHILDREN+=($!)
  ADDRESS=$(wait_for_text "$1" '127\.0\.0\.1:[1-9][0-9]*')
}

# mirror_hosts FOLDER [CONFIG]: one server that answers for every mirror, from FOLDER/HOST/; leaves PORT.
mirror_hosts() { serve "$1/\$host" "${2:-}"; }

# install_through_mirrors LIST TREE: an install by that list, of what is at its mirrors; the copy is right.
install_through_mirrors() {
  mkdir -p "$SCRATCH/web/www.skyvane.example" "$SCRATCH/dest"
  cp "$1" "$SCRATCH/web/www.skyvane.example/serverlist9.txt"
  # shellcheck disable=SC2046  # two options
  run skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH/dest" --name=Trial $(through_proxy "$PORT")
  want_status 0
  same_tree "$2" Linux "$SCRATCH/dest/Trial"
}
