# Shared by the tests of the web update, which source it in place of lib.sh.
#
# The updater is run as an ordinary user even where the tests are root's: root may read and replace
# what a user may not, and half of the cases would test nothing.
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
. "$(dirname "${BASH_SOURCE[0]}")/lib_tree.bash"

ORDINARY=65534  # nobody; owns no file of this machine
COPY=$SCRATCH/sim
export TMPDIR=$SCRATCH/tmp
mkdir -p "$SCRATCH/bin/Resources" "$TMPDIR" "$XDG_CONFIG_HOME"
# Copies of their own and no hard links: their owner is about to change.
cp "$BIN/skyvane-web-updater" "$BIN/skyvane-demo-installer" "$SCRATCH/bin/"
cp -r "$BIN/Resources/text" "$SCRATCH/bin/Resources/"
[ "$(id -u)" != 0 ] || chown -R "$ORDINARY:$ORDINARY" "$SCRATCH"

# as_user COMMAND...: runs it without privileges.
as_user() {
  if [ "$(id -u)" = 0 ]; then
    setpriv --reuid="$ORDINARY" --regid="$ORDINARY" --clear-groups "$@"
  else
    "$@"
  fi
}

# run_as_user PROGRAM ARGS...: unattended, by the server at PORT; leaves OUT and STATUS.
run_as_user() {
  local program=$1
  shift
  STATUS=0
  as_user env -u DISPLAY timeout 300 "$SCRATCH/bin/$program" "$@" --unattended \
    --give_up_after=20 $(through_proxy "$PORT") >"$OUT" 2>&1 </dev/null || STATUS=$?
}

# update ARGS...: the updater on COPY.
update() {
  run_as_user skyvane-web-updater --copy="$COPY" "$@"
}

# want_count NUMBER TEXT: the line of the run's summary that ends in TEXT.
want_count() {
  grep -qxF -- "$1 $2" "$OUT" || fail "the summary does not say: $1 $2"
}

# install_release VERSION FOLDER: a fresh copy of the sample release, by the demo edition.
install_release() {
  serve_release "$1"
  want 0 run_as_user skyvane-demo-installer --accept_eula --dest="$(dirname "$2")" \
    --name="$(basename "$2")"
}

# give COPY...: makes the trees the ordinary user's own.
give() {
  [ "$(id -u)" != 0 ] || chown -Rh "$ORDINARY:$ORDINARY" "$@"
}

# real_tree COUNT FOLDER: that many files that this machine's packages brought, evenly spread over all
# that are there, into a folder; none that is empty, and no giants, which would only test the disk.
# Leaves their list in $SCRATCH/list.txt.
real_tree() {
  local all
  find /usr/share /usr/include -type f -readable -size +0 -size -1000k -printf '%p\n' | shippable |
    sort >"$SCRATCH/all.txt"
  all=$(wc -l <"$SCRATCH/all.txt")
  [ "$all" -ge 1000 ] || { echo "only $all usable files below /usr/share and /usr/include"; exit 77; }
  spread "$1" "$SCRATCH/all.txt" >"$SCRATCH/list.txt"
  mkdir -p "$2"
  tr '\n' '\0' <"$SCRATCH/list.txt" | xargs -0 cp --parents -t "$2"
  chmod -R u+rwX,go+rX "$2"
}
