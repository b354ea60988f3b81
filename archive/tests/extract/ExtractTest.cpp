// extractArchive and sampleReadWithPassword (and uncompressgz where a case holds for both)
// on archives that real tools make at test time. Each call is reduced to one line of text
// (see outcome), so that one comparison states everything a call did: what it returned,
// warned, raised and left.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include <host/HostError.hpp>
#include <host/TextConversion.hpp>

#include "../support/LogCapture.hpp"
#include "../support/Outcomes.hpp"
#include "../support/TestSupport.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

// A fresh folder per test, and one-line descriptions of what calls did there.
struct ExtractTest : ::testing::Test {
    using Call = std::function<Paths()>;

    // Writes a zip or tar archive (by its extension) in the folder with Python's zipfile or
    // tarfile from name, content, name, content...; in a zip a name ending in "/" is a folder.
    void writeWithPython(const std::string& archive,
                         const std::vector<std::string>& namesAndContents) const {
        std::string command =
            "python3 -c 'import sys,io,zipfile,tarfile\n"
            "a=sys.argv[1]; es=list(zip(sys.argv[2::2],[c.encode() for c in sys.argv[3::2]]))\n"
            "if a.endswith(\".zip\"):\n"
            " with zipfile.ZipFile(a,\"w\") as z: [z.writestr(n,c) for n,c in es]\n"
            "else:\n"
            " with tarfile.open(a,\"w\") as t:\n"
            "  for n,c in es: i=tarfile.TarInfo(n); i.size=len(c); t.addfile(i,io.BytesIO(c))' " +
            shellQuote(archive);
        for (const std::string& item : namesAndContents) {
            command += " " + shellQuote(item);
        }
        sh(dir.path(), command + " 2>/dev/null");  // zipfile warns of duplicate names
    }

    // The outcome of a call, with this folder as "~". Given a folder, " | " and its short
    // listing after the call follow.
    std::string outcomeHere(const Call& call, const fs::path& listed = {}) const {
        const std::string said = outcome(call, {});  // before the listing: the call runs here
        return shown(said + (listed.empty() ? "" : " | " + shortListing(listed)), dir.path());
    }

    // Extracts an archive in the folder into a subfolder of it; the format "gz" decompresses
    // a gzip file into it instead.
    Call extracting(const std::string& archive, const std::string& out,
                    const std::u16string& format, const std::string& password = "") const {
        const std::u16string from = u16(dir / archive), to = u16(dir / out);
        return [=] {
            return format == u"gz" ? core::uncompressgz({from}, to, false)
                                   : core::extractArchive(from, to, format, u16(password));
        };
    }

    // The outcome of that, with the subfolder's short listing.
    std::string extract(const std::string& archive, const std::string& out,
                        const std::u16string& format, const std::string& password = "") const {
        return outcomeHere(extracting(archive, out, format, password), dir / out);
    }

    TempDir dir;
};

// Archives written by other tools come back byte for byte, with folders, symlinks, modes
// and times, and the returned list follows archive order.
struct ToolCase {
    std::string label;
    std::string command;  // packs the folder top into the archive named after it
    std::string format;   // the format text extraction is given
};

void PrintTo(const ToolCase& tool, std::ostream* os) {
    *os << tool.label << ": \"" << tool.command << "\" read as " << tool.format;
}

class Interoperability : public ExtractTest, public ::testing::WithParamInterface<ToolCase> {};

