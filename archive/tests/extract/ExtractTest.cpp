// extractArchive, sampleReadWithPassword and uncompressgz on archives that real tools make
// at test time. Each call is reduced to one line of text (see outcome), so that one
// comparison states everything a call did: what it returned, warned, raised and left.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <stdexcept>

#include <boost/algorithm/string/replace.hpp>

#include <archive/core/archivecore.hpp>
#include <host/HostError.hpp>
#include <host/TextConversion.hpp>
#include <host/WarningCapture.hpp>

#include "../support/LogCapture.hpp"
#include "../support/TestSupport.hpp"

namespace tqtest {
namespace {

namespace core = tessel::io::archive::core;
using Paths = std::vector<std::u16string>;

// Skips the current test (from its body) when a tool, or the first word of a command
// line, is missing.
#define REQUIRE_TOOLS(...)                                                            \
    for (const std::string tool_ : std::initializer_list<std::string>{__VA_ARGS__}) { \
        if (!toolAvailable(tool_.substr(0, tool_.find(' ')))) {                       \
            GTEST_SKIP() << tool_ << " is not installed";                             \
        }                                                                             \
    }

// A fresh folder per test, and one-line descriptions of what calls did there.
struct ExtractTest : ::testing::Test {
    using Call = std::function<Paths()>;

    // Runs a shell command line in the folder; it must succeed. Returns what it printed.
    std::string sh(const std::string& commandLine) const {
        const auto [status, output] =
            runCommand("cd " + shellQuote(dir.path().string()) + " && " + commandLine);
        if (status != 0) {
            throw std::runtime_error("command failed: " + commandLine + "\n" + output);
        }
        return output;
    }

    // Writes a zip or tar archive (by its extension) with Python's zipfile or tarfile from
    // name, content, name, content...; in a zip a name ending in "/" is a folder.
    void python(const std::string& archive,
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
        sh(command + " 2>/dev/null");  // zipfile warns of duplicate names
    }

