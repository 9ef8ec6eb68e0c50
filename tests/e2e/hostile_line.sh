#!/usr/bin/env bash
# How a mirror may send it, how much of it, and what neighbours on the machine may do.
. "$(dirname "$0")/lib.sh"
python3 -B "$(dirname "$0")/hostile.py" mirrors bulk near
