#include <map>
#include <thread>

#include <gtest/gtest.h>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/make_shared.hpp>

#include <host/DiagnosticLogger.hpp>

#include "HostTestSupport.hpp"

using namespace tessel::host;
namespace logging = boost::log;
namespace sinks = boost::log::sinks;

namespace {

// "<severity> <channel>: <message>" of every record a test sink receives.
class CollectingBackend : public sinks::basic_sink_backend<sinks::synchronized_feeding> {
  public:
    void consume(const logging::record_view& record) {
        seen.push_back(std::to_string(record[logSeverity].get()) + " " + record[logChannel].get() +
                       ": " + record[logging::expressions::smessage].get());
    }
    std::vector<std::string> seen;
};

// A test sink listening to one channel, removed when the test ends.
class ScopedSink {
  public:
    explicit ScopedSink(const std::string& channel)
        : backend_(boost::make_shared<CollectingBackend>()),
          sink_(boost::make_shared<sinks::synchronous_sink<CollectingBackend>>(backend_)) {
        sink_->set_filter(logChannel == channel);
        logging::core::get()->add_sink(sink_);
    }
    ~ScopedSink() { logging::core::get()->remove_sink(sink_); }
    const std::vector<std::string>& seen() const { return backend_->seen; }

  private:
    boost::shared_ptr<CollectingBackend> backend_;
    boost::shared_ptr<sinks::synchronous_sink<CollectingBackend>> sink_;
};

// Writes one record; returns whether one was opened.
bool log(DiagnosticLogger& logger, int severity, const std::string& text) {
    logging::record record = logger.openRecord(severity);
    if (!record) {
        return false;
    }
    logging::record_ostream(record) << text;
    logger.pushRecord(std::move(record));
    return true;
}

TEST(DiagnosticLogger, RecordsAreOpenedOnlyForAListeningSink) {
    if (std::getenv("TQARCHIVE_LOG") != nullptr) {
        GTEST_SKIP() << "TQARCHIVE_LOG is set, so a file sink listens to every channel";
    }
    DiagnosticLogger logger("test::listened");
    DiagnosticLogger other("test::other");
    EXPECT_FALSE(log(logger, 512, "nobody listens yet"));
    ScopedSink sink("test::listened");
    EXPECT_TRUE(log(logger, 512, "[LIBARCHIVE_MESSAGE]: failure"));
    EXPECT_TRUE(log(logger, 4, "Opened archive-->/tmp/a.zip"));
    EXPECT_TRUE(log(logger, 1, "Wrote entry-->été.txt"));
    EXPECT_FALSE(log(other, 1, "not listened to"));
    EXPECT_EQ(sink.seen(),
              (std::vector<std::string>{"512 test::listened: [LIBARCHIVE_MESSAGE]: failure",
                                        "4 test::listened: Opened archive-->/tmp/a.zip",
                                        "1 test::listened: Wrote entry-->été.txt"}));
    EXPECT_EQ(logger.lockCount(), 4u);
}

TEST(DiagnosticLogger, DisabledCoreGivesEmptyRecordWithoutTakingTheLock) {
    DiagnosticLogger logger("test::disabled");
    ScopedSink sink("test::disabled");
    struct Reenable {
        ~Reenable() { logging::core::get()->set_logging_enabled(true); }
    } reenable;
    logging::core::get()->set_logging_enabled(false);
    EXPECT_FALSE(logger.openRecord(512));
    EXPECT_EQ(logger.lockCount(), 0u);
    logging::core::get()->set_logging_enabled(true);
    EXPECT_TRUE(logger.openRecord(512));
    EXPECT_EQ(logger.lockCount(), 1u);
}

TEST(DiagnosticLogger, LevelMaskFromTextAndEnvironment) {
    const std::pair<const char*, std::uint32_t> cases[] = {
        {nullptr, 517},   {"", 517}, {"1", 1}, {"4,512", 516}, {" 1 , 512 ", 513},
        {"1,bogus,4", 5}, {"0", 0},  {"2", 0}, {"512x", 0},    {",,4,", 4},
    };
    for (const auto& [text, mask] : cases) {
        EXPECT_EQ(parseLogLevels(text), mask) << (text ? text : "(null)");
    }
    setenv("TQARCHIVE_LOG_LEVELS", "4,512", 1);
    DiagnosticLogger logger("test::mask");
    unsetenv("TQARCHIVE_LOG_LEVELS");
    EXPECT_FALSE(logger.enabled(1));
    EXPECT_TRUE(logger.enabled(4) && logger.enabled(512));
    EXPECT_EQ(DiagnosticLogger("test::mask2").mask(), DiagnosticLogger::AllLevels);
}

// Whether the line is a "YYYY-MM-DD HH:MM:SS.uuuuuu " time stamp followed by the rest.
bool isStampedLine(const std::string& line, const std::string& rest) {
    const std::string shape = "dddd-dd-dd dd:dd:dd.dddddd ";
    if (line.size() != shape.size() + rest.size() || !line.ends_with(rest)) {
        return false;
    }
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] == 'd' ? !std::isdigit(static_cast<unsigned char>(line[i]))
                            : line[i] != shape[i]) {
            return false;
        }
    }
    return true;
}