TEST_P(Interoperability, ExtractsWhatTheToolPacked) {
    const auto& [label, command, format] = GetParam();
    REQUIRE_TOOLS(command, "bsdtar");
    writeFile(dir / "src/top/sub/b.bin", randomBytes(70000, 7));
    sh(dir.path(),
       "cd src && printf 'alpha\\nbeta\\n' > top/a.txt && mkdir top/sub/empty && : > top/zero.dat "
       "&& ln -s sub/b.bin top/link && chmod 750 top && chmod 640 top/a.txt && chmod 755 top/sub "
       "top/sub/b.bin && chmod 700 top/sub/empty && chmod 600 top/zero.dat && touch -h -d "
       "@981173106 $(find top) && " +
           command + " ../archive.bin top");
    // Archive order as bsdtar lists it; folders carry one trailing separator.
    const std::string names =
        sh(dir.path(),
           "bsdtar -tf archive.bin | while read -r n; do [ -d \"src/$n\" ] && [ ! -L \"src/$n\" ] "
           "&& n=\"${n%/}/\"; printf ' ~/out/%s' \"$n\"; done");
    EXPECT_EQ(extract("archive.bin", "out", u16(format)),
              names.substr(1) + " | " + shortListing(dir / "src"));
    // Links, then permission bits, times and bytes of everything else, as find and md5sum
    // see them.
    const std::string describe =
        " && (find top -type l -printf '%p -> %l\\n' -o -printf '%p %m %Ts\\n'; "
        "find top -type f -exec md5sum {} +) | sort";
    EXPECT_EQ(sh(dir.path(), "cd out" + describe), sh(dir.path(), "cd src" + describe));
}

INSTANTIATE_TEST_SUITE_P(
    Tools, Interoperability,
    ::testing::Values(
        ToolCase{.label = "zip_store", .command = "zip -q -r -y -0", .format = "zip"},
        ToolCase{.label = "zip_deflate", .command = "zip -q -r -y", .format = "zip"},
        ToolCase{.label = "zip_zip64", .command = "zip -q -r -y -fz", .format = "zip"},
        ToolCase{.label = "gnutar_gnu", .command = "tar --format=gnu -cf", .format = "tar"},
        ToolCase{.label = "gnutar_ustar", .command = "tar --format=ustar -cf", .format = "tar"},
        ToolCase{.label = "gnutar_pax", .command = "tar --format=pax -cf", .format = "tar"},
        ToolCase{.label = "gnutar_v7", .command = "tar --format=v7 -cf", .format = "tar"},
        ToolCase{.label = "gnutar_gzip", .command = "tar czf", .format = "tgz"},
        ToolCase{.label = "bsdtar_tar", .command = "bsdtar -cf", .format = "tar"},
        ToolCase{.label = "bsdtar_tgz_as_all", .command = "bsdtar -czf", .format = "all"},
        ToolCase{.label = "bsdtar_zip", .command = "bsdtar --format zip -cf", .format = "zip"}),
    [](const auto& info) { return info.param.label; });

// Entry names no ordinary tool writes (made with Python's zipfile and tarfile). One trailing
// carriage return is dropped with a warning; a name that is nothing else is empty then,
// which ends the call (and, unlike other failures, removes nothing).
TEST_F(ExtractTest, CarriageReturnAbsoluteAndDotDotNames) {
    REQUIRE_TOOLS("python3");
    for (const std::string archive : {"cr.zip", "cr.tar"}) {
        writeWithPython(archive, {"a.txt\r", "A", "b.txt", "B", "\r", "x"});
        EXPECT_EQ(extract(archive, "out-" + archive, u"all"),
                  "?extractArchive:removeControlM(a.txt) ?extractArchive:removeControlM() "
                  "!extractArchive:emptyEntryFilename(tar;~/" +
                      archive + ") | a.txt=A b.txt=B");
    }
    // Absolute names are re-rooted and ".." is kept; without an output folder (or with ".")
    // names are relative to the current folder.
    writeWithPython("names.tar", {"/etc/x", "abs", "../evil.txt", "up", "rel/y", "rel"});
    EXPECT_EQ(outcomeHere(extracting("names.tar", "x/out", u"tar"), dir / "x"),
              "~/x/out/etc/x ~/x/out/../evil.txt ~/x/out/rel/y | evil.txt=up out/ out/etc/ "
              "out/etc/x=abs out/rel/ out/rel/y=rel");
    for (const std::string folder : {"", "."}) {
        fs::create_directories(dir / ("cwd" + folder) / "in");
        const auto here = enter(dir / ("cwd" + folder) / "in");
        const auto call = [&] {
            return core::extractArchive(u16(dir / "names.tar"), u16(folder), u"tar", u"");
        };
        EXPECT_EQ(
            outcomeHere(call, dir / ("cwd" + folder)),
            "etc/x ../evil.txt rel/y | evil.txt=up in/ in/etc/ in/etc/x=abs in/rel/ in/rel/y=rel");
    }
}