    // What a call did, as one line: the paths it returned, "?identifier(arguments)" for each
    // warning, then "!identifier(arguments)" for the error it raised. Arguments are joined
    // by ";" and the parentheses are left out when there are none; the folder reads "~" and
    // the identifiers' common prefix "TESSEL:io:archive:" is left out. Given a folder, " | "
    // and its listing after the call follow.
    std::string outcome(const Call& call, const fs::path& listed = {}) const {
        tessel::host::WarningCapture warnings;
        Paths paths;
        const auto raised = raisedBy([&] { paths = call(); });
        std::vector<std::string> parts;
        std::ranges::transform(paths, std::back_inserter(parts), utf8);
        const auto add = [&](const char* mark, const std::string& id, const auto& arguments) {
            parts.push_back(mark + id +
                            (arguments.empty() ? "" : "(" + join(arguments, ";") + ")"));
        };
        for (const auto& warning : warnings.warnings()) {
            add("?", warning.identifier, warning.arguments);
        }
        if (raised) {
            add("!", raised->identifier, raised->arguments);
        }
        std::string text = join(parts, " ") + (listed.empty() ? "" : " | " + listing(listed));
        boost::algorithm::replace_all(text, dir.path().string(), "~");
        boost::algorithm::replace_all(text, "TESSEL:io:archive:", "");
        return text;
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

    // The outcome of that, with the subfolder's listing.
    std::string extract(const std::string& archive, const std::string& out,
                        const std::u16string& format, const std::string& password = "") const {
        return outcome(extracting(archive, out, format, password), dir / out);
    }

    // Everything under a folder, sorted: "name/" for a folder, "name=bytes" for a file of up
    // to 32 bytes, "name=..." for a longer one; "" when the folder does not exist.
    static std::string listing(const fs::path& folder) {
        std::set<std::string> items;
        std::error_code absent;
        for (const auto& item : fs::recursive_directory_iterator(
                 folder, fs::directory_options::skip_permission_denied, absent)) {
            const std::string bytes = item.is_directory() ? "" : readFile(item.path());
            items.insert(item.path().lexically_relative(folder).string() +
                         (item.is_directory() ? "/" : "=" + (bytes.size() <= 32 ? bytes : "...")));
        }
        return join(items, " ");
    }

    // Makes a folder the current one until the returned guard goes.
    static std::shared_ptr<void> enter(const fs::path& folder) {
        const fs::path saved = fs::current_path();
        fs::current_path(folder);
        return std::shared_ptr<void>(nullptr, [saved](void*) { fs::current_path(saved); });
    }

    TempDir dir;
};

// Archives written by other tools come back byte for byte, with folders, symlinks, modes
// and times, and the returned list follows archive order. A case is a label, the command
// that packs the folder top into the archive named last but one, and the format text.
using ToolCase = std::tuple<std::string, std::string, std::string>;
class Interoperability : public ExtractTest, public ::testing::WithParamInterface<ToolCase> {};

TEST_P(Interoperability, ExtractsWhatTheToolPacked) {
    const auto [label, command, format] = GetParam();
    REQUIRE_TOOLS(command, "bsdtar");
    writeFile(dir / "src/top/sub/b.bin", randomBytes(70000, 7));
    sh("cd src && printf 'alpha\\nbeta\\n' > top/a.txt && mkdir top/sub/empty && : > top/zero.dat "
       "&& ln -s sub/b.bin top/link && chmod 750 top && chmod 640 top/a.txt && chmod 755 top/sub "
       "top/sub/b.bin && chmod 700 top/sub/empty && chmod 600 top/zero.dat && touch -h -d "
       "@981173106 $(find top) && " +
       command + " ../archive.bin top");
    // Archive order as bsdtar lists it; folders carry one trailing separator.
    const std::string names =
        sh("bsdtar -tf archive.bin | while read -r n; do [ -d \"src/$n\" ] && [ ! -L \"src/$n\" ] "
           "&& n=\"${n%/}/\"; printf ' ~/out/%s' \"$n\"; done");
    EXPECT_EQ(extract("archive.bin", "out", u16(format)),
              names.substr(1) + " | " + listing(dir / "src"));
    // Links, then permission bits, times and bytes of everything else, as find and md5sum
    // see them.
    const std::string describe =
        " && (find top -type l -printf '%p -> %l\\n' -o -printf '%p %m %Ts\\n'; "
        "find top -type f -exec md5sum {} +) | sort";
    EXPECT_EQ(sh("cd out" + describe), sh("cd src" + describe));
}

INSTANTIATE_TEST_SUITE_P(
    Tools, Interoperability,
    ::testing::Values(ToolCase{"zip_store", "zip -q -r -y -0", "zip"},
                      ToolCase{"zip_deflate", "zip -q -r -y", "zip"},
                      ToolCase{"zip_zip64", "zip -q -r -y -fz", "zip"},
                      ToolCase{"gnutar_gnu", "tar --format=gnu -cf", "tar"},
                      ToolCase{"gnutar_ustar", "tar --format=ustar -cf", "tar"},
                      ToolCase{"gnutar_pax", "tar --format=pax -cf", "tar"},
                      ToolCase{"gnutar_v7", "tar --format=v7 -cf", "tar"},
                      ToolCase{"gnutar_gzip", "tar czf", "tgz"},
                      ToolCase{"bsdtar_tar", "bsdtar -cf", "tar"},
                      ToolCase{"bsdtar_tgz_as_all", "bsdtar -czf", "all"},
                      ToolCase{"bsdtar_zip", "bsdtar --format zip -cf", "zip"}),
    [](const auto& info) { return std::get<0>(info.param); });

// Entry names no ordinary tool writes (made with Python's zipfile and tarfile). One trailing
// carriage return is dropped with a warning; a name that is nothing else is empty then,
// which ends the call (and, unlike other failures, removes nothing).
TEST_F(ExtractTest, CarriageReturnAbsoluteAndDotDotNames) {
    REQUIRE_TOOLS("python3");
    for (const std::string archive : {"cr.zip", "cr.tar"}) {
        python(archive, {"a.txt\r", "A", "b.txt", "B", "\r", "x"});
        EXPECT_EQ(extract(archive, "out-" + archive, u"all"),
                  "?extractArchive:removeControlM(a.txt) ?extractArchive:removeControlM() "
                  "!extractArchive:emptyEntryFilename(tar;~/" +
                      archive + ") | a.txt=A b.txt=B");
    }
    // Absolute names are re-rooted and ".." is kept; without an output folder (or with ".")
    // names are relative to the current folder.
    python("names.tar", {"/etc/x", "abs", "../evil.txt", "up", "rel/y", "rel"});
    EXPECT_EQ(outcome(extracting("names.tar", "x/out", u"tar"), dir / "x"),
              "~/x/out/etc/x ~/x/out/../evil.txt ~/x/out/rel/y | evil.txt=up out/ out/etc/ "
              "out/etc/x=abs out/rel/ out/rel/y=rel");
    for (const std::string folder : {"", "."}) {
        fs::create_directories(dir / ("cwd" + folder) / "in");
        const auto here = enter(dir / ("cwd" + folder) / "in");
        const auto call = [&] {
            return core::extractArchive(u16(dir / "names.tar"), u16(folder), u"tar", u"");
        };
        EXPECT_EQ(
            outcome(call, dir / ("cwd" + folder)),
            "etc/x ../evil.txt rel/y | evil.txt=up in/ in/etc/ in/etc/x=abs in/rel/ in/rel/y=rel");
    }
}

TEST_F(ExtractTest, DuplicatesAndTheNamedSubset) {
    REQUIRE_TOOLS("python3");
    python("dup.zip", {"a.txt", "a", "b.txt", "first", "c.txt", "c", "b.txt", "second", "d/", "",
                       "d/e.txt", "e"});
    // All entries: the later duplicate replaces the earlier one, both are listed.
    EXPECT_EQ(extract("dup.zip", "all", u"zip"),
              "~/all/a.txt ~/all/b.txt ~/all/c.txt ~/all/b.txt ~/all/d/ ~/all/d/e.txt | "
              "a.txt=a b.txt=second c.txt=c d/ d/e.txt=e");
    // Named: the first match wins, and reading stops once every distinct name is done (the
    // number of headers read follows the outcome).
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"b.txt", "b.txt"}, "~/s/b.txt | b.txt=first | 3"},
        {{"d/", "missing.txt", "a.txt"}, "~/s/a.txt ~/s/d/ | a.txt=a d/ | 6"},
        {{}, " |  | 1"},
    };
    for (const auto& [names, expected] : cases) {
        fs::remove_all(dir / "s");
        LogCapture log;
        const auto call = [&, &names = names] {
            return core::extractArchive(u16(dir / "dup.zip"), u16(dir / "s"), u"zip",
                                        u16list(names), u"");
        };
        const std::string result = outcome(call, dir / "s");
        const auto headers = std::ranges::count_if(log.messages(), [](const std::string& m) {
            return m.starts_with("Opened entry file to read from source archive-->");
        });
        EXPECT_EQ(result + " | " + std::to_string(headers), expected);
    }
}