// A fresh process (main.cpp's "log" role) writes a 512 and a 1 record through its first
// logger, which configures the sinks from the environment.
TEST(DiagnosticLogger, FreshProcessWritesTheLogFileOrNothing) {
    hosttest::TempFolder dir;
    const std::string file = (dir / "diagnostics.log").string();
    hosttest::writeFile(file, "earlier line\n");
    const std::string first = "[512] tessel::io::archive::core: first record";
    const std::string second = "[1] tessel::io::archive::core: second record";
    const struct {
        std::vector<std::pair<std::string, std::string>> env;
        std::vector<std::string> linesAfterEarlier;
    } cases[] = {
        {{}, {}},  // silent: no console output, no file
        {{{"TQARCHIVE_LOG", file}}, {first, second}},
        {{{"TQARCHIVE_LOG", file}, {"TQARCHIVE_LOG_LEVELS", "512"}}, {first}},
        // A log file that cannot be written never fails the caller.
        {{{"TQARCHIVE_LOG", "/nonexistent/folder/diag.log"}}, {}},
    };
    for (const auto& c : cases) {
        hosttest::writeFile(file, "earlier line\n");
        const hosttest::ChildResult child = hosttest::runRole("log", c.env);
        EXPECT_EQ(child.status, 0);
        EXPECT_EQ(child.output, "");
        const std::string text = hosttest::readFile(file);
        std::vector<std::string> lines;
        for (std::size_t at = 0, end; (end = text.find('\n', at)) != std::string::npos;
             at = end + 1) {
            lines.push_back(text.substr(at, end - at));
        }
        ASSERT_EQ(lines.size(), 1 + c.linesAfterEarlier.size()) << text;
        EXPECT_EQ(lines[0], "earlier line");
        for (std::size_t i = 0; i < c.linesAfterEarlier.size(); ++i) {
            EXPECT_TRUE(isStampedLine(lines[i + 1], c.linesAfterEarlier[i])) << lines[i + 1];
        }
    }
}

// Each record carries the severity its own thread opened it with.
TEST(DiagnosticLogger, ManyThreadsLogAtOnce) {
    DiagnosticLogger logger("test::threads");
    ScopedSink sink("test::threads");
    constexpr int kThreads = 8, kRecords = 250;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&logger, t] {
            for (int i = 0; i < kRecords; ++i) {
                const int severity = std::array{1, 4, 512}[(t + i) % 3];
                log(logger, severity, std::to_string(severity));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ASSERT_EQ(sink.seen().size(), static_cast<std::size_t>(kThreads * kRecords));
    EXPECT_EQ(logger.lockCount(), static_cast<std::uint64_t>(kThreads * kRecords));
    std::map<std::string, int> perSeverity;
    for (const std::string& seen : sink.seen()) {
        const std::string severity = seen.substr(0, seen.find(' '));
        EXPECT_EQ(seen, severity + " test::threads: " + severity);
        ++perSeverity[severity];
    }
    EXPECT_EQ(perSeverity.size(), 3u);
}

}  // namespace
