// compressgz: output names and places, gzip interoperability, and what a failure
// leaves on disk.
#include <gtest/gtest.h>

#include <unistd.h>

#include <archive/core/archivecore.hpp>
#include <host/WarningCapture.hpp>

#include "../support/TestSupport.hpp"
#include "CreateTestSupport.hpp"

namespace core = tessel::io::archive::core;

namespace tqtest {
namespace {

std::string gunzipped(const fs::path& file, const std::string& tool = "gzip") {
    const auto result = runCommand(tool + " -dc " + shellQuote(file.string()));
    return result.status == 0 ? result.output : "failed: " + result.output;
}

TEST(CompressGz, OutputNamesAndContent) {
    TempDir dir;
    struct Case {
        const char* input;
        const char* output;  // relative to dir; "" output folder: beside the input
        std::string bytes;
    };
    const std::vector<Case> cases = {
        {"a/b/report.txt", "a/b/report.txt.gz", "report\n"},
        {"data.tar", "data.tar.gz", randomBytes(100000, 5)},
        {"notes", "notes.gz", ""},
        {"x.gz", "x.gz.gz", "already\n"},
        {".profile", ".profile.gz", "dot\n"},
        {"ünïcødé 日本 😀.txt", "ünïcødé 日本 😀.txt.gz", std::string(40000, 'z')},
        {"exact", "exact.gz", randomBytes(16384, 9)},
    };
    std::vector<std::u16string> inputs;
    std::vector<std::u16string> expected;
    for (const auto& c : cases) {
        writeFile(dir / c.input, c.bytes);
        inputs.push_back(u16(dir / c.input));
        expected.push_back(u16(dir / c.output));
    }
    EXPECT_EQ(core::compressgz(inputs, u""), expected);
    for (const auto& c : cases) {
        EXPECT_EQ(gunzipped(dir / c.output), c.bytes) << c.input;
    }
    if (toolAvailable("pigz")) {
        EXPECT_EQ(gunzipped(dir / "data.tar.gz", "pigz"), cases[1].bytes);
    }

    // Into an output folder, joined by the host's path concatenation.
    fs::create_directories(dir / "out");
    EXPECT_EQ(core::compressgz({u16(dir / "a/b/report.txt")}, u16(dir / "out")),
              std::vector<std::u16string>{u16(dir / "out/report.txt.gz")});
    EXPECT_EQ(gunzipped(dir / "out/report.txt.gz"), "report\n");

    // The same input twice: the same output path twice.
    EXPECT_EQ(core::compressgz({u16(dir / "notes"), u16(dir / "notes")}, u16(dir / "out")),
              (std::vector<std::u16string>{u16(dir / "out/notes.gz"), u16(dir / "out/notes.gz")}));
    EXPECT_EQ(gunzipped(dir / "out/notes.gz"), "");

    EXPECT_TRUE(core::compressgz({}, u16(dir / "nowhere")).empty());
    EXPECT_FALSE(fs::exists(dir / "nowhere"));
}

// A bare input name and no output folder: the bare output name, beside the input in the
// current folder.
TEST(CompressGz, BareNameLandsInTheCurrentFolder) {
    TempDir dir;
    writeFile(dir / "bare.txt", "bare");
    const std::string report = runInChild([&] {
        if (chdir(dir.path().c_str()) != 0) {
            return std::string("chdir failed");
        }
        const auto written = core::compressgz({u"bare.txt"}, u"");
        return utf8(written.at(0)) + ":" + gunzipped(dir / "bare.txt.gz");
    });
    EXPECT_EQ(report, "bare.txt.gz:bare");
}

struct Failure {
    std::string identifier;
    std::string argument;
};

Failure failureOf(const std::function<void()>& call) {
    const auto raised = raisedBy(call);
    if (!raised) {
        return {"no error", ""};
    }
    return {raised->identifier, raised->arguments.empty() ? "" : raised->arguments.at(0)};
}

TEST(CompressGzFailure, IdentifiersAndWhatStaysOnDisk) {
    TempDir dir;
    writeFile(dir / "one.txt", "one");
    writeFile(dir / "two.txt", "two");
    writeFile(dir / "locked.txt", "locked");
    fs::permissions(dir / "locked.txt", fs::perms(0044));
    fs::create_directories(dir / "folder");
    const auto one = u16(dir / "one.txt");
    const auto two = u16(dir / "two.txt");

    {
        SCOPED_TRACE("third of three missing: earlier outputs stay, no output for it");
        const auto failure = failureOf([&] {
            core::compressgz({one, two, u16(dir / "gone.txt")}, u"");
        });
        EXPECT_EQ(failure.identifier, "TESSEL:io:archive:gzip:javaOpenError");
        EXPECT_EQ(failure.argument, (dir / "gone.txt").string());
        EXPECT_EQ(gunzipped(dir / "one.txt.gz"), "one");
        EXPECT_EQ(gunzipped(dir / "two.txt.gz"), "two");
        EXPECT_FALSE(fs::exists(dir / "gone.txt.gz"));
    }
    {
        SCOPED_TRACE("no owner read permission: the output opened for it is removed");
        const auto failure = failureOf([&] { core::compressgz({u16(dir / "locked.txt")}, u""); });
        EXPECT_EQ(failure.identifier, "TESSEL:io:archive:gzip:javaOpenError");
        EXPECT_EQ(failure.argument, (dir / "locked.txt").string());
        EXPECT_FALSE(fs::exists(dir / "locked.txt.gz"));
    }
    {
        SCOPED_TRACE("empty input path");
        const auto failure = failureOf([&] { core::compressgz({u""}, u16(dir.path())); });
        EXPECT_EQ(failure.identifier, "TESSEL:io:archive:gzip:javaOpenError");
        EXPECT_EQ(failure.argument, "");
        EXPECT_FALSE(fs::exists(dir / ".gz"));
    }
    {
        SCOPED_TRACE("output folder missing");
        const auto failure = failureOf([&] { core::compressgz({one}, u16(dir / "missing")); });
        EXPECT_EQ(failure.identifier, "TESSEL:io:archive:gzip:javaOutputOpenError");
        EXPECT_EQ(failure.argument, (dir / "missing/one.txt.gz").string());
    }
    {
        SCOPED_TRACE("output path is a folder");
        fs::create_directories(dir / "o/one.txt.gz");
        const auto failure = failureOf([&] { core::compressgz({one}, u16(dir / "o")); });
        EXPECT_EQ(failure.identifier, "TESSEL:io:archive:gzip:javaOutputOpenError");
        EXPECT_EQ(failure.argument, (dir / "o/one.txt.gz").string());
    }
}

// A folder has no content to compress: the raw format refuses its header with a warning
// and the gzip file holds nothing.
TEST(CompressGzFailure, FolderInputWarnsAndCompressesNothing) {
    TempDir dir;
    fs::create_directories(dir / "folder");
    tessel::host::WarningCapture warnings;
    const auto written = core::compressgz({u16(dir / "folder")}, u16(dir.path()));
    ASSERT_EQ(warnings.warnings().size(), 1u);
    EXPECT_EQ(warnings.warnings()[0].identifier, "TESSEL:io:archive:createArchive:openEntryError");
    EXPECT_EQ(written, std::vector<std::u16string>{u16(dir / "folder.gz")});
    EXPECT_EQ(gunzipped(dir / "folder.gz"), "");
}

}  // namespace
}  // namespace tqtest
