// The header pass that refuses archives whose entries would land outside the output
// folder, and --unsafe-paths.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

TEST(Safety, EscapingEntriesRefusedWithNothingWrittenUnlessUnsafePathsIsGiven) {
    if (!toolAvailable("python3")) {
        GTEST_SKIP() << "python3 is not installed";
    }
    // Each makes ./h.zip or ./h.tar, whose entry lands at the path beside it when forced.
    const std::pair<std::string, std::string> samples[] = {
        {"python3 -c \"import zipfile; z=zipfile.ZipFile('h.zip','w'); "
         "z.writestr('ok.txt','fine'); z.writestr('../evil.txt','x'); z.close()\"",
         "work/evil.txt"},
        {"echo x > evil.txt && tar -cPf h.tar --transform 's,^,a/../../,' evil.txt",
         "work/evil.txt"},
        {"mkdir -p src l && ln -s ../.. src/l && echo x > l/evil.txt && "
         "tar -cf h.tar -C src l && tar -rf h.tar l/evil.txt",
         "evil.txt"}};
    for (const auto& [make, escapedTo] : samples) {
        TempDir dir;
        shell(dir.path(), make + " && mkdir work");
        const std::string unpack = fs::exists(dir / "h.zip") ? "unzip ../h.zip" : "untar ../h.tar";
        const auto refused = tqarchive(dir / "work", unpack + " -d out");
        EXPECT_TRUE(refused.status == 1 && reports(refused, "tqarchive:unsafeEntryPath"))
            << refused.err;
        EXPECT_FALSE(fs::exists(dir / "work/out") || fs::exists(dir / escapedTo));
        EXPECT_EQ(tqarchive(dir / "work", unpack + " -d out --unsafe-paths").status, 0);
        EXPECT_TRUE(fs::exists(dir / escapedTo)) << make;  // the check was what protected
    }
}

// Absolute names are re-rooted; hard link targets are looked up from the current folder,
// not the output folder, so hard links are refused unless the two are the same.
TEST(Safety, AbsoluteNamesReRootedHardLinksOnlyIntoTheCurrentFolder) {
    TempDir dir;
    shell(dir.path(),
          "mkdir src out && echo data > src/a.txt && ln src/a.txt src/b.txt && "
          "tar -cf h.tar -C src a.txt b.txt && echo mine > a.txt && "
          "tar -czf abs.tgz -P --transform 's,^,/abs/,' -C src a.txt");
    ASSERT_EQ(tqarchive(dir.path(), "untar abs.tgz -d re").status, 0);
    EXPECT_EQ(readFile(dir / "re/abs/a.txt"), "data\n");
    const auto refused = tqarchive(dir.path(), "untar h.tar -d out");
    EXPECT_TRUE(refused.status == 1 && reports(refused, "tqarchive:unsafeEntryPath"))
        << refused.err;
    EXPECT_TRUE(fs::is_empty(dir / "out"));
    ASSERT_EQ(tqarchive(dir / "out", "untar ../h.tar -d .").status, 0);
    EXPECT_TRUE(fs::equivalent(dir / "out/a.txt", dir / "out/b.txt"));
    EXPECT_EQ(readFile(dir / "a.txt"), "mine\n");
}
