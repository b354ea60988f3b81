// Archives made by tqarchive opened by unzip, 7z, bsdtar and GNU tar, and archives made
// by them (and by pigz) opened by tqarchive.

#include <gtest/gtest.h>

#include "CliRun.hpp"

namespace {

using namespace clitest;
using tqtest::TempDir;
using tqtest::toolAvailable;

struct ToolCase {
    const char* name;
    const char* tool;
    const char* command;  // run in the test folder; the sample tree is ./tree
};

struct Interop {
    ToolCase tool;
    const char* cli;  // tqarchive arguments
};

// Readable test names in ctest.
void PrintTo(const Interop& value, std::ostream* out) {
    *out << value.tool.name << ": " << value.cli;
}

class MadeByTqarchive : public testing::TestWithParam<Interop> {};

TEST_P(MadeByTqarchive, OpenedByTheTool) {
    if (!toolAvailable(GetParam().tool.tool)) {
        GTEST_SKIP() << GetParam().tool.tool << " is not installed";
    }
    TempDir dir;
    makeSampleTree(dir / "tree");
    const auto packed = tqarchive(dir.path(), GetParam().cli);
    ASSERT_EQ(packed.status, 0) << packed.err;
    fs::create_directories(dir / "out");
    shell(dir.path(), GetParam().tool.command);
    EXPECT_EQ(snapshot(dir / "out/tree"), snapshot(dir / "tree"));
}

INSTANTIATE_TEST_SUITE_P(
    Tools, MadeByTqarchive,
    testing::Values(Interop{{"unzip", "unzip", "unzip -q a.zip -d out"}, "zip a.zip tree"},
                    Interop{{"unzipZipCrypto", "unzip", "unzip -q -P pw a.zip -d out"},
                            "zip a.zip tree --password pw --encryption zipcrypt"},
                    Interop{{"sevenZipAes", "7z", "7z x -y -ppw -oout a.zip >/dev/null"},
                            "zip a.zip tree --password pw"},
                    Interop{{"bsdtar", "bsdtar", "bsdtar -xf a.tgz -C out"}, "tar a.tgz tree"},
                    Interop{{"gnuTar", "tar", "tar -xf a.tar -C out"}, "tar a.tar tree"},
                    Interop{{"gnuTarBzip2", "bzip2", "tar -xjf a.tar.bz2 -C out"},
                            "tar a.tar.bz2 tree"}),
    [](const testing::TestParamInfo<Interop>& info) { return info.param.tool.name; });

class MadeByTool : public testing::TestWithParam<Interop> {};

TEST_P(MadeByTool, OpenedByTqarchive) {
    if (!toolAvailable(GetParam().tool.tool)) {
        GTEST_SKIP() << GetParam().tool.tool << " is not installed";
    }
    TempDir dir;
    makeSampleTree(dir / "tree");
    shell(dir.path(), GetParam().tool.command);
    const auto unpacked = tqarchive(dir.path(), std::string(GetParam().cli) + " -d out");
    ASSERT_EQ(unpacked.status, 0) << unpacked.err;
    EXPECT_EQ(snapshot(dir / "out/tree"), snapshot(dir / "tree"));
}

INSTANTIATE_TEST_SUITE_P(
    Tools, MadeByTool,
    testing::Values(
        Interop{{"infoZip", "zip", "zip -qr a.zip tree"}, "unzip a.zip"},
        Interop{{"infoZipPassword", "zip", "zip -qr -P 'p w' a.zip tree"},
                "unzip a.zip --password 'p w'"},
        Interop{{"sevenZipAes", "7z", "7z a -tzip -mem=AES256 -ppw a.zip tree >/dev/null"},
                "unzip a.zip --password=pw"},
        Interop{{"bsdtar", "bsdtar", "bsdtar -czf a.tgz tree"}, "untar a.tgz"},
        Interop{{"gnuTarXz", "xz", "tar -cJf a.tar.xz tree"}, "untar a.tar.xz"},
        Interop{{"pythonTar", "python3",
                 "python3 -c \"import tarfile; t=tarfile.open('a.tar','w'); t.add('tree'); "
                 "t.close()\""},
                "untar a.tar"}),
    [](const testing::TestParamInfo<Interop>& info) { return info.param.tool.name; });

TEST(GunzipInterop, PigzOutputIsDecompressed) {
    if (!toolAvailable("pigz")) {
        GTEST_SKIP() << "pigz is not installed";
    }
    TempDir dir;
    tqtest::writeFile(dir / "data.bin", tqtest::randomBytes(300000, 7));
    shell(dir.path(), "pigz -k data.bin && mv data.bin original.bin");
    const auto result = tqarchive(dir.path(), "gunzip data.bin.gz");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "data.bin\n");
    shell(dir.path(), "cmp data.bin original.bin");
}

}  // namespace
