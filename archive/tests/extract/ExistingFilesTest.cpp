// What extraction with options does to files already in the output folder: a hard link that
// carries data (a pax archive may give one its own bytes) names a file there, and a folder
// entry comes where a file is. Each row gives the options, what the call said, and what is on
// disk afterwards: the output folder, and a folder outside holding a second name of
// out/victim.txt.
#include <gtest/gtest.h>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

core::ExtractOptions keeping(core::ExtractOptions options) {
    options.keepExisting = true;
    return options;
}

struct ExistingCase {
    std::string name;
    std::string members;  // Python: the members of the archive, for pax(...)
    core::ExtractOptions options;
    std::string said;     // what the call returned, warned or raised
    std::string out;      // the listing of out afterwards
    std::string outside;  // the listing of outside afterwards
    bool oldH = false;    // out/h holds "old h" beforehand
};

constexpr const char* kOutsideUntouched = "linked.txt=victim\n";

TEST(ExistingFiles, NoEntryRewritesAnExistingFileInPlace) {
    REQUIRE_TOOLS("python3");
    const std::string victimKept = "victim.txt=victim\n";
    const std::vector<ExistingCase> cases = {
        {.name = "link with data, safe",
         .members = "linkWithData('h', 'victim.txt', b'EVIL DATA\\n')",
         .options = core::ExtractOptions::safe(),
         .said = "~/out/h",
         .out = "h=EVIL DATA\n victim.txt=victim\n",
         .outside = kOutsideUntouched},
        {.name = "link with data, unsafe",
         .members = "linkWithData('h', 'victim.txt', b'EVIL DATA\\n')",
         .options = core::ExtractOptions::unsafe(),
         .said = "~/out/h",
         .out = "h=EVIL DATA\n victim.txt=victim\n",
         .outside = kOutsideUntouched},
        {.name = "link with data, keeping existing files",
         .members = "linkWithData('h', 'victim.txt', b'EVIL DATA\\n')",
         .options = keeping(core::ExtractOptions::safe()),
         .said = "~/out/h",
         .out = "h=EVIL DATA\n victim.txt=victim\n",
         .outside = kOutsideUntouched},
        {.name = "link with data named as the file it links to, keeping existing files",
         .members = "linkWithData('victim.txt', 'victim.txt', b'EVIL DATA\\n')",
         .options = keeping(core::ExtractOptions::safe()),
         .said = "?extractArchive:existingFileKept(~/out/victim.txt)",
         .out = victimKept,
         .outside = kOutsideUntouched},
        {.name = "link with data over an existing name, safe",
         .members = "linkWithData('h', 'victim.txt', b'EVIL DATA\\n')",
         .options = core::ExtractOptions::safe(),
         .said = "~/out/h",
         .out = "h=EVIL DATA\n victim.txt=victim\n",
         .outside = kOutsideUntouched,
         .oldH = true},
        {.name = "link with data to a file outside, safe",
         .members = "linkWithData('h', '../outside/linked.txt', b'EVIL DATA\\n')",
         .options = core::ExtractOptions::safe(),
         .said = "!extractArchive:entryOutsideFolder(h;~/a.tar)",
         .out = victimKept,
         .outside = kOutsideUntouched},
        {.name = "link with data to a missing file, unsafe",
         .members = "linkWithData('h', 'missing.txt', b'EVIL DATA\\n')",
         .options = core::ExtractOptions::unsafe(),
         .said = "?createArchive:openEntryError(~/out/h)",
         .out = victimKept,
         .outside = kOutsideUntouched},
        // Refused as the same links without data are.
        {.name = "link without data to a file outside, safe",
         .members = "hard('h', '../outside/linked.txt')",
         .options = core::ExtractOptions::safe(),
         .said = "!extractArchive:entryOutsideFolder(h;~/a.tar)",
         .out = victimKept,
         .outside = kOutsideUntouched},
        {.name = "link without data to a missing file, unsafe",
         .members = "hard('h', 'missing.txt')",
         .options = core::ExtractOptions::unsafe(),
         .said = "?createArchive:openEntryError(~/out/h)",
         .out = victimKept,
         .outside = kOutsideUntouched},
        {.name = "folder over a file, safe",
         .members = "(member('victim.txt', tarfile.DIRTYPE, 0o755), None), "
                    "reg('victim.txt/inner.txt', b'inner\\n')",
         .options = core::ExtractOptions::safe(),
         .said = "~/out/victim.txt/ ~/out/victim.txt/inner.txt",
         .out = "victim.txt/ victim.txt/inner.txt=inner\n",
         .outside = kOutsideUntouched},
        {.name = "folder over a file, unsafe",
         .members = "(member('victim.txt', tarfile.DIRTYPE, 0o755), None), "
                    "reg('victim.txt/inner.txt', b'inner\\n')",
         .options = core::ExtractOptions::unsafe(),
         .said = "~/out/victim.txt/ ~/out/victim.txt/inner.txt",
         .out = "victim.txt/ victim.txt/inner.txt=inner\n",
         .outside = kOutsideUntouched},
        {.name = "folder over a file, keeping existing files",
         .members = "(member('victim.txt', tarfile.DIRTYPE, 0o755), None), "
                    "reg('victim.txt/inner.txt', b'inner\\n'), reg('next.txt', b'next\\n')",
         .options = keeping(core::ExtractOptions::safe()),
         .said = "~/out/next.txt ?extractArchive:existingFileKept(~/out/victim.txt/)",
         .out = "next.txt=next\n " + victimKept,
         .outside = kOutsideUntouched},
        {.name = "file beneath a file, keeping existing files",
         .members = "reg('victim.txt/deeper/inner.txt', b'inner\\n'), "
                    "reg('victim.txt/other.txt', b'other\\n')",
         .options = keeping(core::ExtractOptions::safe()),
         .said = "?extractArchive:existingFileKept(~/out/victim.txt)",
         .out = victimKept,
         .outside = kOutsideUntouched},
    };
    for (const ExistingCase& row : cases) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        writeFile(dir / "out/victim.txt", "victim\n");
        fs::create_directories(dir / "outside");
        fs::create_hard_link(dir / "out/victim.txt", dir / "outside/linked.txt");
        if (row.oldH) {
            writeFile(dir / "out/h", "old h\n");
        }
        python(dir.path(), "pax('a.tar', " + row.members + ")");
        const core::ExtractOptions& options = row.options;
        EXPECT_EQ(outcome(
                      [&] {
                          return core::extractArchiveWithOptions(u16(dir / "a.tar"),
                                                                 u16(dir / "out"), u"tar", options)
                              .written;
                      },
                      dir.path()),
                  row.said);
        EXPECT_EQ(listing(dir / "out"), row.out);
        EXPECT_EQ(listing(dir / "outside"), row.outside);
    }
}

