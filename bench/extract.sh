#!/usr/bin/env bash
# Times extraction side by side with its peers, in alternating rounds:
#   extractArchive zip  vs  unzip -q and bsdtar -xf   (5,000 small files; one 512 MiB file)
#   extractArchive tgz  vs  bsdtar -xzf               (the same two inputs)
#   uncompressgz        vs  gzip -dc > file           (the 512 MiB file)
# Inputs are made here with bsdtar, zip and gzip, in /tmp, and removed at the end. Prints
# the median wall time of each side, the ratio and the peak resident memory of each run.
#
# usage: bench/extract.sh [path/to/archive_bench]   (default build/bench/archive_bench)
# environment: ROUNDS (5), BIG_MIB (512), SMALL_FILES (5000)
set -euo pipefail

BENCH=${1:-${BENCH:-build/bench/archive_bench}}
ROUNDS=${ROUNDS:-5}
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
run() {  # case side command...; output goes to $OUT, emptied first (not timed)
    local name=$1 side=$2
    shift 2
    rm -rf "$OUT" && mkdir -p "$OUT"
    # Start from clean page cache state: the previous run's writeback is not charged here.
    sync
    echo "$name $side $(measure "$@") $(du -sk "$OUT" | cut -f1)" >>"$RESULTS"
}

I=$WORK/in
ZIP_PEERS=(bsdtar unzip)
one() {  # case side
    case "$1/$2" in
    small-zip/ours) run "$1" ours "$BENCH" extract zip "$I/small.zip" "$OUT" ;;
    small-tgz/ours) run "$1" ours "$BENCH" extract tgz "$I/small.tgz" "$OUT" ;;
    big-zip/ours) run "$1" ours "$BENCH" extract zip "$I/big.zip" "$OUT" ;;
    big-tgz/ours) run "$1" ours "$BENCH" extract tgz "$I/big.tgz" "$OUT" ;;
    big-gz/ours) run "$1" ours "$BENCH" gunzip "$I/big.bin.gz" "$OUT/big.bin" ;;
    small-zip/bsdtar | big-zip/bsdtar) run "$1" bsdtar bsdtar -xf "$I/${1%-zip}.zip" -C "$OUT" ;;
    small-zip/unzip | big-zip/unzip) run "$1" unzip unzip -q "$I/${1%-zip}.zip" -d "$OUT" ;;
    small-tgz/bsdtar | big-tgz/bsdtar) run "$1" bsdtar bsdtar -xzf "$I/${1%-tgz}.tgz" -C "$OUT" ;;
    big-gz/gzip) run "$1" gzip sh -c "gzip -dc '$I/big.bin.gz' > '$OUT/big.bin'" ;;
    esac
}
peers_of() {
    case $1 in
    *-zip) echo "${ZIP_PEERS[@]}" ;;
    *-tgz) echo bsdtar ;;
    *-gz) echo gzip ;;
    esac
}
for ((round = 1; round <= ROUNDS; round++)); do
    echo "Round $round of $ROUNDS ..."
    for name in small-zip small-tgz big-zip big-tgz big-gz; do
        # Alternate which side goes first, so that neither always gets the warmer cache.
        if ((round % 2)); then
            one "$name" ours
            for peer in $(peers_of "$name"); do one "$name" "$peer"; done
        else
            for peer in $(peers_of "$name"); do one "$name" "$peer"; done
            one "$name" ours
        fi
    done
done

python3 - "$RESULTS" "$SMALL_FILES" "$BIG_MIB" "$ROUNDS" <<'PY'
import statistics, sys
rows = [line.split() for line in open(sys.argv[1])]
print()
print("%s small files, one %s MiB file; median of %s rounds (cpu: user + system)" %
      tuple(sys.argv[2:5]))
print("%-10s %-7s %8s %8s %7s %8s %8s %7s %10s %10s %10s" %
      ("case", "peer", "ours s", "peer s", "ratio", "ours cpu", "peer cpu", "ratio",
       "ours KiB", "peer KiB", "out KiB"))
cases = []
for r in rows:
    if r[1] != "ours" and (r[0], r[1]) not in cases:
        cases.append((r[0], r[1]))
def side(case, who):
    return [r for r in rows if r[0] == case and r[1] == who]
def median(rs, column):
    return statistics.median(float(r[column]) for r in rs)
for case, peer in cases:
    o, p = side(case, "ours"), side(case, peer)
    print("%-10s %-7s %8.2f %8.2f %6.3fx %8.2f %8.2f %6.3fx %10d %10d %10s" %
          (case, peer, median(o, 2), median(p, 2), median(o, 2) / median(p, 2),
           median(o, 3), median(p, 3), median(o, 3) / median(p, 3),
           max(int(r[4]) for r in o), max(int(r[4]) for r in p), o[-1][5]))
PY
