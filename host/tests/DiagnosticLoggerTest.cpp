#include <algorithm>
#include <thread>

#include <gtest/gtest.h>
#include <boost/log/core/core.hpp>

#include <host/DiagnosticLogger.hpp>
#include <host/DiagnosticLoggerRecords.hpp>
#include <host/HostError.hpp>

#include "ChildRoles.hpp"
#include "archive/tests/support/LogCapture.hpp"
#include "archive/tests/support/TestSupport.hpp"

using tessel::host::DiagnosticLogger;

bool logRecord(DiagnosticLogger& logger, int severity, const std::string& text) {
    using tessel::host::DiagnosticLoggerRecords;
    boost::log::record record;
    if (logger.enabled(severity) && (record = DiagnosticLoggerRecords::open(logger, severity))) {
        DiagnosticLoggerRecords::push(logger, std::move(record), text);
        return true;
    }
    return false;
}

// The capture listens to the library's channel only.
const std::string kChannel = "tessel::io::archive::core";

// The line standard error gets for a log setting that cannot be used.
std::string notice(const std::string& mnemonic, const std::vector<std::string>& arguments) {
    const std::string identifier = "TESSEL:host:" + mnemonic;
    return "Warning: " +
           tessel::host::lookupMessageUtf8(identifier, std::vector<tessel::host::MessageArgument>(
                                                           arguments.begin(), arguments.end())) +
           " [" + identifier + "]\n";
}

TEST(DiagnosticLogger, OpensRecordsOnlyForAListenerNeverWhenDisabledAndFromManyThreads) {
    if (std::getenv("TQARCHIVE_LOG") != nullptr) {
        GTEST_SKIP() << "TQARCHIVE_LOG is set, so a file sink listens to every channel";
    }
    DiagnosticLogger logger(kChannel);
    EXPECT_FALSE(logRecord(logger, 512, "nobody listens yet"));
    tqtest::LogCapture capture;
    boost::log::core::get()->set_logging_enabled(false);
    EXPECT_FALSE(logRecord(logger, 512, "disabled"));
    boost::log::core::get()->set_logging_enabled(true);
    EXPECT_EQ(logger.lockCount(), 1u);  // the disabled core never takes the lock

    // Each record carries the severity its own thread opened it with.
    std::vector<std::jthread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&logger, t] {
            for (int i = 0; i < 300; ++i) {
                const int severity = std::array{1, 4, 512}[(t + i) % 3];
                logRecord(logger, severity, std::to_string(severity));
            }
        });
    }
    threads.clear();  // joins them
    for (const tqtest::CapturedRecord& record : capture.records()) {
        EXPECT_EQ(std::to_string(record.severity), record.message);
    }
    EXPECT_EQ(std::make_pair(capture.records().size(), logger.lockCount()),
              std::make_pair(2400ul, 2401ul));
}

