#!/usr/bin/env bash
# Text by hand: real keys in the fields of the Options dialog, on several keyboards; and folders by
# a desktop's picker and by the program's own browser. What was typed is read from the settings file
# and from the folders that come of it.
. "$(dirname "$0")/lib_flows.sh"

own_home
settings="$XDG_CONFIG_HOME/skyvane/Skyvane Installer.prf"
# No program of this machine may answer for the pickers that the test lacks or fakes.
unset DBUS_SESSION_BUS_ADDRESS

# start_options: the program on its first page, with the Options dialog open and its first field,
# the proxy's host, in focus.
start_options() {
  open_wizard skyvane-demo-installer "$@"
  learn_faces
  open_options
  wait_shown Linux  # the dialog is drawn, and its first field takes keys
}

# close_or_gone: presses the close box; two presses in one slow frame count as one, so it is pressed
# until it has closed.
close_or_gone() {
  dialog_is_gone && return
  click_away 116 480
  sleep 0.1
  dialog_is_gone
}

# end_options [TEXT]: closes the dialog and the program, which writes the settings, once a field shows
# TEXT: of a key and a press that come in one slow frame, the press may be seen first.
end_options() {
  [ -z "${1:-}" ] || wait_shown "$1"
  wait_for "the page behind the options" close_or_gone
  quit_wizard
}

# setting KEY: its value in the file.
setting() { sed -n "s/^$1 //p" "$settings"; }
want_setting() {
  [ "$(setting "$1")" = "$2" ] || fail "$3: $1 is '$(setting "$1")', not '$2'"
}

start_display
setxkbmap us
speak 3

echo "Selection, caret keys and the clipboard"
start_options
type_text "abcdef"
press_key Home shift+Right shift+Right ctrl+x  # cdef, the clipboard has ab
press_key End ctrl+v                           # cdefab
press_key Left Left BackSpace                  # cdeab
press_key shift+Home ctrl+c                    # the clipboard has cde
kill -STOP "$WINDOW_PID"                        # one frame finds all of this waiting
press_key Tab ctrl+v                           # the port's field
type_text "8"
press_key shift+Tab Home Delete End            # the host again: deab
type_text ".x"
kill -CONT "$WINDOW_PID"
end_options "deab\.x"
want_setting _proxy_host "deab.x" "edited"
want_setting _proxy_port "cde8" "pasted and typed"

echo "What was set is there again at the next start; a press with Shift selects as far as it"
start_options
press_key Tab End
move_to 188 133  # on the first letter; as the pointer comes in, the keyboard is asked what is held
type_text "x"
wait_shown "cde8x"
kill -STOP "$WINDOW_PID"
xdotool keydown shift click 1 keyup shift
type_text "2"
kill -CONT "$WINDOW_PID"
end_options "c2"
want_setting _proxy_host "deab.x" "kept"
want_setting _proxy_port "c2" "typed over"

# Places of keys by their codes: q w e r t y, then 2 without and with Shift.
echo "Keyboards"
keyboard() { # LAYOUT WANTED [OPTIONS OF setxkbmap]
  local layout=$1 wanted=$2
  shift 2
  setxkbmap "$layout" "$@"
  start_options
  press_key ctrl+a BackSpace
  press_key 24 25 26 27 28 29 11 shift+11
  end_options "$(iconv -f utf-8 -t latin1 <<<"$wanted")"
  setxkbmap us
  [ "$(setting _proxy_host | iconv -f latin1 -t utf-8)" = "$wanted" ] ||
    fail "$layout $*: typed '$(setting _proxy_host | iconv -f latin1 -t utf-8)', not '$wanted'"
}
keyboard us 'qwerty2@'
keyboard de 'qwertz2"'
keyboard fr 'azertyé2'
keyboard us "',.pyf2@" -variant dvorak

echo "A folder by the desktop's picker: the fake one answers with what its file says"
rm "$settings"  # with the words of the keyboards for a proxy
serve_release new "limit_rate 20k;"
mkdir -p "$SCRATCH/fake" "$HOME/picked" "$HOME/Desktop/inner"
cat >"$SCRATCH/fake/zenity" <<'ZENITY'
#!/bin/sh
echo "$@" >>"$HOME/zenity.arguments"
cat "$HOME/zenity.answer" || exit 1
ZENITY
chmod +x "$SCRATCH/fake/zenity"
has_copy() { [ -n "$(find "$1" -type f ! -name '*.zip' 2>/dev/null)" ]; }

# start_destination [PATH]: the program on the page that asks for the destination.
start_destination() {
  PATH=$1 open_wizard skyvane-demo-installer $(through_proxy "$PORT")
  learn_faces
  walk_to_place
}

# install_named NAME FOLDER: gives the copy a name, begins, sees it come, and cancels.
install_named() {
  click_away 500 204
  press_key ctrl+a
  type_text "$1"
  next_to 4
  wait_for "a copy in $2/$1" has_copy "$2/$1"
  back_asks
  press_give_up
  wait_for "the partial copy's end" is_gone "$2/$1"
  wait_step 3
  wait_no_dialog
}

speak 2
start_destination "$SCRATCH/fake:$PATH"
echo "$HOME/picked" >"$HOME/zenity.answer"
click_away 300 206
wait_file_text "$HOME/zenity.arguments" "--directory"
wait_open
install_named "By zenity" "$HOME/picked"

echo "Cancelled there, the folder stays"
rm "$HOME/zenity.answer" "$HOME/zenity.arguments"
click_away 300 206
wait_file_text "$HOME/zenity.arguments" "--directory"
wait_open
install_named "Still there" "$HOME/picked"
quit_wizard

echo "Without one, by the program's own browser: home, a new folder there, and it is selected"
start_destination "$PATH"
# Its buttons, from the top: the places, the row of a new folder, Select and Cancel.
click_away 300 206
wait_dialog
before=$(picture_of 140 420 400 16)
click_away 247 377
wait_for "the home folder" picture_differs "$before" 140 420 400 16
click_away 190 113
type_text "made here"
shot typing_1_browser
press_key Return
wait_for "the new folder" test -d "$HOME/made here"
click_away 541 87
wait_no_dialog
install_named "By hand" "$HOME/made here"

echo "Cancelled, it changes nothing"
click_away 300 206
wait_dialog
click_away 394 377
click_away 631 87
wait_no_dialog
install_named "Once more" "$HOME/made here"
quit_wizard
