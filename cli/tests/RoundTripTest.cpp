// Every command round trip on real trees, as a user types them.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

TEST(RoundTrip, EveryArchiveFormatBringsTheTreeBackAndListsNamesInSortedOrder) {
    // The library gives tar and tgz names without the folder slash; by-extension archives
    // (.tar.xz) keep it.
    for (const std::string pack :
         {"zip t.zip", "zip t.zip --password pw", "tar t.tgz", "tar t.tar", "tar t.tar.xz"}) {
        const std::string slash = pack.ends_with(".tgz") || pack.ends_with(".tar") ? "" : "/";
        SCOPED_TRACE(pack);
        TempDir dir;
        makeSampleTree(dir / "tree");
        const auto packed = tqarchive(dir.path(), pack + " tree");
        EXPECT_EQ(packed.err, "");
        EXPECT_EQ(packed.out, "tree" + slash + "\ntree/docs" + slash + "\ntree/docs/résumé.txt\n" +
                                  "tree/docs/日本語" + slash + "\ntree/docs/日本語/メモ.txt\n" +
                                  "tree/docs/日本語/深い" + slash +
                                  "\ntree/docs/日本語/深い/more.bin\ntree/empty" + slash +
                                  "\ntree/readme.txt\ntree/😀 smile.txt\n");
        const auto unpacked = tqarchive(dir.path(), "un" + pack + " -d out -q");
        EXPECT_EQ(unpacked.out + unpacked.err, "");
        EXPECT_EQ(snapshot(dir / "out/tree"), snapshot(dir / "tree"));
    }
}

TEST(RoundTrip, LinksAreFollowedLoopsAndBrokenLinksWarnedNothingPackedTwice) {
    TempDir dir;
    makeSampleTree(dir / "tree");
    auto expected = snapshot(dir / "tree");
    for (const auto& [name, bytes] : snapshot(dir / "tree/docs")) {
        expected["docs-link/" + name] = bytes;
    }
    expected["docs-link/"] = "";
    expected["link.txt"] = expected.at("readme.txt");
    fs::create_symlink("readme.txt", dir / "tree/link.txt");
    fs::create_symlink("docs", dir / "tree/docs-link");
    fs::create_symlink("..", dir / "tree/docs/up");  // leads back into tree/
    fs::create_symlink("nowhere", dir / "tree/broken");
    // "." under -C packs the contents; docs is also reached through "." and listed twice.
    const auto packed = tqarchive(dir.path(), "zip t.zip . docs docs/résumé.txt -C tree");
    ASSERT_EQ(packed.status, 0) << packed.err;
    EXPECT_TRUE(reports(packed, "tqarchive:symlinkLoop")) << packed.err;
    EXPECT_TRUE(reports(packed, "tqarchive:brokenLink")) << packed.err;
    ASSERT_EQ(tqarchive(dir.path(), "unzip t.zip -d out").status, 0);
    EXPECT_EQ(snapshot(dir / "out"), expected);
    EXPECT_EQ(std::count(packed.out.begin(), packed.out.end(), '\n'), std::ssize(expected));
    // An archive written inside the tree it packs is not packed into itself.
    const std::string self = "tar tree/docs/self.tar docs -C tree";
    ASSERT_EQ(tqarchive(dir.path(), self).status, 0);
    const auto again = tqarchive(dir.path(), self);
    EXPECT_TRUE(again.status == 0 && again.out.find("self.tar") == std::string::npos) << again.out;
}

TEST(RoundTrip, GzipBesideOrMirroredUnderTheOutputFolderGunzipBackAndOfPigzOutput) {
    TempDir dir;
    makeSampleTree(dir / "tree");
    writeFile(dir / "tree/old.gz", "left alone");
    const auto beside = tqarchive(dir.path(), "gzip tree/readme.txt --log diag.log");
    EXPECT_EQ(beside.out + beside.err, "tree/readme.txt.gz\n");
    shell(dir.path(), "gzip -dc tree/readme.txt.gz | cmp - tree/readme.txt");
    const std::string log = readFile(dir / "diag.log");
    EXPECT_TRUE(log.find("] tessel::io::archive::core: Read entry") != std::string::npos) << log;

    ASSERT_EQ(tqarchive(dir.path(), "gzip tree -d gz -q").status, 0);
    EXPECT_FALSE(fs::exists(dir / "gz/tree/old.gz.gz"));
    ASSERT_EQ(tqarchive(dir.path(), "gunzip gz -d back -q").err, "");
    auto expected = snapshot(dir / "tree");
    expected.erase("old.gz");
    expected.erase("readme.txt.gz");
    expected.erase("empty/");  // gzip has no folders to carry
    EXPECT_EQ(snapshot(dir / "back/gz/tree"), expected);
    if (!toolAvailable("pigz")) {
        GTEST_SKIP() << "pigz is not installed";
    }
    // pigz writes independent blocks joined by empty stored blocks.
    writeFile(dir / "big.bin", randomBytes(300000, 7));
    shell(dir.path(), "pigz -c big.bin > big.bin.gz");
    EXPECT_EQ(tqarchive(dir.path(), "gunzip big.bin.gz -d pigz").out, "pigz/big.bin\n");
    shell(dir.path(), "cmp big.bin pigz/big.bin");
}

TEST(RoundTrip, PasswordPromptedWithoutEchoOrReadFromTheFirstLineOfAFile) {
    if (!toolAvailable("script")) {
        GTEST_SKIP() << "script (util-linux) is not installed";
    }
    TempDir dir;
    writeFile(dir / "s.txt", "secret data");
    // script runs the program on a terminal and records what it showed in ./shown; the
    // answer is typed once the prompt is there (20 s at most), and a moment later, once echo
    // is off.
    shell(dir.path(),
          "(for i in $(seq 400); do grep -qs 'Password: ' shown && break; sleep 0.05; done; "
          "sleep 0.2; echo 'two words') | timeout 60 script -qfec " +
              shellQuote(std::string(TQARCHIVE_PROGRAM) + " zip s.zip s.txt --password") +
              " shown");
    EXPECT_EQ(readFile(dir / "shown").find("two words"), std::string::npos);
    writeFile(dir / "pw", "two words\r\nsecond line\n");
    EXPECT_EQ(tqarchive(dir.path(), "unzip s.zip -d out --password-file /dev/stdin <pw").err, "");
    EXPECT_EQ(readFile(dir / "out/s.txt"), "secret data");
}