// Damaged and foreign input, read as each format text: every case ends in the identifier
// the translation table gives, never a crash, a hang or a silent success, and whatever
// stays behind is a complete file.
TEST_F(ExtractTest, HostileInputGivesItsIdentifierAndLeavesOnlyCompleteFiles) {
    REQUIRE_TOOLS("zip", "tar");
    writeFile(dir / "src/f1.bin", randomBytes(20000, 4));
    writeFile(dir / "src/f2.txt", "second\n");
    sh("cd src && zip -q ../s.zip f1.bin f2.txt && tar --format=gnu -cf ../s.tar f1.bin f2.txt && "
       "tar czf ../s.tgz f1.bin f2.txt");
    const std::string zip = readFile(dir / "s.zip"), tar = readFile(dir / "s.tar"),
                      tgz = readFile(dir / "s.tgz");
    const auto overwrite = [](std::string bytes, std::size_t at, const std::string& with) {
        return bytes.replace(at, with.size(), with);
    };
    // Per format text zip, tar, tgz, all: Z invalidZipFile, T invalidTarFile, I internalError,
    // or the number of paths returned.
    const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {"empty_file", "", "Z0T0"},
        {"garbage", randomBytes(5000, 9), "ZITI"},
        {"intact_zip", zip, "22T2"},
        {"intact_tar", tar, "Z222"},
        {"zip_truncated", zip.substr(0, zip.size() * 6 / 10), "ZITI"},
        {"zip_corrupt_data", overwrite(zip, 200, std::string(64, '\xff')), "ZITI"},
        {"tar_truncated", tar.substr(0, tar.size() * 6 / 10), "ZIII"},
        // The second header's checksum is broken: the first entry is good, the next is not.
        {"tar_corrupt_second_header", overwrite(tar, 20992 + 148, "zzzzzz"), "ZIII"},
        // Cut short, the stream cannot fill libarchive's first read-ahead: opening fails.
        {"tgz_truncated", tgz.substr(0, tgz.size() * 6 / 10), "ZITI"},
        // The first deflate block gets the reserved block type.
        {"tgz_corrupt_deflate", overwrite(tgz, 10, std::string(32, '\xff')), "ZITI"},
    };
    for (const auto& [label, bytes, expected] : cases) {
        writeFile(dir / label, bytes);
        // The identified failures as one letter (with the input as their argument); paths
        // returned (and nothing else) as their number; any other outcome in full.
        const std::map<std::string, std::string> codes = {
            {"!unzip:invalidZipFile(~/" + label + ")", "Z"},
            {"!untar:invalidTarFile(~/" + label + ")", "T"},
            {"!extractArchive:internalError", "I"}};
        std::string seen;
        for (const char* format : {"zip", "tar", "tgz", "all"}) {
            const std::string out = "out/" + label + "/" + format,
                              result = outcome(extracting(label, out, u16(format)));
            seen += codes.contains(result) ? codes.at(result)
                    : result.find_first_of("!?") != std::string::npos
                        ? result
                        : std::to_string(std::ranges::count(result, '~'));
            std::error_code absent;
            for (const auto& item : fs::recursive_directory_iterator(dir / out, absent)) {
                EXPECT_EQ(readFile(item.path()), readFile(dir / "src" / item.path().filename()));
            }
        }
        EXPECT_EQ(seen, expected) << label;
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
    sh("printf fits > small.txt && zip -q a.zip small.txt big.bin && tar czf a.tgz small.txt "
       "big.bin && gzip -k big.bin");
    for (const auto& [archive, format, left] : {std::tuple{"a.zip", u"zip", "small.txt=fits"},
                                                {"a.tgz", u"tgz", "small.txt=fits"},
                                                {"big.bin.gz", u"gz", "big.bin=..."}}) {
        EXPECT_EQ(runInChild([&, &archive = archive,
                              &format = format] { return extract(archive, "tiny", format); },
                             mountTinyTmpfs(dir / "tiny", 256 * 1024)),
                  std::string("!extractArchive:outputDiskFull | ") + left);
    }
}

