// Every command round trip on real trees, as a user types them.

#include <algorithm>
#include <sstream>

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

TEST(RoundTrip, EveryArchiveFormatBringsTheTreeBackAndListsNamesInSortedOrder) {
    for (const std::string pack :
         {"zip t.zip", "zip t.zip --password pw", "tar t.tgz", "tar t.tar", "tar t.tar.xz"}) {
        const std::string slash = "/";  // folders are listed with it, whatever the format
        SCOPED_TRACE(pack);
        TempDir dir;
        makeSampleTree(dir / "tree");
        const auto packed = tqarchive(dir.path(), pack + " tree");
        std::string listing = "tree" + slash + "\n";  // then what is beneath, sorted by name
        for (const auto& [name, kind] : snapshot(dir / "tree")) {
            listing += "tree/" + name + (kind == "/" ? slash : "") + "\n";
        }
        EXPECT_EQ(packed.err + packed.output, listing);
        // Relative names for the archive, the folder and the log mean what they say, though
        // extraction works from inside the folder.
        const auto unpacked = tqarchive(dir.path(), "un" + pack + " -d out -q --log un.log");
        EXPECT_EQ(unpacked.output + unpacked.err, "");
        EXPECT_EQ(snapshot(dir / "out/tree"), snapshot(dir / "tree"));
        std::string command, archive;
        std::istringstream(pack) >> command >> archive;
        EXPECT_NE(readFile(dir / "un.log")
                      .find("Opened source archive file on disk for reading-->" + archive + "\n"),
                  std::string::npos)
            << readFile(dir / "un.log");
    }
}

TEST(RoundTrip, LinksAreFollowedLoopsAndBrokenLinksWarnedNothingPackedTwice) {
    TempDir dir;
    makeSampleTree(dir / "tree");
    // ref: the tree as it unpacks, links followed; tree/docs/up leads back into tree/.
    sh(dir.path(),
       "cp -r tree ref && cp -r tree/docs ref/docs-link && cp tree/readme.txt ref/link.txt && "
       "cd tree && ln -s readme.txt link.txt && ln -s docs docs-link && ln -s .. docs/up && "
       "ln -s nowhere broken");
    // "." under -C packs the contents; docs is also reached through "." and listed twice.
    // A walk that missed the loop would not end: it gets 10 s, then SIGTERM (status 124)
    // and, should it go on, SIGKILL (137).
    const auto packed =
        tqarchive(dir.path(), "zip t.zip . docs docs/résumé.txt -C tree", "timeout -k 2 10");
    ASSERT_TRUE(packed.status != 124 && packed.status != 137)
        << "the walk did not end: the loop was not seen";
    ASSERT_TRUE(packed.status == 0 && reports(packed, "tqarchive:symlinkLoop") &&
                reports(packed, "tqarchive:brokenLink"))
        << packed.err;
    ASSERT_EQ(tqarchive(dir.path(), "unzip t.zip -d out").status, 0);
    EXPECT_EQ(snapshot(dir / "out"), snapshot(dir / "ref"));
    EXPECT_EQ(std::ranges::count(packed.output, '\n'), std::ssize(snapshot(dir / "ref")));
    // An archive written inside the tree it packs is not packed into itself.
    writeFile(dir / "tree/docs/self.tar", "an earlier run's");
    const auto tar = tqarchive(dir.path(), "tar tree/docs/self.tar docs -C tree");
    EXPECT_TRUE(tar.status == 0 && tar.output.find("self.tar") == std::string::npos) << tar.output;
}

// GNU gzip reads what tqarchive wrote and tqarchive what GNU gzip wrote.
TEST(RoundTrip, GzipBesideOrMirroredUnderTheOutputFolderAndGunzipBack) {
    TempDir dir;
    makeSampleTree(dir / "tree");
    auto expected = snapshot(dir / "tree");
    expected.erase("empty");                                        // gzip has no folders to carry
    writeFile(dir / "tree/old.gz", "left alone");                   // a .gz input is left alone
    sh(dir.path(), "echo one > notes.txt && echo two > notes.md");  // one stem, two outputs
    const auto beside =
        tqarchive(dir.path(), "gzip tree/readme.txt notes.txt notes.md --log diag.log");
    EXPECT_EQ(beside.output + beside.err, "tree/readme.txt.gz\nnotes.txt.gz\nnotes.md.gz\n");
    EXPECT_NE(readFile(dir / "diag.log").find("] tessel::io::archive::core: Read entry"),
              std::string::npos);
    sh(dir.path(), "gzip -c tree/*/*/*/more.bin > m.gz");
    ASSERT_EQ(tqarchive(dir.path(), "gzip tree -d gz -q").status, 0);
    ASSERT_EQ(tqarchive(dir.path(), "gunzip gz m.gz -d back -q").err, "");
    EXPECT_EQ(snapshot(dir / "back/gz/tree"), expected);
    sh(dir.path(),
       "cmp back/m tree/*/*/*/more.bin && gzip -dc tree/readme.txt.gz | cmp - tree/readme.txt");
}

TEST(RoundTrip, PasswordPromptedTwiceWithoutEchoOrReadFromTheFirstLineOfAFile) {
    if (!toolAvailable("script")) {
        GTEST_SKIP() << "script (util-linux) is not installed";
    }
    TempDir dir;
    // script runs the program on a terminal and records what it showed in ./shown; each
    // answer is typed once its prompt is there (20 s at most), and a moment later, once echo
    // is off. Creating asks twice; answers that differ write nothing (and fail).
    const auto typed = [&](const std::string& first, const std::string& second) {
        runIn(dir.path(),
              "rm -f shown && (for prompt in 'Password: ' 'Repeat the password: '; do "
              "for i in $(seq 400); do grep -qs \"$prompt\" shown && break; sleep 0.05; "
              "done; sleep 0.2; [ \"$prompt\" = 'Password: ' ] && echo " +
                  shellQuote(first) + " || echo " + shellQuote(second) +
                  "; done) | timeout 60 script -qfec " +
                  shellQuote(program() + " zip s.zip s.txt --password") + " shown");
        return readFile(dir / "shown");
    };
    sh(dir.path(), "echo secret data > s.txt && printf 'two words\\r\\nsecond line\\n' > pw");
    EXPECT_NE(typed("two words", "two wordz").find("[tqarchive:passwordMismatch]"),
              std::string::npos);
    EXPECT_FALSE(fs::exists(dir / "s.zip"));
    EXPECT_EQ(typed("two words", "two words").find("two words"), std::string::npos);
    EXPECT_EQ(tqarchive(dir.path(), "unzip s.zip -d out --password-file /dev/stdin <pw").err, "");
    EXPECT_EQ(readFile(dir / "out/s.txt"), "secret data\n");
}
