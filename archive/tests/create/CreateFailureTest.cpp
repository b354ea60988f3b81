// createArchive on bad input, odd names and unreadable inputs: a clear, identified error
// or warning, and a partial archive kept as it was.
#include <gtest/gtest.h>

#include <archive/core/archivecore.hpp>
#include <host/WarningCapture.hpp>

#include "../support/TestSupport.hpp"
#include "CreateTestSupport.hpp"

namespace tqtest {
namespace {

using tessel::io::archive::core::createArchive;
using Names = std::vector<std::u16string>;

std::string warningsOf(const tessel::host::WarningCapture& capture) {
    std::string text;
    for (const auto& warning : capture.warnings()) {
        text += warning.identifier + "(" + warning.arguments.at(0) + ")";
    }
    return text;
}

TEST(CreateArchiveBadInput, FailsWithAnIdentifiedError) {
    TempDir dir;
    writeFile(dir / "a.txt", "a");
    fs::create_directories(dir / "folder");
    const auto at = [&](const char* name) { return u16(dir / name); };
    const std::string internal = std::string(kInternalError) + "()";
    struct Case {
        std::u16string archive;
        Names files, names;
        std::u16string format;
        std::string expected;
    };
    const Case cases[] = {
        {u"", {at("a.txt")}, {u"a"}, u"zip", "TESSEL:io:archive:zip:openError()"},
        {at("folder"),
         {at("a.txt")},
         {u"a"},
         u"tar",
         "TESSEL:io:archive:tar:openError(" + (dir / "folder").string() + ")"},
        {at("no/x.tgz"),
         {at("a.txt")},
         {u"a"},
         u"tgz",
         "TESSEL:io:archive:tar:openError(" + (dir / "no/x.tgz").string() + ")"},
        {at("no/x.zip"), {at("a.txt")}, {u"a"}, u"all", internal},
        {at("x.rar"), {at("a.txt")}, {u"a"}, u"all", internal},
        {at("m.zip"), {at("missing")}, {u"m"}, u"zip", internal},
        {at("m.tar"), {at("missing")}, {u""}, u"tar", internal},  // even without a name
        {at("e.tar"), {u""}, {u"e"}, u"tar", internal},
        {at("two.gz"), {at("a.txt"), at("a.txt")}, {u"a", u"b"}, u"gz", internal},
        {at("f.zip"),
         {at("a.txt"), at("a.txt"), at("a.txt")},
         {u"a"},
         u"zip",
         "TESSEL:io:archive:createArchive:entryNameCountMismatch(3,1)"},
    };
    for (const auto& c : cases) {
        tessel::host::WarningCapture warnings;
        EXPECT_EQ(outcome([&] { createArchive(c.archive, c.files, c.names, c.format); }),
                  c.expected)
            << utf8(c.archive);
    }
    EXPECT_FALSE(fs::exists(dir / "f.zip")) << "refused before the archive was created";

    // The raw format takes regular files only: a folder's header is refused with a warning.
    tessel::host::WarningCapture warnings;
    createArchive(at("d.gz"), {at("folder")}, {u"folder"}, u"gz");
    EXPECT_EQ(warningsOf(warnings), "TESSEL:io:archive:createArchive:openEntryError(folder)");
}

TEST(CreateArchiveBadInput, PasswordAndFormatCombinations) {
    TempDir dir;
    writeFile(dir / "a.txt", "a");
    const std::string prefix = "TESSEL:io:archive:createArchive:";
    const std::string internal = std::string(kInternalError) + "()";
    const std::vector<
        std::tuple<const char*, const char16_t*, const char16_t*, const char16_t*, std::string>>
        cases = {
            {"1.zip", u"zip", u"", u"zipcrypt", prefix + "emptyPassword()"},
            {"2.zip", u"foo", u"", u"zipcrypt", prefix + "invalidArchiveFormat()"},
            {"3.zip", u"zip", u"pw", u"rot13", prefix + "invalidEncryptionInLinux()"},
            {"4.zip", u"zip", u"pw", u"", prefix + "invalidEncryptionInLinux()"},
            {"5.zip", u"foo", u"pw", u"rot13", prefix + "invalidArchiveFormat()"},
            {"6.zip", u"all", u"", u"zipcrypt", internal},
            {"7.tar", u"tar", u"pw", u"zipcrypt", internal},
            {"8.tar", u"tar", u"", u"zipcrypt", internal},
            {"9.tgz", u"tgz", u"pw", u"aes256", internal},
            {"10.gz", u"gz", u"pw", u"aes256", internal},
            {"11.tar", u"all", u"pw", u"aes128", internal},
            {"12.zip", u"all", u"pw", u"aes128", "no error"},
            {"13.zip", u"foo", u"pw", u"traditional", "no error"},
        };
    for (const auto& [archive, format, password, method, expected] : cases) {
        EXPECT_EQ(outcome([&] {
                      createArchive(u16(dir / archive), {u16(dir / "a.txt")}, {u"a.txt"}, format,
                                    password, method);
                  }),
                  expected)
            << archive;
        // Passwords are checked before the archive file is opened.
        EXPECT_EQ(fs::exists(dir / archive), expected == "no error") << archive;
    }
}

TEST(CreateArchiveNames, SlashesEmptyNamesAndCounts) {
    TempDir dir;
    writeFile(dir / "f.txt", "content");
    writeFile(dir / "d/inner.txt", "not listed");
    const auto f = u16(dir / "f.txt");
    const Names files = {u16(dir / "d"), u16(dir / "d"), f, f, f};
    const Names names = {u"d/", u"e//", u"f/", u"g", u"", u"ignored extra name"};
    // Tar formats drop one trailing slash from the names they return; zip keeps them. A
    // file named like a folder would lose its content: skipped with the family's warning.
    const std::vector<std::tuple<const char*, const char16_t*, Names, std::string>> cases = {
        {"a.zip", u"zip", {u"d/", u"e//", u"g"}, "TESSEL:zip:openEntryError"},
        {"a.tar", u"tar", {u"d", u"e/", u"g"}, "TESSEL:tar:openEntryError"},
        {"a.tgz", u"tgz", {u"d", u"e/", u"g"}, "TESSEL:tar:openEntryError"},
        {"b.tar", u"all", {u"d/", u"e//", u"g"}, "TESSEL:io:archive:createArchive:openEntryError"},
    };
    for (const auto& [archive, format, returned, warning] : cases) {
        tessel::host::WarningCapture warnings;
        EXPECT_EQ(createArchive(u16(dir / archive), files, names, format), returned) << archive;
        EXPECT_EQ(warningsOf(warnings), warning + "(" + utf8(f) + ")");
        // A folder is one entry: its content is the caller's to list.
        EXPECT_EQ(listing(dir / archive), "d/\ne//\ng\n") << archive;
    }
    for (const char* archive : {"e.zip", "e.tar", "e.tgz"}) {
        EXPECT_TRUE(createArchive(u16(dir / archive), {}, {}, u"all").empty());
        EXPECT_EQ(listing(dir / archive), "") << archive;
    }
}

// An input its owner may not read is skipped with the warning of the archive's family.
// checkReadable looks at the owner-read bit, so root skips it as well as nobody does.
TEST(CreateArchiveUnreadableInput, SkippedWithTheFamilyWarning) {
    const std::vector<std::tuple<const char*, const char16_t*, std::string>> cases = {
        {"a.zip", u"zip", "TESSEL:zip:openEntryError"},
        {"a.tar", u"tar", "TESSEL:tar:openEntryError"},
        {"a.tgz", u"tgz", "TESSEL:tar:openEntryError"},
        {"b.zip", u"all", "TESSEL:io:archive:createArchive:openEntryError"},
        {"c.zip", u"other", "TESSEL:io:archive:createArchive:openEntryError"},
        {"a.gz", u"gz", ""},  // strict: an error
    };
    for (const bool asNobody : {false, true}) {
        TempDir dir;
        fs::permissions(dir.path(), fs::perms(0777));
        writeFile(dir / "ok.txt", "ok");
        writeFile(dir / "locked.txt", "locked");
        fs::permissions(dir / "locked.txt", fs::perms(0044));
        const auto body = [&] {
            std::string report;
            for (const auto& [archive, format, warning] : cases) {
                tessel::host::WarningCapture warnings;
                const std::string error = outcome([&] {
                    createArchive(u16(dir / archive),
                                  {u16(dir / "locked.txt"), u16(dir / "ok.txt")},
                                  {u"locked.txt", u"ok.txt"}, format);
                });
                report += error + "|" + warningsOf(warnings) + "|" +
                          (warning.empty() ? "" : listing(dir / archive));
            }
            return report;
        };
        std::string expected;
        for (const auto& [archive, format, warning] : cases) {
            expected += warning.empty() ? std::string(kInternalError) + "()||"
                                        : "no error|" + warning + "(" +
                                              (dir / "locked.txt").string() + ")|ok.txt\n";
        }
        EXPECT_EQ(asNobody ? runInChild(body, dropPrivileges) : body(), expected);
    }
}

// A failure in the middle of the list keeps the archive, closed, with the entries written
// before it.
TEST(CreateArchivePartial, EntriesBeforeTheFailureStayReadable) {
    TempDir dir;
    writeFile(dir / "one.txt", "1");
    writeFile(dir / "two.bin", randomBytes(50000));
    for (const char* format : {"zip", "tar", "tgz"}) {
        const fs::path archive = dir / (std::string("p.") + format);
        EXPECT_EQ(outcome([&] {
                      createArchive(u16(archive),
                                    {u16(dir / "one.txt"), u16(dir / "two.bin"), u16(dir / "gone")},
                                    {u"one.txt", u"two.bin", u"gone"}, u16(std::string(format)));
                  }),
                  std::string(kInternalError) + "()");
        EXPECT_EQ(runCommand("bsdtar -xOf " + shellQuote(archive.string()) + " two.bin").output,
                  randomBytes(50000))
            << format;
        EXPECT_EQ(listing(archive), "one.txt\ntwo.bin\n") << format;
    }
}

}  // namespace
}  // namespace tqtest