// For an unprivileged user, a read-only file in the way and a folder that may not be
// looked into are skipped with warnings; decompression refuses instead.
TEST_F(ExtractTest, ReadOnlyTargetAndLockedFolderAreSkippedWithWarnings) {
    REQUIRE_TOOLS("python3", "gzip");
    python("a.tar", {"a.txt", "new", "ro.txt", "new", "locked/x.txt", "new", "c.txt", "new"});
    sh("printf new | gzip > ro.txt.gz && mkdir -p out/locked && printf keep > out/ro.txt && "
       "chmod 777 . out && chmod 440 out/ro.txt && chmod 0 out/locked");
    const auto both = [&] {
        const std::string extracted = outcome(extracting("a.tar", "out", u"tar"));
        return extracted + " | " + outcome(extracting("ro.txt.gz", "out", u"gz"));
    };
    EXPECT_EQ(runInChild(both, dropPrivileges),
              "~/out/a.txt ~/out/c.txt ?extractArchive:unableToOverwrite(~/out/ro.txt) "
              "?extractArchive:unableToCreate(~/out/locked/x.txt) | "
              "!gunzip:javaOutputOpenError(~/out/ro.txt)");
    EXPECT_EQ(listing(dir / "out"), "a.txt=new c.txt=new locked/ ro.txt=keep");
}

