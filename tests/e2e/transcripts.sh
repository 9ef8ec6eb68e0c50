#!/usr/bin/env bash
# What the programs say in their everyday jobs, to the word, and what they leave: outputs, logs and
# trees are those of tests/transcripts/. A fault anywhere on the way shows in a line of them. With
# RENEW=1 they are written anew: what changes is for a reader to judge.
. "$(dirname "$0")/disc_lib.bash"
. "$(dirname "$0")/lib_tree.bash"
kept=$(cd "$(dirname "$0")/.." && pwd)/transcripts
now=$SCRATCH/now
log="$SCRATCH/bin/Skyvane Installer Log.txt"
mkdir "$now" "$SCRATCH/web"
umask 022

# plain: the lines that are the same on every machine, at every hour and with every version of zlib. A
# short transfer may be over before its page is told.
plain() {
  tr '\t\r' ' ~' | sed -E -e "s#$SCRATCH#<scratch>#g; s#$FIXTURE#<fixture>#g; s#\b$PORT\b#<port>#g" \
    -e 's#skyvane-run-\w+#skyvane-run-<id>#; s/compiled on .*/compiled on <date>/' \
    -e 's/install at [0-9.]+/install at <time>/; s/^(.*"text": "|)[0-9.]+ (seconds|Sekunden)\b/\1<time> \2/' \
    -e 's/^(.*"text": "|)[0-9]+ (bytes moved|Bytes )/\1<size> \2/; s/[0-9.]+ GB compressed/<size> GB compressed/' \
    -e 's/"(time|seconds|bytes|bytes_done|bytes_total|bytes_moved|bytes_per_second)": *"?[0-9.:TZ-]+"?/"\1":<#>/g' \
    -e '/^ *[0-9]+ %  |^\[20|^(Linux|CPU) | of MD5 at |^Installing$|"title": "Installing"}|Files side by side|^os_dir_(desktop|default_apps)|"event": "progress"/d'
}

# told TITLE: puts the last run into the present transcript, with what the log has beyond the output.
told() {
  {
    printf '\n=== %s: status %s\n' "$1" "$STATUS"
    cat "$OUT"
    echo "--- log"
    [ ! -e "$log" ] || sed '1,/^Sky-Root folder/d' "$log"
  } | plain >>"$transcript"
}

# tree TITLE FOLDER: what lies below a folder, as a sum, and its list for who has to look.
tree() {
  prints "$2" >"$now/${transcript##*/}.$1.tree"
  printf '%s: %s entries, %s\n' "$1" "$(wc -l <"$now/${transcript##*/}.$1.tree")" \
    "$(md5sum <"$now/${transcript##*/}.$1.tree" | cut -c 1-32)" >>"$transcript"
}

# archives MASTER: the archives of a master with what they hold, but for packed sizes and dates, which
# are those of the sample's making.
archives() {
  (cd "$1" && find . -type f ! -name build_record.txt | sort | while IFS= read -r file; do
    case $file in
      *directory.txt.zip) echo "$file $(unzip -p "$file" | md5sum)" ;;
      *.zip) echo "$file $(unzip -Z -s "$file" | awk 'NR == 3 { $7 = $8 = ""; print }')" ;;
      *) echo "$file $(md5sum <"$file")" ;;
    esac
  done) >"$now/${transcript##*/}.archives"
  printf 'archives: %s\n' "$(md5sum <"$now/${transcript##*/}.archives" | cut -c 1-32)" >>"$transcript"
}

begin() { transcript=$now/$1.txt; echo "$1"; : >"$transcript"; }
PORT=no_port

begin build
build() { run skyvane-demo-installer --build_master --name=R "$@"; }
build --type=0 --release=91001 --source="$FIXTURE/sample/new" --output="$SCRATCH/web-master" \
  --previous="$FIXTURE/manifest-old/directory.txt"
told "a master for the web"
archives "$SCRATCH/web-master"
build --type=0 --release=91100 --source="$FIXTURE/sample/newer" --output="$SCRATCH/next" \
  --previous="$SCRATCH/web-master/disk_0/R/directory.txt.zip" --reuse="$SCRATCH/web-master/"
