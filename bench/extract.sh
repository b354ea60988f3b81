#!/usr/bin/env bash
# Times extraction by tqarchive side by side with its peers, in alternating rounds, on
# 5,000 small files and on one big file:
#   tqarchive unzip (safe by default) and unzip --unsafe-paths  vs  bsdtar -xf, unzip -q
#   tqarchive untar (safe by default) and untar --unsafe-paths  vs  bsdtar -xzf
#   tqarchive gunzip -c                                         vs  gzip -dc
# and the library's own confined extraction (extractArchiveWithOptions, its gzip check in
# the calling thread) beside them; then, into a folder that already holds every file (safe
# writes act only on files that exist), the library's confined extraction with safe writes
# and without (direct) vs bsdtar. Inputs are made here with bsdtar, zip and gzip, in
# /tmp, and removed at the end. Prints the median wall time of each side, its ratio to
# the first peer and the peak resident memory of each run.
#
# usage: bench/extract.sh   (after a build: build/cli/tqarchive, build/bench/archive_bench)
# environment: ROUNDS (5), BIG_MIB (128), SMALL_FILES (5000), TQARCHIVE, BENCH
set -euo pipefail

ROUNDS=${ROUNDS:-5}
BIG_MIB=${BIG_MIB:-128}
TQARCHIVE=$(realpath "${TQARCHIVE:-build/cli/tqarchive}")
source "$(dirname "$0")/common.sh"
bench_setup extract bsdtar zip unzip gzip
bench_data 7
mkdir -p "$WORK/in"
(cd "$WORK/small" && zip -q -r "$WORK/in/small.zip" . && bsdtar -czf "$WORK/in/small.tgz" .)
(cd "$WORK/big" && zip -q "$WORK/in/big.zip" big.bin && bsdtar -czf "$WORK/in/big.tgz" big.bin)
gzip -c "$WORK/big/big.bin" >"$WORK/in/big.bin.gz"
rm -rf "$WORK/small" "$WORK/big"

RESULTS="$WORK/results.txt"
: >"$RESULTS"
OUT="$WORK/out"
I=$WORK/in
run() {  # case side command...; output goes to $OUT, emptied first (not timed)
    local name=$1 side=$2
    shift 2
    rm -rf "$OUT" && mkdir -p "$OUT"
    # The replace cases start from a folder holding every file already (not timed).
    [[ $name != *-replace ]] || bsdtar -xzf "$I/small.tgz" -C "$OUT"
    # Start from a clean page cache state: the previous run's writeback is not charged here.
    sync
    echo "$name $side $(measure "$@")" >>"$RESULTS"
}

one() {  # case side
    local base=${1%-*} kind=${1#*-}
    case "$kind/$2" in
    zip/tqarchive) run "$1" "$2" "$TQARCHIVE" unzip -q "$I/$base.zip" -d "$OUT" ;;
    zip/unsafe-paths) run "$1" "$2" "$TQARCHIVE" unzip -q --unsafe-paths "$I/$base.zip" -d "$OUT" ;;
    zip/library) run "$1" "$2" "$BENCH" extract-safe zip "$I/$base.zip" "$OUT" ;;
    zip/bsdtar) run "$1" "$2" bsdtar -xf "$I/$base.zip" -C "$OUT" ;;
    zip/unzip) run "$1" "$2" unzip -q "$I/$base.zip" -d "$OUT" ;;
    tgz/tqarchive) run "$1" "$2" "$TQARCHIVE" untar -q "$I/$base.tgz" -d "$OUT" ;;
    tgz/unsafe-paths) run "$1" "$2" "$TQARCHIVE" untar -q --unsafe-paths "$I/$base.tgz" -d "$OUT" ;;
    tgz/library) run "$1" "$2" "$BENCH" extract-safe tgz "$I/$base.tgz" "$OUT" ;;
    tgz/bsdtar) run "$1" "$2" bsdtar -xzf "$I/$base.tgz" -C "$OUT" ;;
    replace/bsdtar) run "$1" "$2" bsdtar -xzf "$I/small.tgz" -C "$OUT" ;;
    replace/library) run "$1" "$2" "$BENCH" extract-safe tgz "$I/small.tgz" "$OUT" ;;
    replace/direct) run "$1" "$2" "$BENCH" extract-direct tgz "$I/small.tgz" "$OUT" ;;
    gz/tqarchive) run "$1" "$2" sh -c "exec '$TQARCHIVE' gunzip -q -c '$I/big.bin.gz' > '$OUT/big.bin'" ;;
    gz/gzip) run "$1" "$2" sh -c "exec gzip -dc '$I/big.bin.gz' > '$OUT/big.bin'" ;;
    esac
}
# The first peer is what the ratio is taken against.
sides_of() {
    case $1 in
    *-zip) echo bsdtar unzip tqarchive unsafe-paths library ;;
    *-tgz) echo bsdtar tqarchive unsafe-paths library ;;
    *-gz) echo gzip tqarchive ;;
    *-replace) echo bsdtar library direct ;;
    esac
}

for ((round = 1; round <= ROUNDS; round++)); do
    echo "Round $round of $ROUNDS ..."
    for name in small-zip small-tgz big-zip big-tgz big-gz small-replace; do
        sides=($(sides_of "$name"))
        # Alternate the order, so that no side always gets the warmer cache.
        ((round % 2)) || sides=($(printf '%s\n' "${sides[@]}" | tac))
        for side in "${sides[@]}"; do one "$name" "$side"; done
    done
done

bench_report "$RESULTS"
