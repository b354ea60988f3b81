// The header pass that refuses archives whose entries would land outside the output
// folder, and --unsafe-paths.

#include <gtest/gtest.h>

#include "CliRun.hpp"

namespace {

using namespace clitest;
using tqtest::TempDir;

struct Hostile {
    const char* name;
    const char* make;     // run in the test folder, makes ./h.<ext>
    const char* command;  // unzip or untar
    const char* archive;
    const char* escapedTo;  // where --unsafe-paths writes, relative to the test folder
};

// Readable test names in ctest.
void PrintTo(const Hostile& value, std::ostream* out) {
    *out << value.name;
}

class HostileArchive : public testing::TestWithParam<Hostile> {};

TEST_P(HostileArchive, RefusedWithNothingWrittenUnlessUnsafePathsIsGiven) {
    TempDir dir;
    shell(dir.path(), GetParam().make);
    fs::create_directories(dir / "work");
    const std::string archive = std::string("../") + GetParam().archive;

    const auto refused =
        tqarchive(dir / "work", std::string(GetParam().command) + " " + archive + " -d out");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("[tqarchive:unsafeEntryPath]"), std::string::npos) << refused.err;
    EXPECT_FALSE(fs::exists(dir / "work/out"));
    EXPECT_FALSE(fs::exists(dir / GetParam().escapedTo));

    const auto forced = tqarchive(
        dir / "work", std::string(GetParam().command) + " " + archive + " -d out --unsafe-paths");
    EXPECT_EQ(forced.status, 0) << forced.err;
    EXPECT_TRUE(fs::exists(dir / GetParam().escapedTo));  // the check was what protected
}

INSTANTIATE_TEST_SUITE_P(
    Samples, HostileArchive,
    testing::Values(
        Hostile{"zipDotDot",
                "python3 -c \"import zipfile; z=zipfile.ZipFile('h.zip','w'); "
                "z.writestr('ok.txt','fine'); z.writestr('../evil.txt','x'); z.close()\"",
                "unzip", "h.zip", "work/evil.txt"},
        Hostile{"tarDotDot",
                "python3 -c \"import tarfile,io; t=tarfile.open('h.tar','w'); "
                "i=tarfile.TarInfo('a/../../evil.txt'); i.size=1; "
                "t.addfile(i, io.BytesIO(b'x')); t.close()\"",
                "untar", "h.tar", "work/evil.txt"},
        Hostile{"tarSymlinkThenFile",
                "mkdir -p src && ln -s ../.. src/l && mkdir -p l && echo x > l/evil.txt && "
                "tar -cf h.tar -C src l && tar -rf h.tar l/evil.txt",
                "untar", "h.tar", "evil.txt"}),
    [](const testing::TestParamInfo<Hostile>& info) { return info.param.name; });

TEST(SafeArchive, AbsoluteNamesAreReRootedUnderTheOutputFolder) {
    TempDir dir;
    shell(dir.path(),
          "python3 -c \"import tarfile,io; t=tarfile.open('abs.tgz','w:gz'); "
          "i=tarfile.TarInfo('/abs/x.txt'); i.size=2; t.addfile(i, io.BytesIO(b'ok')); "
          "t.close()\"");
    const auto result = tqarchive(dir.path(), "untar abs.tgz -d out");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(tqtest::readFile(dir / "out/abs/x.txt"), "ok");
}

// Hard link targets are looked up from the current folder, not the output folder.
TEST(SafeArchive, HardLinksOnlyWhenTheOutputFolderIsTheCurrentFolder) {
    TempDir dir;
    shell(dir.path(),
          "mkdir src out && echo data > src/a.txt && ln src/a.txt src/b.txt && "
          "tar -cf h.tar -C src a.txt b.txt && echo mine > a.txt");
    const auto refused = tqarchive(dir.path(), "untar h.tar -d out");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("[tqarchive:unsafeEntryPath]"), std::string::npos) << refused.err;
    EXPECT_TRUE(fs::is_empty(dir / "out"));

    const auto here = tqarchive(dir / "out", "untar ../h.tar -d .");
    ASSERT_EQ(here.status, 0) << here.err;
    EXPECT_TRUE(fs::equivalent(dir / "out/a.txt", dir / "out/b.txt"));
    EXPECT_EQ(tqtest::readFile(dir / "a.txt"), "mine\n");
}

}  // namespace
