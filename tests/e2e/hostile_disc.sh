#!/usr/bin/env bash
# What a disc may hold in place of a release.
. "$(dirname "$0")/lib.sh"
need_root "mounting discs"
need_tools xorriso 7z
python3 -B "$(dirname "$0")/hostile.py" disc
