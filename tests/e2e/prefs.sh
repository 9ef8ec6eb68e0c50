#!/usr/bin/env bash
# The settings of a first run have the user's language, and what was written then holds, but for what
# the command line says of one run.
. "$(dirname "$0")/lib.sh"

settings="$XDG_CONFIG_HOME/skyvane/Skyvane Installer.prf"

# run_once [OPTION...]: a run reads the settings at its start, is refused at the licence, and writes
# them at its end.
run_once() {
  run skyvane-demo-installer --unattended "$@"
  want_status 2 "--accept_eula"
}

while IFS='|' read -r all messages lang list wanted; do
  rm -f "$settings"
  LC_ALL=$all LC_MESSAGES=$messages LANG=$lang LANGUAGE=$list run_once
  LC_ALL=es_ES.UTF-8 LANGUAGE= run_once
  grep -qx "_lang $wanted" "$settings" ||
    fail "LC_ALL=$all LC_MESSAGES=$messages LANG=$lang LANGUAGE=$list: not $wanted: $(cat "$settings")"
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
