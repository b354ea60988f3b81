# Shared by bench/create.sh and bench/extract.sh (sourced, not run).
#   bench_setup NAME       checks the driver and the tools, makes $WORK (removed on exit)
#                          and the measuring wrapper $MEASURE
#   bench_data SEED        5,000 small files in $WORK/small, one big file in $WORK/big
#   measure CMD...         prints "wall-seconds cpu-seconds peak-KiB" of one run of CMD
#   bench_report FILE      the medians of "case side wall cpu KiB" rows, each side's ratio
#                          to the case's first peer (bsdtar, or gzip), and tqarchive's to
#                          tqarchive --unsafe-paths

BENCH=${BENCH:-build/bench/archive_bench}
TQARCHIVE=${TQARCHIVE:-build/cli/tqarchive}
ROUNDS=${ROUNDS:-3}
BIG_MIB=${BIG_MIB:-512}
SMALL_FILES=${SMALL_FILES:-5000}
export LC_ALL=C.UTF-8

bench_setup() {
    local name=$1 tool
    shift
    if [[ ! -x $BENCH ]]; then
        echo "$name: no archive_bench at $BENCH; build it first:" >&2
        echo "  cmake --build build --target archive_bench" >&2
        exit 2
    fi
    for tool in python3 cc "$@"; do
        if ! command -v "$tool" >/dev/null; then
            echo "$name: $tool is needed" >&2
            exit 2
        fi
    done
    BENCH=$(realpath "$BENCH")
    WORK=$(mktemp -d "/tmp/tqarchive-$name-XXXXXX")
    trap 'rm -rf "$WORK"' EXIT
    # wait4's rusage of the measured child alone: an interpreter that forked the command
    # would lend it its own memory until exec and blur the figure.
    cat >"$WORK/measure.c" <<'C'
#include <fcntl.h>
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
        dup2(open("/dev/null", O_WRONLY), 1);
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
    return argc > 1 && WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
C
    cc -O2 -o "$WORK/measure" "$WORK/measure.c"
    MEASURE=$WORK/measure
}

measure() { "$MEASURE" "$@"; }

bench_data() {
    mkdir -p "$WORK/small" "$WORK/big"
    echo "Preparing data in $WORK ..."
    python3 - "$WORK" "$SMALL_FILES" "$BIG_MIB" "$1" <<'PY'
import os, random, sys
work, count, big_mib, seed = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), int(sys.argv[4])
rng = random.Random(seed)
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
}

bench_report() {
    python3 - "$1" "$SMALL_FILES" "$BIG_MIB" "$ROUNDS" <<'PY'
import statistics, sys
rows = [line.split() for line in open(sys.argv[1])]
print()
print("%s small files, one %s MiB file; median of %s rounds (cpu: user + system)" %
      tuple(sys.argv[2:5]))
print("%-10s %-13s %8s %8s %9s %10s %12s" %
      ("case", "side", "wall s", "cpu s", "vs peer", "peak KiB", "vs unsafe"))
cases = []
for r in rows:
    if r[0] not in cases:
        cases.append(r[0])
for case in cases:
    sides = []
    for r in rows:
        if r[0] == case and r[1] not in sides:
            sides.append(r[1])
    wall = {s: statistics.median(float(r[2]) for r in rows if r[0] == case and r[1] == s) for s in sides}
    cpu = {s: statistics.median(float(r[3]) for r in rows if r[0] == case and r[1] == s) for s in sides}
    peak = {s: max(int(r[4]) for r in rows if r[0] == case and r[1] == s) for s in sides}
    peer = next(s for s in ("bsdtar", "gzip", "zip") if s in sides)
    for s in sides:
        unsafe = "%11.3fx" % (wall[s] / wall["unsafe-paths"]) if s == "tqarchive" and "unsafe-paths" in wall else ""
        print("%-10s %-13s %8.3f %8.3f %8.3fx %10d %12s" %
              (case, s, wall[s], cpu[s], wall[s] / wall[peer], peak[s], unsafe))
PY
}