// The "log" role writes a 512 ("first record") and a 1 record in a fresh process and makes
// a second logger. Each unusable setting is told once on standard error; an invalid level
// list then logs every level.
TEST(DiagnosticLogger, FreshProcessAppendsStampedLinesOfTheEnabledLevelsOrTellsOnceWhatIsWrong) {
    tqtest::TempDir dir;
    const std::string file = (dir / "diag.log").string();
    tqtest::fs::create_directories(dir / "folder");
    const std::string fifo = (dir / "fifo").string();
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    // Digits show as '#': a time stamp with microseconds, the severity, the channel, the text.
    const std::string first = "####-##-## ##:##:##.###### [###] " + kChannel + ": first record\n";
    const std::string second = "####-##-## ##:##:##.###### [#] " + kChannel + ": second record\n";
    const std::string logTo = "TQARCHIVE_LOG=" + tqtest::shellQuote(file) + " ";
    const auto levels = [](const std::string& value) {
        return notice("logLevelsInvalid", {value});
    };
    const auto unusable = [](const std::string& path, const std::string& problem) {
        return notice("logFileUnusable", {path, problem});
    };
    struct {
        std::string environment;
        std::string appended;  // to the log file
        std::string standardError;
    } cases[] = {
        {"", "", ""},
        {logTo, first + second, ""},
        {logTo + "TQARCHIVE_LOG_LEVELS=512", first, ""},
        {logTo + "TQARCHIVE_LOG_LEVELS=' 1 ,4'", second, ""},
        {logTo + "TQARCHIVE_LOG_LEVELS=", first + second, ""},
        {logTo + "TQARCHIVE_LOG_LEVELS='1;512'", first + second, levels("1;512")},
        {logTo + "TQARCHIVE_LOG_LEVELS='1 4'", first + second, levels("1 4")},
        {logTo + "TQARCHIVE_LOG_LEVELS=ALL", first + second, levels("ALL")},
        {logTo + "TQARCHIVE_LOG_LEVELS=7", first + second, levels("7")},
        {logTo + "TQARCHIVE_LOG_LEVELS=' 1 ,bogus,4'", first + second, levels(" 1 ,bogus,4")},
        {logTo + "TQARCHIVE_LOG_LEVELS=1,,4", first + second, levels("1,,4")},
        {"TQARCHIVE_LOG=/nonexistent/folder/diag.log", "",
         unusable("/nonexistent/folder/diag.log", "cannot be opened (No such file or directory)")},
        {"TQARCHIVE_LOG=" + tqtest::shellQuote((dir / "folder").string()), "",
         unusable((dir / "folder").string(), "is a folder, not a regular file")},
        // A FIFO nobody reads would block an open for writing for ever.
        {"TQARCHIVE_LOG=" + tqtest::shellQuote(fifo), "",
         unusable(fifo, "is a pipe, not a regular file")},
        {"TQARCHIVE_LOG=/dev/null TQARCHIVE_LOG_LEVELS=4,5", "",
         unusable("/dev/null", "is a character device, not a regular file") + levels("4,5")},
    };
    for (const auto& c : cases) {
        tqtest::writeFile(dir / "diag.log", "earlier line\n");
        const auto child = tqtest::runCommand(roleCommand("log", dir.path(), c.environment));
        EXPECT_EQ(std::make_pair(child.status, child.output), std::make_pair(0, c.standardError))
            << c.environment;
        std::string text = tqtest::readFile(dir / "diag.log");
        std::ranges::replace_if(
            text, [](char c) { return c >= '0' && c <= '9'; }, '#');
        EXPECT_EQ(text, "earlier line\n" + c.appended) << c.environment;
    }
}

// A log file the host may not write: the user cannot create files in the folder.
TEST(DiagnosticLogger, UnwritableLogFileIsToldOnceAndTheCallStillWorks) {
    tqtest::TempDir dir;
    tqtest::fs::permissions(dir.path(), tqtest::fs::perms(0755));
    tqtest::fs::create_directories(dir / "locked");
    tqtest::fs::permissions(dir / "locked", tqtest::fs::perms(0555));
    tqtest::fs::create_directories(dir / "first");
    tqtest::fs::create_directories(dir / "second");
    tqtest::fs::permissions(dir / "first", tqtest::fs::perms(0777));
    tqtest::fs::permissions(dir / "second", tqtest::fs::perms(0777));
    tqtest::writeFile(dir / "in.txt", "kept as it was\n");
    const std::string log = (dir / "locked/diag.log").string();
    const std::string asNobody =
        getuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups" : "";
    const auto child = tqtest::runCommand(
        roleCommand("calls", dir.path(), "TQARCHIVE_LOG=" + tqtest::shellQuote(log), asNobody));
    EXPECT_EQ(child.output,
              notice("logFileUnusable", {log, "cannot be opened (Permission denied)"}) +
                  (dir / "first/in.txt.gz").string() + "\n" + (dir / "second/in.txt.gz").string() +
                  "\n");
    EXPECT_EQ(child.status, 0);
    EXPECT_FALSE(tqtest::fs::exists(log));
}
