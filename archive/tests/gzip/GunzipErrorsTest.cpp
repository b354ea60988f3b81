// Decompression into a folder the user may not enter names the output it cannot open,
// whichever gunzip call is used, and leaves nothing behind.
#include <gtest/gtest.h>

#include "../support/Outcomes.hpp"
#include "../support/TestSupport.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

TEST(GunzipErrors, LockedOutputFolderIsTheOutputOpenErrorNamingTheOutput) {
    REQUIRE_TOOLS("gzip");
    TempDir dir;
    sh(dir.path(),
       "printf alpha > a.txt && gzip a.txt && mkdir locked && chmod 777 . && "
       "chmod 644 a.txt.gz && chmod 0 locked");
    const auto both = [&] {
        const auto here = enter(dir.path());
        const std::string plain =
            outcome([&] { return core::uncompressgz({u"a.txt.gz"}, u16(dir / "locked"), false); },
                    dir.path());
        const std::string withOptions = outcome(
            [&] {
                return core::uncompressgzWithOptions({u"a.txt.gz"}, u16(dir / "locked"), false, {});
            },
            dir.path());
        return plain + " | " + withOptions;
    };
    EXPECT_EQ(runInChild(both, dropPrivileges),
              "!gunzip:javaOutputOpenError(~/locked/a.txt) | "
              "!gunzip:javaOutputOpenError(~/locked/a.txt)");
    fs::permissions(dir / "locked", fs::perms::owner_all);
    EXPECT_EQ(listing(dir / "locked"), "");
}

}  // namespace
}  // namespace tqtest
