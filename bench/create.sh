#!/usr/bin/env bash
# Times creation by tqarchive side by side with its peers, in alternating rounds, on
# 5,000 small files in nested folders and on one big file:
#   tqarchive zip   vs  bsdtar -c --format zip (the same engine) and zip -r (Info-ZIP)
#   tqarchive tar x.tgz  vs  bsdtar -czf
#   tqarchive gzip -c    vs  gzip -6 -c
# and the library's createArchive beside them. Prints the median wall time of each side,
# its ratio to the first peer and the peak resident memory of the runs.
#
# usage: bench/create.sh   (after a build: build/cli/tqarchive, build/bench/archive_bench)
# environment: ROUNDS (5), BIG_MIB (128), SMALL_FILES (5000), TQARCHIVE, BENCH
set -euo pipefail

ROUNDS=${ROUNDS:-5}
BIG_MIB=${BIG_MIB:-128}
TQARCHIVE=$(realpath "${TQARCHIVE:-build/cli/tqarchive}")
source "$(dirname "$0")/common.sh"
bench_setup create bsdtar zip gzip
bench_data 42
mkdir -p "$WORK/out"

RESULTS="$WORK/results.txt"
: >"$RESULTS"
O=$WORK/out
run() {  # case side command...
    local name=$1 side=$2
    shift 2
    rm -rf "$O" && mkdir -p "$O"
    sync
    echo "$name $side $(measure "$@")" >>"$RESULTS"
}

one() {  # case side
    local base=${1%-*} kind=${1#*-}
    local from=$WORK/$base
    case "$kind/$2" in
    zip/tqarchive) run "$1" "$2" "$TQARCHIVE" zip -q "$O/o.zip" . -C "$from" ;;
    zip/library) run "$1" "$2" "$BENCH" archive zip "$O/o.zip" "$from" ;;
    zip/bsdtar) run "$1" "$2" bsdtar -c --format zip -f "$O/o.zip" -C "$from" . ;;
    zip/zip) run "$1" "$2" sh -c "cd '$from' && exec zip -q -r '$O/o.zip' ." ;;
    tgz/tqarchive) run "$1" "$2" "$TQARCHIVE" tar -q "$O/o.tgz" . -C "$from" ;;
    tgz/library) run "$1" "$2" "$BENCH" archive tgz "$O/o.tgz" "$from" ;;
    tgz/bsdtar) run "$1" "$2" bsdtar -czf "$O/o.tgz" -C "$from" . ;;
    gz/tqarchive) run "$1" "$2" sh -c "exec '$TQARCHIVE' gzip -q -c '$WORK/big/big.bin' > '$O/o.gz'" ;;
    gz/gzip) run "$1" "$2" sh -c "exec gzip -6 -c '$WORK/big/big.bin' > '$O/o.gz'" ;;
    esac
}
sides_of() {
    case $1 in
    *-zip) echo bsdtar zip tqarchive library ;;
    *-tgz) echo bsdtar tqarchive library ;;
    *-gz) echo gzip tqarchive ;;
    esac
}

for ((round = 1; round <= ROUNDS; round++)); do
    echo "Round $round of $ROUNDS ..."
    for name in small-zip small-tgz big-zip big-tgz big-gz; do
        sides=($(sides_of "$name"))
        ((round % 2)) || sides=($(printf '%s\n' "${sides[@]}" | tac))
        for side in "${sides[@]}"; do one "$name" "$side"; done
    done
done

bench_report "$RESULTS"
