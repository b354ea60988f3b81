// The diagnostic records of a small run, through a real Boost.Log sink.
#include <gtest/gtest.h>

#include <unistd.h>

#include <archive/core/archivecore.hpp>
#include <archive/core/log/diagnosticLogger.hpp>

#include "../support/LogCapture.hpp"
#include "../support/TestSupport.hpp"
#include "CreateTestSupport.hpp"

namespace core = tessel::io::archive::core;

namespace tqtest {
namespace {

// "severity|message" per record, one a line.
std::string recordsOf(const LogCapture& capture) {
    std::string text;
    for (const auto& record : capture.records()) {
        text += std::to_string(record.severity) + "|" + record.message + "\n";
    }
    return text;
}

TEST(CreateLog, RecordsOfARelativeArchive) {
    TempDir dir;
    writeFile(dir / "in/é.txt", "x");
    const std::string records = runInChild([&] {
        if (chdir(dir.path().c_str()) != 0) {
            return std::string("chdir failed");
        }
        LogCapture capture;
        core::createArchive(u"out.zip", {u"in/é.txt"}, {u"entry 日.txt"}, u"zip", u"pw", u"aes256");
        return recordsOf(capture);
    });
    const std::string absolute = (dir / "out.zip").string();
    EXPECT_EQ(records,
              "1|Password set to create a password-protected archive.\n"
              "1|Encryption method used to create a password-protected archive-->aes256\n"
              "4|Opened archive file for creating destination archive on disk-->" +
                  absolute +
                  "\n"
                  "4|Opened file on disk for reading-->in/é.txt\n"
                  "1|Read entry from file on disk-->in/é.txt\n"
                  "1|Wrote entry to destination archive-->entry 日.txt\n");
}

// The evidence of a failure comes before the error, at level 512; a gzip output opened
// for an input that then cannot be read is deleted, and that is logged too.
TEST(CreateLog, FailureEvidenceAndDeletion) {
    TempDir dir;
    writeFile(dir / "locked", "locked");
    fs::permissions(dir / "locked", fs::perms(0044));
    LogCapture capture;
    ASSERT_TRUE(raisedBy([&] { core::compressgz({u16(dir / "gone")}, u16(dir.path())); }));
    ASSERT_TRUE(raisedBy([&] { core::compressgz({u16(dir / "locked")}, u16(dir.path())); }));
    const std::string gz = (dir / "locked.gz").string();
    EXPECT_EQ(recordsOf(capture),
              "512|[INTERNAL ERROR MESSAGE]: [archive_err]: Could not open file.\n"
              "4|Opened file on disk for reading-->" +
                  (dir / "locked").string() +
                  "\n"
                  "4|Opened archive file for creating destination archive on disk-->" +
                  gz +
                  "\n"
                  "512|[INTERNAL ERROR MESSAGE]: [archive_err]: Unknown error. This should not be "
                  "hit. Zorp it!\n"
                  "1|Successfully deleted archive file from disk-->" +
                  gz + "\n");
}

// A level that is off writes nothing; the others still do.
TEST(CreateLog, MaskedLevelIsSilent) {
    TempDir dir;
    writeFile(dir / "a.txt", "a");
    auto& logger = core::diagnosticLogger();
    const auto mask = logger.mask();
    logger.setMask(4u | 512u);
    LogCapture capture;
    core::createArchive(u16(dir / "a.tar"), {u16(dir / "a.txt")}, {u"a.txt"}, u"tar");
    logger.setMask(mask);
    for (const auto& record : capture.records()) {
        EXPECT_EQ(record.severity, 4) << record.message;
    }
    EXPECT_EQ(capture.records().size(), 2u);
}

}  // namespace
}  // namespace tqtest
