#!/usr/bin/env bash
# Every state that a file of a copy can be in, against every answer to the question about modified
# files: what the updater does to it, on disk. The release is made here with md5sum and zip, so that
# no part of the product says what is right.
. "$(dirname "$0")/update_lib.bash"

name="Skyvane states"
release=$SCRATCH/web/updates/$name
outside=$SCRATCH/outside
mkdir -p "$release" "$outside" "$SCRATCH/stage"
server_list "$name" mirror.example >"$SCRATCH/web/serverlist9.txt"
serve "$SCRATCH/web"

# --- the release ---------------------------------------------------------------------------------

# What a release had in a file: short and long ones in turn, since the manifest counts kilobytes.
content() {  # PATH VERSION
  case $1 in */[Cc]ase.*) echo "the same in all releases"; return ;; esac
  printf '%s as release %s had it\n' "$1" "$2"
  [ "$(($(printf %s "$1" | cksum | cut -d' ' -f1) % 2))" = 0 ] || head -c 3000 /dev/zero | tr '\0' "$2"
}

sig() {
  content "$1" "$2" | md5sum | cut -d' ' -f1
}

# ship PATH...: lists the files with three versions and puts the third on the server; drop: with two
# and the mark of a dropped file.
lines=$SCRATCH/lines.txt
list_file() {  # PATH LAST-LINE
  printf 'DIR ALL_os/%s/\n' "$(dirname "$1")"
  for version in 1 2; do
    printf 'FILE 0 0 9000%s 1 %s %s %s\n' "$version" \
      "$(($(content "$1" "$version" | wc -c) / 1000))" "$(sig "$1" "$version")" "$(basename "$1")"
  done
  printf 'FILE 0 0 90003 %s %s\n' "$2" "$(basename "$1")"
}
ship() {
  local path dir base
  for path in "$@"; do
    base=$(basename "$path")
    dir=$release/ALL_os/$(dirname "$path")
    mkdir -p "$dir"
    content "$path" 3 >"$SCRATCH/stage/$base"
    (cd "$SCRATCH/stage" && zip -qX "$dir/$base.zip" "$base" && rm "$base")
    list_file "$path" "1 $(($(content "$path" 3 | wc -c) / 1000)) $(sig "$path" 3)" >>"$lines"
  done
}
drop() {
  local path
  for path in "$@"; do list_file "$path" "0 0 GONE" >>"$lines"; done
}
publish() {
  { printf 'I\n900 version\nINSTALLER\n\n'; cat "$lines"; } >"$SCRATCH/stage/directory.txt"
  rm -f "$release/directory.txt.zip"
  (cd "$SCRATCH/stage" && zip -q "$release/directory.txt.zip" directory.txt && rm directory.txt)
}

# --- the table -----------------------------------------------------------------------------------
# STATE, then what becomes of a file of the release under the answers keep and overwrite, then what
# becomes of one that the release has dropped. "same": untouched, down to its mode; "new": as the
# release has it; "none": not there. What cannot be read is somebody's, and asked about.
table="
absent             new  new   none none
current            same same  -    -
earliest           new  new   none none
earlier            new  new   none none
modified           same new   same none
empty              same new   same none
unreadable         same new   same none
read-only-earlier  new  new   none none
read-only-modified same new   same none
link-to-file       same new   same none
link-outside       same new   same none
link-dangling      same new   same none
case-current       same same  -    -
case-earlier       new  new   none none
case-modified      same new   same none
folder-empty       new  new   same same
fifo               same new   same none
"

