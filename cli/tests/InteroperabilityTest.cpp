// Archives made by Info-ZIP, 7z, bsdtar and GNU tar opened by tqarchive, and
// archives made by tqarchive opened by them.

#include <gtest/gtest.h>

#include <array>

#include "CliRun.hpp"

using namespace clitest;

TEST(Interoperability, TheTreeComesBackWholeBothWays) {
    // The tools (all installed), which pack ./tree into a.*; tqarchive unpacks a.*, then
    // packs ./tree into b.*; the tools unpack b.* into ./out.
    const std::array<std::string, 5> rows[] = {
        {"zip unzip", "zip -qr -P 'p w' a.zip tree", "unzip a.zip --password 'p w'",
         "zip b.zip --password pw --encryption zipcrypt", "unzip -q -P pw b.zip -d out"},
        {"7z", "7z a -tzip -mem=AES256 -ppw a.zip tree >/dev/null", "unzip a.zip --password=pw",
         "zip b.zip --password pw", "7z x -y -ppw -oout b.zip >/dev/null"},
        {"bsdtar", "bsdtar -czf a.tgz tree", "untar a.tgz", "tar b.tgz", "bsdtar -xf b.tgz -C out"},
        {"tar xz bzip2", "tar -cJf a.tar.xz tree", "untar a.tar.xz", "tar b.tar.bz2",
         "tar -xjf b.tar.bz2 -C out"}};
    std::string missing;
    for (const auto& [tools, make, open, pack, unpack] : rows) {
        if (runCommand("which " + tools + " >/dev/null").status != 0) {
            missing += " " + tools;
            continue;
        }
        SCOPED_TRACE(make);
        TempDir dir;
        makeSampleTree(dir / "tree");
        sh(dir.path(), make);
        EXPECT_EQ(tqarchive(dir.path(), open + " -d in").err, "");
        EXPECT_EQ(snapshot(dir / "in/tree"), snapshot(dir / "tree"));
        EXPECT_EQ(tqarchive(dir.path(), pack + " tree -q").err, "");
        sh(dir.path(), "mkdir out && " + unpack);
        EXPECT_EQ(snapshot(dir / "out/tree"), snapshot(dir / "tree"));
    }
    if (!missing.empty()) {
        GTEST_SKIP() << "not installed, one of:" << missing;
    }
}