// What the library's plain entry point does with the same link stays as it was: libarchive's
// own handling, which writes the data into the file linked to.
TEST(ExistingFiles, ExtractArchiveKeepsLibarchivesHandlingOfALinkWithData) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    writeFile(dir / "out/victim.txt", "victim\n");
    python(dir.path(), "pax('a.tar', linkWithData('h', 'victim.txt', b'DATA\\n'))");
    EXPECT_EQ(
        outcome(
            [&] { return core::extractArchive(u16(dir / "a.tar"), u16(dir / "out"), u"tar", u""); },
            dir.path()),
        "~/out/h");
    EXPECT_EQ(listing(dir / "out"), "h=DATA\n victim.txt=DATA\n");
}

// GNU tar and Python's data filter make the link and leave the file it names as it was; the
// option calls leave it too (and give the link's data a file of its own).
TEST(ExistingFiles, OtherToolsLeaveTheFileALinkWithDataNames) {
    REQUIRE_TOOLS("python3", "tar");
    TempDir dir;
    python(dir.path(), "pax('a.tar', linkWithData('h', 'victim.txt', b'DATA\\n'))");
    for (const std::string& tool : {std::string("gnu"), std::string("python")}) {
        SCOPED_TRACE(tool);
        const fs::path out = dir / tool;
        writeFile(out / "victim.txt", "victim\n");
        if (tool == "gnu") {
            runIn(out, "tar -xf ../a.tar");
        } else {
            sh(out,
               "python3 -c \"import tarfile; tarfile.open('../a.tar').extractall('.', "
               "filter='data')\"");
        }
        EXPECT_EQ(readFile(out / "victim.txt"), "victim\n");
    }
}

}  // namespace
}  // namespace tqtest

namespace tqtest {
namespace {

// A file replaced by a folder stays replaced when the call fails later: the cleanup takes
// back what the call put in the folder, and the name never vanishes.
TEST(ExistingFiles, AFileReplacedByAFolderStaysReplacedWhenTheCallFails) {
    struct Row {
        std::string name;
        std::string members;  // between a new file and an entry that fails the call
        std::string left;     // the output folder afterwards
    };
    const std::vector<Row> rows = {
        {.name = "a folder entry replaces the file, and stays",
         .members = "folder('victim.txt/'), reg('victim.txt/inner.txt', b'in')",
         .left = "other.txt=mine too victim.txt/"},
        {.name = "an entry beneath the file leaves it whole",
         .members = "reg('victim.txt/inner.txt', b'in')",
         .left = "other.txt=mine too victim.txt=mine"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        writeFile(dir / "out/victim.txt", "mine");
        writeFile(dir / "out/other.txt", "mine too");
        python(dir.path(), "tar('t.tar', reg('new.txt', b'n'), " + row.members +
                               ", reg('../escape.txt', b'x'))");
        const std::string said = outcome(
            [&] {
                return core::extractArchiveWithOptions(u16(dir / "t.tar"), u16(dir / "out"), u"tar",
                                                       core::ExtractOptions::safe())
                    .written;
            },
            dir.path());
        EXPECT_NE(said.find("!extractArchive:entryOutsideFolder"), std::string::npos) << said;
        EXPECT_EQ(listing(dir / "out"), row.left);
    }
}

}  // namespace
}  // namespace tqtest
