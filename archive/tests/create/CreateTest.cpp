// createArchive and compressgz. Each call is reduced to one text: what it returned or the
// error it raised, its warnings and the files it left. Tables of such calls cover bad
// input, odd names, unreadable inputs, a full disk (a tiny tmpfs in a private mount
// namespace) and folders nobody may write (a child that dropped root). Other tools then
// list and extract what was made.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <clocale>

#include <boost/algorithm/string/replace.hpp>

#include <archive/core/archivecore.hpp>
#include <host/WarningCapture.hpp>

#include "../support/LogCapture.hpp"
#include "../support/TestSupport.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

namespace core = tessel::io::archive::core;
using Names = std::vector<std::u16string>;
using Strings = std::vector<std::string>;

// Like an embedding host, take the locale from the environment (C.UTF-8), so that
// libarchive converts names as UTF-8.
[[maybe_unused]] const bool kLocaleFromEnvironment = std::setlocale(LC_ALL, "") != nullptr;
const std::string kInternal = "extractArchive:internalError()";

// createArchive, or compressgz into the folder named as the archive when the format is
// empty; without a password and a method, the overload that takes neither.
struct Call {
    std::string archive;
    Strings files, names;
    std::string format, expected, password = "", method = "";
};

// "ok(names returned)" or the host error's "identifier(arguments)", " +identifier(arguments)"
// for each warning, " differs" for a gzip output gzip -dc does not turn back into its input,
// then each file the call left in the folder with, when bsdtar can list it, its entries in
// brackets. Names are taken relative to base; the folder reads "@" and the identifiers'
// common prefix "TESSEL:io:archive:" is left out.
std::string run(const Call& call, const fs::path& dir, const fs::path& base) {
    const auto at = [&](const std::string& name) { return name.empty() ? u"" : u16(base / name); };
    Names files, result;
    std::ranges::transform(call.files, std::back_inserter(files), at);
    const std::string findAll = "find . -type f 2>/dev/null | LC_ALL=C sort",
                      before = sh(dir, findAll);
    tessel::host::WarningCapture warnings;
    const std::u16string archive = at(call.archive), format = u16(call.format);
    const auto raised = raisedBy([&] {
        result = format.empty() ? core::compressgz(files, archive)
                 : call.password.empty() && call.method.empty()
                     ? core::createArchive(archive, files, u16list(call.names), format)
                     : core::createArchive(archive, files, u16list(call.names), format,
                                           u16(call.password), u16(call.method));
    });
    std::vector<std::string> returned;
    std::ranges::transform(result, std::back_inserter(returned), utf8);
    std::string text = raised ? raised->identifier + "(" + join(raised->arguments, ",") + ")"
                              : "ok(" + join(returned, ",") + ")";
    for (const auto& warning : warnings.warnings()) {
        text += " +" + warning.identifier + "(" + join(warning.arguments, ",") + ")";
    }
    for (std::size_t i = 0; (format.empty() || format == u"gz") && i < result.size(); ++i) {
        const std::string in = utf8(files[i]), out = utf8(format.empty() ? result[i] : archive);
        const std::string check = "gzip -dc " + shellQuote(out) + " | cmp -s - " + shellQuote(in);
        text += fs::is_regular_file(in) && runCommand(check).status != 0 ? " differs" : "";
    }
    // The files that were not there before, in order, each with its entries if it is an archive.
    text +=
        sh(dir, findAll + " | grep -vxF " + shellQuote(before) +
                    " | while read -r f; do printf ' %s' \"${f#./}\"; L=$(bsdtar -tf \"$f\" "
                    "2>/dev/null) && printf '[%s]' \"$(echo \"$L\" | paste -sd, -)\"; done; true");
    boost::algorithm::replace_all(text, dir.string(), "@");
    boost::algorithm::replace_all(text, "TESSEL:io:archive:", "");
    return text;
}

// The outcomes of the calls run in order, one a line, or what they should be.
std::string lines(const std::vector<Call>& calls, const fs::path& dir, const fs::path& base,
                  bool expected = false) {
    std::string text;
    for (const auto& call : calls) {
        text += (expected ? call.expected : run(call, dir, base)) + "\n";
    }
    return text;
}

