// A run stuck where it cannot poll for a stop (reading a FIFO nobody writes: libarchive
// retries a read a signal interrupts) still ends when the user presses Ctrl-C a second time.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

TEST(Signals, ASecondSigintEndsARunBlockedOnAFifoNobodyWrites) {
    // Each reads the archive from standard input: a FIFO named as an archive or a gzip
    // input is refused before it is opened.
    const std::string commands[] = {"untar - -d out", "unzip - -d out", "list -"};
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        TempDir dir;
        // The FIFO is opened read-write, so the open does not block, and only the program
        // holds it after: no data, no end of file. The signal comes once the program
        // catches SIGINT (its mask in /proc) and a moment later again; it has 10 s to end
        // after the second. A background job starts with SIGINT ignored, as a shell
        // starts it; env gives it back. timeout bounds the whole script.
        const std::string script =
            "mkfifo fifo && exec 3<>fifo && (env --default-signal=INT " + program() + " " +
            command +
            " >/dev/null 2>err <&3 3<&- & pid=$!; exec 3<&-; "
            "catches() { mask=$(sed -n 's/^SigCgt:[[:space:]]*//p' /proc/$pid/status); "
            "[ -n \"$mask\" ] && [ $(( 0x$mask & 2 )) -ne 0 ]; }; "
            "for i in $(seq 500); do catches && break; sleep 0.01; done; sleep 0.3; "
            "kill -INT $pid; sleep 0.5; kill -INT $pid 2>/dev/null; "
            "for i in $(seq 100); do kill -0 $pid 2>/dev/null || break; sleep 0.1; done; "
            "kill -0 $pid 2>/dev/null && { echo still running; kill -KILL $pid; }; "
            "wait $pid; echo status=$?)";
        const auto run = runIn(dir.path(), "timeout 30 sh -c " + shellQuote(script));
        EXPECT_EQ(run.output, "status=130\n") << readFile(dir / "err");
    }
}
