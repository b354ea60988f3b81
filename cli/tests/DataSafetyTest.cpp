// What tqarchive does to files the user already has: links inside folders given to gzip and
// gunzip, the permissions of the files it writes, and a standard output that cannot take
// what is written to it.
#include <sys/stat.h>

#include <string>
#include <vector>

#include "CliRun.hpp"

namespace clitest {
namespace {

unsigned permissions(const fs::path& path) {
    return fileMode(path) & 0777;
}

struct LinkedFolderCase {
    std::string name;
    std::string command;              // run in the work folder; "folder" holds the link "ext"
    std::string elsewhereFile;        // what is in the folder the link points to
    std::string mustNotAppear;        // a file that writing through the link would make
    std::string writtenInsideFolder;  // what the run writes for the file that is not a link
};

TEST(DataSafety, GzipAndGunzipOfAFolderNeverWriteThroughALinkInside) {
    const std::vector<LinkedFolderCase> cases = {
        {.name = "gzip",
         .command = "gzip folder",
         .elsewhereFile = "data.txt",
         .mustNotAppear = "data.txt.gz",
         .writtenInsideFolder = "folder/own.txt.gz"},
        {.name = "gunzip",
         .command = "gunzip folder",
         .elsewhereFile = "report.gz",
         .mustNotAppear = "report",
         .writtenInsideFolder = "folder/own.txt"},
    };
    for (const LinkedFolderCase& row : cases) {
        SCOPED_TRACE(row.name);
        TempDir work;
        fs::create_directories(work / "folder");
        fs::create_directories(work / "elsewhere");
        writeFile(work / "elsewhere/data.txt", "outside\n");
        sh(work.path(), "gzip -c elsewhere/data.txt > elsewhere/report.gz");
        writeFile(work / "folder/own.txt", "inside\n");
        sh(work.path(), "gzip -k folder/own.txt");
        if (row.name == "gzip") {
            fs::remove(work / "folder/own.txt.gz");
        } else {
            fs::remove(work / "folder/own.txt");
        }
        fs::create_directory_symlink("../elsewhere", work / "folder/ext");
        // A file of the same name as gunzip's output exists there and must stay whole.
        writeFile(work / "elsewhere/report", "keep me\n");
        const auto before = snapshot(work / "elsewhere");

        const CliResult result = tqarchive(work.path(), row.command);

        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_TRUE(reports(result, "tqarchive:linkSkipped")) << result.err;
        EXPECT_EQ(snapshot(work / "elsewhere"), before) << "a file outside the folder changed";
        EXPECT_TRUE(fs::exists(work / row.writtenInsideFolder)) << result.err;
        EXPECT_EQ(readFile(work / "elsewhere/report"), "keep me\n");
    }
}

TEST(DataSafety, ALinkNamedAsAnInputIsStillFollowed) {
    TempDir work;
    writeFile(work / "real.txt", "through a link named by the user\n");
    fs::create_symlink("real.txt", work / "named.txt");
    const CliResult result = tqarchive(work.path(), "gzip named.txt");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(sh(work.path(), "gzip -dc named.txt.gz"), "through a link named by the user\n");
}

TEST(DataSafety, APipeNamedAsAnInputFailsTheRunInsteadOfBeingLeftOut) {
    TempDir work;
    sh(work.path(), "mkfifo pipe");
    for (const std::string command : {"gzip pipe", "tar t.tar pipe", "zip t.zip pipe"}) {
        SCOPED_TRACE(command);
        const CliResult result = tqarchive(work.path(), command);
        EXPECT_EQ(result.status, 1) << result.err;
        EXPECT_TRUE(reports(result, "tqarchive:unsupportedFileType")) << result.err;
    }
    EXPECT_EQ(sh(work.path(), "ls -A"), "pipe\n");
}

struct ModeCase {
    std::string name;
    std::string setup;    // shell lines run first in the work folder
    std::string command;  // tqarchive arguments
    std::string output;   // the file whose mode is checked
    unsigned mode;        // its permission bits afterwards
};

TEST(DataSafety, WrittenFilesNeverWidenAMode) {
    const std::vector<ModeCase> cases = {
        {.name = "gzip output takes the private input's mode",
         .setup = "echo secret > s.txt && chmod 600 s.txt",
         .command = "gzip s.txt",
         .output = "s.txt.gz",
         .mode = 0600},
        {.name = "gunzip output takes the private input's mode",
         .setup = "echo secret > s.txt && gzip s.txt && chmod 600 s.txt.gz",
         .command = "gunzip s.txt.gz",
         .output = "s.txt",
         .mode = 0600},
        {.name = "gzip replacing a readable .gz still takes the input's mode",
         .setup = "echo secret > s.txt && chmod 640 s.txt && touch s.txt.gz && chmod 644 "
                  "s.txt.gz",
         .command = "gzip s.txt",
         .output = "s.txt.gz",
         .mode = 0640},
        {.name = "zip replacing a private archive keeps its mode",
         .setup = "echo a > a.txt && echo old > old.txt && zip -q t.zip old.txt && chmod 600 "
                  "t.zip",
         .command = "zip t.zip a.txt",
         .output = "t.zip",
         .mode = 0600},
        {.name = "tar replacing a group-readable archive keeps its mode",
         .setup = "echo a > a.txt && touch t.tgz && chmod 640 t.tgz",
         .command = "tar t.tgz a.txt",
         .output = "t.tgz",
         .mode = 0640},
        {.name = "a new archive gets 0666 less the umask",
         .setup = "echo a > a.txt",
         .command = "zip new.zip a.txt",
         .output = "new.zip",
         .mode = 0644},
    };
    for (const ModeCase& row : cases) {
        SCOPED_TRACE(row.name);
        TempDir work;
        sh(work.path(), row.setup);
        const CliResult result = tqarchive(work.path(), row.command, "umask 022 &&");
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(permissions(work / row.output), row.mode);
    }
}

TEST(DataSafety, GzipAndGunzipKeepTheInputsModificationTime) {
    TempDir work;
    sh(work.path(), "echo old > old.txt && touch -d '2001-02-03 04:05:06' old.txt");
    ASSERT_EQ(tqarchive(work.path(), "gzip old.txt").status, 0);
    EXPECT_EQ(fs::last_write_time(work / "old.txt.gz"), fs::last_write_time(work / "old.txt"));
    fs::remove(work / "old.txt");
    ASSERT_EQ(tqarchive(work.path(), "gunzip old.txt.gz").status, 0);
    EXPECT_EQ(fs::last_write_time(work / "old.txt"), fs::last_write_time(work / "old.txt.gz"));
}

struct StandardOutputCase {
    std::string name;
    std::string command;  // tqarchive arguments, with the redirection
    std::string identifier;
    std::string named = "";  // a text the message must hold ("" for none)
};

TEST(DataSafety, AStandardOutputThatCannotTakeTheOutputFailsTheRun) {
    const std::vector<StandardOutputCase> cases = {
        {.name = "list to a closed standard output",
         .command = "list t.tar >&-",
         .identifier = "tqarchive:standardOutputError"},
        {.name = "test to a closed standard output",
         .command = "test t.tar >&-",
         .identifier = "tqarchive:standardOutputError"},
        {.name = "list to a full disk",
         .command = "list t.tar >/dev/full",
         .identifier = "tqarchive:standardOutputError",
         .named = "No space left on device"},
        {.name = "untar naming what it wrote, to a closed standard output",
         .command = "untar t.tar -d out >&-",
         .identifier = "tqarchive:standardOutputError"},
        {.name = "gunzip -c to a closed standard output",
         .command = "gunzip -c a.txt.gz >&-",
         .identifier = "tqarchive:standardOutputClosed"},
        {.name = "gzip -c to a closed standard output",
         .command = "gzip -c a.txt >&-",
         .identifier = "tqarchive:standardOutputClosed"},
        {.name = "tar to a closed standard output",
         .command = "tar - a.txt >&-",
         .identifier = "tqarchive:standardOutputClosed"},
        {.name = "gzip -c to a full disk names standard output",
         .command = "gzip -c big.bin >/dev/full",
         .identifier = "TESSEL:io:archive:gzip:outputDiskFull",
         .named = "standard output"},
        {.name = "--version to a closed standard output",
         .command = "--version >&-",
         .identifier = "tqarchive:standardOutputError"},
    };
    TempDir work;
    writeFile(work / "a.txt", "hello\n");
    writeFile(work / "big.bin", randomBytes(1 << 20));
    sh(work.path(), "tar cf t.tar a.txt && gzip -k a.txt");
    for (const StandardOutputCase& row : cases) {
        SCOPED_TRACE(row.name);
        const CliResult result = tqarchive(work.path(), row.command);
        EXPECT_EQ(result.status, 1) << result.err;
        EXPECT_TRUE(reports(result, row.identifier)) << result.err;
        EXPECT_NE(result.err.find(row.named), std::string::npos) << result.err;
    }
    // Nothing the runs opened took standard output's place.
    EXPECT_EQ(readFile(work / "a.txt"), "hello\n");
    EXPECT_EQ(sh(work.path(), "gzip -dc a.txt.gz"), "hello\n");
}

}  // namespace
}  // namespace clitest
