#!/usr/bin/env bash
# The pictures: the wizard's pages, the dialogs and the toolkit's page, each as it is drawn now against
# the one of its name in tests/pictures. What differs is left, with its difference in red, in the
# build's folder pictures/. `script/pictures` renews those that are kept.
. "$(dirname "$0")/lib.sh"
need_tools compare
kept=$(cd "$(dirname "$0")/../pictures" && pwd)
left=$BIN/pictures
seen=$SCRATCH/seen

# draw PLACE OPTION...: a gallery of its own, as several draw at once.
draw() {
  local place=$SCRATCH/$1
  shift
  mkdir -p "$place"
  ln "$BIN/gallery/skyvane-gallery" "$place/" 2>/dev/null || cp "$BIN/gallery/skyvane-gallery" "$place/"
  env -u DISPLAY SDL_VIDEODRIVER=offscreen timeout 120 "$place/skyvane-gallery" "$@" >"$place/out.txt" 2>&1 </dev/null
}
mkdir -p "$seen/german" "$seen/sharp"
german="--texts=$BIN/Resources/text/german/Installer2.txt"
{
  draw pages --pages="$seen" && draw page --png="$seen/toolkit.png" &&
    draw sharp_page --scale=1.25 --png="$seen/sharp/toolkit.png"
} &
drawn=($!)
{
  draw states --states="$seen" &&
    draw german --pages="$seen/german" --only=welcome_next_over,place,map_focus "$german" &&
    draw german_states --states="$seen/german" --only=changed_file,settings "$german" &&
    draw sharp --scale=1.25 --pages="$seen/sharp" --only=place,map_focus &&
    draw sharp_states --scale=1.25 --states="$seen/sharp" --only=values_marked
} &
drawn+=($!)
for run in "${drawn[@]}"; do
  wait "$run" || fail "not all is drawn: $(cat "$SCRATCH"/*/out.txt)"
done

if [ -n "${RENEW:-}" ]; then
  (cd "$kept" && find . -name '*.png' -delete)
  cp -r "$seen/." "$kept"
  exit 0
fi

# Another processor rounds the edge of a letter or a line otherwise; what has moved or has another
# colour is more than that.
alike() {
  local pixels
  cmp -s "$kept/$1" "$seen/$1" && return 0
  pixels=$(compare -metric AE -fuzz 2% "$kept/$1" "$seen/$1" "$left/difference.png" 2>&1) || true
  [[ "$pixels" =~ ^[0-9.e+]+$ ]] || pixels=all
  [ "$pixels" != all ] && awk -v pixels="$pixels" 'BEGIN { exit !(pixels <= 8) }' && return 0
  mkdir -p "$left/$(dirname "$1")"
  cp "$seen/$1" "$left/$1"
  mv "$left/difference.png" "$left/${1%.png}_difference.png" 2>/dev/null || true
  echo "$1: $pixels pixels differ, in $(convert "$kept/$1" "$seen/$1" -compose difference -composite \
    -threshold 2% -trim -format '%wx%h%O from the upper left' info: 2>/dev/null)"
  return 1
}
rm -rf "$left"
mkdir -p "$left"
names() { (cd "$1" && find . -name '*.png' | sed 's#^\./##' | sort); }
names "$kept" >"$SCRATCH/kept.txt"
names "$seen" >"$SCRATCH/seen.txt"
[ -s "$SCRATCH/seen.txt" ] || fail "nothing is drawn"
differing=0
while read -r name; do
  alike "$name" || differing=$((differing + 1))
  [ "$differing" -lt 10 ] || break  # enough to see what is wrong
done < <(comm -12 "$SCRATCH/kept.txt" "$SCRATCH/seen.txt")
rm -f "$left/difference.png"
diff "$SCRATCH/kept.txt" "$SCRATCH/seen.txt" || fail "a picture is missing (<), or one too many (>)"
[ "$differing" = 0 ] || fail "$differing pictures differ, or more: see $left, and script/pictures if it is meant"
