// zip, tar and gzip as a user types them: every tar extension, levels, exclusion, the
// encryption read back by 7z, names that are not UTF-8 or hold control characters.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

namespace {

struct TarType {
    std::string extension;
    std::string bsdtarFilter;  // bsdtar's option for the same compression
    std::string magic;         // the first bytes of such a file, as od -An -tx1 shows them
};

}  // namespace

// tqarchive writes what the name says and bsdtar reads it; bsdtar writes it and untar reads it.
TEST(Create, EveryTarExtensionRoundTripsWithBsdtarBothWays) {
    if (!toolAvailable("bsdtar")) {
        GTEST_SKIP() << "bsdtar is not installed";
    }
    const TarType types[] = {{".tar", "", ""},  // checked below by its "ustar" header instead
                             {".tgz", "--gzip", "1f 8b"},
                             {".tar.gz", "--gzip", "1f 8b"},
                             {".tbz", "--bzip2", "42 5a 68"},
                             {".tbz2", "--bzip2", "42 5a 68"},
                             {".tar.bz2", "--bzip2", "42 5a 68"},
                             {".txz", "--xz", "fd 37 7a"},
                             {".tar.xz", "--xz", "fd 37 7a"},
                             {".tzst", "--zstd", "28 b5 2f"},
                             {".tar.zst", "--zstd", "28 b5 2f"},
                             {".tar.lz4", "--lz4", "04 22 4d"},
                             {".tar.lzma", "--lzma", "5d 00 00"},
                             {".tlz", "--lzip", "4c 5a 49"},
                             {".tar.lz", "--lzip", "4c 5a 49"},
                             {".taz", "-Z", "1f 9d 90"},
                             {".tar.Z", "-Z", "1f 9d 90"}};
    TempDir dir;
    makeSampleTree(dir / "tree");
    for (const TarType& type : types) {
        SCOPED_TRACE(type.extension);
        const std::string mine = "t" + type.extension, theirs = "b" + type.extension;
        const auto packed = tqarchive(dir.path(), "tar " + mine + " tree -q");
        ASSERT_EQ(packed.status, 0) << packed.err;
        const std::string magic = sh(dir.path(), "head -c 3 " + mine + " | od -An -tx1");
        EXPECT_NE(magic.find(type.magic), std::string::npos) << magic;
        sh(dir.path(), "rm -rf out in && mkdir out && bsdtar -xf " + mine +
                           " -C out && bsdtar -cf " + theirs + " " + type.bsdtarFilter + " tree");
        EXPECT_EQ(snapshot(dir / "out/tree"), snapshot(dir / "tree"));
        EXPECT_EQ(tqarchive(dir.path(), "untar " + theirs + " -d in -q").err, "");
        EXPECT_EQ(snapshot(dir / "in/tree"), snapshot(dir / "tree"));
    }
    EXPECT_EQ(sh(dir.path(), "head -c 262 t.tar | tail -c 5"), "ustar");
}

TEST(Create, LevelsFromStoredToSmallest) {
    TempDir dir;
    sh(dir.path(), "seq 1 200000 > n.txt");
    const auto sizeOf = [&](const std::string& file) { return fs::file_size(dir / file); };
    for (const std::string pack : {"zip z%.zip n.txt", "tar t%.tgz n.txt", "gzip n.txt -d g%"}) {
        SCOPED_TRACE(pack);
        for (const std::string level : {"-0", "-1", "--level 9", "--level=1 -9"}) {
            std::string args = pack;
            args.replace(args.find('%'), 1, level.substr(level.size() - 1));
            ASSERT_EQ(tqarchive(dir.path(), args + " -q " + level).status, 0) << args;
        }
    }
    // 0 stores; 9 is smaller than 1; the last level given wins.
    for (const std::string name : {"z%.zip", "t%.tgz", "g%/n.txt.gz"}) {
        const auto at = [&](char level) {
            std::string file = name;
            file[file.find('%')] = level;
            return sizeOf(file);
        };
        EXPECT_TRUE(at('0') > at('1') && at('1') > at('9')) << name;
    }
    EXPECT_GE(sizeOf("z0.zip"), sizeOf("n.txt"));
    EXPECT_NE(sh(dir.path(), "7z l -slt z0.zip").find("Method = Store"), std::string::npos);
}

