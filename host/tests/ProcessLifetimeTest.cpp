// Faults that are about the whole host process: calls made while it exits, standard error
// whose reader is gone, sinks the host removes, a disk that fills under the log file.
#include <sys/stat.h>

#include <regex>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include <host/HostError.hpp>

#include "ChildRoles.hpp"
#include "archive/tests/support/TestSupport.hpp"

namespace {

using tqtest::fs::path;

const std::string kText = "what the host asked to keep\n";

// A folder holding in.txt.
struct WorkFolder : tqtest::TempDir {
    WorkFolder() { tqtest::writeFile(*this / "in.txt", kText); }
    std::string at(const std::string& name) const { return (*this / name).string(); }
};

std::string gunzipped(const std::string& file) {
    return tqtest::runCommand("gzip -dc " + tqtest::shellQuote(file)).output;
}

// Lines of the log file that hold the text.
std::vector<std::string> linesWith(const path& file, const std::string& text) {
    std::vector<std::string> found;
    std::istringstream lines(tqtest::readFile(file));
    for (std::string line; std::getline(lines, line);) {
        if (line.find(text) != std::string::npos) {
            found.push_back(line.substr(line.find(": ") + 2));
        }
    }
    return found;
}

// The lines of the records compressgz writes for in.txt into the folder, as a sink that
// starts each message with the prefix shows them.
std::string recordsOfOneCall(const WorkFolder& dir, const std::string& folder,
                             const std::string& prefix) {
    const std::string in = dir.at("in.txt");
    return prefix + "Opened file on disk for reading-->" + in + "\n" + prefix +
           "Opened archive file for creating destination archive on disk-->" +
           dir.at(folder + "/in.txt.gz") + "\n" + prefix + "Read entry from file on disk-->" + in +
           "\n" + prefix + "Wrote entry to destination archive-->" + in + "\n";
}

}  // namespace

// An atexit handler registered before the first call zips and gzips: with a call in main
// first, everything made on first use is already destroyed when the handler runs.
TEST(ProcessLifetime, CallsFromAnAtexitHandlerWorkWithOrWithoutTheLogFile) {
    for (const bool earlyCall : {false, true}) {
        for (const bool logFile : {false, true}) {
            WorkFolder dir;
            const std::string environment =
                std::string(earlyCall ? "TQHOST_TEST_EARLY=1 " : "") +
                (logFile ? "TQARCHIVE_LOG=" + tqtest::shellQuote(dir.at("diag.log")) : "");
            const auto child = tqtest::runCommand(roleCommand("atexit", dir.path(), environment));
            const std::string early = earlyCall ? dir.at("early/in.txt.gz") + "\n" : "";
            EXPECT_EQ(std::make_pair(child.status, child.output),
                      std::make_pair(0, early + "in.txt\n" + dir.at("late/in.txt.gz") + "\n"))
                << environment;
            EXPECT_EQ(gunzipped(dir.at("late/in.txt.gz")), kText);
            EXPECT_EQ(
                tqtest::runCommand("unzip -p " + tqtest::shellQuote(dir.at("late.zip"))).output,
                kText);
            if (logFile) {
                const std::string opened =
                    "Opened archive file for creating destination archive on disk-->";
                EXPECT_EQ(
                    linesWith(dir / "diag.log", "late"),
                    (std::vector{opened + dir.at("late.zip"), opened + dir.at("late/in.txt.gz")}))
                    << environment;
            }
        }
    }
}

// main returns while another thread is in the middle of a call.
TEST(ProcessLifetime, ExitWhileAnotherThreadCallsDoesNotCrash) {
    WorkFolder dir;
    for (int run = 0; run < 5; ++run) {
        const auto child = tqtest::runCommand(roleCommand(
            "exitRace", dir.path(), "TQARCHIVE_LOG=" + tqtest::shellQuote(dir.at("diag.log"))));
        EXPECT_EQ(std::make_pair(child.status, child.output),
                  std::make_pair(0, std::string("exiting\n")));
    }
}

// 8 threads write 3,720 records and one with a 100,000-character name: every line whole.
TEST(ProcessLifetime, RecordsOfEightThreadsAreWholeLinesInTheLogFile) {
    WorkFolder dir;
    const auto child = tqtest::runCommand(roleCommand(
        "threads", dir.path(), "TQARCHIVE_LOG=" + tqtest::shellQuote(dir.at("diag.log"))));
    ASSERT_EQ(std::make_pair(child.status, child.output), std::make_pair(0, std::string()));
    const std::regex line(
        R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{6} \[(1|4|512)\] tessel::io::archive::core: )"
        R"(thread (\d) record (\d+) (x+))");
    std::set<std::pair<int, int>> seen;
    std::size_t longNames = 0;
    std::istringstream lines(tqtest::readFile(dir / "diag.log"));
    for (std::string text; std::getline(lines, text);) {
        if (text.ends_with("long-->" + std::string(100000, 'n'))) {
            ++longNames;
            continue;
        }
        std::smatch match;
        ASSERT_TRUE(std::regex_match(text, match, line)) << text.substr(0, 200);
        const int thread = std::stoi(match[2]), record = std::stoi(match[3]);
        EXPECT_EQ(match[1], std::to_string(std::array{1, 4, 512}[record % 3]));
        EXPECT_EQ(match[4].length(), static_cast<std::size_t>(40 + 30 * thread));
        seen.emplace(thread, record);
    }
    EXPECT_EQ(std::make_pair(seen.size(), longNames),
              std::make_pair(std::size_t{3720}, std::size_t{1}));
}

