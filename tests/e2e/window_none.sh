#!/usr/bin/env bash
# Without a display: the wizard says so and ends, and an unattended run never wakes a driver.
. "$(dirname "$0")/lib_window.sh"
unset SDL_VIDEODRIVER WAYLAND_DISPLAY DISPLAY

drivers='libgallium|swrast_dri|_dri\.so|libGLX_mesa|libEGL|libnvidia|libLLVM'

# watch PROGRAM ARGS...: starts it, with the display as it is; leaves WINDOW_PID.
watch() {
  "$(program "$1")" "${@:2}" >"$OUT" 2>&1 </dev/null &
  WINDOW_PID=$!
  CHILDREN+=("$WINDOW_PID")
}

echo "The wizard: the alert in its plain form, exit status 1"
for edition in demo-installer web-updater disc-installer; do
  run "skyvane-$edition"
  want_status 1 "I could not set up the graphics for Skyvane! I hope your monitor is at 1024x768 or higher!"
  want_text "You need at least 256 meg of RAM"
  want_text '"--unattended" runs this program without one'
  for text in "No window: no display is named" "(corekit/GenC/hl_init line 1574)"; do
    grep -qF "$text" "$SCRATCH/bin/Skyvane Installer Log.txt" || fail "$edition's log lacks: $text"
  done
done
run skyvane-demo-installer --unatended
want_text "Did you mean --unattended?"
echo "A display that does not answer is none"
STATUS=0
DISPLAY=:4711 timeout 60 "$(program skyvane-demo-installer)" >"$OUT" 2>&1 </dev/null || STATUS=$?
want_status 1 "I could not set up the graphics for Skyvane!"

echo "An unattended run in mid-transfer has no driver in its memory"
touch "$SCRATCH/slow"
serve_release new "if (-f $SCRATCH/slow) { set \$limit_rate 20k; }"
fetches() { grep -q '/updates/.*\.zip HTTP' "$SCRATCH/nginx-$PORT/access.log"; }
DISPLAY=:4711 watch skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH" --name=Copy \
  $(through_proxy "$PORT")
wait_for "the first file" fetches
cat "/proc/$WINDOW_PID/maps" >"$SCRATCH/maps.txt"
[ -s "$SCRATCH/maps.txt" ] || fail "nothing is mapped"
if grep -E "$drivers" "$SCRATCH/maps.txt"; then fail "an unattended run has woken a driver"; fi
rm "$SCRATCH/slow"
want 0 wait_end "$WINDOW_PID"
same_tree "$FIXTURE/sample/new" Linux "$SCRATCH/Copy"

echo "The same look at a run with a window does find one"
SDL_VIDEODRIVER=offscreen watch skyvane-demo-installer
has_driver() { grep -qE "$drivers" "/proc/$WINDOW_PID/maps"; }
wait_for "a driver" has_driver
