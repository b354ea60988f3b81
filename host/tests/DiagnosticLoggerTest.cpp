#include <algorithm>
#include <thread>

#include <gtest/gtest.h>
#include <boost/log/sources/record_ostream.hpp>

#include <host/DiagnosticLogger.hpp>

#include "archive/tests/support/LogCapture.hpp"
#include "archive/tests/support/TestSupport.hpp"

using tessel::host::DiagnosticLogger;

bool logRecord(DiagnosticLogger& logger, int severity, const std::string& text) {
    boost::log::record record;
    if (logger.enabled(severity) && (record = logger.openRecord(severity))) {
        boost::log::record_ostream(record) << text;
        logger.pushRecord(std::move(record));
        return true;
    }
    return false;
}

// The capture listens to the library's channel only.
const std::string kChannel = "tessel::io::archive::core";

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

// main.cpp's "log" role writes a 512 ("first record") and a 1 record in a fresh process.
TEST(DiagnosticLogger, FreshProcessAppendsStampedLinesOfTheEnabledLevelsToTheLogFileOrIsSilent) {
    tqtest::TempDir dir;
    const std::string file = tqtest::shellQuote((dir / "diag.log").string());
    // Digits show as '#': a time stamp with microseconds, the severity, the channel, the text.
    const std::string first = "####-##-## ##:##:##.###### [###] " + kChannel + ": first record\n";
    const std::string second = "####-##-## ##:##:##.###### [#] " + kChannel + ": second record\n";
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"TQARCHIVE_LOG=" + file, first + second},
        {"TQARCHIVE_LOG=" + file + " TQARCHIVE_LOG_LEVELS=512", first},
        // Spaces around items and unknown items are ignored.
        {"TQARCHIVE_LOG=" + file + " TQARCHIVE_LOG_LEVELS=' 1 ,bogus,4'", second},
        // A log file that cannot be written never fails the caller.
        {"TQARCHIVE_LOG=/nonexistent/folder/diag.log", ""},
    };
    const std::string role = "env -u TQARCHIVE_LOG -u TQARCHIVE_LOG_LEVELS TQHOST_TEST_ROLE=log ";
    const std::string self = tqtest::shellQuote(std::filesystem::read_symlink("/proc/self/exe"));
    for (const auto& [env, appended] : cases) {
        tqtest::writeFile(dir / "diag.log", "earlier line\n");
        const auto child = tqtest::runCommand(role + env + " " + self);
        EXPECT_EQ(std::make_pair(child.status, child.output), std::make_pair(0, std::string()));
        std::string text = tqtest::readFile(dir / "diag.log");
        std::ranges::replace_if(
            text, [](char c) { return c >= '0' && c <= '9'; }, '#');
        EXPECT_EQ(text, "earlier line\n" + appended) << env;
    }
}
