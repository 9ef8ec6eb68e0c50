# Trees of real files, for tests and benchmarks; sourced.

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
