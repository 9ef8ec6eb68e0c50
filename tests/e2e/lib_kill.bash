# Shared by the tests that kill a program in the middle of its work; sourced after lib.sh.
#
# E2E_KILLS  how many kills; each test has a number of its own
# E2E_SEED   repeats the moments of an earlier run; printed

E2E_SEED=${E2E_SEED:-$((SRANDOM % 32768))}
RANDOM=$E2E_SEED
FOUND=       # what the last kill met: "at work", "unpacking" or "late", when the run had ended before
UNPACKING=0  # how many met a file half unpacked

now() { echo "${EPOCHREALTIME/./}"; }

# kill_at_work PID MICROSECONDS: at a moment drawn from within them.
kill_at_work() {
  local moment=$((RANDOM * $2 / 32768)) status=0
  sleep "$(printf '%d.%06d' $((moment / 1000000)) $((moment % 1000000)))"
  end_killed "$1" "at work"
}

# kill_unpacking PID MICROSECONDS COPY: at the first moment, after one drawn from within them, when a
# file of the copy is half written. The program stands still while it is looked at, so that it is
# killed in the state that was seen.
kill_unpacking() {
  local pid=$1 moment=$((RANDOM * $2 / 32768)) pause
  sleep "$(printf '%d.%06d' $((moment / 1000000)) $((moment % 1000000)))"
  # Every look takes some milliseconds, in which the program does nothing; the pauses are its own.
  while kill -STOP "$pid" 2>/dev/null && stands_still "$pid"; do
    if has_half_file "$pid" "$3" && has_half_file "$pid" "$3"; then
      end_killed "$pid" unpacking
      UNPACKING=$((UNPACKING + 1))
      return
    fi
    kill -CONT "$pid"
    printf -v pause '0.00%04d' $((RANDOM % 4000))
    read -r -t "$pause" <>"$SCRATCH/nothing" || true
  done
  end_killed "$pid" "at work"
}

end_killed() {  # PID WHAT
  local status=0
  kill -KILL "$1" 2>/dev/null || true
  wait "$1" 2>/dev/null || status=$?
  FOUND=$2
  [ "$status" = 137 ] || FOUND=late
}

# False for one that has ended.
stands_still() {
  local line
  while read -r line 2>/dev/null <"/proc/$1/stat"; do
    case ${line##*) } in
      T*) return 0 ;;
      Z*) return 1 ;;
    esac
  done
  return 1
}

# A file without a name as yet, or with a hidden one.
has_half_file() {  # PID COPY
  [ -n "$(find "/proc/$1/fd" -lname "$2/*" \( -lname '* (deleted)' -o -lname '*/.skyvane_part_*' \) -print -quit 2>/dev/null)" ]
}

mkfifo "$SCRATCH/nothing"