// Runs as root and as nobody: checkReadable looks at the owner-read bit, so an input
// without it is refused to both.
TEST(CreateInput, IdentifiedOutcomesAndWhatIsLeft) {
    const Strings aTxt = {"a.txt"}, aTxtTwice = {"a.txt", "a.txt"},
                  aTxtThrice = {"a.txt", "a.txt", "a.txt"}, lockedThenOk = {"locked.txt", "ok.txt"},
                  oneThenOkTwice = {"one.txt", "ok.txt", "ok.txt"},
                  oneTwoGone = {"one.txt", "two.bin", "gone"},
                  folderTwiceThenFiles = {"d", "d", "a.txt", "a.txt", "a.txt"},
                  slashedNames = {"d/", "e//", "f/", "g 日😀", "", "ignored extra name"},
                  oddNames = {"a/b/r.txt", "x.gz", ".profile", "ü 日😀", "notes", "exact"};
    const std::string lockedRefused = "openEntryError(@/locked.txt) ",
                      aTxtRefused = "openEntryError(@/a.txt) ", slashesKept = "ok(d/,e//,g 日😀) +",
                      oneSlashDropped = "ok(d,e/,g 日😀) +", slashedEntries = "[d/,e//,g 日😀]",
                      beside =
                          "ok(@/a/b/r.txt.gz,@/x.gz.gz,@/.profile.gz,@/ü 日😀.gz,@/notes.gz,"
                          "@/exact.gz) .profile.gz a/b/r.txt.gz exact.gz notes.gz[] x.gz.gz "
                          "ü 日😀.gz",
                      in = "ok(@/out/one.txt.gz,@/out/ok.txt.gz,@/out/ok.txt.gz) out/ok.txt.gz "
                           "out/one.txt.gz";
    // Each row: archive, files, names, format, expected outcome, then password and method.
    const std::vector<Call> calls = {
        {"", aTxt, aTxt, "zip", "zip:openError()"},
        {"d", aTxt, aTxt, "tar", "tar:openError(@/d)"},
        {"no/x.tgz", aTxt, aTxt, "tgz", "tar:openError(@/no/x.tgz)"},
        {"no/x.zip", aTxt, aTxt, "all", kInternal},
        {"x.rar", aTxt, aTxt, "all", kInternal},
        {"m.zip", {"missing"}, {"m"}, "zip", kInternal + " m.zip[]"},
        {"m.tar", {"missing"}, {""}, "tar", kInternal + " m.tar[]"},  // even without a name
        {"e.tar", {""}, {"e"}, "tar", kInternal + " e.tar[]"},
        // The raw format takes one regular file; a refused header still returns its name.
        {"r.gz", {"two.bin"}, {"x"}, "gz", "ok(x) r.gz"},
        {"2.gz", aTxtTwice, {"a", "b"}, "gz", kInternal + " +createArchive:openEntryError(b) 2.gz"},
        {"d.gz", {"d"}, {"d"}, "gz", "ok(d) +createArchive:openEntryError(d) d.gz[]"},
        // Name counts, passwords and methods are checked before the archive exists.
        {"f.zip", aTxtThrice, aTxt, "zip", "createArchive:entryNameCountMismatch(3,1)"},
        {"1.zip", aTxt, aTxt, "zip", "createArchive:emptyPassword()", "", "zipcrypt"},
        {"2.zip", aTxt, aTxt, "foo", "createArchive:invalidArchiveFormat()", "", "zipcrypt"},
        {"3.zip", aTxt, aTxt, "zip", "createArchive:invalidEncryptionInLinux()", "pw", "rot13"},
        {"4.zip", aTxt, aTxt, "all", kInternal, "", "zipcrypt"},
        {"5.tar", aTxt, aTxt, "tar", kInternal, "pw", "zipcrypt"},
        {"6.zip", aTxt, aTxt, "all", "ok(a.txt) 6.zip[a.txt]", "pw", "aes128"},
        {"7.zip", aTxt, aTxt, "foo", "ok(a.txt) 7.zip[a.txt]", "pw", "traditional"},
        // Tar formats drop one trailing slash from the names they return; zip keeps them. A
        // file named like a folder would lose its content: skipped with the family's
        // warning. A folder is one entry: its content is the caller's to list.
        {"s.zip", folderTwiceThenFiles, slashedNames, "zip",
         slashesKept + "TESSEL:zip:" + aTxtRefused + "s.zip" + slashedEntries},
        {"s.tar", folderTwiceThenFiles, slashedNames, "tar",
         oneSlashDropped + "TESSEL:tar:" + aTxtRefused + "s.tar" + slashedEntries},
        {"t.tar", folderTwiceThenFiles, slashedNames, "all",
         slashesKept + "createArchive:" + aTxtRefused + "t.tar" + slashedEntries},
        {"e.zip", {}, {}, "all", "ok() e.zip[]"},
        // An input its owner may not read is skipped with the family's warning...
        {"l.zip", lockedThenOk, lockedThenOk, "zip",
         "ok(ok.txt) +TESSEL:zip:" + lockedRefused + "l.zip[ok.txt]"},
        {"l.tar", lockedThenOk, lockedThenOk, "tar",
         "ok(ok.txt) +TESSEL:tar:" + lockedRefused + "l.tar[ok.txt]"},
        {"l2.zip", lockedThenOk, lockedThenOk, "all",
         "ok(ok.txt) +createArchive:" + lockedRefused + "l2.zip[ok.txt]"},
        // ...and an error for gzip, which removes that input's output only.
        {"l.gz", lockedThenOk, lockedThenOk, "gz", kInternal + " l.gz[]"},
        {"", lockedThenOk, {}, "", "gzip:javaOpenError(@/locked.txt)"},
        {"", {"one.txt", "gone.txt"}, {}, "", "gzip:javaOpenError(@/gone.txt) one.txt.gz"},
        {".", {""}, {}, "", "gzip:javaOpenError()"},
        {"missing", {"one.txt"}, {}, "", "gzip:javaOutputOpenError(@/missing/one.txt.gz)"},
        {"o", {"one.txt"}, {}, "", "gzip:javaOutputOpenError(@/o/one.txt.gz)"},
        // Outputs beside their inputs (nothing is ever removed from a name) or in a folder.
        {"", oddNames, {}, "", beside},
        {"out", oneThenOkTwice, {}, "", in},
        {"out", {}, {}, "", "ok()"},
        // A failure in the middle of the list keeps the archive with the entries before it.
        {"p.zip", oneTwoGone, oneTwoGone, "zip", kInternal + " p.zip[one.txt,two.bin]"},
        {"p.tar", oneTwoGone, oneTwoGone, "tar", kInternal + " p.tar[one.txt,two.bin]"},
        {"p.tgz", oneTwoGone, oneTwoGone, "tgz", kInternal + " p.tgz[one.txt,two.bin]"},
    };
    for (const bool asNobody : {false, true}) {
        TempDir dir;
        // Each small file holds its own name.
        ASSERT_EQ("", sh(dir.path(),
                         "mkdir -p d a/b out o/one.txt.gz && for f in a.txt d/inner.txt "
                         "locked.txt ok.txt one.txt a/b/r.txt x.gz .profile 'ü 日😀'; "
                         "do echo \"$f\" > \"$f\"; done && : > notes && head -c 16384 "
                         "/dev/urandom > exact && head -c 50000 /dev/urandom > two.bin "
                         "&& chmod 044 locked.txt && chmod 777 . out a/b"));
        EXPECT_EQ(runInChild([&] { return lines(calls, dir.path(), dir.path()); },
                             asNobody ? dropPrivileges : nullptr),
                  lines(calls, dir.path(), dir.path(), true));
        EXPECT_EQ("",
                  sh(dir.path(), "for a in p.*; do bsdtar -xOf $a two.bin | cmp - two.bin; done"));
    }
}

