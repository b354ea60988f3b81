// The diagnostic records of small runs through a real Boost.Log sink, and what the host's
// locale does to non-ASCII names.
#include <gtest/gtest.h>

#include <unistd.h>

#include <clocale>

#include <archive/core/archivecore.hpp>
#include <host/WarningCapture.hpp>

#include "../support/LogCapture.hpp"
#include "../support/TestSupport.hpp"
#include "CreateTestSupport.hpp"

namespace tqtest {
namespace {

namespace core = tessel::io::archive::core;

std::string recordsOf(const LogCapture& capture) {
    std::string text;
    for (const auto& record : capture.records()) {
        text += std::to_string(record.severity) + "|" + record.message + "\n";
    }
    return text;
}

TEST(CreateLog, RecordsOfARelativeArchiveAndOfAFailure) {
    TempDir dir;
    writeFile(dir / "in/é.txt", "x");
    writeFile(dir / "locked", "locked");
    fs::permissions(dir / "locked", fs::perms(0044));
    const std::string records = runInChild([&] {
        LogCapture capture;
        if (chdir(dir.path().c_str()) != 0) {
            return std::string("chdir failed");
        }
        core::createArchive(u"out.zip", {u"in/é.txt"}, {u"entry 日.txt"}, u"zip", u"pw", u"aes256");
        // The evidence comes before the error; the output opened for the input is deleted.
        raisedBy([&] { core::compressgz({u"gone"}, u""); });
        raisedBy([&] { core::compressgz({u"locked"}, u""); });
        return recordsOf(capture);
    });
    const std::string at = dir.path().string() + "/";
    EXPECT_EQ(records,
              "1|Password set to create a password-protected archive.\n"
              "1|Encryption method used to create a password-protected archive-->aes256\n"
              "4|Opened archive file for creating destination archive on disk-->" +
                  at +
                  "out.zip\n"
                  "4|Opened file on disk for reading-->in/é.txt\n"
                  "1|Read entry from file on disk-->in/é.txt\n"
                  "1|Wrote entry to destination archive-->entry 日.txt\n"
                  "512|[INTERNAL ERROR MESSAGE]: [archive_err]: Could not open file.\n"
                  "4|Opened file on disk for reading-->locked\n"
                  "4|Opened archive file for creating destination archive on disk-->" +
                  at +
                  "locked.gz\n"
                  "512|[INTERNAL ERROR MESSAGE]: [archive_err]: Unknown error. This should not be "
                  "hit. Zorp it!\n"
                  "1|Successfully deleted archive file from disk-->" +
                  at + "locked.gz\n");
}

// The library leaves the locale to its host. Under the plain C locale (a host that never
// called setlocale) names keep their UTF-8 bytes, but the tar writer warns "Can't
// translate pathname" (the neutral openEntryError; the entry is still written) and zip
// entries lose the UTF-8 flag, so readers that trust the flag decode them as CP437.
TEST(CLocale, NonAsciiNames) {
    TempDir dir;
    writeFile(dir / "in.txt", "content");
    const std::string report = runInChild([&] {
        std::setlocale(LC_ALL, "C");
        std::string text;
        for (const char* format : {"tar", "zip"}) {
            tessel::host::WarningCapture warnings;
            const auto written =
                core::createArchive(u16(dir / (std::string("a.") + format)), {u16(dir / "in.txt")},
                                    {u"é日😀.txt"}, u16(std::string(format)));
            text += utf8(written.at(0)) + ":";
            for (const auto& warning : warnings.warnings()) {
                text += warning.identifier + "(" + warning.arguments.at(0) + ")";
            }
            text += "\n";
        }
        return text;
    });
    EXPECT_EQ(report,
              "é日😀.txt:TESSEL:io:archive:createArchive:openEntryError(é日😀.txt)\né日😀.txt:\n");
    EXPECT_EQ(
        runCommand("bsdtar -xOf " + shellQuote((dir / "a.tar").string()) + " 'é日😀.txt'").output,
        "content");
    EXPECT_EQ(runCommand("unzip -Z1 " + shellQuote((dir / "a.zip").string())).output, "é日😀.txt\n");
    const auto zipfile = runCommand(
        "python3 -c 'import sys, zipfile; print(zipfile.ZipFile(sys.argv[1]).namelist()[0])' " +
        shellQuote((dir / "a.zip").string()));
    EXPECT_NE(zipfile.output, "é日😀.txt\n") << "without the UTF-8 flag, decoded as CP437";
}

}  // namespace
}  // namespace tqtest
