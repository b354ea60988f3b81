// Entry names no ordinary tool writes (made with Python's zipfile and tarfile), output
// folder handling, and the named-subset form.
#include <gtest/gtest.h>

#include <unistd.h>

#include <archive/core/archivecore.hpp>
#include <host/WarningCapture.hpp>

#include "../support/LogCapture.hpp"
#include "ExtractTestHelpers.hpp"

namespace core = tessel::io::archive::core;
using namespace tqtest;

namespace {

// Writes an archive with Python: entries are (name, content) pairs; a name ending in "/"
// is a folder.
void pythonArchive(const fs::path& archive,
                   const std::vector<std::pair<std::string, std::string>>& entries) {
    std::string list;
    for (const auto& [name, content] : entries) {
        list += "(" + std::string("'") + name + "'," + "'" + content + "'),";
    }
    const bool zip = archive.extension() == ".zip";
    const std::string script =
        zip ? "import zipfile\n"
              "with zipfile.ZipFile('" +
                  archive.string() +
                  "','w') as z:\n"
                  " for n,c in [" +
                  list + "]: z.writestr(zipfile.ZipInfo(n),c)\n"
            : "import tarfile,io\n"
              "with tarfile.open('" +
                  archive.string() +
                  "','w') as t:\n"
                  " for n,c in [" +
                  list +
                  "]:\n"
                  "  i=tarfile.TarInfo(n); d=c.encode(); i.size=len(d)\n"
                  "  if n.endswith('/'): i.type=tarfile.DIRTYPE; i.mode=0o755\n"
                  "  t.addfile(i,io.BytesIO(d))\n";
    sh("python3 -c " + shellQuote(script) + " 2>/dev/null");
}

struct CurrentFolder {
    explicit CurrentFolder(const fs::path& to) : saved_(fs::current_path()) {
        fs::current_path(to);
    }
    ~CurrentFolder() { fs::current_path(saved_); }
    fs::path saved_;
};

class EntryNames : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!toolAvailable("python3")) {
            GTEST_SKIP() << "python3 is not installed";
        }
    }
    TempDir dir_;
};

}  // namespace

// One trailing carriage return is dropped with a warning; a name that is nothing else is
// empty then, which ends the call (and, unlike other failures, removes nothing).
TEST_F(EntryNames, TrailingCarriageReturnIsDroppedWithAWarning) {
    for (const char* archiveName : {"cr.zip", "cr.tar"}) {
        SCOPED_TRACE(archiveName);
        const fs::path archive = dir_ / archiveName;
        pythonArchive(archive, {{"a.txt\\r", "A"}, {"b.txt", "B"}, {"\\r", "x"}});
        const fs::path out = dir_ / "out" / archiveName;
        tessel::host::WarningCapture warnings;
        const auto raised =
            raisedBy([&] { core::extractArchive(u16(archive), u16(out), u"all", u""); });
        ASSERT_TRUE(raised.has_value());
        EXPECT_EQ(raised->identifier, "TESSEL:io:archive:extractArchive:emptyEntryFilename");
        EXPECT_EQ(raised->arguments, (std::vector<std::string>{"tar", archive.string()}));
        EXPECT_EQ(readFile(out / "a.txt"), "A");
        EXPECT_EQ(readFile(out / "b.txt"), "B");
        ASSERT_EQ(warnings.warnings().size(), 2u);
        for (const auto& warning : warnings.warnings()) {
            EXPECT_EQ(warning.identifier, "TESSEL:io:archive:extractArchive:removeControlM");
        }
        EXPECT_EQ(warnings.warnings()[0].arguments, std::vector<std::string>{"a.txt"});
    }
}

TEST_F(EntryNames, AbsoluteNamesAreReRootedAndDotDotIsKept) {
    const fs::path archive = dir_ / "names.tar";
    pythonArchive(archive, {{"/etc/x", "abs"}, {"../evil.txt", "up"}, {"rel/y", "rel"}});
    const fs::path out = dir_ / "out";
    const auto written = core::extractArchive(u16(archive), u16(out), u"tar", u"");
    EXPECT_EQ(written, under(out, {"etc/x", "../evil.txt", "rel/y"}));
    EXPECT_EQ(readFile(out / "etc/x"), "abs");
    EXPECT_EQ(readFile(dir_ / "evil.txt"), "up") << "\"..\" leads out of the output folder";

    // Without an output folder (or with "."), names are relative to the current folder.
    for (const std::u16string folder : {u"", u"."}) {
        const fs::path here = dir_ / (folder.empty() ? "cwd-empty" : "cwd-dot") / "inner";
        fs::create_directories(here);
        CurrentFolder guard(here);
        const auto relative = core::extractArchive(u16(archive), folder, u"tar", u"");
        EXPECT_EQ(relative, u16list({"etc/x", "../evil.txt", "rel/y"}));
        EXPECT_EQ(readFile(here / "etc/x"), "abs");
        EXPECT_EQ(readFile(here.parent_path() / "evil.txt"), "up");
    }
}

TEST_F(EntryNames, DuplicatesAndTheNamedSubset) {
    const fs::path archive = dir_ / "dup.zip";
    pythonArchive(archive, {{"a.txt", "a"},
                            {"b.txt", "first"},
                            {"c.txt", "c"},
                            {"b.txt", "second"},
                            {"d/", ""},
                            {"d/e.txt", "e"}});

    // All entries: the later duplicate replaces the earlier one, both are listed.
    const fs::path all = dir_ / "all";
    EXPECT_EQ(core::extractArchive(u16(archive), u16(all), u"zip", u""),
              under(all, {"a.txt", "b.txt", "c.txt", "b.txt", "d/", "d/e.txt"}));
    EXPECT_EQ(readFile(all / "b.txt"), "second");

    // Named: the first match wins, and reading stops once every distinct name is done.
    const struct {
        std::vector<std::string> names;
        std::vector<std::string> expected;
        std::string lastHeaderRead;
    } cases[] = {
        {{"b.txt", "b.txt"}, {"b.txt"}, "c.txt"},
        {{"d/", "missing.txt", "a.txt"}, {"a.txt", "d/"}, "e.txt"},
        {{}, {}, "a.txt"},
    };
    int n = 0;
    for (const auto& c : cases) {
        const fs::path out = dir_ / ("subset" + std::to_string(n++));
        LogCapture log;
        EXPECT_EQ(core::extractArchive(u16(archive), u16(out), u"zip", u16list(c.names), u""),
                  under(out, c.expected));
        const auto opened = [&] {
            std::vector<std::string> names;
            for (const std::string& m : log.messages()) {
                const std::string label = "Opened entry file to read from source archive-->";
                if (m.rfind(label, 0) == 0) {
                    names.push_back(fs::path(m.substr(label.size())).filename());
                }
            }
            return names;
        }();
        ASSERT_FALSE(opened.empty());
        EXPECT_EQ(opened.back(), c.lastHeaderRead);
    }
    EXPECT_EQ(readFile(dir_ / "subset0/b.txt"), "first");
}
