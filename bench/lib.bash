# Shared by the jobs of script/bench, which are started by job.sh: the clock, the contest of two
# programs, and the releases that they are measured on.
#
# Expects ROOT (the project), BENCH (what is kept from run to run), VOLUME (where work is done), BIN
# (the programs), FILES (how many real files, all for "all"), PAIRS. What a job leaves goes with its
# SCRATCH, on VOLUME; it may mount what it likes, which nobody else sees.
export TMPDIR=$VOLUME
. "$ROOT/tests/e2e/lib.sh"
. "$ROOT/tests/e2e/lib_tree.bash"
unset DISPLAY

NAME=Bench  # the release's name

# --- the clock -------------------------------------------------------------------------------------

# lap COMMAND...: runs a command, timed, and fails with it; its output goes to OUT. A function runs in a
# shell of its own. Leaves WALL and CPU, in seconds, and PEAK, the memory of its largest process in MB.
# PIN names the processors that it may use; with PROFILE, perf writes down where the time goes.
lap() {
  local from
  if [ "$(type -t "$1")" = function ]; then
    export -f "$1"
    set -- bash -euo pipefail -c '"$@"' _ "$@"
  fi
  [ -z "$PROFILE" ] || [ -z "${who:-}" ] ||
    set -- perf record -q -F 2000 -g -o "$BENCH/perf-$JOB-$who.data" "$@"
  [ -z "${PIN:-}" ] || set -- taskset -c "$PIN" "$@"
  from=$EPOCHREALTIME
  command time -q -o "$SCRATCH/time.txt" -f '%U %S %M' "$@" >"$OUT" 2>&1 </dev/null ||
    fail "this ended with status $?: $*"
  WALL=$(awk "BEGIN { print $EPOCHREALTIME - $from }")
  read -r CPU PEAK < <(awk '{ print $1 + $2, $3 / 1024 }' "$SCRATCH/time.txt")
}

# contest NAME GOAL OURS PEER SAME NOTE: runs the functions OURS and PEER in turn, each of which has one
# lap in it, and prints how many times faster ours is: the median over the pairs. SAME tells whether
# both came to the same result, after each pair; else there is no figure.
contest() {
  local name=$1 goal=$2 ours=$3 peer=$4 same=$5 note=$6 pair who
  : >"$SCRATCH/laps.txt"
  for ((pair = 1; pair <= PAIRS; ++pair)); do
    for who in "$ours" "$peer"; do
      "$who"
      echo "$WALL $CPU $PEAK" >>"$SCRATCH/laps.txt"
    done
    "$same" || fail "$name: $ours and $peer did not come to the same result"
  done
  awk -v head="$name" -v goal="$goal" -v ours="$ours" -v peer="$peer" -v note="$note" "$STATISTICS"'
    NR % 2 { ++n; wall[n] = $1; cpu[n] = $2; peak[n] = $3 }
    NR % 2 == 0 { wall2[n] = $1; cpu2[n] = $2; peak2[n] = $3; ratio[n] = $1 / wall[n] }
    END {
      middle = median(ratio, n)
      printf "%s ratio %.2f goal %s (%.2f to %.2f in %d pairs) | %s %s | %s %s | %s\n", head, middle, goal,
        ratio[1], ratio[n], n, label(ours), figures(wall, cpu, peak, n), label(peer),
        figures(wall2, cpu2, peak2, n), note
    }' "$SCRATCH/laps.txt"
}

# figure NAME WANTED UNIT OURS NOTE: where there is no other program to run: by how much the figure that
# OURS leaves in WALL, the median of PAIRS, stays below the one that is wanted.
figure() {
  local run who=$4
  : >"$SCRATCH/laps.txt"
  for ((run = 1; run <= PAIRS; ++run)); do
    "$4"
    echo "$WALL" >>"$SCRATCH/laps.txt"
  done
  awk -v head="$1" -v wanted="$2" -v unit="$3" -v note="$5" "$STATISTICS"'
    { of[NR] = $1 }
    END {
      middle = median(of, NR)
      printf "%s ratio %.2f goal 1 | %.3f %s (%.3f to %.3f in %d runs), %s wanted | %s\n", head,
        wanted / (middle > 0 ? middle : 0.001), middle, unit, of[1], of[NR], NR, wanted, note
    }' "$SCRATCH/laps.txt"
}

STATISTICS='
  function median(of, n,    i, k, held) {  # and sorts
    for (i = 2; i <= n; ++i)
      for (k = i; k > 1 && of[k] < of[k - 1]; --k) { held = of[k]; of[k] = of[k - 1]; of[k - 1] = held }
    return (of[int((n + 1) / 2)] + of[int(n / 2) + 1]) / 2
  }
  function label(name) { sub(/^by_/, "", name); return name }
  function figures(wall, cpu, peak, n) {
    return sprintf("%.3f s, %.2f s of processor, %.0f MB", median(wall, n), median(cpu, n), median(peak, n))
  }'

# --- the releases ----------------------------------------------------------------------------------

# The files of three packages of a flight simulator, which are unpacked here and never installed.
TREE=$BENCH/tree/usr/share/games
real_tree_is_here() {
  [ ! -e "$BENCH/tree/made" ] || return 0
  rm -rf "$BENCH/tree" "$BENCH/packages"
  mkdir -p "$BENCH/tree" "$BENCH/packages"
  echo "Fetching 1.8 GB of packages for the corpus" >&2
  (
    cd "$BENCH/packages"
    apt-get download -q -q -o APT::Sandbox::User="$(id -un)" \
      flightgear-data-base flightgear-data-ai flightgear-data-models >&2
    for package in *.deb; do dpkg-deb -x "$package" "$BENCH/tree"; done
  ) || fail "the corpus cannot be had; does 'apt-get update' help?"
  rm -r "$BENCH/packages"
  (cd "$TREE" && find . -type f -size +0 -printf '%P\n') | grep -v '[][*?%#"]' | shippable | sort \
    >"$BENCH/tree/list.txt"
  touch "$BENCH/tree/made"
}

