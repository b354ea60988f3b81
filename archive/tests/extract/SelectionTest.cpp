// Selection by pattern and keep-existing, on archives that Info-ZIP, GNU tar and Python make.
#include <gtest/gtest.h>

#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/replace.hpp>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

struct Selection {
    std::vector<std::string> patterns;
    std::string extracted;  // the output folder's listing | the patterns reported ("@": archive)
};

TEST(Selection, NamesFoldersAndWildcardsAgainstTheStoredNames) {
    REQUIRE_TOOLS("zip", "tar");
    TempDir dir;
    const std::string files = "docs notes.txt n1.txt 'img[1].png' img1.png x.md";
    sh(dir.path(),
       "mkdir -p src/docs/sub && cd src && for f in docs/a.txt docs/sub/b.txt notes.txt "
       "n1.txt 'img[1].png' img1.png x.md; do printf x > \"$f\"; done && zip -q -r ../s.zip " +
           files + " && tar cf ../s.tar " + files);
    const std::string docs = "docs/ docs/a.txt=x docs/sub/ docs/sub/b.txt=x";
    const std::string missing = "TESSEL:io:archive:extractArchive:entryNotFound(";
    const std::vector<Selection> cases = {
        {{"missing.txt", "notes.txt"}, "notes.txt=x | " + missing + "missing.txt;@)"},
        {{"docs"}, docs + " | "},
        {{"docs/"}, docs + " | "},
        {{"docs/sub"}, "docs/ docs/sub/ docs/sub/b.txt=x | "},
        {{"*.txt"}, docs + " n1.txt=x notes.txt=x | "},  // "*" matches "/" too
        {{"n?.txt"}, "n1.txt=x | "},
        {{"[nx]*"}, "n1.txt=x notes.txt=x x.md=x | "},
        // A name that is also a valid pattern selects itself and what it matches.
        {{"img[1].png"}, "img1.png=x img[1].png=x | "},
        {{"doc", "*.png", "q*"},
         "img1.png=x img[1].png=x | " + missing + "doc;@) " + missing + "q*;@)"},
        {{}, docs + " img1.png=x img[1].png=x n1.txt=x notes.txt=x x.md=x | "},
    };
    for (const std::string archive : {"s.zip", "s.tar"}) {
        for (const Selection& c : cases) {
            fs::remove_all(dir / "out");
            core::ExtractOptions options;
            options.select = u16list(c.patterns);
            const core::ExtractResult result =
                core::extractArchiveWithOptions(u16(dir / archive), u16(dir / "out"),
                                                archive == "s.zip" ? u"zip" : u"tar", options);
            std::string seen = listing(dir / "out") + " | " + described(result.notFound);
            boost::algorithm::replace_all(seen, (dir / archive).string(), "@");
            EXPECT_EQ(seen, c.extracted)
                << archive << ": " << boost::algorithm::join(c.patterns, " ");
        }
    }
}

// Existing files and links are left alone with a warning each; folders merge.
TEST(KeepExisting, WarnsForEachFileKeptAndLeavesItsBytes) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    python(dir.path(),
           "tar('k.tar', folder('d'), reg('d/a.txt', b'new'), reg('b.txt', b'new'), "
           "reg('c.txt', b'new'), sym('l', 'b.txt'))");
    writeFile(dir / "out/d/a.txt", "mine");
    writeFile(dir / "out/c.txt", "mine");
    fs::create_symlink("c.txt", dir / "out/l");
    core::ExtractOptions options;
    options.keepExisting = true;
    const auto call = [&] {
        return core::extractArchiveWithOptions(u16(dir / "k.tar"), u16(dir / "out"), u"tar",
                                               options)
            .written;
    };
    const std::string said = outcome(call, dir.path());
    EXPECT_EQ(
        said + " | " + listing(dir / "out"),
        "~/out/d/ ~/out/b.txt ?extractArchive:existingFileKept(~/out/d/a.txt) "
        "?extractArchive:existingFileKept(~/out/c.txt) ?extractArchive:existingFileKept(~/out/l) | "
        "b.txt=new c.txt=mine d/ d/a.txt=mine l->c.txt");
}

}  // namespace
}  // namespace tqtest
