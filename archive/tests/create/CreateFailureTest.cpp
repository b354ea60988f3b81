// Bad input, odd names, unreadable inputs and failures in the middle of a list: a clear,
// identified error or warning, and what each call leaves on disk.
#include <gtest/gtest.h>

#include <unistd.h>

#include <map>

#include "../support/LogCapture.hpp"
#include "CreateTestSupport.hpp"

namespace tqtest {
namespace {

namespace core = tessel::io::archive::core;

// Runs as root and as nobody: checkReadable looks at the owner-read bit, so an input
// without it is refused to both.
TEST(CreateInput, IdentifiedOutcomesAndWhatIsLeft) {
    const std::vector<std::string> a = {"a.txt"}, l = {"locked.txt", "ok.txt"},
                                   p = {"one.txt", "two.bin", "gone"},
                                   s = {"d", "d", "a.txt", "a.txt", "a.txt"},
                                   sn = {"d/", "e//", "f/", "g", "", "ignored extra name"};
    const std::string zip = "TESSEL:io:archive:zip:", tar = "TESSEL:io:archive:tar:",
                      ca = "TESSEL:io:archive:createArchive:", gz = "TESSEL:io:archive:gzip:",
                      skipped = "openEntryError(@/locked.txt)", partial = "[one.txt,two.bin]";
    const std::vector<Call> calls = {
        {"", a, a, "zip", zip + "openError()"},
        {"d", a, a, "tar", tar + "openError(@/d)"},
        {"no/x.tgz", a, a, "tgz", tar + "openError(@/no/x.tgz)"},
        {"no/x.zip", a, a, "all", kInternal},
        {"x.rar", a, a, "all", kInternal},
        {"m.zip", {"missing"}, {"m"}, "zip", kInternal + " m.zip[]"},
        {"m.tar", {"missing"}, {""}, "tar", kInternal + " m.tar[]"},  // even without a name
        {"e.tar", {""}, {"e"}, "tar", kInternal + " e.tar[]"},
        {"two.gz",
         {"a.txt", "a.txt"},
         {"a", "b"},
         "gz",
         kInternal + " +" + ca + "openEntryError(b) two.gz"},
        // The raw format takes one regular file; a refused header still returns its name.
        {"d.gz", {"d"}, {"d"}, "gz", "ok(d) +" + ca + "openEntryError(d) d.gz[]"},
        // Name counts, passwords and methods are checked before the archive exists.
        {"f.zip", {"a.txt", "a.txt", "a.txt"}, {"a"}, "zip", ca + "entryNameCountMismatch(3,1)"},
        {"1.zip", a, a, "zip", ca + "emptyPassword()", "", "zipcrypt"},
        {"2.zip", a, a, "foo", ca + "invalidArchiveFormat()", "", "zipcrypt"},
        {"3.zip", a, a, "zip", ca + "invalidEncryptionInLinux()", "pw", "rot13"},
        {"4.zip", a, a, "zip", ca + "invalidEncryptionInLinux()", "pw", ""},
        {"5.zip", a, a, "foo", ca + "invalidArchiveFormat()", "pw", "rot13"},
        {"6.zip", a, a, "all", kInternal, "", "zipcrypt"},
        {"7.tar", a, a, "tar", kInternal, "pw", "zipcrypt"},
        {"8.tar", a, a, "tar", kInternal, "", "zipcrypt"},
        {"9.tgz", a, a, "tgz", kInternal, "pw", "aes256"},
        {"10.gz", a, a, "gz", kInternal, "pw", "aes256"},
        {"11.tar", a, a, "all", kInternal, "pw", "aes128"},
        {"12.zip", a, a, "all", "ok(a.txt) 12.zip[a.txt]", "pw", "aes128"},
        {"13.zip", a, a, "foo", "ok(a.txt) 13.zip[a.txt]", "pw", "traditional"},
        // Tar formats drop one trailing slash from the names they return; zip keeps them. A
        // file named like a folder would lose its content: skipped with the family's
        // warning. A folder is one entry: its content is the caller's to list.
        {"s.zip", s, sn, "zip", "ok(d/,e//,g) +TESSEL:zip:openEntryError(@/a.txt) s.zip[d/,e//,g]"},
        {"s.tar", s, sn, "tar", "ok(d,e/,g) +TESSEL:tar:openEntryError(@/a.txt) s.tar[d/,e//,g]"},
        {"s.tgz", s, sn, "tgz", "ok(d,e/,g) +TESSEL:tar:openEntryError(@/a.txt) s.tgz[d/,e//,g]"},
        {"t.tar", s, sn, "all", "ok(d/,e//,g) +" + ca + "openEntryError(@/a.txt) t.tar[d/,e//,g]"},
        {"e.zip", {}, {}, "all", "ok() e.zip[]"},
        {"e.tgz", {}, {}, "tgz", "ok() e.tgz[]"},
        // An input its owner may not read is skipped with the family's warning...
        {"l.zip", l, l, "zip", "ok(ok.txt) +TESSEL:zip:" + skipped + " l.zip[ok.txt]"},
        {"l.tar", l, l, "tar", "ok(ok.txt) +TESSEL:tar:" + skipped + " l.tar[ok.txt]"},
        {"l.tgz", l, l, "tgz", "ok(ok.txt) +TESSEL:tar:" + skipped + " l.tgz[ok.txt]"},
        {"l2.zip", l, l, "all", "ok(ok.txt) +" + ca + skipped + " l2.zip[ok.txt]"},
        {"l3.zip", l, l, "other", "ok(ok.txt) +" + ca + skipped + " l3.zip[ok.txt]"},
        // ...and an error for gzip, which removes that input's output.
        {"l.gz", l, l, "gz", kInternal + " l.gz[]"},
        {"", l, {}, "", gz + "javaOpenError(@/locked.txt)"},
        {"", {"one.txt", "gone.txt"}, {}, "", gz + "javaOpenError(@/gone.txt) one.txt.gz"},
        {".", {""}, {}, "", gz + "javaOpenError()"},
        {"missing", {"one.txt"}, {}, "", gz + "javaOutputOpenError(@/missing/one.txt.gz)"},
        {"o", {"one.txt"}, {}, "", gz + "javaOutputOpenError(@/o/one.txt.gz)"},
        // A failure in the middle of the list keeps the archive with the entries before it.
        {"p.zip", p, p, "zip", kInternal + " p.zip" + partial},
        {"p.tar", p, p, "tar", kInternal + " p.tar" + partial},
        {"p.tgz", p, p, "tgz", kInternal + " p.tgz" + partial},
    };
    for (const bool asNobody : {false, true}) {
        TempDir dir;
        fs::permissions(dir.path(), fs::perms(0777));
        for (const auto& [name, bytes] :
             std::map<std::string, std::string>{{"a.txt", "a"},
                                                {"d/inner.txt", "not listed"},
                                                {"locked.txt", "locked"},
                                                {"ok.txt", "ok"},
                                                {"one.txt", "1"},
                                                {"two.bin", randomBytes(50000)}}) {
            writeFile(dir / name, bytes);
        }
        fs::permissions(dir / "locked.txt", fs::perms(0044));
        fs::create_directories(dir / "o/one.txt.gz");
        const auto body = [&] {
            std::string report;
            for (const auto& call : calls) {
                report += run(call, dir.path(), dir.path()) + "\n";
            }
            return report;
        };
        std::string expected;
        for (const auto& call : calls) {
            expected += call.expected + "\n";
        }
        EXPECT_EQ(asNobody ? runInChild(body, dropPrivileges) : body(), expected);
        for (const char* archive : {"p.zip", "p.tar", "p.tgz"}) {
            const auto path = shellQuote((dir / archive).string());
            EXPECT_EQ(runCommand("bsdtar -xOf " + path + " two.bin").output, randomBytes(50000));
        }
    }
}

TEST(CreateLog, RecordsOfARelativeArchiveAndOfAFailure) {
    TempDir dir;
    writeFile(dir / "in/é.txt", "x");
    writeFile(dir / "locked", "locked");
    fs::permissions(dir / "locked", fs::perms(0044));
    std::string records = runInChild([&] {
        LogCapture capture;
        if (chdir(dir.path().c_str()) != 0) {
            return std::string("chdir failed");
        }
        core::createArchive(u"out.zip", {u"in/é.txt"}, {u"entry 日.txt"}, u"zip", u"pw", u"aes256");
        // The evidence comes before the error; the output opened for the input is deleted.
        raisedBy([&] { core::compressgz({u"gone"}, u""); });
        raisedBy([&] { core::compressgz({u"locked"}, u""); });
        std::string text;
        for (const auto& record : capture.records()) {
            text += std::to_string(record.severity) + " " + record.message + "; ";
        }
        return text;
    });
    for (std::size_t pos; (pos = records.find(dir.path().string())) != std::string::npos;) {
        records.replace(pos, dir.path().string().size(), "@");
    }
    EXPECT_EQ(records,
              "1 Password set to create a password-protected archive.; 1 Encryption method used "
              "to create a password-protected archive-->aes256; 4 Opened archive file for "
              "creating destination archive on disk-->@/out.zip; 4 Opened file on disk for "
              "reading-->in/é.txt; 1 Read entry from file on disk-->in/é.txt; 1 Wrote entry to "
              "destination archive-->entry 日.txt; 512 [INTERNAL ERROR MESSAGE]: [archive_err]: "
              "Could not open file.; 4 Opened file on disk for reading-->locked; 4 Opened "
              "archive file for creating destination archive on disk-->@/locked.gz; 512 "
              "[INTERNAL ERROR MESSAGE]: [archive_err]: Unknown error. This should not be hit. "
              "Zorp it!; 1 Successfully deleted archive file from disk-->@/locked.gz; ");
}

}  // namespace
}  // namespace tqtest
