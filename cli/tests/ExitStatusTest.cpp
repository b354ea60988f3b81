// The exit status of untar and unzip tells whether every selected entry was extracted: an
// entry skipped for safety or refused by the disk gives 1, after the rest is extracted, with
// a warning naming it and a closing line counting them; --keep-outward-links restores links
// pointing out of the output folder as stored; files kept by -k are no failure.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

namespace {

struct Restore {
    std::string name;
    std::string args;       // run in the work folder, which holds the archives
    bool asNobody = false;  // run through setpriv as user 65534
    int status = 0;
    std::vector<std::string> warnings = {};  // identifiers on standard error, each at least once
    std::string notExtracted = "";           // the closing line's count; "" when there is none
    std::map<std::string, std::string> onDisk = {};  // snapshot of out/ afterwards ("" name: none)
};

const std::string kSkipped = "TESSEL:io:archive:extractArchive:outwardLinkSkipped";
const std::string kClosing = "tqarchive:entriesNotExtracted";

// The count the closing line gives, "" when there is no closing line; it must be the last.
std::string closingCount(const CliResult& run) {
    const std::string marker = " [" + kClosing + "]\n";
    if (!run.err.ends_with(marker)) {
        return run.err.find(kClosing) == std::string::npos ? "" : "not last";
    }
    const std::string head = "Entries not extracted: ";
    const auto at = run.err.rfind(head);
    if (at == std::string::npos) {
        return "unknown text";
    }
    return run.err.substr(at + head.size(), run.err.find(',', at) - at - head.size());
}

}  // namespace

