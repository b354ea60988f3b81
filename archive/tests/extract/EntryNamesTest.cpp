// Entry names no ordinary tool writes (made with Python's zipfile and tarfile), the
// output folder's rules, and the named-subset form.
#include <archive/core/archivecore.hpp>

#include "../support/LogCapture.hpp"
#include "ExtractTest.hpp"

namespace core = tessel::io::archive::core;
using namespace tqtest;
using EntryNames = ExtractTest;

// One trailing carriage return is dropped with a warning; a name that is nothing else is
// empty then, which ends the call (and, unlike other failures, removes nothing).
TEST_F(EntryNames, TrailingCarriageReturnIsDroppedWithAWarning) {
    REQUIRE_TOOLS("python3");
    for (const std::string archive : {"cr.zip", "cr.tar"}) {
        python(archive, {"a.txt\r", "A", "b.txt", "B", "\r", "x"});
        EXPECT_EQ(extract(archive, "out-" + archive, u"all"),
                  "?extractArchive:removeControlM(a.txt) ?extractArchive:removeControlM() "
                  "!extractArchive:emptyEntryFilename(tar;~/" +
                      archive + ") | a.txt=A b.txt=B");
    }
}

// Absolute names are re-rooted and ".." is kept; without an output folder (or with ".")
// names are relative to the current folder.
TEST_F(EntryNames, AbsoluteNamesAreReRootedAndDotDotIsKept) {
    REQUIRE_TOOLS("python3");
    python("names.tar", {"/etc/x", "abs", "../evil.txt", "up", "rel/y", "rel"});
    EXPECT_EQ(extract("names.tar", "out", u"tar"),
              "~/out/etc/x ~/out/../evil.txt ~/out/rel/y | etc/ etc/x=abs rel/ rel/y=rel");
    EXPECT_EQ(readFile(dir / "evil.txt"), "up");
    for (const std::string folder : {"", "."}) {
        fs::create_directories(dir / ("cwd" + folder) / "in");
        const auto here = enter(dir / ("cwd" + folder) / "in");
        const auto call = [&] {
            return core::extractArchive(u16(dir / "names.tar"), u16(folder), u"tar", u"");
        };
        EXPECT_EQ(
            outcome(call, dir / ("cwd" + folder)),
            "etc/x ../evil.txt rel/y | evil.txt=up in/ in/etc/ in/etc/x=abs in/rel/ in/rel/y=rel");
    }
}

TEST_F(EntryNames, DuplicatesAndTheNamedSubset) {
    REQUIRE_TOOLS("python3");
    python("dup.zip", {"a.txt", "a", "b.txt", "first", "c.txt", "c", "b.txt", "second", "d/", "",
                       "d/e.txt", "e"});
    // All entries: the later duplicate replaces the earlier one, both are listed.
    EXPECT_EQ(extract("dup.zip", "all", u"zip"),
              "~/all/a.txt ~/all/b.txt ~/all/c.txt ~/all/b.txt ~/all/d/ ~/all/d/e.txt | "
              "a.txt=a b.txt=second c.txt=c d/ d/e.txt=e");
    // Named: the first match wins, and reading stops once every distinct name is done (the
    // number of headers read follows the outcome).
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"b.txt", "b.txt"}, "~/s/b.txt | b.txt=first | 3"},
        {{"d/", "missing.txt", "a.txt"}, "~/s/a.txt ~/s/d/ | a.txt=a d/ | 6"},
        {{}, " |  | 1"},
    };
    for (const auto& [names, expected] : cases) {
        fs::remove_all(dir / "s");
        LogCapture log;
        const auto call = [&] {
            return core::extractArchive(u16(dir / "dup.zip"), u16(dir / "s"), u"zip",
                                        u16list(names), u"");
        };
        const std::string result = outcome(call, dir / "s");
        const auto headers = std::ranges::count_if(log.messages(), [](const std::string& m) {
            return m.starts_with("Opened entry file to read from source archive-->");
        });
        EXPECT_EQ(result + " | " + std::to_string(headers), expected);
    }
}