TEST(Create, ExcludedPathsAndNamesAreLeftOutWithEverythingBeneath) {
    struct Exclusion {
        std::string options;
        std::string listed;
    };
    const Exclusion cases[] = {
        {"--exclude '*.o'",
         "tree/\ntree/.git/\ntree/.git/config\ntree/keep.txt\ntree/src/\n"
         "tree/src/main.c\n"},
        {"--exclude .git --exclude 'tree/src'", "tree/\ntree/a.o\ntree/keep.txt\n"},
        {"--exclude 'tree/*.?'", "tree/\ntree/.git/\ntree/.git/config\ntree/keep.txt\ntree/src/\n"},
        {"--exclude tree", ""},
    };
    TempDir dir;
    sh(dir.path(),
       "mkdir -p tree/.git tree/src && touch tree/a.o tree/keep.txt "
       "tree/.git/config tree/src/main.c tree/src/main.o");
    for (const Exclusion& exclusion : cases) {
        for (const std::string pack : {"zip e.zip", "tar e.tar"}) {
            const auto run = tqarchive(dir.path(), pack + " tree " + exclusion.options);
            EXPECT_EQ(run.output, exclusion.listed) << pack << " " << exclusion.options << run.err;
        }
    }
}

// The default must be the strongest method: read back by 7z, not by what tqarchive says.
TEST(Create, ZipPasswordEncryptsWithAes256UnlessAnotherMethodIsChosen) {
    if (!toolAvailable("7z")) {
        GTEST_SKIP() << "7z is not installed";
    }
    const std::pair<std::string, std::string> methods[] = {{"", "AES-256"},
                                                           {"--encryption aes128", "AES-128"},
                                                           {"--encryption zipcrypt", "ZipCrypto"}};
    TempDir dir;
    writeFile(dir / "a.txt", "secret\n");
    for (const auto& [option, method] : methods) {
        sh(dir.path(), "rm -f s.zip && printf 'pw\\n' > pw && " + program() +
                           " zip s.zip a.txt -q --password-file pw " + option);
        EXPECT_NE(sh(dir.path(), "7z l -slt -ppw s.zip | grep '^Method'").find(method),
                  std::string::npos)
            << option;
    }
}

TEST(Create, NamesThatAreNotUtf8OrHoldControlCharactersPackWholeAndPrintEscaped) {
    TempDir dir;
    const std::string latin = "\"$(printf '\\351t\\351.txt')\"";
    sh(dir.path(), "mkdir tree && printf latin > tree/" + latin +
                       " && printf ctrl > \"tree/$(printf 'a\\033[31mred\\007.txt')\"");
    // A zip stores the bytes without the UTF-8 flag, so readers take them as CP437.
    for (const auto& [format, extracted] :
         {std::pair<std::string, std::string>{"tar", latin}, {"zip", "ΘtΘ.txt"}}) {
        SCOPED_TRACE(format);
        const std::string archive = "n." + format;
        const auto packed = tqarchive(dir.path(), format + " " + archive + " tree");
        EXPECT_EQ(packed.output + packed.err,
                  "tree/\ntree/a\\033[31mred\\a.txt\ntree/\\351t\\351.txt\n");
        const auto unpacked = tqarchive(dir.path(), "un" + format + " " + archive + " -d out");
        EXPECT_TRUE(unpacked.err.empty() &&
                    unpacked.output.find("/tree/a\\033[31mred\\a.txt\n") != std::string::npos)
            << unpacked.output << unpacked.err;
        EXPECT_EQ(sh(dir.path(), "cat out/tree/" + extracted + " && rm -r out"), "latin");
    }
    if (toolAvailable("bsdtar")) {  // a tar holds the name's own bytes, as bsdtar stores them
        EXPECT_EQ(sh(dir.path(), "bsdtar -tf n.tar | grep -v '/$' | sort | od -c"),
                  sh(dir.path(), "bsdtar -cf - tree | bsdtar -tf - | grep -v '/$' | sort | od -c"));
    }
}