TEST(ExitStatus, OneWhenAnEntryWasNotExtractedAfterTheRestIsExtracted) {
    REQUIRE_TOOLS("python3", "tar", "bsdtar", "zip", "setpriv");
    TempDir dir;
    const fs::path work = dir / "work";
    // A home folder with links to its owner's files elsewhere, backed up by GNU tar, by
    // bsdtar (gzip-compressed) and by Info-ZIP (links stored as links).
    sh(dir.path(),
       "mkdir -p home/.config home/docs work && echo notes > home/docs/a.txt && "
       "ln -s /home/me/dotfiles/x home/.config/x && ln -s /etc/hostname home/cfg && "
       "tar -cf work/gnu.tar -C home . && bsdtar -czf work/bsd.tgz -C home . && "
       "(cd home && zip -q -r -y ../work/home.zip .)");
    const std::string longName(300, 'n');
    python(work,
           "tar('hard.tar', folder('a'), folder('a/b'), sym('a/b/up', '../..'), "
           "hard('h', 'a/b/up'), reg('z.txt', b'Z'))\n"
           "tar('long.tar', reg('" +
               longName +
               "', b'L'), reg('ok.txt', b'ok'))\n"
               "tar('abshard.tar', reg('ok.txt', b'ok'), hard('h', '/etc/passwd'))\n"
               "tar('fifo.tar', node('fifo', tarfile.FIFOTYPE), reg('ok.txt', b'ok'))\n"
               "tar('good.tar', reg('ok.txt', b'ok'), folder('d'), sym('d/l', '../ok.txt'), "
               "sym('top', 'd'))\n");
    sh(work, "chmod -R a+rX " + shellQuote(dir.path().string()));
    const std::string nobody = "setpriv --reuid=65534 --regid=65534 --clear-groups";
    if (tqarchive(work, "--version", nobody).status != 0) {
        GTEST_SKIP() << "the built program cannot be run as nobody";
    }
    const std::map<std::string, std::string> homeWithoutLinks = {
        {".config", "/"},
        {"docs", "/"},
        {"docs/a.txt", std::to_string(std::hash<std::string>{}("notes\n"))}};
    auto homeWithLinks = homeWithoutLinks;
    homeWithLinks[".config/x"] = "@/home/me/dotfiles/x";
    homeWithLinks["cfg"] = "@/etc/hostname";
    const std::string ok = std::to_string(std::hash<std::string>{}("ok"));
    const std::string mine = std::to_string(std::hash<std::string>{}("mine"));
    const std::vector<Restore> rows = {
        {.name = "GNU tar backup with absolute links",
         .args = "untar gnu.tar -d out",
         .status = 1,
         .warnings = {kSkipped},
         .notExtracted = "2",
         .onDisk = homeWithoutLinks},
        {.name = "bsdtar backup with absolute links",
         .args = "untar bsd.tgz -d out",
         .status = 1,
         .warnings = {kSkipped},
         .notExtracted = "2",
         .onDisk = homeWithoutLinks},
        {.name = "Info-ZIP backup with absolute links",
         .args = "unzip home.zip -d out",
         .status = 1,
         .warnings = {kSkipped},
         .notExtracted = "2",
         .onDisk = homeWithoutLinks},
        {.name = "untar --keep-outward-links restores them as stored",
         .args = "untar gnu.tar -d out --keep-outward-links",
         .onDisk = homeWithLinks},
        {.name = "unzip --keep-outward-links restores them as stored",
         .args = "unzip home.zip -d out --keep-outward-links",
         .onDisk = homeWithLinks},
        {.name = "hard link to a link that climbs out from where the hard link lands",
         .args = "untar hard.tar -d out",
         .status = 1,
         .warnings = {kSkipped},
         .notExtracted = "1",
         .onDisk = {{"a", "/"},
                    {"a/b", "/"},
                    {"a/b/up", "@../.."},
                    {"z.txt", std::to_string(std::hash<std::string>{}("Z"))}}},
        {.name = "output folder the user may not write",
         .args = "untar gnu.tar -d locked",
         .asNobody = true,
         .status = 1,
         .warnings = {"TESSEL:io:archive:createArchive:openEntryError", kSkipped},
         .notExtracted = "5"},
        {.name = "a name too long for the file system",
         .args = "untar long.tar -d out",
         .status = 1,
         .warnings = {"TESSEL:io:archive:createArchive:openEntryError"},
         .notExtracted = "1",
         .onDisk = {{"ok.txt", ok}}},
        {.name = "a hard link to a file the archive does not hold",
         .args = "untar abshard.tar -d out",
         .status = 1,
         .warnings = {"TESSEL:io:archive:createArchive:openEntryError"},
         .notExtracted = "1",
         .onDisk = {{"ok.txt", ok}}},
        {.name = "a FIFO skipped",
         .args = "untar fifo.tar -d out",
         .status = 1,
         .warnings = {"TESSEL:io:archive:extractArchive:specialFileSkipped"},
         .notExtracted = "1",
         .onDisk = {{"ok.txt", ok}}},
        {.name = "everything extracted",
         .args = "untar good.tar -d out",
         .onDisk = {{"ok.txt", ok}, {"d", "/"}, {"d/l", "@../ok.txt"}, {"top", "@d"}}},
        {.name = "a file kept by -k is no failure",
         .args = "untar good.tar -d kept -k",
         .warnings = {"TESSEL:io:archive:extractArchive:existingFileKept"},
         .onDisk = {{"ok.txt", mine}, {"d", "/"}, {"d/l", "@../ok.txt"}, {"top", "@d"}}},
    };
    for (const Restore& row : rows) {
        SCOPED_TRACE(row.name);
        sh(work, "rm -rf out locked kept && mkdir locked kept && printf mine > kept/ok.txt");
        const auto run = tqarchive(work, row.args + " -q", row.asNobody ? nobody : "");
        EXPECT_EQ(run.status, row.status) << run.err;
        for (const std::string& warning : row.warnings) {
            EXPECT_TRUE(reports(run, warning)) << warning << "\n" << run.err;
        }
        EXPECT_EQ(closingCount(run), row.notExtracted) << run.err;
        const fs::path out = work / (row.args.find("-d locked") != std::string::npos ? "locked"
                                     : row.args.find("-d kept") != std::string::npos ? "kept"
                                                                                     : "out");
        EXPECT_EQ(snapshot(out), row.onDisk);
    }
    EXPECT_EQ(sh(dir.path(), "ls -A"), "home\nwork\n") << "written beside the output folder";
}
