// Real disk conditions: a full disk (a tiny tmpfs), and, for an unprivileged user, a
// read-only file in the way and a folder that may not be looked into.
#include <archive/core/archivecore.hpp>

#include "ExtractTest.hpp"

namespace core = tessel::io::archive::core;
using namespace tqtest;

TEST_F(ExtractTest, FullDiskStopsWithOutputDiskFull) {
    REQUIRE_TOOLS("zip", "tar", "gzip");
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    writeFile(dir / "small.txt", "fits");
    writeFile(dir / "big.bin", randomBytes(1 << 20, 5));  // does not compress
    sh("zip -q a.zip small.txt big.bin && tar czf a.tgz small.txt big.bin && gzip -k big.bin");
    // Extraction removes the entry that filled the disk and keeps the one before;
    // decompression removes nothing itself, so its partial output stays.
    for (const auto& [archive, format, left] : {std::tuple{"a.zip", u"zip", "small.txt=fits"},
                                                {"a.tgz", u"tgz", "small.txt=fits"},
                                                {"big.bin.gz", u"gz", "big.bin=..."}}) {
        const Call call =
            format != std::u16string(u"gz") ? extracting(archive, "tiny", format) : [&] {
                return core::uncompressgz({u16(dir / archive)}, u16(dir / "tiny"), false);
            };
        EXPECT_EQ(runInChild([&] { return outcome(call, dir / "tiny"); },
                             mountTinyTmpfs(dir / "tiny", 256 * 1024)),
                  std::string("!extractArchive:outputDiskFull | ") + left);
    }
}

TEST_F(ExtractTest, ReadOnlyTargetAndLockedFolderAreSkippedWithWarnings) {
    REQUIRE_TOOLS("python3", "gzip");
    python("a.tar", {"a.txt", "new", "ro.txt", "new", "locked/x.txt", "new", "c.txt", "new"});
    sh("printf new | gzip > ro.txt.gz && mkdir -p out/locked && printf keep > out/ro.txt && "
       "chmod 777 . out && chmod 440 out/ro.txt && chmod 0 out/locked");
    // Decompression refuses instead of skipping.
    const auto gunzip = [&] {
        return core::uncompressgz({u16(dir / "ro.txt.gz")}, u16(dir / "out"), false);
    };
    const auto both = [&] {
        const std::string extracted = outcome(extracting("a.tar", "out", u"tar"));
        return extracted + " | " + outcome(gunzip);
    };
    EXPECT_EQ(runInChild(both, dropPrivileges),
              "~/out/a.txt ~/out/c.txt ?extractArchive:unableToOverwrite(~/out/ro.txt) "
              "?extractArchive:unableToCreate(~/out/locked/x.txt) | "
              "!gunzip:javaOutputOpenError(~/out/ro.txt)");
    EXPECT_EQ(listing(dir / "out"), "a.txt=new c.txt=new locked/ ro.txt=keep");
}
