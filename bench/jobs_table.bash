# How the cost grows with the number of files and with the processors: the table of
# docs/performance.md. Sourced by script/bench.

# cell OURS: the median of three runs, in seconds, to two digits at least.
cell() {
  local run
  for run in 1 2 3; do
    "$1" >&2
    echo "$WALL"
  done | sort -n | sed -n 2p | awk '{ printf " %." ($1 < 0.001 ? 5 : $1 < 0.01 ? 4 : $1 < 0.1 ? 3 : 2) "f |", $1 }'
}

growth_jobs=("verification, the pass:by_pass" "verification, the whole run:by_update" "update, 5 % gone:by_lossy_update"
  "install from a mirror:by_install" "building a master:by_build" "reading the manifest:by_read" "deciding:by_decide")

# column FILES: the cells of that many files, by one processor and by two.
column() {
  local row
  release "grown-$1" grown_files "$1"
  serve_release
  installed_release
  (cd "$COPY" && find . -type f | sort | awk 'NR % 20 == 7') >"$SCRATCH/lost.txt"
  manifest "$1"
  for row in "${!growth_jobs[@]}"; do
    for PIN in 0 0,1; do cell "${growth_jobs[row]#*:}"; done >"$SCRATCH/cells.txt"
    tr -d '\n' <"$SCRATCH/cells.txt" >"$GROWTH/$1-$row.txt"
  done
}

# cells FILES ROW: what was measured of them last.
cells() { cat "$GROWTH/$1-$2.txt" 2>/dev/null || echo " | |"; }

GROWTH=$BENCH/growth  # columns stay there, so that each can be measured by itself

job_table() {
  local row count
  mkdir -p "$GROWTH"
  for count in ${COLUMNS_WANTED//,/ }; do column "$count"; done
  {
    echo "| Seconds, with 1 and with 2 processors | 1,000 files: 1 | 2 | 10,000: 1 | 2 | 100,000: 1 | 2 |"
    echo "|---|---|---|---|---|---|---|"
    for row in "${!growth_jobs[@]}"; do
      echo "| ${growth_jobs[row]%%:*} |$(for count in 1000 10000 100000; do cells "$count" "$row"; done | tr -d '\n')"
    done
  } >"$SCRATCH/table.md"
  awk -v table="$SCRATCH/table.md" '
    /^<!-- end of growth -->/ { skip = 0 }
    !skip
    /^<!-- growth -->/ { skip = 1; while ((getline line <table) > 0) print line }
  ' "$ROOT/docs/performance.md" >"$SCRATCH/performance.md"
  cp "$SCRATCH/performance.md" "$ROOT/docs/performance.md"
  cat "$SCRATCH/table.md"
}
