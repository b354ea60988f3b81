// Every command round trip on real trees, as a user types them.

#include <gtest/gtest.h>

#include "CliRun.hpp"

namespace {

using namespace clitest;
using tqtest::readFile;
using tqtest::TempDir;
using tqtest::writeFile;

struct RoundTrip {
    const char* name;
    const char* pack;    // command and archive
    const char* unpack;  // command
    bool folderSlash;    // whether folder names come back with their "/"
};

// Readable test names in ctest.
void PrintTo(const RoundTrip& value, std::ostream* out) {
    *out << value.name;
}

class ArchiveRoundTrip : public testing::TestWithParam<RoundTrip> {};

TEST_P(ArchiveRoundTrip, TreeComesBackWithNamesListedInSortedOrder) {
    TempDir dir;
    makeSampleTree(dir / "tree");
    const auto packed = tqarchive(dir.path(), std::string(GetParam().pack) + " tree");
    ASSERT_EQ(packed.status, 0) << packed.err;
    EXPECT_EQ(packed.err, "");
    const std::string slash = GetParam().folderSlash ? "/" : "";
    EXPECT_EQ(packed.out, "tree" + slash + "\ntree/docs" + slash + "\ntree/docs/résumé.txt\n" +
                              "tree/docs/日本語" + slash + "\ntree/docs/日本語/メモ.txt\n" +
                              "tree/docs/日本語/深い" + slash +
                              "\ntree/docs/日本語/深い/more.bin\ntree/empty" + slash +
                              "\ntree/readme.txt\ntree/😀 smile.txt\n");

    const std::string archive =
        std::string(GetParam().pack).substr(std::string(GetParam().pack).find(' ') + 1);
    const auto unpacked =
        tqarchive(dir.path(), std::string(GetParam().unpack) + " " + archive + " -d out -q");
    ASSERT_EQ(unpacked.status, 0) << unpacked.err;
    EXPECT_EQ(unpacked.out, "");
    EXPECT_EQ(snapshot(dir / "out/tree"), snapshot(dir / "tree"));
}

INSTANTIATE_TEST_SUITE_P(Formats, ArchiveRoundTrip,
                         // The library gives tar and tgz names without the folder slash;
                         // by-extension archives (.tar.xz) keep it.
                         testing::Values(RoundTrip{"zip", "zip t.zip", "unzip", true},
                                         RoundTrip{"zipEncrypted", "zip t.zip --password pw",
                                                   "unzip --password pw", true},
                                         RoundTrip{"tgz", "tar t.tgz", "untar", false},
                                         RoundTrip{"tar", "tar t.tar", "untar", false},
                                         RoundTrip{"tarXz", "tar t.tar.xz", "untar", true}),
                         [](const testing::TestParamInfo<RoundTrip>& info) {
                             return info.param.name;
                         });

TEST(ArchiveInputs, RootDuplicatesLinksAndLoops) {
    TempDir dir;
    makeSampleTree(dir / "tree");
    fs::create_symlink("readme.txt", dir / "tree/link.txt");
    fs::create_symlink("docs", dir / "tree/docs-link");
    fs::create_symlink("..", dir / "tree/docs/up");  // leads back into tree/
    fs::create_symlink("nowhere", dir / "tree/broken");
    // "." under -C packs the contents; docs is also reached through "." and listed twice.
    const auto packed = tqarchive(dir.path(), "zip t.zip . docs docs/résumé.txt -C tree");
    ASSERT_EQ(packed.status, 0) << packed.err;
    EXPECT_NE(packed.err.find("[tqarchive:symlinkLoop]"), std::string::npos) << packed.err;
    EXPECT_NE(packed.err.find("[tqarchive:brokenLink]"), std::string::npos) << packed.err;

    ASSERT_EQ(tqarchive(dir.path(), "unzip t.zip -d out").status, 0);
    auto expected = snapshot(dir / "tree");
    expected.erase("broken@");
    expected.erase("docs/up@");
    expected["link.txt"] = expected.at("readme.txt");
    expected.erase("link.txt@");
    expected.erase("docs-link@");
    for (const auto& [name, bytes] : snapshot(dir / "tree/docs")) {
        if (name != "up@") {
            expected["docs-link/" + name] = bytes;
        }
    }
    expected["docs-link/"] = "";
    EXPECT_EQ(snapshot(dir / "out"), expected);
    std::size_t lines = std::count(packed.out.begin(), packed.out.end(), '\n');
    EXPECT_EQ(lines, expected.size());  // nothing listed twice
}

TEST(ArchiveInputs, ArchiveInsideTheTreeIsNotPackedIntoItself) {
    TempDir dir;
    writeFile(dir / "tree/a.txt", "a");
    ASSERT_EQ(tqarchive(dir.path(), "tar tree/self.tar tree").status, 0);
    const auto again = tqarchive(dir.path(), "tar tree/self.tar tree");
    ASSERT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(again.out, "tree\ntree/a.txt\n");
}

TEST(Gzip, FilesAndFoldersBesideOrMirroredUnderTheOutputFolder) {
    TempDir dir;
    makeSampleTree(dir / "tree");
    writeFile(dir / "tree/old.gz", "left alone");
    const auto beside = tqarchive(dir.path(), "gzip tree/readme.txt");
    ASSERT_EQ(beside.status, 0) << beside.err;
    EXPECT_EQ(beside.out, "tree/readme.txt.gz\n");
    shell(dir.path(), "gzip -dc tree/readme.txt.gz | cmp - tree/readme.txt");

    const auto mirrored = tqarchive(dir.path(), "gzip tree -d gz -q");
    ASSERT_EQ(mirrored.status, 0) << mirrored.err;
    EXPECT_TRUE(fs::exists(dir / "gz/tree/docs/日本語/深い/more.bin.gz"));
    EXPECT_FALSE(fs::exists(dir / "gz/tree/old.gz.gz"));

    const auto restored = tqarchive(dir.path(), "gunzip gz -d back -q");
    ASSERT_EQ(restored.status, 0) << restored.err;
    auto expected = snapshot(dir / "tree");
    expected.erase("old.gz");
    expected.erase("readme.txt.gz");
    expected.erase("empty/");  // gzip has no folders to carry
    EXPECT_EQ(snapshot(dir / "back/gz/tree"), expected);
}

TEST(Gzip, TwoInputsForOneOutputAreRefusedBeforeWriting) {
    TempDir dir;
    writeFile(dir / "a/x.txt", "1");
    writeFile(dir / "b/x.txt", "2");
    const auto result = tqarchive(dir.path(), "gzip a/x.txt b/x.txt -d out");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("[tqarchive:duplicateOutput]"), std::string::npos) << result.err;
    EXPECT_FALSE(fs::exists(dir / "out"));
}

}  // namespace