// Incompressible input larger than the disk fills it while data is written; the partial
// output is kept. A small input on a disk that is already full fails only when the archive
// is closed, and that final close is deliberately not reported: the call succeeds.
TEST(FullDisk, ReportedByFormatAndPartialOutputKept) {
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    TempDir dir;
    writeFile(dir / "big.bin", randomBytes(1 << 20));
    writeFile(dir / "small.txt", "small");
    const Strings e = {"entry"}, big = {"big.bin"}, small = {"small.txt"};
    const std::vector<Call> calls = {
        {"disk/a.zip", big, e, "zip", "zip:DiskSpaceFull(@/disk/a.zip) disk/a.zip"},
        {"disk/a.tar", big, e, "tar", "tar:DiskSpaceFull(@/disk/a.tar) disk/a.tar"},
        {"disk/a.tgz", big, e, "tgz", "tar:DiskSpaceFull(@/disk/a.tgz) disk/a.tgz"},
        {"disk/a.gz", big, e, "gz", kInternal + " disk/a.gz"},
        {"disk/b.tar.gz", big, e, "all", kInternal + " disk/b.tar.gz"},
        {"disk", big, e, "", kInternal + " disk/big.bin.gz"},
        // The call succeeds, and what it wrote is lost.
        {"disk/a.zip", small, e, "zip", "ok(entry) disk/a.zip[]"},
        {"disk/a.tar", small, e, "tar", "ok(entry) disk/a.tar[]"},
        {"disk/a.tgz", small, e, "tgz", "ok(entry) disk/a.tgz[]"},
        {"disk/a.gz", small, e, "gz", "ok(entry) differs disk/a.gz[]"},
        {"disk/b.tar.gz", small, e, "all", "ok(entry) disk/b.tar.gz[]"},
        {"disk", small, e, "", "ok(@/disk/small.txt.gz) differs disk/small.txt.gz[]"},
    };
    for (const auto& call : calls) {
        const auto fillAndRun = [&] {
            writeFile(dir / "disk/filler", randomBytes(call.files == small ? 64 * 1024 : 0));
            return run(call, dir.path(), dir.path());
        };
        EXPECT_EQ(runInChild(fillAndRun, mountTinyTmpfs(dir / "disk", 64 * 1024)), call.expected);
    }
}

