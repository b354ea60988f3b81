// What createArchive does with bad input and unreadable inputs: a clear, identified
// error or warning, and the partial archive kept as it was.
#include <gtest/gtest.h>

#include <archive/core/archivecore.hpp>
#include <host/WarningCapture.hpp>

#include "../support/TestSupport.hpp"
#include "CreateTestSupport.hpp"

namespace core = tessel::io::archive::core;

namespace tqtest {
namespace {

constexpr const char* kInternalError = "TESSEL:io:archive:extractArchive:internalError";

std::string listing(const fs::path& archive) {
    const auto result = runCommand("bsdtar -tf " + shellQuote(archive.string()));
    return result.status == 0 ? result.output : "unreadable: " + result.output;
}

TEST(CreateArchiveBadInput, FailsWithAnIdentifiedError) {
    TempDir dir;
    writeFile(dir / "a.txt", "a");
    fs::create_directories(dir / "folder");
    const std::u16string a = u16(dir / "a.txt");
    const std::u16string missing = u16(dir / "missing.txt");
    struct Case {
        const char* label;
        std::u16string archive;
        std::vector<std::u16string> files;
        std::vector<std::u16string> names;
        std::u16string format;
        std::string identifier;
        std::vector<std::string> arguments;
    };
    const std::vector<Case> cases = {
        {"empty archive path",
         u"",
         {a},
         {u"a.txt"},
         u"zip",
         "TESSEL:io:archive:zip:openError",
         {""}},
        {"archive path is a folder",
         u16(dir / "folder"),
         {a},
         {u"a.txt"},
         u"tar",
         "TESSEL:io:archive:tar:openError",
         {(dir / "folder").string()}},
        {"archive in a missing folder",
         u16(dir / "no/x.tgz"),
         {a},
         {u"a.txt"},
         u"tgz",
         "TESSEL:io:archive:tar:openError",
         {(dir / "no/x.tgz").string()}},
        {"missing folder, by extension",
         u16(dir / "no/x.zip"),
         {a},
         {u"a.txt"},
         u"all",
         kInternalError,
         {}},
        {"unknown extension with all",
         u16(dir / "x.rar"),
         {a},
         {u"a.txt"},
         u"all",
         kInternalError,
         {}},
        {"missing input", u16(dir / "m.zip"), {missing}, {u"m.txt"}, u"zip", kInternalError, {}},
        {"empty input path", u16(dir / "e.tar"), {u""}, {u"e.txt"}, u"tar", kInternalError, {}},
        {"fewer names than files",
         u16(dir / "f.zip"),
         {a, a, a},
         {u"a.txt"},
         u"zip",
         "TESSEL:io:archive:createArchive:entryNameCountMismatch",
         {"3", "1"}},
        {"gz of two files", u16(dir / "two.gz"), {a, a}, {u"a", u"b"}, u"gz", kInternalError, {}},
    };
    for (const auto& c : cases) {
        tessel::host::WarningCapture warnings;
        const auto raised =
            raisedBy([&] { core::createArchive(c.archive, c.files, c.names, c.format); });
        ASSERT_TRUE(raised) << c.label;
        EXPECT_EQ(raised->identifier, c.identifier) << c.label;
        EXPECT_EQ(raised->arguments, c.arguments) << c.label;
    }
    EXPECT_FALSE(fs::exists(dir / "f.zip")) << "refused before the archive was created";
}

TEST(CreateArchiveBadInput, PasswordAndFormatCombinations) {
    TempDir dir;
    writeFile(dir / "a.txt", "a");
    struct Case {
        const char* archive;
        const char16_t* format;
        const char16_t* password;
        const char16_t* method;
        const char* identifier;  // null: succeeds
    };
    const Case cases[] = {
        {"1.zip", u"zip", u"", u"zipcrypt", "TESSEL:io:archive:createArchive:emptyPassword"},
        {"2.zip", u"foo", u"", u"zipcrypt", "TESSEL:io:archive:createArchive:invalidArchiveFormat"},
        {"3.zip", u"zip", u"pw", u"rot13",
         "TESSEL:io:archive:createArchive:invalidEncryptionInLinux"},
        {"4.zip", u"zip", u"pw", u"", "TESSEL:io:archive:createArchive:invalidEncryptionInLinux"},
        {"5.zip", u"foo", u"pw", u"rot13", "TESSEL:io:archive:createArchive:invalidArchiveFormat"},
        {"6.zip", u"all", u"", u"zipcrypt", kInternalError},
        {"7.tar", u"tar", u"pw", u"zipcrypt", kInternalError},
        {"8.tar", u"tar", u"", u"zipcrypt", kInternalError},
        {"9.tgz", u"tgz", u"pw", u"aes256", kInternalError},
        {"10.gz", u"gz", u"pw", u"aes256", kInternalError},
        {"11.tar", u"all", u"pw", u"aes128", kInternalError},
        {"12.zip", u"all", u"pw", u"aes128", nullptr},
        {"13.zip", u"foo", u"pw", u"traditional", nullptr},
    };
    for (const auto& c : cases) {
        const fs::path archive = dir / c.archive;
        const auto raised = raisedBy([&] {
            core::createArchive(u16(archive), {u16(dir / "a.txt")}, {u"a.txt"}, c.format,
                                c.password, c.method);
        });
        if (c.identifier == nullptr) {
            EXPECT_FALSE(raised) << c.archive << ": " << raised->identifier;
            EXPECT_EQ(listing(archive), "a.txt\n") << c.archive;
            continue;
        }
        ASSERT_TRUE(raised) << c.archive;
        EXPECT_EQ(raised->identifier, c.identifier) << c.archive;
        EXPECT_TRUE(raised->arguments.empty()) << c.archive;
        // The password is checked before the archive file is opened.
        EXPECT_FALSE(fs::exists(archive)) << c.archive;
    }
}

// Names ending in a slash: tar formats return them without it, zip keeps it; a regular
// file given such a name still gets its content stored.
TEST(CreateArchiveNames, TrailingSlashPerFormat) {
    TempDir dir;
    writeFile(dir / "f.txt", "content");
    fs::create_directories(dir / "d");
    const std::vector<std::u16string> files = {u16(dir / "d"), u16(dir / "d"), u16(dir / "f.txt")};
    const std::vector<std::u16string> names = {u"d/", u"e//", u"f/"};
    struct Case {
        const char* archive;
        const char16_t* format;
        std::vector<std::u16string> returned;
    };
    const Case cases[] = {
        {"a.zip", u"zip", {u"d/", u"e//", u"f/"}},
        {"a.tar", u"tar", {u"d", u"e/", u"f"}},
        {"a.tgz", u"tgz", {u"d", u"e/", u"f"}},
        {"b.tar", u"all", {u"d/", u"e//", u"f/"}},
    };
    for (const auto& c : cases) {
        tessel::host::WarningCapture warnings;
        std::vector<std::u16string> written;
        const auto raised = raisedBy(
            [&] { written = core::createArchive(u16(dir / c.archive), files, names, c.format); });
        EXPECT_FALSE(raised) << c.archive << ": " << (raised ? raised->identifier : "");
        EXPECT_EQ(written, c.returned) << c.archive;
        EXPECT_NE(listing(dir / c.archive).find("d/"), std::string::npos) << c.archive;
    }
}

TEST(CreateArchiveNames, EmptyNameSkipsTheInputAndEmptyListMakesEmptyArchive) {
    TempDir dir;
    writeFile(dir / "a.txt", "a");
    writeFile(dir / "b.txt", "b");
    EXPECT_EQ(core::createArchive(u16(dir / "x.zip"), {u16(dir / "a.txt"), u16(dir / "b.txt")},
                                  {u"", u"b.txt"}, u"zip"),
              std::vector<std::u16string>{u"b.txt"});
    EXPECT_EQ(listing(dir / "x.zip"), "b.txt\n");
    // More names than files: the extra names are ignored.
    EXPECT_EQ(
        core::createArchive(u16(dir / "y.tar"), {u16(dir / "a.txt")}, {u"a.txt", u"extra"}, u"tar"),
        std::vector<std::u16string>{u"a.txt"});

    for (const char* name : {"e.zip", "e.tar", "e.tgz"}) {
        const fs::path archive = dir / name;
        EXPECT_TRUE(core::createArchive(u16(archive), {}, {}, u"all").empty());
        EXPECT_EQ(listing(archive), "") << name;
    }
}

// A folder input is one folder entry; its content is the caller's to list.
TEST(CreateArchiveNames, FolderIsOneEntry) {
    TempDir dir;
    writeFile(dir / "d/inner.txt", "x");
    EXPECT_EQ(core::createArchive(u16(dir / "d.tgz"), {u16(dir / "d")}, {u"d/"}, u"tgz"),
              std::vector<std::u16string>{u"d"});
    EXPECT_EQ(listing(dir / "d.tgz"), "d/\n");
}

// An input its owner may not read is skipped with the warning of the archive's family;
// the other inputs are written. checkReadable looks at the owner-read bit, so this holds
// for root as well as for an unprivileged user.
TEST(CreateArchiveUnreadableInput, SkippedWithTheFamilyWarning) {
    struct Case {
        const char* archive;
        const char16_t* format;
        const char* warning;
    };
    const Case cases[] = {
        {"a.zip", u"zip", "TESSEL:zip:openEntryError"},
        {"a.tar", u"tar", "TESSEL:tar:openEntryError"},
        {"a.tgz", u"tgz", "TESSEL:tar:openEntryError"},
        {"b.zip", u"all", "TESSEL:io:archive:createArchive:openEntryError"},
        {"c.zip", u"other", "TESSEL:io:archive:createArchive:openEntryError"},
    };
    for (const bool unprivileged : {false, true}) {
        TempDir dir;
        fs::permissions(dir.path(), fs::perms(0777));
        writeFile(dir / "ok.txt", "ok");
        writeFile(dir / "locked.txt", "locked");
        fs::permissions(dir / "locked.txt", fs::perms(0044));
        const auto body = [&]() -> std::string {
            std::string report;
            for (const auto& c : cases) {
                tessel::host::WarningCapture warnings;
                const auto written = core::createArchive(
                    u16(dir / c.archive), {u16(dir / "locked.txt"), u16(dir / "ok.txt")},
                    {u"locked.txt", u"ok.txt"}, c.format);
                report += std::string(c.archive) + ":" + utf8(written.at(0)) + ":" +
                          std::to_string(written.size()) + ":";
                for (const auto& warning : warnings.warnings()) {
                    report += warning.identifier + "(" + warning.arguments.at(0) + ")";
                }
                report += ":" + listing(dir / c.archive);
            }
            return report;
        };
        const std::string report = unprivileged ? runInChild(body, dropPrivileges) : body();
        std::string expected;
        for (const auto& c : cases) {
            expected += std::string(c.archive) + ":ok.txt:1:" + c.warning + "(" +
                        (dir / "locked.txt").string() + "):ok.txt\n";
        }
        EXPECT_EQ(report, expected) << (unprivileged ? "as nobody" : "as root");
    }
}

// The raw format takes regular files only: a folder's header is refused with the neutral
// warning, and nothing is compressed.
TEST(CreateArchiveBadInput, GzOfAFolderWarns) {
    TempDir dir;
    fs::create_directories(dir / "folder");
    tessel::host::WarningCapture warnings;
    core::createArchive(u16(dir / "d.gz"), {u16(dir / "folder")}, {u"folder"}, u"gz");
    ASSERT_EQ(warnings.warnings().size(), 1u);
    EXPECT_EQ(warnings.warnings()[0].identifier, "TESSEL:io:archive:createArchive:openEntryError");
    EXPECT_EQ(warnings.warnings()[0].arguments, std::vector<std::string>{"folder"});
    EXPECT_EQ(runCommand("gzip -dc " + shellQuote((dir / "d.gz").string())).output, "");
}

// Strict for "gz": the unreadable input ends the call.
TEST(CreateArchiveUnreadableInput, ErrorForGz) {
    TempDir dir;
    writeFile(dir / "locked.txt", "locked");
    fs::permissions(dir / "locked.txt", fs::perms(0));
    const auto raised = raisedBy([&] {
        core::createArchive(u16(dir / "x.gz"), {u16(dir / "locked.txt")}, {u"locked.txt"}, u"gz");
    });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, kInternalError);
}

// A failure in the middle of the list ends the call and keeps the archive, closed, with
// the entries written before the failure.
TEST(CreateArchivePartial, EntriesBeforeTheFailureStayReadable) {
    for (const char* name : {"p.zip", "p.tar", "p.tgz"}) {
        TempDir dir;
        writeFile(dir / "one.txt", "1");
        writeFile(dir / "two.bin", randomBytes(50000));
        const fs::path archive = dir / name;
        const std::string format = fs::path(name).extension().string().substr(1);
        const auto raised = raisedBy([&] {
            core::createArchive(u16(archive),
                                {u16(dir / "one.txt"), u16(dir / "two.bin"), u16(dir / "gone.txt"),
                                 u16(dir / "one.txt")},
                                {u"one.txt", u"two.bin", u"gone.txt", u"three.txt"}, u16(format));
        });
        ASSERT_TRUE(raised) << name;
        EXPECT_EQ(raised->identifier, kInternalError) << name;
        EXPECT_EQ(listing(archive), "one.txt\ntwo.bin\n") << name;
        fs::create_directories(dir / "out");
        ASSERT_EQ(runCommand("bsdtar -xf " + shellQuote(archive.string()) + " -C " +
                             shellQuote((dir / "out").string()))
                      .status,
                  0);
        EXPECT_EQ(readFile(dir / "out/two.bin"), randomBytes(50000)) << name;
    }
}

}  // namespace
}  // namespace tqtest
