#!/usr/bin/env bash
# What a mirror may send in place of a release. To try the programs of another build:
#
#   BIN=$PWD/build/release FIXTURE=$PWD/build/release tests/e2e/hostile.sh
. "$(dirname "$0")/lib.sh"
python3 -B "$(dirname "$0")/hostile.py" web
