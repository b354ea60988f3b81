// Leading folders dropped from entry names before they are placed, on a GNU tar archive.
#include <gtest/gtest.h>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

struct Strip {
    unsigned components;
    std::vector<std::string> select;
    std::string extracted;  // the output folder's listing afterwards
};

TEST(StripComponents, DropsLeadingFoldersOfNamesAndHardLinkTargets) {
    REQUIRE_TOOLS("tar");
    TempDir dir;
    sh(dir.path(),
       "mkdir -p project-1.2/src && printf c > project-1.2/src/a.c && printf r > "
       "project-1.2/README && ln project-1.2/README project-1.2/copy && printf t > top.txt && "
       "tar cf p.tar project-1.2 top.txt ./project-1.2/src/a.c");
    const std::vector<Strip> cases = {
        {.components = 0,
         .select = {},
         .extracted = "project-1.2/ project-1.2/README=r project-1.2/copy=r project-1.2/src/ "
                      "project-1.2/src/a.c=c top.txt=t"},
        // "top.txt" has nothing left and is not written; "./" is no component.
        {.components = 1, .select = {}, .extracted = "README=r copy=r src/ src/a.c=c"},
        {.components = 2, .select = {}, .extracted = "a.c=c"},
        {.components = 9, .select = {}, .extracted = ""},
        // Selection matches the names as stored, before they are stripped.
        {.components = 1, .select = {"project-1.2/src"}, .extracted = "src/ src/a.c=c"},
    };
    for (const Strip& row : cases) {
        SCOPED_TRACE("strip " + std::to_string(row.components));
        const fs::path out = dir / ("out" + std::to_string(&row - cases.data()));
        core::ExtractOptions options = core::ExtractOptions::safe();
        options.stripComponents = row.components;
        options.select = u16list(row.select);
        const std::string said = outcome(
            [&] {
                return core::extractArchiveWithOptions(u16(dir / "p.tar"), u16(out), u"tar",
                                                       options)
                    .written;
            },
            dir.path());
        EXPECT_EQ(said.find('!'), std::string::npos) << said;
        EXPECT_EQ(listing(out), row.extracted);
    }
    // The hard link is still a link to the file it named, stripped the same way.
    EXPECT_EQ(fs::hard_link_count(dir / "out1/copy"), 2u);
}

TEST(StripComponents, AStrippedNameIsStillConfined) {
    TempDir dir;
    python(dir.path(), "tar('climb.tar', reg('a/../../evil.txt', b'x'))");
    core::ExtractOptions options = core::ExtractOptions::safe();
    options.stripComponents = 1;
    const std::string said = outcome(
        [&] {
            return core::extractArchiveWithOptions(u16(dir / "climb.tar"), u16(dir / "out"), u"tar",
                                                   options)
                .written;
        },
        dir.path());
    EXPECT_NE(said.find("!extractArchive:entryOutsideFolder"), std::string::npos) << said;
    EXPECT_FALSE(fs::exists(dir / "evil.txt"));
}

}  // namespace
}  // namespace tqtest
