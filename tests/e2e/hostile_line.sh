#!/usr/bin/env bash
# How a mirror may send it, how much of it, and what neighbours on the machine may do. To try the
# programs of another build:
#
#   BIN=$PWD/build/release FIXTURE=$PWD/build/release tests/e2e/hostile_line.sh
. "$(dirname "$0")/lib.sh"
python3 -B "$(dirname "$0")/hostile.py" mirrors bulk near
