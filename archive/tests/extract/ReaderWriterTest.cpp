// The archive reader on its own (which formats each request enables) and the log records
// that matter for support.
#include <gtest/gtest.h>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/objects/ArchiveDiskReader.hpp>

#include "../support/LogCapture.hpp"
#include "ExtractTestHelpers.hpp"

namespace core = tessel::io::archive::core;
using core::ArchiveFormat;
using core::NullArchiveRule;
using tessel::host::HostPath;
using namespace tqtest;

namespace {

std::optional<NullArchiveRule> ruleOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const core::ArchiveException& failure) {
        return failure.rule;
    }
    return std::nullopt;
}

class ReaderWriter : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!toolAvailable("zip") || !toolAvailable("tar")) {
            GTEST_SKIP() << "zip or tar is not installed";
        }
        writeFile(dir_ / "a.txt", "A");
        sh("cd " + shellQuote(dir_.path().string()) +
           " && zip -q -P pw a.zip a.txt && tar cf a.tar a.txt");
    }
    TempDir dir_;
};

}  // namespace

TEST_F(ReaderWriter, FormatsAreNarrowedForZipGzAndTgzOnly) {
    const auto open = [&](const char* file, ArchiveFormat format) {
        return ruleOf([&] { core::ArchiveDiskReader(HostPath(u16(dir_ / file)), format, u""); });
    };
    EXPECT_EQ(open("a.tar", ArchiveFormat::Zip), NullArchiveRule::CouldNotOpenFile);
    EXPECT_EQ(open("a.zip", ArchiveFormat::Tgz), NullArchiveRule::CouldNotOpenFile);
    EXPECT_EQ(open("a.zip", ArchiveFormat::Gz), NullArchiveRule::NotGzipFormat);
    EXPECT_EQ(open("a.zip", ArchiveFormat::Tar), std::nullopt) << "tar is read with every format";
    EXPECT_EQ(open("a.zip", ArchiveFormat::Invalid), std::nullopt);
}

TEST_F(ReaderWriter, LogRecordsOfAnExtractionThatFailsOnAnEntry) {
    const fs::path saved = fs::current_path();
    fs::current_path(dir_.path());
    LogCapture log;
    const auto raised = raisedBy([] { core::extractArchive(u"a.zip", u"out", u"zip", u""); });
    fs::current_path(saved);
    ASSERT_TRUE(raised.has_value());
    EXPECT_EQ(raised->identifier, "TESSEL:io:archive:extractArchive:unableToWrite");

    const std::vector<std::string> expected = {
        "Opened source archive file on disk for reading-->" + (dir_ / "a.zip").string(),
        "Opened entry file to read from source archive-->a.txt",
        "Archive entry output path-->out/a.txt",
        "Wrote extracted entry file to disk-->out/a.txt",
        "[LIBARCHIVE_MESSAGE]: Passphrase required for this entry",
        "Successfully deleted file from disk-->out/a.txt",
    };
    const auto messages = log.messages();
    auto at = messages.begin();
    for (const std::string& line : expected) {
        at = std::find(at, messages.end(), line);
        EXPECT_NE(at, messages.end()) << "missing or out of order: " << line;
    }
    EXPECT_FALSE(log.contains("Password registered")) << "no password, no record";
    EXPECT_FALSE(fs::exists(dir_ / "out/a.txt"));

    LogCapture withPassword;
    core::extractArchive(u16(dir_ / "a.zip"), u16(dir_ / "out"), u"zip", u"pw");
    EXPECT_TRUE(
        withPassword.contains("Password registered for reading a password-protected archive."));
    EXPECT_TRUE(withPassword.contains("Reached end of archive-->" + (dir_ / "a.zip").string()));
}