TEST_F(ExtractTest, DuplicatesAndTheNamedSubset) {
    REQUIRE_TOOLS("python3");
    writeWithPython("dup.zip", {"a.txt", "a", "b.txt", "first", "c.txt", "c", "b.txt", "second",
                                "d/", "", "d/e.txt", "e"});
    // All entries: the later duplicate replaces the earlier one, both are listed.
    EXPECT_EQ(extract("dup.zip", "all", u"zip"),
              "~/all/a.txt ~/all/b.txt ~/all/c.txt ~/all/b.txt ~/all/d/ ~/all/d/e.txt | "
              "a.txt=a b.txt=second c.txt=c d/ d/e.txt=e");
    // Named: the first match wins, and reading stops once every distinct name is done.
    struct Subset {
        std::vector<std::string> names;
        std::string extracted;  // the outcome | what the folder holds
        long headersRead;
    };
    const std::vector<Subset> cases = {
        {.names = {"b.txt", "b.txt"}, .extracted = "~/s/b.txt | b.txt=first", .headersRead = 3},
        {.names = {"d/", "missing.txt", "a.txt"},
         .extracted = "~/s/a.txt ~/s/d/ | a.txt=a d/",
         .headersRead = 6},
        {.names = {}, .extracted = " | ", .headersRead = 1},
    };
    for (const auto& [names, extracted, headersRead] : cases) {
        fs::remove_all(dir / "s");
        LogCapture log;
        const auto call = [&, &names = names] {
            return core::extractArchive(u16(dir / "dup.zip"), u16(dir / "s"), u"zip",
                                        u16list(names), u"");
        };
        const std::string result = outcomeHere(call, dir / "s");
        const auto headers = std::ranges::count_if(log.messages(), [](const std::string& m) {
            return m.starts_with("Opened entry file to read from source archive-->");
        });
        EXPECT_EQ(result, extracted) << join(names, ", ");
        EXPECT_EQ(headers, headersRead) << "headers read for " << join(names, ", ");
    }
}

