#!/usr/bin/env bash
# Times archive creation side by side with its peers, in alternating rounds:
#   createArchive zip / tgz  vs  bsdtar -c --format zip / bsdtar -czf (the same engine)
#     on 5,000 small files in nested folders and on one 512 MiB file;
#   compressgz               vs  gzip -6 -c, on the 512 MiB file.
# Prints the median wall time of each side, their ratio, the peak resident memory of the
# runs and the output sizes.
#
# usage: bench/create.sh [path/to/create_bench]   (default build/bench/create_bench)
# environment: ROUNDS (3), BIG_MIB (512), SMALL_FILES (5000)
set -euo pipefail

BENCH=${1:-build/bench/create_bench}
ROUNDS=${ROUNDS:-3}
BIG_MIB=${BIG_MIB:-512}
SMALL_FILES=${SMALL_FILES:-5000}

if [[ ! -x $BENCH ]]; then
    echo "create.sh: no create_bench at $BENCH; build it first:" >&2
    echo "  cmake --build build --target create_bench" >&2
    exit 2
fi
for tool in bsdtar gzip python3; do
    if ! command -v "$tool" >/dev/null; then
        echo "create.sh: $tool is needed" >&2
        exit 2
    fi
done
BENCH=$(realpath "$BENCH")
export LC_ALL=C.UTF-8

WORK=$(mktemp -d /tmp/tqarchive-create-bench-XXXXXX)
trap 'rm -rf "$WORK"' EXIT
mkdir -p "$WORK/small" "$WORK/big" "$WORK/out"

echo "Preparing data in $WORK ..."
python3 - "$WORK" "$SMALL_FILES" "$BIG_MIB" <<'PY'
import os, random, sys
work, count, big_mib = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
rng = random.Random(42)
words = ["".join(rng.choice("abcdefghijklmnopqrstuvwxyz") for _ in range(rng.randint(2, 9)))
         for _ in range(5000)]
def text(size):
    out, total = [], 0
    while total < size:
        w = rng.choice(words)
        out.append(w)
        total += len(w) + 1
    return (" ".join(out)[:size] + "\n").encode()
# 5,000 small files (1-8 KiB of text) in folders three levels deep.
for i in range(count):
    folder = os.path.join(work, "small", "d%02d" % (i % 25), "e%d" % (i % 4), "f%d" % (i % 2))
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "file%05d.txt" % i), "wb") as f:
        f.write(text(rng.randint(1024, 8192)))
# One large file: 4 MiB of text blocks, each repetition changed so it is not trivially
# repetitive; compresses about like prose.
block = bytearray(text(4 << 20))
with open(os.path.join(work, "big", "big.bin"), "wb") as f:
    for i in range(big_mib // 4):
        block[rng.randrange(len(block))] = ord("A") + i % 26
        f.write(block)
PY

# One run: wall seconds and the peak resident set (KiB) of the command. The peak is the
# kernel's high-water mark of the program's own memory (VmHWM), sampled until it exits:
# getrusage(RUSAGE_CHILDREN) would also count the Python interpreter that forked it,
# whose memory the child holds until exec, and so reports the same ~14 MiB for every
# program measured.
MEASURE='
import os, subprocess, sys, threading, time
start = time.perf_counter()
child = subprocess.Popen(sys.argv[1:], stdout=subprocess.DEVNULL)
peak = 0
def sample():
    global peak
    status = "/proc/%d/status" % child.pid
    own = os.path.realpath(sys.executable)
    while child.returncode is None:
        try:
            if os.path.realpath("/proc/%d/exe" % child.pid) != own:
                with open(status) as f:
                    for line in f:
                        if line.startswith("VmHWM:"):
                            peak = max(peak, int(line.split()[1]))
        except OSError:
            pass
        time.sleep(0.002)
sampler = threading.Thread(target=sample, daemon=True)
sampler.start()
code = child.wait()
wall = time.perf_counter() - start
sampler.join()
print("%.3f %d" % (wall, peak))
sys.exit(code)
'
measure() { python3 -c "$MEASURE" "$@"; }

RESULTS="$WORK/results.txt"
: >"$RESULTS"
run() {  # case side output command...
    local name=$1 side=$2 output=$3
    shift 3
    rm -f "$output"
    local result
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
    peak = {s: max(int(r[3]) for r in side[s]) for s in side}
    size = {s: side[s][-1][4] for s in side}
    print("%-10s %-20s %9.2f %9.2f %6.3fx %11d %11d %12s %12s" %
          (case, peer, wall["ours"], wall["peer"], wall["ours"] / wall["peer"],
           peak["ours"], peak["peer"], size["ours"], size["peer"]))
PY