// Standard error is a pipe whose reader is gone: the warning, and the notice about a log
// file that names that pipe, are lost, and the host lives on.
TEST(ProcessLifetime, StandardErrorWithoutAReaderNeverKillsTheHost) {
    for (const std::string environment : {"", "TQARCHIVE_LOG=/dev/stderr"}) {
        WorkFolder dir;
        const auto child = tqtest::runCommand(roleCommand("brokenStderr", dir.path(), environment));
        EXPECT_EQ(std::make_pair(child.status, child.output),
                  std::make_pair(0, dir.at("out/in.txt.gz") + "\nalive\n"))
            << environment;
        EXPECT_EQ(gunzipped(dir.at("out/in.txt.gz")), kText);
    }
}

// The host removes Boost.Log's sinks (which brings back its console output), attaches a
// sink of its own, then replaces it by one for another channel. Nothing of the channel
// reaches the console; the host's sink gets the records of the one call it was there for;
// the log file keeps getting every call's records.
TEST(ProcessLifetime, RemovedSinksNeverPrintTheChannelAndHostSinksGetOnlyWhatTheyAskFor) {
    for (const bool logFile : {false, true}) {
        WorkFolder dir;
        const auto child = tqtest::runCommand(
            roleCommand("removeSinks", dir.path(),
                        logFile ? "TQARCHIVE_LOG=" + tqtest::shellQuote(dir.at("diag.log")) : ""));
        const auto gz = [&](const std::string& n) { return dir.at(n + "/in.txt.gz") + "\n"; };
        const std::string hostSink = recordsOfOneCall(dir, "3", "host sink: ");
        EXPECT_EQ(std::make_pair(child.status, child.output),
                  std::make_pair(0, gz("1") + gz("2") + hostSink + gz("3") + gz("4")));
        if (logFile) {
            EXPECT_EQ(linesWith(dir / "diag.log", "Opened file on disk").size(), 4u);
        }
    }
}

// A sink of the host's that buffers, and that the host never flushes, still gets the
// records when the process exits normally.
TEST(ProcessLifetime, HostSinksAreFlushedWhenTheProcessExits) {
    WorkFolder dir;
    const auto child = tqtest::runCommand(roleCommand("hostSink", dir.path()));
    EXPECT_EQ(std::make_pair(child.status, child.output),
              std::make_pair(0, dir.at("out/in.txt.gz") + "\n"));
    EXPECT_EQ(tqtest::readFile(dir / "host.log"), recordsOfOneCall(dir, "out", ""));
}

// The log file sits on a tiny tmpfs that fills up during the first call: the calls go on
// and give what they give without a log, and the failure is told once.
TEST(ProcessLifetime, LogFileOnAFullDiskNeitherStopsNorFailsTheCalls) {
    if (!tqtest::canMountTmpfs()) {
        GTEST_SKIP() << "needs a private mount namespace";
    }
    WorkFolder dir;
    const path tiny = dir / "tiny";
    // Two pages: the filler takes one, the log file (3,900 bytes already) the other.
    const std::string earlier(3899, 'e');
    const std::string report = tqtest::runInChild(
        [&] {
            tqtest::writeFile(tiny / "filler", std::string(4096, 'f'));
            tqtest::writeFile(tiny / "diag.log", earlier + "\n");
            const auto child = tqtest::runCommand(
                roleCommand("calls", dir.path(),
                            "TQARCHIVE_LOG=" + tqtest::shellQuote((tiny / "diag.log").string())));
            const std::string log = tqtest::readFile(tiny / "diag.log");
            return std::to_string(child.status) + "|" + child.output + "|" +
                   std::to_string(log.size()) + "|" + log.substr(0, earlier.size() + 1) + "|" +
                   std::to_string(std::count(log.begin(), log.end(), '\n'));
        },
        tqtest::mountTinyTmpfs(tiny, 8192));
    const std::string logPath = (tiny / "diag.log").string();
    const std::string told =
        "Warning: " +
        tessel::host::lookupMessageUtf8("TESSEL:host:logFileWriteFailed",
                                        {logPath, std::string("No space left on device")}) +
        " [TESSEL:host:logFileWriteFailed]\n";
    // The page had 196 bytes left: the earlier line and one whole record, then part of one.
    EXPECT_EQ(report, "0|" + told + dir.at("first/in.txt.gz") + "\n" + dir.at("second/in.txt.gz") +
                          "\n|4096|" + earlier + "\n|" + "2");
    EXPECT_EQ(gunzipped(dir.at("second/in.txt.gz")), kText);
}
