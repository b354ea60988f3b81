// Outputs are replaced only when complete: a signal in the middle of a write or a disk that
// fills up leaves the previous file as it was and no temporary file behind.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

namespace {

struct Interruption {
    std::string command;  // run in the background on a big input
    std::string output;   // the file it replaces
    std::string signal;
    int status;
};

}  // namespace

TEST(Interrupt, ASignalDuringAWriteKeepsThePreviousFileAndRemovesTheTemporary) {
    const Interruption cases[] = {
        {"zip -q backup.zip big.bin -9", "backup.zip", "INT", 130},
        {"zip -q backup.zip big.bin -9", "backup.zip", "TERM", 143},
        {"tar -q backup.tar.xz big.bin", "backup.tar.xz", "INT", 130},
        {"gzip -q big.bin -9", "big.bin.gz", "INT", 130},
    };
    for (const Interruption& interruption : cases) {
        SCOPED_TRACE(interruption.command + " " + interruption.signal);
        TempDir dir;
        // Zeros read fast from a sparse file, and compress slowly enough at -9 for the signal
        // to come while the temporary (".NAME.XXXXXX") is being written. A background job
        // starts with SIGINT ignored, as a shell starts it; env gives it back.
        const std::string run =
            "mkdir work && cd work && echo previous > " + interruption.output +
            " && truncate -s 8G big.bin && (env --default-signal=INT " + program() + " " +
            interruption.command +
            " 2>../err & pid=$!; for i in $(seq 3000); do ls -A | grep -q '^\\." +
            interruption.output + "\\.' && break; sleep 0.01; done; kill -" + interruption.signal +
            " $pid; wait $pid; echo status=$?) && ls -A";
        EXPECT_EQ(sh(dir.path(), run),
                  "status=" + std::to_string(interruption.status) + "\n" +
                      (interruption.output == "big.bin.gz" ? "big.bin\nbig.bin.gz\n"
                                                           : interruption.output + "\nbig.bin\n"));
        const std::string err = readFile(dir / "err");
        EXPECT_TRUE(err.starts_with("Error: ") && err.find("internalError") == std::string::npos)
            << err;
        EXPECT_EQ(readFile(dir / "work" / interruption.output), "previous\n");
    }
}

// On a terminal, work that lasts shows a progress line; Ctrl-C typed there stops it.
TEST(Interrupt, LongWorkShowsProgressOnATerminalAndCtrlCStopsIt) {
    if (!toolAvailable("script")) {
        GTEST_SKIP() << "script (util-linux) is not installed";
    }
    TempDir dir;
    const std::string typed =
        "echo previous > b.zip && truncate -s 8G big.bin && (for i in $(seq 3000); do grep -qs "
        "'/s ' shown && break; sleep 0.01; done; printf '\\003') | script -qfec " +
        shellQuote(program() + " zip b.zip big.bin -9") +
        " shown >/dev/null; echo status=$?; ls -A";
    EXPECT_EQ(sh(dir.path(), typed), "status=130\nb.zip\nbig.bin\nshown\n");
    const std::string shown = readFile(dir / "shown");
    EXPECT_TRUE(shown.find(" of 8.0 GiB, ") != std::string::npos &&
                shown.find("/s  big.bin") != std::string::npos)
        << shown;
    EXPECT_EQ(readFile(dir / "b.zip"), "previous\n");
}

// A tmpfs swept in 4 KiB steps: at each size the run either succeeds with a sound file or
// fails and keeps the previous one; never a truncated file reported as success, never a
// temporary left.
TEST(Interrupt, AFullDiskNeverGivesSuccessWithABrokenFileAndKeepsThePreviousOne) {
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "needs root to mount a tmpfs in a private mount namespace";
    }
    struct Sweep {
        std::string pack;  // writes disk/OUT
        std::string out;
        std::string check;  // succeeds on a sound file
    };
    const Sweep sweeps[] = {
        {"zip disk/out.zip r.bin", "out.zip", "unzip -tq disk/out.zip"},
        {"tar disk/out.tgz r.bin", "out.tgz", "gzip -t disk/out.tgz && tar -tzf disk/out.tgz"},
        {"tar disk/out.tar r.bin", "out.tar", "tar -tf disk/out.tar"},
        {"gzip r.bin -d disk", "r.bin.gz", "gzip -t disk/r.bin.gz"},
    };
    TempDir dir;
    sh(dir.path(), "mkdir disk && head -c 40000 /dev/urandom > r.bin");
    for (const Sweep& sweep : sweeps) {
        SCOPED_TRACE(sweep.pack);
        const std::string script =
            "failed=0; for k in $(seq 8 4 76); do mount -t tmpfs -o size=${k}k tmpfs disk || exit "
            "9; "
            "echo previous > disk/" +
            sweep.out + "; " + program() + " -q " + sweep.pack + " 2>err; if [ $? = 0 ]; then " +
            sweep.check +
            " >/dev/null 2>&1 || echo \"$k: "
            "success with a broken file\"; else failed=1; [ \"$(cat disk/" +
            sweep.out +
            ")\" = previous ] || echo \"$k: previous file lost\"; grep -q DiskSpaceFull err || "
            "grep -q outputDiskFull err || echo \"$k: $(cat err)\"; fi; [ \"$(ls -A disk)\" = " +
            sweep.out +
            " ] || echo \"$k: left $(ls -A disk)\"; umount disk; done; "
            "[ $failed = 1 ] || echo never full";
        EXPECT_EQ(sh(dir.path(), "unshare -m sh -c " + shellQuote(script)), "");
    }
}