# Fillers of a release: they lay files into a folder.
real_files() {  # COUNT FOLDER
  real_tree_is_here
  spread "$1" "$BENCH/tree/list.txt" | (cd "$TREE" && tr '\n' '\0' | xargs -0 cp -l --parents -t "$2")
}

# Pieces of pictures that make archives of 5 to 10 KB.
small_files() {  # COUNT FOLDER
  real_tree_is_here
  (
    cd "$TREE"
    find . -name '*.png' -size +20k | sort | perl -MCompress::Zlib -e '
      my ($count, $folder) = @ARGV;
      chomp(my @pictures = <STDIN>);
      for (my ($try, $made) = (0, 0); $made < $count; ++$try) {
        open(my $in, "<:raw", $pictures[$try % @pictures]) or die;
        seek($in, 1000 + 1000 * int($try / @pictures), 0);
        read($in, my $piece, 5200 + 4500 * ($made % 100) / 100) or next;
        next if length(compress($piece)) < 5000;
        mkdir sprintf("%s/%03d", $folder, $made / 40);
        open(my $out, ">:raw", sprintf("%s/%03d/%05d.bin", $folder, $made / 40, $made++)) or die;
        print $out $piece;
      }' "$1" "$2"
  )
}

# Files of at most 64 KB, as often as it takes, in copies of their own.
grown_files() {  # COUNT FOLDER
  local left=$1 round=0 have
  real_tree_is_here
  (cd "$TREE" && find . -type f -size -64k -printf '%P\n' | sort | join - "$BENCH/tree/list.txt" -t '') \
    >"$SCRATCH/list.txt"
  have=$(wc -l <"$SCRATCH/list.txt")
  while [ "$left" -gt 0 ]; do
    mkdir "$2/$((++round))"
    spread $((left < have ? left : have)) "$SCRATCH/list.txt" |
      (cd "$TREE" && tr '\n' '\0' | xargs -0 cp --parents -t "$2/$round")
    left=$((left - have))
  done
}

# release FOLDER FILLER COUNT [TYPE]: the release of that many files, made once and kept in BENCH.
# Leaves SOURCE, the makers' tree; MASTER, what a mirror serves; MANIFEST; and SHIPPED, its files.
release() {
  local home=$BENCH/$1
  SOURCE=$home/source MASTER=$home/master/disk_0/$NAME MANIFEST=$home/directory.txt
  if [ ! -e "$home/made" ]; then
    rm -rf "$home"
    bare_tree "$SOURCE"
    "$2" "$3" "$SOURCE/All/Resources/real"
    build_master "$SOURCE" "$home/master" --previous=none --type="${4:-0}"
    unzip -q -o "$MASTER/directory.txt.zip" -d "$home"
    touch "$home/made"
  fi
  SHIPPED=$(grep -c ^FILE "$MANIFEST")
}
whole_release() { release "files-$FILES" real_files "${FILES/all/1000000}"; }

# bare_tree FOLDER: what the builder asks of every source tree.
bare_tree() {
  mkdir -p "$1"/{Macintosh,Windows,Linux} "$1"/All/{Instructions,Weapons,Airfoils,Aircraft,Output} \
    "$1"/All/{Custom,Global}\ Scenery "$1"/All/Resources/{plugins,real,{menus,text}/English} \
    "$1/All/Resources/default scenery/900 red terrain" "$1/All/Resources/bitmaps/Earth Orbit Textures"
  echo menus >"$1/All/Resources/menus/English/Skyvane.txt"
  echo texts >"$1/All/Resources/text/English/Skyvane.txt"
}

# build_master SOURCE OUTPUT OPTIONS...: a lap that builds a master, on one disc.
build_master() {
  lap "$(program skyvane-demo-installer)" --build_master --type=0 --name="$NAME" --disk_kb=100000000 \
    --source="$1" --output="$2" "${@:3}"
}

# serve_release [CONFIG]: a mirror of the release, at PORT.
serve_release() {
  local root=$SCRATCH/web
  mkdir -p "$root/updates"
  ln -sfn "$MASTER" "$root/updates/$NAME"
  server_list "$NAME" mirror.example >"$root/serverlist9.txt"
  serve "$root" "${1:-}"
}

# ours PROGRAM OPTIONS...: a lap of one of ours, without a display, by the mirror at PORT.
ours() { lap "$(program "$1")" --unattended "${@:2}" $(through_proxy "$PORT"); }

# fresh_install FOLDER, update FOLDER: laps of whole runs.
fresh_install() {
  rm -rf "$1"
  sync
  ours skyvane-demo-installer --accept_eula --dest="$(dirname "$1")" --name="$(basename "$1")"
}
update() { ours skyvane-web-updater --copy="$1" --on_modified=keep; }

# installed_release: the release that was made last, installed from the mirror at PORT. Leaves COPY.
installed_release() {
  COPY=${MANIFEST%/*}/copy
  [ ! -e "$COPY.made" ] || return 0
  fresh_install "$COPY"
  touch "$COPY.made"
}

# --- results ---------------------------------------------------------------------------------------

# same_files A B: the same files in both, byte for byte; folders that are empty do not count.
same_files() {
  diff <(cd "$1" && find . ! -type d | sort) <(cd "$2" && find . ! -type d | sort) &&
    ! diff -rq --no-dereference "$1" "$2" | grep -v '^Only in '
}

# signatures: of the manifest's present versions, sorted.
signatures() { awk '$1 == "FILE" { print $7 }' "$MANIFEST" | sort; }