// Damaged and foreign input, read as each format text: every case ends in the identifier
// the translation table gives, never a crash, a hang or a silent success, and whatever
// stays behind is a complete file.
TEST_F(ExtractTest, HostileInputGivesItsIdentifierAndLeavesOnlyCompleteFiles) {
    REQUIRE_TOOLS("zip", "tar");
    writeFile(dir / "src/f1.bin", randomBytes(20000, 4));
    writeFile(dir / "src/f2.txt", "second\n");
    sh(dir.path(),
       "cd src && zip -q ../s.zip f1.bin f2.txt && tar --format=gnu -cf ../s.tar f1.bin f2.txt && "
       "tar czf ../s.tgz f1.bin f2.txt");
    const std::string zip = readFile(dir / "s.zip"), tar = readFile(dir / "s.tar"),
                      tgz = readFile(dir / "s.tgz");
    const auto overwrite = [](std::string bytes, std::size_t at, const std::string& with) {
        return bytes.replace(at, with.size(), with);
    };
    // What reading the input as each format text gives: the identified failure (with the
    // input as its argument), or the number of paths returned when nothing else happened.
    struct ReadAs {
        std::string zip, tar, tgz, all;
    };
    struct Hostile {
        std::string label, bytes;
        ReadAs readAs;
    };
    const std::string zipError = "invalidZipFile", tarError = "invalidTarFile",
                      internal = "internalError", none = "0 paths", both = "2 paths";
    const std::vector<Hostile> cases = {
        {"empty_file", "", {.zip = zipError, .tar = none, .tgz = tarError, .all = none}},
        {"garbage",
         randomBytes(5000, 9),
         {.zip = zipError, .tar = internal, .tgz = tarError, .all = internal}},
        {"intact_zip", zip, {.zip = both, .tar = both, .tgz = tarError, .all = both}},
        {"intact_tar", tar, {.zip = zipError, .tar = both, .tgz = both, .all = both}},
        {"zip_truncated",
         zip.substr(0, zip.size() * 6 / 10),
         {.zip = zipError, .tar = internal, .tgz = tarError, .all = internal}},
        {"zip_corrupt_data",
         overwrite(zip, 200, std::string(64, '\xff')),
         {.zip = zipError, .tar = internal, .tgz = tarError, .all = internal}},
        {"tar_truncated",
         tar.substr(0, tar.size() * 6 / 10),
         {.zip = zipError, .tar = internal, .tgz = internal, .all = internal}},
        // The second header's checksum is broken: the first entry is good, the next is not.
        {"tar_corrupt_second_header",
         overwrite(tar, 20992 + 148, "zzzzzz"),
         {.zip = zipError, .tar = internal, .tgz = internal, .all = internal}},
        // Cut short, the stream cannot fill libarchive's first read-ahead: opening fails.
        {"tgz_truncated",
         tgz.substr(0, tgz.size() * 6 / 10),
         {.zip = zipError, .tar = internal, .tgz = tarError, .all = internal}},
        // The first deflate block gets the reserved block type.
        {"tgz_corrupt_deflate",
         overwrite(tgz, 10, std::string(32, '\xff')),
         {.zip = zipError, .tar = internal, .tgz = tarError, .all = internal}},
    };
    const auto text = [](const ReadAs& readAs) {
        return "zip: " + readAs.zip + ", tar: " + readAs.tar + ", tgz: " + readAs.tgz +
               ", all: " + readAs.all;
    };
    for (const auto& [label, bytes, expected] : cases) {
        writeFile(dir / label, bytes);
        // The identified failures by their name; paths returned (and nothing else) as their
        // number; any other outcome in full.
        const std::map<std::string, std::string> identified = {
            {"!unzip:invalidZipFile(~/" + label + ")", zipError},
            {"!untar:invalidTarFile(~/" + label + ")", tarError},
            {"!extractArchive:internalError", internal}};
        const auto readAs = [&, &label = label](const std::string& format) {
            const std::string out = "out/" + label + "/" + format,
                              result = outcomeHere(extracting(label, out, u16(format)));
            std::error_code absent;
            for (const auto& item : fs::recursive_directory_iterator(dir / out, absent)) {
                EXPECT_EQ(readFile(item.path()), readFile(dir / "src" / item.path().filename()));
            }
            return identified.contains(result) ? identified.at(result)
                   : result.find_first_of("!?") != std::string::npos
                       ? result
                       : std::to_string(std::ranges::count(result, '~')) + " paths";
        };
        const ReadAs seen = {
            .zip = readAs("zip"), .tar = readAs("tar"), .tgz = readAs("tgz"), .all = readAs("all")};
        EXPECT_EQ(text(seen), text(expected)) << label;
    }
    // The failure came after f1.bin was complete and before the next header was written:
    // that complete file is the current entry and goes too.
    EXPECT_FALSE(fs::exists(dir / "out/tar_corrupt_second_header/tar/f1.bin"));
}