// The archive path in the errors is the caller's, relative when it was relative.
TEST(AccessDenied, FoldersNobodyMayWriteOrEnter) {
    TempDir dir;
    ASSERT_EQ("", sh(dir.path(),
                     "chmod 755 . && mkdir -p closed w && printf in > in.txt && printf in > "
                     "closed/in.txt && chmod 700 closed && chmod 777 w"));
    const Strings in = {"in.txt"}, closed = {"closed/in.txt"}, e = {"e"};
    const std::vector<Call> calls = {
        {"a.zip", in, e, "zip", "zip:openError(a.zip)"},
        {"a.tgz", in, e, "tgz", "tar:openError(a.tgz)"},
        {"a.gz", in, e, "gz", kInternal},
        {"b.zip", in, e, "all", kInternal},
        {"w/c.zip", closed, e, "zip", kInternal + " w/c.zip[]"},  // input status refused
        {"", {(dir / "in.txt").string()}, {}, "", "gzip:javaOutputOpenError(@/in.txt.gz)"},
        {"", in, {}, "", "gzip:javaOutputOpenError(in.txt.gz)"},
        // A refused input status is not one of the read failures that remove the output.
        {"w", closed, {}, "", kInternal + " w/in.txt.gz[]"},
    };
    const auto unprivileged = [&] {
        return chdir(dir.path().c_str()) == 0 ? dropPrivileges() : "chdir failed";
    };
    EXPECT_EQ(runInChild([&] { return lines(calls, dir.path(), ""); }, unprivileged),
              lines(calls, dir.path(), "", true));
}

TEST(CreateLog, RecordsOfARelativeArchiveAndOfAFailure) {
    TempDir dir;
    ASSERT_EQ("",
              sh(dir.path(), "mkdir in && echo > in/é.txt && echo > locked && chmod 044 locked"));
    const std::string records = runInChild([&] {
        LogCapture capture;
        if (chdir(dir.path().c_str()) == 0) {
            core::createArchive(u"out.zip", {u"in/é.txt"}, {u"entry 日.txt"}, u"zip", u"pw",
                                u"aes256");
            // The evidence comes before the error; the output opened for it is deleted.
            raisedBy([&] { core::compressgz({u"gone"}, u""); });
            raisedBy([&] { core::compressgz({u"locked"}, u""); });
        }
        std::string text;
        for (const auto& record : capture.records()) {
            text += std::to_string(record.severity) + " " + record.message + "; ";
        }
        boost::algorithm::replace_all(text, dir.path().string(), "@");
        return text;
    });
    EXPECT_EQ(records,
              "1 Password set to create a password-protected archive.; 1 Encryption method used "
              "to create a password-protected archive-->aes256; 4 Opened archive file for "
              "creating destination archive on disk-->@/out.zip; 4 Opened file on disk for "
              "reading-->in/é.txt; 1 Read entry from file on disk-->in/é.txt; 1 Wrote entry to "
              "destination archive-->entry 日.txt; 4 Opened file on disk for reading-->gone; 4 "
              "Opened archive file for creating destination archive on disk-->@/gone.gz; 512 "
              "[INTERNAL ERROR MESSAGE]: [archive_err]: Invalid entry in archive header.; 1 "
              "Successfully deleted archive file from disk-->@/gone.gz; 4 Opened file on disk "
              "for reading-->locked; 4 Opened "
              "archive file for creating destination archive on disk-->@/locked.gz; 512 "
              "[INTERNAL ERROR MESSAGE]: [archive_err]: Unknown error. This should not be hit. "
              "Zorp it!; 1 Successfully deleted archive file from disk-->@/locked.gz; ");
}

