#!/usr/bin/env bash
# How fast an install from a disc is, beside a shell that does the same with cp, unzip and 7z.
#
# Builds a release of some 5,000 small files in all, mounts it as a disc, and installs it with all
# that is read in the page cache. The shell copies the archives to the hard drive one after the other
# and unpacks them with as many jobs as there are processors, like the installer; it neither makes
# decisions nor shows progress. With TMPDIR on a file system in memory the hard drive is left out.
set -euo pipefail

if [ "${1:-}" = --help ]; then
  echo "usage: bench/disc_speed.sh [BUILD] [FILES]    BUILD is build/release, FILES 5000, unless given"
  exit 0
fi
cd "$(dirname "$0")/.."
build=$(realpath "${1:-build/release}") files=${2:-5000}

# A mount namespace of its own, so that no other disc is found.
if [ -z "${DISC_NAMESPACE:-}" ]; then
  options=(--mount --propagation private)
  [ "$(id -u)" = 0 ] || options+=(--user --map-root-user)
  DISC_NAMESPACE=1 exec unshare "${options[@]}" "$0" "$@"
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/skyvane-speed-XXXXXX")
trap 'umount -l "$work/disc" 2>/dev/null || true; rm -rf "$work"' EXIT
export XDG_CONFIG_HOME=$work/config TMPDIR=$work/tmp
mkdir "$work/bin" "$work/disc" "$work/tmp" "$work/shell"
cp "$build/skyvane-disc-installer" "$work/bin"
installer=$work/bin/skyvane-disc-installer

# The sample release, and more files of 2 to 20 KB to make up the number.
"$build/make-sample" --7z=all "$work/sample" >/dev/null
tree=$work/sample/new
more=$((files - $(find "$tree/All" "$tree/Macintosh" -type f | wc -l)))
for ((i = 0; i < more; ++i)); do
  folder="$tree/All/Resources/bitmaps/more $((i / 100))"
  [ $((i % 100)) = 0 ] && mkdir -p "$folder"
  seq $((i * 7)) $((i * 7 + 400 + i % 17 * 200)) >"$folder/$i.txt"
done
"$installer" --build_master --type=1 --name=Speed --source="$tree" --output="$work/master" \
  2>/dev/null
fuseiso_or_bind() {
  script/make_discs "$work/master" "$work/iso" >/dev/null
  fuseiso "$work/iso/disc_1.iso" "$work/disc" 2>/dev/null ||
    mount -o loop,ro "$work/iso/disc_1.iso" "$work/disc" 2>/dev/null ||
    { echo "no disc image can be mounted here" >&2; exit 1; }
}
fuseiso_or_bind
release=$work/disc/Speed

seconds() {
  local start=$EPOCHREALTIME
  "$@"
  echo "$EPOCHREALTIME $start" | awk '{ printf "%.2f\n", $1 - $2 }'
}

by_installer() {
  rm -rf "$work/Copy"
  "$installer" --unattended --accept_eula --dest="$work" --name=Copy >"$work/out.txt" 2>&1 ||
    { cat "$work/out.txt" >&2; exit 1; }
}

unpack_one() {
  local target="$work/shell/${1#*/}"
  case $1 in
    *.7z) 7z x -y -o"$(dirname "$target")" "$work/tmp/shell/$1" >/dev/null ;;
    *) unzip -qo "$work/tmp/shell/$1" -d "$(dirname "$target")" ;;
  esac
}
export -f unpack_one
export work

by_shell() {
  rm -rf "$work/shell" "$work/tmp/shell"
  mkdir -p "$work/tmp/shell"
  cp -r "$release/." "$work/tmp/shell"
  (
    cd "$work/tmp/shell"
    find . -mindepth 2 -type d | sed "s#^\./[^/]*#$work/shell#" | tr '\n' '\0' | xargs -0 mkdir -p
    find All Macintosh -type f -print0 | xargs -0 -P "$(nproc)" -n 100 bash -c \
      'for archive; do unpack_one "$archive"; done' _
  )
}

best_of() {
  for _ in 1 2 3; do seconds "$@"; done | sort -n | sed -n 1p
}

cat "$work/iso/disc_1.iso" >/dev/null
by_installer
mine=$(best_of by_installer)
shell=$(best_of by_shell)
count=$(find "$work/Copy" -type f | wc -l)
echo "$count files, best of three, warm cache, $(nproc) processors"
echo "installer     $mine s"
echo "cp and unzip  $shell s"
echo "$mine $shell" | awk '{ printf "ratio         %.2f (installer / shell)\n", $1 / $2 }'