// Real disk conditions. Extraction removes the entry that filled the disk and keeps the one
// before; decompression removes nothing itself, so its partial output stays.
TEST_F(ExtractTest, FullDiskStopsWithOutputDiskFull) {
    REQUIRE_TOOLS("zip", "tar", "gzip");
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    writeFile(dir / "big.bin", randomBytes(1 << 20, 5));  // does not compress
    sh(dir.path(),
       "printf fits > small.txt && zip -q a.zip small.txt big.bin && tar czf a.tgz small.txt "
       "big.bin && gzip -k big.bin");
    struct FullDisk {
        std::string archive;
        std::u16string format;
        std::string left;  // what the disk holds afterwards
    };
    const FullDisk cases[] = {{.archive = "a.zip", .format = u"zip", .left = "small.txt=fits"},
                              {.archive = "a.tgz", .format = u"tgz", .left = "small.txt=fits"},
                              {.archive = "big.bin.gz", .format = u"gz", .left = "big.bin=..."}};
    for (const auto& [archive, format, left] : cases) {
        EXPECT_EQ(runInChild([&, &archive = archive,
                              &format = format] { return extract(archive, "tiny", format); },
                             mountTinyTmpfs(dir / "tiny", 256 * 1024)),
                  std::string("!extractArchive:outputDiskFull | ") + left)
            << archive;
    }
}

// For an unprivileged user, a read-only file in the way and a folder that may not be
// looked into are skipped with warnings; decompression refuses instead.
TEST_F(ExtractTest, ReadOnlyTargetAndLockedFolderAreSkippedWithWarnings) {
    REQUIRE_TOOLS("python3", "gzip");
    writeWithPython("a.tar",
                    {"a.txt", "new", "ro.txt", "new", "locked/x.txt", "new", "c.txt", "new"});
    sh(dir.path(),
       "printf new | gzip > ro.txt.gz && mkdir -p out/locked && printf keep > out/ro.txt && "
       "chmod 777 . out && chmod 440 out/ro.txt && chmod 0 out/locked");
    const auto both = [&] {
        const std::string extracted = outcomeHere(extracting("a.tar", "out", u"tar"));
        return extracted + " | " + outcomeHere(extracting("ro.txt.gz", "out", u"gz"));
    };
    EXPECT_EQ(runInChild(both, dropPrivileges),
              "~/out/a.txt ~/out/c.txt ?extractArchive:unableToOverwrite(~/out/ro.txt) "
              "?extractArchive:unableToCreate(~/out/locked/x.txt) | "
              "!gunzip:javaOutputOpenError(~/out/ro.txt)");
    EXPECT_EQ(shortListing(dir / "out"), "a.txt=new c.txt=new locked/ ro.txt=keep");
}

// Passwords through the probe and through extraction: right, wrong, missing, and an
// archive whose first entry is not encrypted, for traditional and AES zip encryption.
struct Encryption {
    std::string label;
    std::string encrypt;  // adds the file named last to the archive named before it
};

void PrintTo(const Encryption& encryption, std::ostream* os) {
    *os << encryption.label << ": \"" << encryption.encrypt << "\"";
}

class Passwords : public ExtractTest, public ::testing::WithParamInterface<Encryption> {};

