// Archives made by Info-ZIP, 7z, bsdtar, GNU tar and Python opened by tqarchive, and
// archives made by tqarchive opened by them.

#include <gtest/gtest.h>

#include <array>
#include <sstream>

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
        {"bsdtar", "bsdtar -czf a.tgz tree", "untar a.tgz", "tar b.tar", "bsdtar -xf b.tar -C out"},
        {"tar xz bzip2", "tar -cJf a.tar.xz tree", "untar a.tar.xz", "tar b.tar.bz2",
         "tar -xjf b.tar.bz2 -C out"},
        {"python3",
         "python3 -c \"import tarfile; t=tarfile.open('a.tar','w'); t.add('tree'); t.close()\"",
         "untar a.tar", "tar b.tgz",
         "python3 -c \"import tarfile; tarfile.open('b.tgz').extractall('out')\""}};
    std::string missing;
    for (const auto& [tools, make, open, pack, unpack] : rows) {
        std::istringstream names(tools);
        const std::size_t before = missing.size();
        for (std::string tool; names >> tool;) {
            missing += toolAvailable(tool) ? "" : " " + tool;
        }
        if (missing.size() != before) {
            continue;
        }
        SCOPED_TRACE(make);
        TempDir dir;
        makeSampleTree(dir / "tree");
        shell(dir.path(), make);
        EXPECT_EQ(tqarchive(dir.path(), open + " -d in").err, "");
        EXPECT_EQ(snapshot(dir / "in/tree"), snapshot(dir / "tree"));
        EXPECT_EQ(tqarchive(dir.path(), pack + " tree -q").err, "");
        fs::create_directories(dir / "out");
        shell(dir.path(), unpack);
        EXPECT_EQ(snapshot(dir / "out/tree"), snapshot(dir / "tree"));
    }
    if (!missing.empty()) {
        GTEST_SKIP() << "not installed:" << missing;
    }
}
