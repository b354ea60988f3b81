#!/usr/bin/env bash
# Times archive creation side by side with its peers, in alternating rounds:
#   createArchive zip / tgz  vs  bsdtar -c --format zip / bsdtar -czf (the same engine)
#     on 5,000 small files in nested folders and on one 512 MiB file;
#   compressgz               vs  gzip -6 -c, on the 512 MiB file.
# Prints the median wall time of each side, their ratio, the peak resident memory of the
# runs and the output sizes.
#
# usage: bench/create.sh [path/to/archive_bench]   (default build/bench/archive_bench)
# environment: ROUNDS (3), BIG_MIB (512), SMALL_FILES (5000)
set -euo pipefail
BENCH=${1:-${BENCH:-build/bench/archive_bench}}
source "$(dirname "$0")/common.sh"
bench_setup create bsdtar gzip
bench_data 42
mkdir -p "$WORK/out"

RESULTS="$WORK/results.txt"
: >"$RESULTS"
run() {  # case side output command...
    local name=$1 side=$2 output=$3 result
    shift 3
    rm -f "$output"
    result=$(measure "$@")
    echo "$name $side $result $(stat -c %s "$output")" >>"$RESULTS"
}

O=$WORK/out
for ((round = 1; round <= ROUNDS; round++)); do
    echo "Round $round of $ROUNDS ..."
    # Alternate which side goes first, so that neither always gets the warmer cache.
    for order in ours-first peer-first; do
        [[ $order == ours-first && $((round % 2)) == 0 ]] && continue
        [[ $order == peer-first && $((round % 2)) == 1 ]] && continue
        for side in $([[ $order == ours-first ]] && echo "ours peer" || echo "peer ours"); do
            if [[ $side == ours ]]; then
                run small-zip ours "$O/o.zip" "$BENCH" archive zip "$O/o.zip" "$WORK/small"
                run small-tgz ours "$O/o.tgz" "$BENCH" archive tgz "$O/o.tgz" "$WORK/small"
                run big-zip ours "$O/o.zip" "$BENCH" archive zip "$O/o.zip" "$WORK/big"
                run big-tgz ours "$O/o.tgz" "$BENCH" archive tgz "$O/o.tgz" "$WORK/big"
                run big-gz ours "$O/big.bin.gz" "$BENCH" gzip "$WORK/big/big.bin" "$O"
            else
                run small-zip peer "$O/p.zip" bsdtar -c --format zip -f "$O/p.zip" -C "$WORK/small" .
                run small-tgz peer "$O/p.tgz" bsdtar -czf "$O/p.tgz" -C "$WORK/small" .
                run big-zip peer "$O/p.zip" bsdtar -c --format zip -f "$O/p.zip" -C "$WORK/big" .
                run big-tgz peer "$O/p.tgz" bsdtar -czf "$O/p.tgz" -C "$WORK/big" .
                run big-gz peer "$O/p.gz" sh -c "exec gzip -6 -c '$WORK/big/big.bin' > '$O/p.gz'"
            fi
        done
    done
done

python3 - "$RESULTS" "$SMALL_FILES" "$BIG_MIB" <<'PY'
import statistics, sys
rows = [line.split() for line in open(sys.argv[1])]
peers = {"small-zip": "bsdtar --format zip", "small-tgz": "bsdtar -czf",
         "big-zip": "bsdtar --format zip", "big-tgz": "bsdtar -czf", "big-gz": "gzip -6 -c"}
print()
print("%s small files, one %s MiB file; median of %d rounds" %
      (sys.argv[2], sys.argv[3], len(rows) // 10))
print("%-10s %-20s %9s %9s %7s %11s %11s %12s %12s" %
      ("case", "peer", "ours s", "peer s", "ratio", "ours KiB", "peer KiB", "ours bytes", "peer bytes"))
for case, peer in peers.items():
    side = {s: [r for r in rows if r[0] == case and r[1] == s] for s in ("ours", "peer")}
    wall = {s: statistics.median(float(r[2]) for r in side[s]) for s in side}
    peak = {s: max(int(r[4]) for r in side[s]) for s in side}
    size = {s: side[s][-1][5] for s in side}
    print("%-10s %-20s %9.2f %9.2f %6.3fx %11d %11d %12s %12s" %
          (case, peer, wall["ours"], wall["peer"], wall["ours"] / wall["peer"],
           peak["ours"], peak["peer"], size["ours"], size["peer"]))
PY
