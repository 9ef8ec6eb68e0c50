#!/usr/bin/env bash
# One job, named as script/bench has it, which starts this.
set -euo pipefail

JOB=$1
. "$ROOT/bench/lib.bash"
for part in "$ROOT"/bench/jobs_*.bash; do . "$part"; done
"job_${1//-/_}"
