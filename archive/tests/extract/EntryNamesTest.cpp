// Entry names no ordinary tool writes (made with Python's zipfile and tarfile), the
// output folder's rules, and the named-subset form.
#include <archive/core/archivecore.hpp>

#include "../support/LogCapture.hpp"
#include "ExtractTest.hpp"

namespace core = tessel::io::archive::core;
using namespace tqtest;

namespace {

class EntryNames : public ExtractTest {
  protected:
    void SetUp() override {
        if (!toolAvailable("python3")) {
            GTEST_SKIP() << "python3 is not installed";
        }
    }
};

}  // namespace

// One trailing carriage return is dropped with a warning; a name that is nothing else is
// empty then, which ends the call (and, unlike other failures, removes nothing).
TEST_F(EntryNames, TrailingCarriageReturnIsDroppedWithAWarning) {
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
    python("names.tar", {"/etc/x", "abs", "../evil.txt", "up", "rel/y", "rel"});
    EXPECT_EQ(extract("names.tar", "out", u"tar"),
              "~/out/etc/x ~/out/../evil.txt ~/out/rel/y | etc/ etc/x=abs rel/ rel/y=rel");
    for (const std::string folder : {"", "."}) {
        fs::create_directories(dir / ("cwd" + folder) / "in");
        const auto here = enter(dir / ("cwd" + folder) / "in");
        EXPECT_EQ(
            outcome(
                [&] {
                    return core::extractArchive(u16(dir / "names.tar"), u16(folder), u"tar", u"");
                },
                dir / ("cwd" + folder)),
            "etc/x ../evil.txt rel/y | evil.txt=up in/ in/etc/ in/etc/x=abs in/rel/ in/rel/y=rel");
    }
    EXPECT_EQ(readFile(dir / "evil.txt"), "up");
}

TEST_F(EntryNames, DuplicatesAndTheNamedSubset) {
    python("dup.zip", {"a.txt", "a", "b.txt", "first", "c.txt", "c", "b.txt", "second", "d/", "",
                       "d/e.txt", "e"});
    // All entries: the later duplicate replaces the earlier one, both are listed.
    EXPECT_EQ(extract("dup.zip", "all", u"zip"),
              "~/all/a.txt ~/all/b.txt ~/all/c.txt ~/all/b.txt ~/all/d/ ~/all/d/e.txt | "
              "a.txt=a b.txt=second c.txt=c d/ d/e.txt=e");

    // Named: the first match wins, and reading stops once every distinct name is done.
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"b.txt", "b.txt"}, "~/s/b.txt | b.txt=first | c.txt"},
        {{"d/", "missing.txt", "a.txt"}, "~/s/a.txt ~/s/d/ | a.txt=a d/ | e.txt"},
        {{}, " |  | a.txt"},
    };
    for (const auto& [names, expected] : cases) {
        fs::remove_all(dir / "s");
        LogCapture log;
        const std::string result = outcome(
            [&] {
                return core::extractArchive(u16(dir / "dup.zip"), u16(dir / "s"), u"zip",
                                            u16list(names), u"");
            },
            dir / "s");
        std::string lastRead;
        const std::string label = "Opened entry file to read from source archive-->";
        for (const std::string& message : log.messages()) {
            if (message.starts_with(label)) {
                lastRead = fs::path(message.substr(label.size())).filename();
            }
        }
        EXPECT_EQ(result + " | " + lastRead, expected);
    }
}
