// The diagnostic channel: mask before composition, dropped records, field width,
// UTF-16 pieces and many threads at once.
#include <gtest/gtest.h>

#include <boost/log/core/core.hpp>

#include <stdexcept>
#include <thread>

#include <archive/core/log/LogLevel.hpp>
#include <archive/core/log/LogRecord.hpp>
#include <archive/core/log/diagnosticLogger.hpp>

#include "../support/LogCapture.hpp"

namespace core = tessel::io::archive::core;
using core::LogFailure;
using core::LogOpen;
using core::LogStep;

namespace {

// Restores the logger's mask whatever a test did with it.
class MaskGuard {
  public:
    MaskGuard() : saved_(core::diagnosticLogger().mask()) {}
    ~MaskGuard() { core::diagnosticLogger().setMask(saved_); }

  private:
    std::uint32_t saved_;
};

int compositions = 0;
std::string counted(const std::string& text) {
    ++compositions;
    return text;
}

std::string failingPiece() {
    throw std::runtime_error("composition failed");
}

// Logs from its destructor, as archive objects do while an error unwinds.
struct LogsWhenDestroyed {
    ~LogsWhenDestroyed() {
        ARCHIVE_LOG(LogStep) << "destroyed-->"
                             << "x";
    }
};

}  // namespace

TEST(DiagnosticLog, ClearedLevelComposesNothingOthersStillWrite) {
    MaskGuard guard;
    tqtest::LogCapture log;
    core::diagnosticLogger().setMask(LogOpen | LogFailure);
    compositions = 0;
    ARCHIVE_LOG(LogStep) << counted("step-->") << "a";
    ARCHIVE_LOG(LogOpen) << counted("open-->") << "b";
    ARCHIVE_LOG(LogFailure) << counted("failure");
    EXPECT_EQ(compositions, 2);
    const auto records = log.records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].message, "open-->b");
    EXPECT_EQ(records[0].severity, 4);
    EXPECT_EQ(records[1].message, "failure");
    EXPECT_EQ(records[1].severity, 512);
}

TEST(DiagnosticLog, DisabledCoreOpensNothingAndNeverLocks) {
    tqtest::LogCapture log;
    auto& logger = core::diagnosticLogger();
    const auto locksBefore = logger.lockCount();
    boost::log::core::get()->set_logging_enabled(false);
    compositions = 0;
    ARCHIVE_LOG(LogStep) << counted("nothing");
    boost::log::core::get()->set_logging_enabled(true);
    EXPECT_EQ(compositions, 0);
    EXPECT_EQ(logger.lockCount(), locksBefore);
    EXPECT_TRUE(log.records().empty());
    ARCHIVE_LOG(LogStep) << "after";
    EXPECT_EQ(log.messages(), std::vector<std::string>{"after"});
}

TEST(DiagnosticLog, RecordInterruptedByAnExceptionIsDropped) {
    tqtest::LogCapture log;
    EXPECT_THROW({ ARCHIVE_LOG(LogStep) << "half-->" << failingPiece(); }, std::runtime_error);
    EXPECT_TRUE(log.records().empty());
}

TEST(DiagnosticLog, DestructorDuringUnwindingStillLogs) {
    tqtest::LogCapture log;
    try {
        LogsWhenDestroyed object;
        throw std::runtime_error("unwinding");
    } catch (const std::runtime_error&) {
    }
    // The exception was already in flight when the record opened: nothing new began.
    EXPECT_EQ(log.messages(), std::vector<std::string>{"destroyed-->x"});
}

TEST(DiagnosticLog, PiecesOfEveryKindAndTheFieldWidth) {
    tqtest::LogCapture log;
    ARCHIVE_LOG(LogStep) << "Wrote entry to destination archive-->"
                         << tessel::host::HostPath(u"/tmp/日本/ü 😀.txt");
    ARCHIVE_LOG(LogStep) << "[INTERNAL ERROR MESSAGE]: " << std::u16string(u"ä€😀");
    {
        core::LogRecord record(core::diagnosticLogger(), LogStep);
        record.width(6);
        record << "ab";
        record << -28LL;
        record.width(1);
        record << "long";
    }
    EXPECT_EQ(log.messages(),
              (std::vector<std::string>{"Wrote entry to destination archive-->/tmp/日本/ü 😀.txt",
                                        "[INTERNAL ERROR MESSAGE]: ä€😀", "    ab-28long"}));
    for (const auto& record : log.records()) {
        EXPECT_EQ(record.channel, "tessel::io::archive::core");
    }
}

TEST(DiagnosticLog, ManyThreadsKeepSeverityAndTextTogether) {
    tqtest::LogCapture log;
    constexpr int kThreads = 8;
    constexpr int kRecords = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            const std::uint32_t level = t % 3 == 0 ? LogStep : t % 3 == 1 ? LogOpen : LogFailure;
            for (int i = 0; i < kRecords; ++i) {
                ARCHIVE_LOG(level) << "level " << static_cast<long long>(level) << " thread "
                                   << static_cast<long long>(t);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    const auto records = log.records();
    ASSERT_EQ(records.size(), static_cast<std::size_t>(kThreads * kRecords));
    for (const auto& record : records) {
        EXPECT_EQ(record.message.rfind("level " + std::to_string(record.severity) + " ", 0), 0u)
            << record.message;
    }
}