TEST_P(Passwords, ProbeAndExtractionAgree) {
    const std::string encrypt = GetParam().encrypt;
    REQUIRE_TOOLS(encrypt, "zip", "bsdtar");
    sh(dir.path(), "printf 'not secret' > plain.txt && printf 'top secret' > s.txt && " + encrypt +
                       " secret.zip s.txt && zip -q mixed.zip plain.txt && " + encrypt +
                       " mixed.zip s.txt");
    // The first wrong password that libarchive (through bsdtar) rejects at the header check,
    // or one that passes it (about 1 in 256 with traditional encryption) and decrypts garbage.
    const auto wrong = [&](const std::string& rejected) {
        return sh(dir.path(),
                  "for i in $(seq 9999); do bsdtar -xOf secret.zip --passphrase w$i 2>&1 "
                  ">/dev/null | grep -q 'Incorrect passphrase'; [ $? = " +
                      rejected + " ] && echo -n w$i && break; done");
    };
    const std::string protectedEntry = tessel::host::toUtf8(
        tessel::host::lookupMessage("TESSEL:io:archive:extractArchive:protectedEntry"));
    const auto denied = [&](const std::string& archive) {
        return "!extractArchive:unableToWrite(~/" + archive + ";" + protectedEntry + ")";
    };
    // The probe and then extraction, each as "outcome | what the output folder holds".
    struct Attempt {
        std::string archive, password, probe, extraction;
    };
    const std::string incorrect = "!extractArchive:incorrectPassword";
    std::vector<Attempt> cases = {
        {.archive = "secret.zip",
         .password = "Pa55-word",
         .probe = " | ",
         .extraction = "~/out/s.txt | s.txt=top secret"},
        {.archive = "secret.zip",
         .password = wrong("0"),
         .probe = incorrect + " | ",
         .extraction = incorrect + " | "},
        {.archive = "secret.zip",
         .password = "",
         .probe = denied("secret.zip") + " | ",
         .extraction = denied("secret.zip") + " | "},
        // Only the first entry is probed; extraction keeps the completed plain entry.
        {.archive = "mixed.zip",
         .password = "",
         .probe = " | ",
         .extraction = denied("mixed.zip") + " | plain.txt=not secret"},
    };
    if (GetParam().label == "traditional") {
        // The garbage fails its CRC, which the one block the probe reads cannot show.
        cases.push_back({.archive = "secret.zip",
                         .password = wrong("1"),
                         .probe = " | ",
                         .extraction = "!unzip:invalidZipFile(~/secret.zip) | "});
    }
    for (const auto& [archive, password, probeSaw, extractionSaw] : cases) {
        fs::remove_all(dir / "out");
        const auto probe = [&, &archive = archive, &password = password] {
            core::sampleReadWithPassword(u16(dir / archive), u16(dir / "out"), u"zip",
                                         u16(password));
            return Paths{};
        };
        EXPECT_EQ(outcomeHere(probe, dir / "out"), probeSaw)
            << "probe of " << archive << " with the password '" << password << "'";
        EXPECT_EQ(extract(archive, "out", u"zip", password), extractionSaw)
            << "extraction of " << archive << " with the password '" << password << "'";
    }
}

INSTANTIATE_TEST_SUITE_P(
    Zip, Passwords,
    ::testing::Values(
        Encryption{.label = "traditional", .encrypt = "zip -q -0 -P Pa55-word"},
        Encryption{.label = "aes128", .encrypt = "7z a -tzip -bd -mem=AES128 -pPa55-word"},
        Encryption{.label = "aes256", .encrypt = "7z a -tzip -bd -mem=AES256 -pPa55-word"}),
    [](const auto& info) { return info.param.label; });

// The log records of an entry that fails for want of a password, and of a password given.
TEST_F(ExtractTest, RecordsOfAnEntryFailingForWantOfAPassword) {
    REQUIRE_TOOLS("zip");
    sh(dir.path(), "printf A > a.txt && zip -q -P pw a.zip a.txt");
    const auto here = enter(dir.path());
    LogCapture failing;
    EXPECT_TRUE(raisedBy([] { core::extractArchive(u"a.zip", u"out", u"zip", u""); }));
    const std::vector<std::string> expected = {
        "Opened source archive file on disk for reading-->" + (dir / "a.zip").string(),
        "Opened entry file to read from source archive-->a.txt",
        "Archive entry output path-->out/a.txt",
        "Wrote extracted entry file to disk-->out/a.txt",
        "[LIBARCHIVE_MESSAGE]: Passphrase required for this entry",
        "Successfully deleted file from disk-->out/a.txt",
    };
    std::vector<std::string> seen = failing.messages();
    std::erase_if(seen, [&](const auto& m) { return std::ranges::count(expected, m) == 0; });
    EXPECT_EQ(seen, expected);
    EXPECT_FALSE(failing.contains("Password registered")) << "no password, no record";
    LogCapture succeeding;
    core::extractArchive(u"a.zip", u"out", u"zip", u"pw");
    EXPECT_TRUE(
        succeeding.contains("Password registered for reading a password-protected archive."));
    EXPECT_TRUE(succeeding.contains("Reached end of archive-->" + (dir / "a.zip").string()));
}

}  // namespace
}  // namespace tqtest