// Archives made by createArchive, listed and extracted by other tools: names, bytes,
// folder entries and (where the tool restores them) permission modes come back.
enum Family : unsigned { Zip = 1, Tar = 2, CompressedTar = 4 };
constexpr const char* kPassword = "pässwörd 1";

// An archive createArchive makes.
struct Kind {
    const char* archive;
    const char* format;
    Family family;
    std::string method = "";  // encryption; empty: the overload without a password
    const char* scheme = "";  // what 7z reports for an encrypted zip's entries
};
const Kind kKinds[] = {
    {.archive = "a.zip", .format = "zip", .family = Zip},
    {.archive = "a.tar", .format = "tar", .family = Tar},
    {.archive = "a.tgz", .format = "tgz", .family = CompressedTar},
    {.archive = "b.zip", .format = "all", .family = Zip},
    {.archive = "b.tar", .format = "all", .family = Tar},
    {.archive = "b.tar.gz", .format = "all", .family = CompressedTar},
    {.archive = "b.tar.xz", .format = "all", .family = CompressedTar},
    {.archive = "zipcrypt.zip",
     .format = "zip",
     .family = Zip,
     .method = "zipcrypt",
     .scheme = "ZipCrypto"},
    {.archive = "traditional.zip",
     .format = "zip",
     .family = Zip,
     .method = "traditional",
     .scheme = "ZipCrypto"},
    {.archive = "aes128.zip",
     .format = "zip",
     .family = Zip,
     .method = "aes128",
     .scheme = "AES-128"},
    {.archive = "aes256.zip",
     .format = "zip",
     .family = Zip,
     .method = "aes256",
     .scheme = "AES-256"},
};

// Accented, CJK and emoji names, nested folders, an empty file, a file of exactly one copy
// chunk, incompressible data and several modes.
struct TreeItem {
    std::string name;  // a folder's ends in "/"
    std::string bytes;
    unsigned mode;
};
const TreeItem kTree[] = {
    {.name = "docs/", .bytes = "", .mode = 0755},
    {.name = "docs/héllo wörld.txt", .bytes = "accents\n", .mode = 0644},
    {.name = "docs/日本語.txt", .bytes = "CJK\n", .mode = 0644},
    {.name = "docs/emoji😀.bin", .bytes = randomBytes(70000, 7), .mode = 0644},
    {.name = "docs/sub/", .bytes = "", .mode = 0755},
    {.name = "docs/sub/exact.bin", .bytes = randomBytes(16384, 3), .mode = 0644},
    {.name = "empty.txt", .bytes = "", .mode = 0644},
    {.name = "run.sh", .bytes = "#!/bin/sh\necho hi\n", .mode = 0750},
    {.name = "private.txt", .bytes = "secret\n", .mode = 0600}};

