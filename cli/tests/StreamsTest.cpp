// "-" as the archive: standard input for unzip, untar, list and test, standard output for
// zip and tar; gzip and gunzip -c.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

TEST(Streams, ArchivesWrittenToStandardOutputAndReadFromStandardInput) {
    TempDir dir;
    makeSampleTree(dir / "tree");
    const auto zipped = tqarchive(dir.path(), "zip - tree > s.zip");
    const auto tarred = tqarchive(dir.path(), "tar - tree --format tar.gz > s.tgz");
    EXPECT_TRUE(zipped.status == 0 && zipped.err.empty() && tarred.status == 0 &&
                tarred.err.empty())
        << zipped.err << tarred.err;
    EXPECT_EQ(tqarchive(dir.path(), "tar - tree > p.tar").status, 0);
    EXPECT_EQ(sh(dir.path(), "head -c 262 p.tar | tail -c 5; head -c 2 s.tgz | od -An -tx1"),
              "ustar 1f 8b\n");
    EXPECT_EQ(sh(dir.path(), "gzip -t s.tgz"), "");  // nothing after the gzip stream either
    for (const std::string unpack :
         {"unzip - -d z < s.zip", "untar - -d t < s.tgz", "untar - -d p < p.tar"}) {
        EXPECT_EQ(tqarchive(dir.path(), unpack + " -q").err, "") << unpack;
    }
    EXPECT_EQ(snapshot(dir / "z/tree"), snapshot(dir / "tree"));
    EXPECT_EQ(snapshot(dir / "t/tree"), snapshot(dir / "tree"));
    EXPECT_EQ(snapshot(dir / "p/tree"), snapshot(dir / "tree"));
    EXPECT_EQ(tqarchive(dir.path(), "list - < s.tgz").output,
              tqarchive(dir.path(), "list s.zip").output);
    EXPECT_EQ(tqarchive(dir.path(), "test - < s.zip").status, 0);
    if (toolAvailable("unzip")) {
        sh(dir.path(), "unzip -tq s.zip");
    }
}

TEST(Streams, GzipAndGunzipToStandardOutputLeaveNoFiles) {
    TempDir dir;
    sh(dir.path(), "echo one > a.txt && echo two > b.txt");
    const auto compressed = tqarchive(dir.path(), "gzip -c a.txt b.txt > ab.gz");
    EXPECT_EQ(compressed.output + compressed.err, "");
    EXPECT_EQ(sh(dir.path(), "gzip -dc ab.gz && ls"), "one\ntwo\na.txt\nab.gz\nb.txt\n");
    EXPECT_EQ(tqarchive(dir.path(), "gunzip --stdout ab.gz").output, "one\ntwo\n");
    EXPECT_EQ(sh(dir.path(), "ls"), "a.txt\nab.gz\nb.txt\n");
}

TEST(Streams, CompressedDataIsNotWrittenToATerminal) {
    if (!toolAvailable("script")) {
        GTEST_SKIP() << "script (util-linux) is not installed";
    }
    TempDir dir;
    writeFile(dir / "a.txt", "text\n");
    for (const std::string args : {"zip - a.txt", "tar - a.txt", "gzip -c a.txt"}) {
        const std::string shown =
            runIn(dir.path(), "script -qec " + shellQuote(program() + " " + args) + " /dev/null")
                .output;
        EXPECT_NE(shown.find("[tqarchive:terminalOutput]"), std::string::npos) << args << shown;
    }
}
