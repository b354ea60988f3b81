#!/usr/bin/env bash
# The whole benchmark in one run: creation, then extraction, each side by side with its
# peers. usage: bench/run.sh; environment as for create.sh.
set -euo pipefail
here=$(dirname "$0")
bash "$here/create.sh" "$@"
bash "$here/extract.sh" "$@"