// Shell commands over $A archive, $O output folder, $W password (empty without one), $Z the
// zipfile script. Every zip reader takes traditional encryption; aes: AES too.
struct Reader {
    const char *label, *list, *extract;
    unsigned families;
    bool aes, restoresModes;
};
const Reader kReaders[] = {
    {"unzip", "unzip -Z1 \"$A\"", "unzip -q ${W:+-P \"$W\"} \"$A\" -d \"$O\"", Zip, false, true},
    {"sevenZip", "7z l -ba -slt \"$A\" | sed -n 's/^Path = //p'",
     "7z x -bd ${W:+-p\"$W\"} -o\"$O\" \"$A\"", Zip | Tar, true, false},
    {"bsdtar", "bsdtar ${W:+--passphrase \"$W\"} -tf \"$A\"",
     "bsdtar ${W:+--passphrase \"$W\"} -xf \"$A\" -C \"$O\"", Zip | Tar | CompressedTar, true,
     true},
    {"gnuTar", "tar -tf \"$A\"", "tar -xf \"$A\" -C \"$O\"", Tar | CompressedTar, false, true},
    {"pythonZipfile", "python3 -c \"$Z\" \"$A\"", "python3 -c \"$Z\" \"$A\" \"$O\" \"$W\"", Zip,
     false, false},
    {"pythonTarfile", "python3 -m tarfile -l \"$A\"", "python3 -m tarfile -e \"$A\" \"$O\"",
     Tar | CompressedTar, false, true},
};
const char* kZipfile =
    "import sys, zipfile\nz = zipfile.ZipFile(sys.argv[1]); print(*z.namelist(), sep='\\n')\n"
    "if sys.argv[2:]: z.extractall(sys.argv[2], pwd=sys.argv[3].encode() or None)\n";

void PrintTo(const Reader& reader, std::ostream* out) {
    *out << reader.label;
}

class CreatedArchiveReadBack : public ::testing::TestWithParam<Reader> {};

TEST_P(CreatedArchiveReadBack, ListsAndExtractsIdentically) {
    const Reader& reader = GetParam();
    const std::string list = reader.list, tool = list.substr(0, list.find(' '));
    if (!toolAvailable(tool)) {
        GTEST_SKIP() << tool << " is not installed";
    }
    TempDir dir;
    Names files, names;
    for (const auto& [name, bytes, mode] : kTree) {
        const fs::path path = dir / "src" / name;
        name.back() == '/' ? (void)fs::create_directories(path) : writeFile(path, bytes);
        fs::permissions(path, fs::perms(mode));
        files.push_back(u16(path));
        names.push_back(u16(name));
    }
    // Names without a folder's slash; after extraction no difference, and each file's mode
    // where the tool restores it.
    const std::string sorted = " | sed 's,[ /]*$,,;/^$/d' | LC_ALL=C sort",
                      modes = reader.restoresModes ? "find . -type f -printf '%P %m\\n' | sort"
                                                   : "true";
    const fs::path src = dir / "src";
    const std::string listing = sh(src, "find . -mindepth 1 -printf '%P\\n'" + sorted),
                      tree = sh(src, modes);
    for (const auto& [file, format, family, method, scheme] : kKinds) {
        if ((reader.families & family) == 0 || (method.starts_with("aes") && !reader.aes)) {
            continue;
        }
        SCOPED_TRACE(file);
        const fs::path archive = dir / file;
        // What it returns is checked with the calls above.
        method.empty() ? core::createArchive(u16(archive), files, names, u16(format))
                       : core::createArchive(u16(archive), files, names, u16(format),
                                             u16(kPassword), u16(method));
        const std::string vars = "A=" + shellQuote(archive.string()) +
                                 " O=\"$A.out\" Z=" + shellQuote(kZipfile) +
                                 " W=" + shellQuote(method.empty() ? "" : kPassword) + "; ";
        // The scheme protecting each of the six non-empty files, as 7z reports it.
        if (family == Zip && toolAvailable("7z")) {
            EXPECT_EQ(sh(src, vars + "7z l -slt \"$A\" | sed -n 's/^Method = \\(AES-...\\|" +
                                  "ZipCrypto\\) .*/\\1/p' | uniq -c | sed 's/^ *//'"),
                      *scheme ? "6 " + std::string(scheme) + "\n" : "");
        }
        EXPECT_EQ(sh(src, vars + list + sorted), listing);
        EXPECT_EQ(sh(src, vars + "mkdir \"$O\" && (" + reader.extract +
                              ") >/dev/null 2>&1; diff -r . \"$O\" && cd \"$O\" && " + modes),
                  tree);
    }
}

INSTANTIATE_TEST_SUITE_P(Tools, CreatedArchiveReadBack, ::testing::ValuesIn(kReaders),
                         [](const auto& info) { return std::string(info.param.label); });

}  // namespace
}  // namespace tqtest