told "the next one, which takes what is the same"
archives "$SCRATCH/next"
linked_copy "$FIXTURE/sample-discs/new" "$SCRATCH/discs-source"  # a master for discs links to its source
build --type=1 --source="$SCRATCH/discs-source" --output="$SCRATCH/discs-master" --disk_kb=3850
told "a master for discs"
archives "$SCRATCH/discs-master"
build --type=0 --release=91001 --source="$SCRATCH/nowhere" --output="$SCRATCH/other" --previous=none
told "a source that is not there"
build --type=0 --release=91001 --source="$FIXTURE/sample/new" --output="$SCRATCH/next" --previous=none
told "an output that is there"
run skyvane-demo-installer --write_server_list="$SCRATCH/list" --name=R --release=91001 --mirrors=a.example/u,b.example
told "a server list"
cat "$SCRATCH/list" >>"$transcript"

begin web
old=$(web_root "Skyvane old" "$FIXTURE/master-old")
new=$(web_root "Skyvane new" "$FIXTURE/master-new")
copy="$SCRATCH/Copy"
# web PROGRAM ARGS...: by the mirror.
web() { run "$@" $(through_proxy "$PORT"); }
serve "$old"
web skyvane-demo-installer --unattended --dest="$SCRATCH" --name=Copy
told "without the licence"
web skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH" --name=Copy
told "a new copy"
tree "the copy" "$copy"
web skyvane-demo-installer --unattended --accept_eula --dest="$SCRATCH" --name=Copy --pref:_lang=1
told "a copy that is there, in French"
serve "$new"
echo mine >"$copy/Airfoils/Clark Y.afl"
echo mine >"$copy/Instructions/Pilot's Guide.txt"
echo mine >"$copy/my own.txt"
rm "$copy/Aircraft/General Aviation/Heron 172/objects/wheel.obj"
web skyvane-web-updater --copy="$copy" --check
told "what an update would do"
web skyvane-web-updater --copy="$copy" --unattended
told "an update that keeps what is the user's"
tree "the copy" "$copy"
web skyvane-web-updater --copy="$copy" --unattended --on_modified=overwrite --json
told "one that does not, told to a program"
tree "the copy" "$copy"
web skyvane-web-updater --copy="$copy" --unattended --quiet --pref:_lang=2
told "nothing to do, and nothing said"
web skyvane-web-updater --list
told "the copies"
web skyvane-web-updater --copy="$SCRATCH/bin" --unattended
told "no copy"
web skyvane-web-updater --uninstall --copy="$copy"
told "the copy is taken away"
tree "what stays" "$copy"

begin disc
PORT=no_port
rm -rf "$copy"
discs() {
  only_disc 1
  run_with_discs "$@"
}
discs --accept_eula --dest="$SCRATCH" --name=Copy --sectors=+30-120
told "a new copy from discs"
tree "the copy" "$copy"
discs --do=scenery --sectors=all
told "all scenery"
tree "the copy" "$copy"
echo mine >"$copy/Global Scenery/-global terrain-/Earth nav data/+50+000/+51+000.dsf"
echo mine >"$copy/Airfoils/Clark Y.afl"
rm "$copy/Aircraft/General Aviation/Heron 172/objects/wheel.obj"
discs --do=repair
told "a repair that keeps what is the user's"
tree "the copy" "$copy"
discs --do=repair --on_modified=overwrite
told "one that does not"
discs --do=scenery --sectors=none --on_modified=keep
told "no scenery"
tree "the copy" "$copy"
discs --do=repair --copy="$SCRATCH/bin"
told "no copy"
run skyvane-disc-installer --help
told "the help"

rm -rf "$SCRATCH/Copy"
for transcript in "$now"/*.txt; do
  name=${transcript##*/}
  [ -z "${RENEW:-}" ] || cp "$transcript" "$kept/"
  diff -u "$kept/$name" "$transcript" >"$SCRATCH/diff.txt" || {
    head -n 40 "$SCRATCH/diff.txt"
    fail "$name is not what is kept; RENEW=1 $0 writes it anew"
  }
done
[ "$(ls "$kept")" = "$(cd "$now" && ls -- *.txt)" ] || fail "$kept has others: $(ls "$kept")"