// Passwords through the probe and through extraction: right, wrong, missing, and an
// archive whose first entry is not encrypted, for traditional and AES zip encryption.
// A label, and the command that adds the file named last to the archive named before it.
using Encryption = std::pair<const char*, const char*>;
class Passwords : public ExtractTest, public ::testing::WithParamInterface<Encryption> {};

TEST_P(Passwords, ProbeAndExtractionAgree) {
    const std::string encrypt = GetParam().second;
    REQUIRE_TOOLS(encrypt, "zip", "bsdtar");
    sh("printf 'not secret' > plain.txt && printf 'top secret' > s.txt && " + encrypt +
       " secret.zip s.txt && zip -q mixed.zip plain.txt && " + encrypt + " mixed.zip s.txt");
    // The first wrong password that libarchive (through bsdtar) rejects at the header check,
    // or one that passes it (about 1 in 256 with traditional encryption) and decrypts garbage.
    const auto wrong = [&](const std::string& rejected) {
        return sh(
            "for i in $(seq 9999); do bsdtar -xOf secret.zip --passphrase w$i 2>&1 "
            ">/dev/null | grep -q 'Incorrect passphrase'; [ $? = " +
            rejected + " ] && echo -n w$i && break; done");
    };
    const std::string protectedEntry = tessel::host::toUtf8(
        tessel::host::lookupMessage("TESSEL:io:archive:extractArchive:protectedEntry"));
    const auto denied = [&](const std::string& archive) {
        return "!extractArchive:unableToWrite(~/" + archive + ";" + protectedEntry + ")";
    };
    // The probe's outcome and what it left | extraction's outcome | what is left.
    std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {"secret.zip", "Pa55-word", " |  | ~/out/s.txt | s.txt=top secret"},
        {"secret.zip", wrong("0"),
         "!extractArchive:incorrectPassword |  | !extractArchive:incorrectPassword | "},
        {"secret.zip", "", denied("secret.zip") + " |  | " + denied("secret.zip") + " | "},
        // Only the first entry is probed; extraction keeps the completed plain entry.
        {"mixed.zip", "", " |  | " + denied("mixed.zip") + " | plain.txt=not secret"},
    };
    if (GetParam().first == std::string("traditional")) {
        // The garbage fails its CRC, which the one block the probe reads cannot show.
        cases.push_back({"secret.zip", wrong("1"), " |  | !unzip:invalidZipFile(~/secret.zip) | "});
    }
    for (const auto& [archive, password, expected] : cases) {
        fs::remove_all(dir / "out");
        const auto probe = [&, &archive = archive, &password = password] {
            core::sampleReadWithPassword(u16(dir / archive), u16(dir / "out"), u"zip",
                                         u16(password));
            return Paths{};
        };
        const std::string probed = outcome(probe, dir / "out");
        EXPECT_EQ(probed + " | " + extract(archive, "out", u"zip", password), expected) << password;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Zip, Passwords,
    ::testing::Values(Encryption{"traditional", "zip -q -0 -P Pa55-word"},
                      Encryption{"aes128", "7z a -tzip -bd -mem=AES128 -pPa55-word"},
                      Encryption{"aes256", "7z a -tzip -bd -mem=AES256 -pPa55-word"}),
    [](const auto& info) { return std::string(info.param.first); });