# put STATE PATH: makes that state below COPY.
put() {
  local at=$COPY/$2 other
  other=$(dirname "$2")/$(basename "$2" | tr a-z A-Z)  # another case of letters
  mkdir -p "$(dirname "$at")"
  case $1 in
    absent) ;;
    current) content "$2" 3 >"$at" ;;
    earliest) content "$2" 1 >"$at" ;;
    earlier | read-only-earlier) content "$2" 2 >"$at" ;;
    modified | read-only-modified | unreadable) echo "my own $2" >"$at" ;;
    empty) : >"$at" ;;
    link-to-file) ln -s "my own file.txt" "$at" ;;
    link-outside) ln -s "$outside/target.txt" "$at" ;;
    link-dangling) ln -s "nowhere/at all" "$at" ;;
    case-current) content "$2" 3 >"$COPY/$other" ;;
    case-earlier) content "$2" 2 >"$COPY/$other" ;;
    case-modified) echo "my own $2" >"$COPY/$other" ;;
    folder-empty) mkdir "$at" ;;
    fifo) mkfifo "$at" ;;
  esac
  case $1 in
    read-only-*) chmod 444 "$at" ;;
    unreadable) chmod 000 "$at" ;;
  esac
}

# at_disk PATH: the name that a state goes by on disk.
at_disk() {
  case $1 in
    */*case-*) echo "$(dirname "$1")/$(basename "$1" | tr a-z A-Z)" ;;
    *) echo "$1" ;;
  esac
}

fill_copy() {
  chmod -R u+rwx "$COPY" "$outside" 2>/dev/null || true
  rm -rf "$COPY" "$outside"
  mkdir -p "$COPY/Resources/files" "$outside"
  echo "somebody else's" >"$outside/target.txt"
  echo "mine" >"$COPY/Resources/files/my own file.txt"
  echo "mine" >"$COPY/Resources/.hidden"
  local state
  while read -r state _ _ gone _; do
    [ -n "$state" ] || continue
    put "$state" "Resources/files/ship $state.txt"
    [ "$gone" = - ] || put "$state" "Resources/files/drop $state.txt"
  done <<<"$table"
  give "$COPY" "$outside"
  prints "$COPY" >"$SCRATCH/before.txt"
  prints "$outside" >"$SCRATCH/outside.txt"
}

# lines_of FILE PATH: what a print says of one path.
lines_of() {
  grep -F -- "./$2 " "$1" || true
}

check_one() {  # PATH EXPECTED
  local path want=$2
  path=$(at_disk "$1")
  case $want in
    same)
      [ "$(lines_of "$SCRATCH/before.txt" "$path")" = "$(lines_of "$SCRATCH/after.txt" "$path")" ] ||
        fail "$label: $path was touched"
      ;;
    new) # the same bytes under any other name than that of the file: a kept spelling shows here
      grep -qxF "./$path $(sig "$1" 3)" <(lines_of "$SCRATCH/after.txt" "$path") ||
        fail "$label: $path is not as the release has it"
      ;;
    none) [ -z "$(lines_of "$SCRATCH/after.txt" "$path")" ] || fail "$label: $path is still there" ;;
  esac
}

check_nothing_else() {
  prints "$outside" | cmp -s - "$SCRATCH/outside.txt" || fail "$label: something outside was touched"
  for path in "Resources/files/my own file.txt" Resources/.hidden; do
    [ "$(lines_of "$SCRATCH/before.txt" "$path")" = "$(lines_of "$SCRATCH/after.txt" "$path")" ] ||
      fail "$label: $path was touched"
  done
  # No names but those that were there and the absent file's.
  (cd "$COPY" && find Resources/files -mindepth 1 | sort) >"$SCRATCH/names.txt"
  sort -u "$SCRATCH/names_allowed.txt" | comm -13 - "$SCRATCH/names.txt" >"$SCRATCH/diff.txt"
  [ ! -s "$SCRATCH/diff.txt" ] || fail "$label: left behind: $(head -n 3 "$SCRATCH/diff.txt")"
}

# rows AWK-CONDITION: how many rows of the table meet it.
rows() {
  awk "NF && ($1)" <<<"$table" | wc -l
}

while read -r state _ _ gone _; do
  [ -n "$state" ] || continue
  ship "Resources/files/ship $state.txt"
  [ "$gone" = - ] || drop "Resources/files/drop $state.txt"
done <<<"$table"
publish

# --- the states, under each answer ---------------------------------------------------------------

for answer in keep overwrite; do
  label=$answer
  fill_copy
  (cd "$COPY" && find Resources/files -mindepth 1) >"$SCRATCH/names_allowed.txt"
  echo "Resources/files/ship absent.txt" >>"$SCRATCH/names_allowed.txt"
  update --on_modified=$answer
  want_status 0 "I have finished updating $COPY/."
  as_user chmod u+r "$COPY/Resources/files/"*unreadable*
  prints "$COPY" >"$SCRATCH/after.txt"
  sed -i 's/\(unreadable.txt f\) 400$/\1 0/' "$SCRATCH/after.txt"
  while read -r state keep overwrite gone_keep gone_overwrite; do
    [ -n "$state" ] || continue
    shipped=$keep dropped=$gone_keep
    [ "$answer" = keep ] || { shipped=$overwrite; dropped=$gone_overwrite; }
    check_one "Resources/files/ship $state.txt" "$shipped"
    [ "$dropped" = - ] || check_one "Resources/files/drop $state.txt" "$dropped"
  done <<<"$table"
  check_nothing_else

  asked=$(($(rows '$2 == "same" && $3 == "new"') + $(rows '$4 == "same" && $5 == "none"')))
  column=$([ $answer = keep ] && echo 2 || echo 3)
  want_count "$(($(rows 1) + $(rows '$4 != "-"')))" "files checked"
  want_count "$(rows "\$$column == \"new\"")" "files fetched"
  want_count "$(rows "\$$((column + 2)) == \"none\" && \$1 != \"absent\"")" "files deleted"
  want_count "$([ $answer = keep ] && echo $asked || echo 0)" "files kept, because you have modified them"
  want_count "$([ $answer = keep ] && echo 0 || echo $asked)" \
    "files replaced or deleted, though you had modified them"
done

# A run after that has nothing to do, and says so; what nobody can read stays as it is.
prints "$COPY" >"$SCRATCH/before.txt"
update
want_status 0 "This copy of Skyvane ($COPY/) is already up to date."
want_count 0 "files fetched"
prints "$COPY" | cmp -s - "$SCRATCH/before.txt" || fail "a current copy was touched"

label=cancel
fill_copy
update --on_modified=cancel
want_status 2 "Cancelled, because you have modified it: $COPY/Resources/files/ship modified.txt"
prints "$COPY" | cmp -s - "$SCRATCH/before.txt" || fail "cancelled, and yet touched"

# --- what stands in the way ----------------------------------------------------------------------
# A small release; an obstacle made by a command; what the run then says. Nothing of the user's is
# lost, and once the obstacle is gone the next run brings the whole release.

: >"$lines"
ship Resources/first.txt Resources/way.txt Resources/way_in/low.txt Resources/way_in/deep/lower.txt
drop Resources/way_out/gone.txt
publish

# obstacle LABEL STATUS TEXT COMMAND [COMMAND]: the command runs in a copy in the state of an earlier
# release; the second one takes the obstacle away, if not `cleared` does.
obstacle() {
  local path
  label=$1
  chmod -R u+rwx "$COPY" "$outside"
  rm -rf "$COPY" "$outside"
  mkdir -p "$COPY/Resources/way_in/deep" "$COPY/Resources/way_out" "$outside"
  for path in first.txt way.txt way_in/low.txt way_in/deep/lower.txt way_out/gone.txt; do
    content "Resources/$path" 2 >"$COPY/Resources/$path"
  done
  echo mine >"$outside/mine.txt"
  (cd "$COPY/Resources" && eval "$4")
  give "$COPY" "$outside"
  prints "$COPY" >"$SCRATCH/before.txt"
  want "$2" update
  [ -z "$3" ] || want_text "$3"
  prints "$COPY" >"$SCRATCH/after.txt"
  { grep -E "mine\.txt f [0-7]+$| $(echo mine | md5sum | cut -c -32)$" "$SCRATCH/before.txt" || true; } | while read -r line; do
    grep -qxF -- "$line" "$SCRATCH/after.txt" || fail "$label: the user's file was touched"
  done
  [ "$(cat "$outside/mine.txt")" = mine ] || fail "$label: a file outside was touched"
  [ $# -lt 5 ] || cleared "$5"
}

# cleared COMMAND: takes the obstacle away, and the next run ends in the whole release.
cleared() {
  local path
  (cd "$COPY/Resources" && eval "$1")
  want 0 update
  for path in first.txt way.txt way_in/low.txt way_in/deep/lower.txt; do
    cmp -s <(content "Resources/$path" 3) "$COPY/Resources/$path" || fail "$label: then no $path"
  done
  # A folder is removed by the run that empties it; one that broke off leaves it, empty, for good.
  [ -z "$(find "$COPY/Resources/way_out" -mindepth 1 2>/dev/null)" ] || fail "$label: a dropped file stayed"
  [ -z "$(find "$COPY" "$outside" -name '.skyvane*')" ] || fail "$label: a part was left"
}

obstacle "a folder in a file's place" 1 "Error: Is a directory" \
  'rm way.txt; mkdir way.txt; echo mine >way.txt/mine.txt' 'rm -r way.txt'
obstacle "a folder with a hidden file in a file's place" 1 "Error: Is a directory" \
  'rm way.txt; mkdir way.txt; echo mine >way.txt/.mine.txt' 'rm -r way.txt'

obstacle "a part left by a run that was killed" 0 "" \
  'echo half >.skyvane_part; ln -s "'"$outside"'/mine.txt" way_in/.skyvane_part' true
obstacle "a file in a folder's place" 1 "Error: Not a directory" \
  'rm -r way_in/deep; echo mine >way_in/deep'
cleared 'rm way_in/deep'

obstacle "a file in the place of folders" 2 "Error: Not a directory" 'rm -r way_in; echo mine >way_in'
want_text "Make sure you are installing to a directory that you have access to!"
cleared 'rm way_in'

# A folder of the user's own is opened for the moment that the file takes.
obstacle "a file in a read-only folder" 0 "" 'chmod 555 way_in/deep' 'chmod 755 way_in/deep'
obstacle "a read-only file in a read-only folder" 1 "Error: Permission denied." \
  'chmod 444 way_in/deep/lower.txt; chmod 555 way_in/deep' 'chmod 755 way_in/deep'

obstacle "a dropped file in a read-only folder" 0 "" 'chmod 555 way_out'
[ -e "$COPY/Resources/way_out/gone.txt" ] || fail "$label: deleted all the same"
cleared 'chmod 755 way_out'

# A user's link in place of a folder is that folder: the update goes where it leads.
obstacle "a link in a folder's place" 0 "" \
  "mv way_in/deep '$outside/'; echo mine >'$outside/deep/mine.txt'; ln -s '$outside/deep' way_in/deep"
[ -L "$COPY/Resources/way_in/deep" ] || fail "$label: the link was replaced"
[ "$(cat "$outside/deep/mine.txt")" = mine ] || fail "$label: the user's file was touched"
cleared true

# --- names that change ---------------------------------------------------------------------------
# A file becomes a folder; a file is renamed by its case alone, with the same bytes.

: >"$lines"
drop Resources/turns Resources/Case.TXT
ship Resources/turns/inner.txt Resources/case.txt
publish
rm -rf "$COPY"
mkdir -p "$COPY/Resources"
for path in Resources/turns Resources/Case.TXT; do content $path 2 >"$COPY/$path"; done
give "$COPY"
for pass in first second; do
  want 0 update
  cmp -s <(content Resources/turns/inner.txt 3) "$COPY/Resources/turns/inner.txt" || fail "$pass: no inner.txt"
  cmp -s <(content Resources/case.txt 3) "$COPY/Resources/case.txt" || fail "$pass: no case.txt"
  [ ! -e "$COPY/Resources/Case.TXT" ] || fail "$pass: the old spelling stayed"
done
want_text "is already up to date."
