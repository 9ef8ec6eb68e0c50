#!/usr/bin/env bash
# The settings file and the real program: options of the command line over it, files that are
# damaged or of other makers, and places where nothing can be written. Whatever the file is, the
# program runs; and when it cannot write, the old file is still there, whole.
. "$(dirname "$0")/lib.sh"

settings="$XDG_CONFIG_HOME/skyvane/Skyvane Installer.prf"
mkdir -p "$(dirname "$settings")"
log="$SCRATCH/bin/Skyvane Installer Log.txt"
head=$'I\n9002 version\n'

# run_once [OPTION...]: a run reads the settings at its start, is refused at the licence, and writes
# them at its end.
run_once() {
  run skyvane-demo-installer --unattended "$@"
  want_status 2 "--accept_eula"
}

setting() { sed -n "s/^$1 //p" "$settings"; }

# want_settings LABEL TAG=VALUE...: what the file says now.
want_settings() {
  local label=$1 pair
  shift
  [ "$(head -n 2 "$settings")" = "${head%$'\n'}" ] || fail "$label: the header is $(head -n 2 "$settings")"
  for pair in "$@"; do
    [ "$(setting "${pair%%=*}")" = "${pair#*=}" ] ||
      fail "$label: ${pair%%=*} is '$(setting "${pair%%=*}")', not '${pair#*=}'"
  done
  [ "$(ls "$(dirname "$settings")")" = "Skyvane Installer.prf" ] || fail "$label: something is left beside it"
}

defaults="_stream_count=0 _log_actions=0 _proxy_host= _proxy_port= _proxy_port_int=0 _get_beta=0 _lang=0"

echo "No file: the run makes one"
run_once
want_settings "made" $defaults

echo "The first run takes the user's language, and what it wrote then holds"
while IFS='|' read -r all messages lang list wanted; do
  rm "$settings"
  LC_ALL=$all LC_MESSAGES=$messages LANG=$lang LANGUAGE=$list run_once
  want_settings "LC_ALL=$all LC_MESSAGES=$messages LANG=$lang LANGUAGE=$list" _lang="$wanted"
  LC_ALL=fr_FR.UTF-8 LANGUAGE= run_once
  want_settings "kept" _lang="$wanted"
done <<'ROWS'
de_DE.UTF-8|fr_FR|it_IT||2
|fr|de_DE.UTF-8||1
||pt_BR.ISO-8859-1@x||5
||sv_SE.UTF-8|nn::it:de|3
||de_AT|en:fr|0
||sv_SE.UTF-8||0
||ko_KR.UTF-8||0
||../de||0
ROWS
LC_ALL=it_IT.UTF-8 run_once --pref:_lang=4
want_text "Bienvenida"

echo "A file of a hundred megabytes"
{
  printf '%s_stream_count 3\n' "$head"
  (yes '_other 1' || true) | head -c 100000000
} >"$settings"
run_once
want_settings "a large file" _stream_count=3
[ "$(stat -c %s "$settings")" -lt 2000 ] || fail "lines of others were kept"

need_root "a small and a read-only file system"
folder=$(dirname "$settings")
want_kept() { # LABEL WORDS-OF-THE-LOG
  printf '%s_stream_count 3\n_log_actions 1\n' "$head" | cmp -s - "$settings" || fail "$1: the old file is hurt"
  grep -qF "$2" "$log" || fail "$1: the log says nothing of it"
}

echo "A full disk"
volume "$folder" size=64k
printf '%s_stream_count 3\n_log_actions 1\n' "$head" >"$settings"
cat /dev/zero >"$folder/filler" 2>/dev/null || true
run_once --pref:_lang=0
want_kept "full" "WARNING: the file $settings stays as it was"
rm "$folder/filler"

echo "A read-only one"
mount -o remount,ro "$folder"
run_once
want_kept "read-only" "I could not save the file!"
mount -o remount,rw "$folder"
run_once
want_settings "room again" _stream_count=3 _log_actions=1