// The log records of an entry that fails for want of a password, and of a password given.
TEST_F(ExtractTest, RecordsOfAnEntryFailingForWantOfAPassword) {
    REQUIRE_TOOLS("zip");
    sh("printf A > a.txt && zip -q -P pw a.zip a.txt");
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

// uncompressgz: output naming, streams from gzip and pigz (multi-member too), the empty
// stream, and the failures of the gunzip table.
TEST_F(ExtractTest, UncompressGzNamesContentsAndFailures) {
    REQUIRE_TOOLS("gzip", "pigz", "zip");
    const std::string a = "alpha " + randomBytes(100000, 1);
    writeFile(dir / "in/a.txt", a);
    sh("cd in && printf beta > b.txt && : > empty && gzip -k a.txt empty && pigz -k b.txt && "
       "cp b.txt.gz b.tgz && cp b.txt.gz ../c.gz && cat a.txt.gz b.txt.gz > ab.txt.gz && "
       "echo text > text.gz && zip -q zip.gz b.txt && : > emptyfile.gz && "
       "head -c 20 a.txt.gz > cut.gz && head -c 90000 a.txt.gz > cutlate.gz");
    const auto here = enter(dir / "in");
    const std::u16string out = u16(dir / "out");
    const std::vector<std::tuple<Paths, std::u16string, bool, std::string>> cases = {
        {{u"a.txt.gz", u"b.txt.gz", u"b.tgz"}, out, false, "~/out/a.txt ~/out/b.txt ~/out/b"},
        {{u"ab.txt.gz", u"empty.gz"}, out, false, "~/out/ab.txt ~/out/empty"},
        // Beside the input; the current folder's own inputs get bare names, by text.
        {{u16(dir / "in/b.txt.gz"), u"b.tgz", u"../c.gz"}, u"", false, "b.txt b ../c"},
        {{u"b.txt.gz"}, u16(dir / "out/result.bin"), true, "~/out/result.bin"},
        {{}, out, false, ""},
        // A stream cut short fails when opened, before its own output is named.
        {{u"cut.gz"}, out, false, "!gunzip:javaCopyStreamError()"},
        {{u"b.txt.gz", u"cut.gz"}, out, false, "!gunzip:javaCopyStreamError(b.txt)"},
        // Cut late, the stream opens and fails while its data is copied.
        {{u"cutlate.gz"}, out, false, "!extractArchive:internalError"},
        {{u"text.gz"}, out, false, "!gunzip:notGzipFormat(text.gz)"},
        {{u"zip.gz"}, out, false, "!gunzip:notGzipFormat(zip.gz)"},
        {{u"emptyfile.gz"}, out, false, "!gunzip:notGzipFormat(emptyfile.gz)"},
        {{u"missing.gz"}, out, false, "!gunzip:javaOpenError(missing.gz)"},
    };
    for (const auto& [inputs, folder, exact, expected] : cases) {
        EXPECT_EQ(outcome([&inputs = inputs, &folder = folder, &exact = exact] {
                      return core::uncompressgz(inputs, folder, exact);
                  }),
                  expected);
    }
    // Every member of a multi-member stream.
    EXPECT_EQ(readFile(dir / "out/a.txt") + readFile(dir / "out/ab.txt") + readFile(dir / "c"),
              a + a + "beta" + "beta");
    // The partial output of the stream cut late stays.
    EXPECT_EQ(listing(dir / "out"),
              "a.txt=... ab.txt=... b.txt=beta b=beta cutlate=... empty= result.bin=beta");
    EXPECT_EQ(fileMode(dir / "out/empty"), 0644u);
}

}  // namespace
}  // namespace tqtest
