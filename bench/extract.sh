#!/usr/bin/env bash
# Times extraction side by side with its peers, in alternating rounds:
#   extractArchive zip  vs  unzip -q and bsdtar -xf   (5,000 small files; one 512 MiB file)
#   extractArchive tgz  vs  bsdtar -xzf               (the same two inputs)
#   uncompressgz        vs  gzip -dc > file           (the 512 MiB file)
# Inputs are made here with bsdtar, zip and gzip, in /tmp, and removed at the end. Prints
# the median wall time of each side, the ratio and the peak resident memory of each run.
#
# usage: bench/extract.sh [path/to/extract_bench]   (default build/bench/extract_bench)
# environment: ROUNDS (5), BIG_MIB (512), SMALL_FILES (5000)
set -euo pipefail

BENCH=${1:-build/bench/extract_bench}
ROUNDS=${ROUNDS:-5}
BIG_MIB=${BIG_MIB:-512}
SMALL_FILES=${SMALL_FILES:-5000}

if [[ ! -x $BENCH ]]; then
    echo "extract.sh: no extract_bench at $BENCH; build it first:" >&2
    echo "  cmake --build build --target extract_bench" >&2
    exit 2
fi
for tool in bsdtar zip unzip gzip python3 cc; do
    if ! command -v "$tool" >/dev/null; then
        echo "extract.sh: $tool is needed" >&2
        exit 2
    fi
done
BENCH=$(realpath "$BENCH")
export LC_ALL=C.UTF-8

WORK=$(mktemp -d /tmp/tqarchive-extract-bench-XXXXXX)
trap 'rm -rf "$WORK"' EXIT
mkdir -p "$WORK/small" "$WORK/big" "$WORK/in"

echo "Preparing data in $WORK ..."
python3 - "$WORK" "$SMALL_FILES" "$BIG_MIB" <<'PY'
import os, random, sys
work, count, big_mib = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
rng = random.Random(7)
words = ["".join(rng.choice("abcdefghijklmnopqrstuvwxyz") for _ in range(rng.randint(2, 9)))
         for _ in range(5000)]
def text(size):
    out, total = [], 0
    while total < size:
        w = rng.choice(words)
        out.append(w)
        total += len(w) + 1
    return (" ".join(out)[:size] + "\n").encode()
# Small files of 1-8 KiB of text in folders three levels deep.
for i in range(count):
    folder = os.path.join(work, "small", "d%02d" % (i % 25), "e%d" % (i % 4), "f%d" % (i % 2))
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "file%05d.txt" % i), "wb") as f:
        f.write(text(rng.randint(1024, 8192)))
# One large file of text that compresses about like prose, each 4 MiB block changed.
block = bytearray(text(4 << 20))
with open(os.path.join(work, "big", "big.bin"), "wb") as f:
    for i in range(big_mib // 4):
        block[rng.randrange(len(block))] = ord("A") + i % 26
        f.write(block)
PY
(cd "$WORK/small" && zip -q -r "$WORK/in/small.zip" . && bsdtar -czf "$WORK/in/small.tgz" .)
(cd "$WORK/big" && zip -q "$WORK/in/big.zip" big.bin && bsdtar -czf "$WORK/in/big.tgz" big.bin)
gzip -c "$WORK/big/big.bin" >"$WORK/in/big.bin.gz"
rm -rf "$WORK/small" "$WORK/big"

# One run: wall seconds and the peak resident set (KiB) of the command, measured by a tiny
# wrapper (wait4's rusage of that child) so that the measuring process's own memory does
# not leak into the figure, as it does when a large interpreter forks the command.
cat >"$WORK/measure.c" <<'C'
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
int main(int argc, char** argv) {
    struct timespec start, end;
    clock_gettime(CLOCK_MONOTONIC, &start);
    pid_t pid = fork();
    if (pid == 0) {
        int devnull = open("/dev/null", 1);
        dup2(devnull, 1);
        execvp(argv[1], argv + 1);
        _exit(127);
    }
    int status = 0;
    struct rusage usage;
    wait4(pid, &status, 0, &usage);
    clock_gettime(CLOCK_MONOTONIC, &end);
    double cpu = usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
                 (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    printf("%.3f %.3f %ld\n",
           (end.tv_sec - start.tv_sec) + (end.tv_nsec - start.tv_nsec) / 1e9, cpu,
           usage.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
C
cc -O2 -o "$WORK/measure" "$WORK/measure.c" -include fcntl.h
RESULTS="$WORK/results.txt"
: >"$RESULTS"
OUT="$WORK/out"
run() {  # case side command...; output goes to $OUT, emptied first (not timed)
    local name=$1 side=$2
    shift 2
    rm -rf "$OUT" && mkdir -p "$OUT"
    # Start from clean page cache state: the previous run's writeback is not charged here.
    sync
    echo "$name $side $("$WORK/measure" "$@") $(du -sk "$OUT" | cut -f1)" >>"$RESULTS"
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
