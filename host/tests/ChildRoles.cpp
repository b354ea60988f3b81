#include "ChildRoles.hpp"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>
#include <thread>

#include <boost/core/null_deleter.hpp>
#include <boost/log/core/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sinks/text_ostream_backend.hpp>
#include <boost/make_shared.hpp>

#include <archive/core/archivecore.hpp>
#include <archive/core/log/LogLevel.hpp>
#include <archive/core/log/LogRecord.hpp>
#include <host/DiagnosticLogger.hpp>
#include <host/HostError.hpp>
#include <host/LogAttributes.hpp>

#include "archive/tests/support/TestSupport.hpp"

bool logRecord(tessel::host::DiagnosticLogger& logger, int severity, const std::string& text);

namespace {

namespace core = tessel::io::archive::core;
namespace sinks = boost::log::sinks;
using tqtest::fs::path;

path workDir() {
    const char* dir = std::getenv("TQHOST_TEST_DIR");
    return dir == nullptr ? path() : path(dir);
}

// The names a call returned, one line each, on standard output.
void printNames(const std::vector<std::u16string>& names) {
    std::string lines;
    for (const auto& name : names) {
        lines += tqtest::utf8(name) + "\n";
    }
    std::fputs(lines.c_str(), stdout);
    std::fflush(stdout);
}

// Gzips in.txt into the folder (made when missing) and prints what was written.
void compressInto(const std::string& folder) {
    tqtest::fs::create_directories(workDir() / folder);
    printNames(
        core::compressgz({tqtest::u16(workDir() / "in.txt")}, tqtest::u16(workDir() / folder)));
}

// A text sink of the host's own, as an embedder attaches one: the records of the library's
// channel, one message a line, into a buffered stream.
void attachHostSink(boost::shared_ptr<std::ostream> stream, const std::string& prefix) {
    auto backend = boost::make_shared<sinks::text_ostream_backend>();
    backend->add_stream(std::move(stream));
    auto sink = boost::make_shared<sinks::synchronous_sink<sinks::text_ostream_backend>>(backend);
    sink->set_filter(tessel::host::logChannel == std::string(core::kDiagnosticChannel));
    sink->set_formatter(boost::log::expressions::stream << prefix
                                                        << boost::log::expressions::smessage);
    boost::log::core::get()->add_sink(sink);
}

// "log": a fresh process, whose first logger configures the sinks from the environment,
// writes a 512 and a 1 record; a second logger is made; then the process stops without
// flushing anything, as a crash would.
int logTwoRecords() {
    tessel::host::DiagnosticLogger logger(core::kDiagnosticChannel);
    logRecord(logger, 512, "first record");
    logRecord(logger, 1, "second record");
    tessel::host::DiagnosticLogger another("another::channel");
    std::_Exit(0);
}

// "calls": two calls, each gzipping in.txt.
int twoCalls() {
    compressInto("first");
    compressInto("second");
    return 0;
}

// "atexit": an atexit handler registered first thing zips and gzips in.txt while the
// process exits; with TQHOST_TEST_EARLY a call in main comes first, so that everything the
// library and Boost.Log make on first use is destroyed before the handler runs.
int callAtExit() {
    std::atexit([] {
        try {
            printNames(core::createArchive(tqtest::u16(workDir() / "late.zip"),
                                           {tqtest::u16(workDir() / "in.txt")}, {u"in.txt"},
                                           u"zip"));
            compressInto("late");
        } catch (const tessel::host::HostError& error) {
            std::printf("error %s\n", error.GetID().c_str());
        }
    });
    if (std::getenv("TQHOST_TEST_EARLY") != nullptr) {
        compressInto("early");
    }
    return 0;
}

// "exitRace": a thread keeps gzipping while main returns, so the process exits under it.
int exitDuringCall() {
    std::mutex mutex;
    std::condition_variable firstDone;
    bool done = false;
    tqtest::fs::create_directories(workDir() / "race");
    std::thread([&] {
        const auto input = tqtest::u16(workDir() / "in.txt");
        for (int i = 0;; ++i) {
            core::compressgz({input}, tqtest::u16(workDir() / "race"));
            if (i == 0) {
                std::lock_guard lock(mutex);
                done = true;
                firstDone.notify_one();
            }
        }
    }).detach();
    std::unique_lock lock(mutex);
    firstDone.wait(lock, [&] { return done; });
    std::puts("exiting");
    return 0;
}

// "threads": 8 threads write 465 records each through the library's log statements, one
// of them also a record holding a 100,000-character name.
int manyThreads() {
    std::vector<std::thread> threads;
    for (long long t = 0; t < 8; ++t) {
        threads.emplace_back([t] {
            const std::string filler(static_cast<std::size_t>(40 + 30 * t), 'x');
            for (long long i = 0; i < 465; ++i) {
                const auto level =
                    std::array{core::LogStep, core::LogOpen, core::LogFailure}[i % 3];
                ARCHIVE_LOG(level) << "thread " << t << " record " << i << " " << filler;
            }
            if (t == 0) {
                ARCHIVE_LOG(core::LogStep) << "long-->" << std::string(100000, 'n');
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    return 0;
}

// "removeSinks": the host removes Boost.Log's sinks between calls, then attaches a sink of
// its own that writes the channel to standard output ("host sink: <message>"), then
// replaces that by a sink for another channel only. One call after each step.
int removeSinks() {
    compressInto("1");
    boost::log::core::get()->remove_all_sinks();
    compressInto("2");
    attachHostSink(boost::shared_ptr<std::ostream>(&std::cout, boost::null_deleter()),
                   "host sink: ");
    compressInto("3");
    std::cout.flush();
    boost::log::core::get()->remove_all_sinks();
    auto other = boost::make_shared<sinks::synchronous_sink<sinks::text_ostream_backend>>();
    other->locked_backend()->add_stream(
        boost::shared_ptr<std::ostream>(&std::cout, boost::null_deleter()));
    other->set_filter(tessel::host::logChannel == std::string("host::own"));
    boost::log::core::get()->add_sink(other);
    compressInto("4");
    return 0;
}

// "hostSink": the host's own buffered sink into TQHOST_TEST_DIR/host.log, never flushed
// by the host; the records of a call must reach the file when the process exits normally.
int bufferedHostSink() {
    attachHostSink(boost::make_shared<std::ofstream>(workDir() / "host.log"), "");
    compressInto("out");
    return 0;
}

// "brokenStderr": standard error is a pipe whose reader is gone, SIGPIPE at its default
// (killing). A warning is issued and a call made; "alive" on standard output after them.
int brokenStandardError() {
    signal(SIGPIPE, SIG_DFL);
    int fds[2];
    if (pipe(fds) != 0) {
        return 3;
    }
    close(fds[0]);
    dup2(fds[1], STDERR_FILENO);
    close(fds[1]);
    tessel::host::MessageIdError("TESSEL:io:archive:gunzip", "notGzipFormat",
                                 {std::string("x.txt")})
        .warn();
    compressInto("out");
    std::puts("alive");
    return 0;
}

}  // namespace

int runChildRole(const std::string& role) {
    const std::pair<const char*, int (*)()> roles[] = {
        {"log", logTwoRecords},         {"calls", twoCalls},
        {"atexit", callAtExit},         {"exitRace", exitDuringCall},
        {"threads", manyThreads},       {"removeSinks", removeSinks},
        {"hostSink", bufferedHostSink}, {"brokenStderr", brokenStandardError},
    };
    for (const auto& [name, run] : roles) {
        if (role == name) {
            return run();
        }
    }
    std::fprintf(stderr, "unknown role %s\n", role.c_str());
    return 2;
}

std::string roleCommand(const std::string& role, const std::string& folder,
                        const std::string& environment, const std::string& prefix) {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    return prefix +
           " timeout 120 env -u TQARCHIVE_LOG -u TQARCHIVE_LOG_LEVELS TQHOST_TEST_ROLE=" + role +
           " TQHOST_TEST_DIR=" + tqtest::shellQuote(folder) + " " + environment + " " +
           tqtest::shellQuote(self);
}
