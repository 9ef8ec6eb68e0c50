# Trees of real files, for tests and benchmarks, and what a tree is; sourced.

# shippable: of the paths that come in, one a line, those that a master can hold. Left out is what the
# builder refuses or drops (some words and endings, names that begin with a dot), and what no line of
# the manifest can carry.
shippable() {
  grep -avE 'copy|\.cpp|\.CPP|[:\\]|[^ -~]| /| $|/\.|\.7z|Thumbs\.db|work\.|\._|DS_Store|sandboxinfo|xSYM' |
    grep -avE '\.(ovw|ac|prf|fms|sit|mov|bak)$|serverlist\.txt|\.dsf|^.{240}'
}

# spread COUNT FILE: that many lines of a file, evenly over all that it has.
spread() {
  awk -v n="$1" -v all="$(wc -l <"$2")" 'n >= all || int(NR * n / all) > int((NR - 1) * n / all)' "$2"
}

# prints FOLDER: one line for everything below it: kind, mode, content (a link's text), name. Links
# are not followed. Two equal prints are two equal trees.
prints() {
  (
    cd "$1"
    find . -mindepth 1 -type f -exec md5sum --zero {} + |
      tr '\0' '\n' | sed 's/^\([0-9a-f]*\) .\(.*\)$/\2 \1/'
    find . -mindepth 1 \( -type f -o -type d \) -printf '%p %y %m\n'
    find . -mindepth 1 -type l -printf '%p %y %l\n'
  ) | sort
}
