// Symbolic links that would point outside the output folder from where they land, with
// safe() and each choice of ExtractOptions::outwardLinks: skipped with a warning while the
// rest is extracted, kept as stored, or refused; hard links to symbolic links judged from the
// hard link's own folder; and the entries ExtractResult::skipped names.
#include <gtest/gtest.h>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

using core::OutwardLinks;

struct LinkCase {
    std::string name;
    std::string members;     // Python's tar members of the archive
    std::string setup = "";  // shell commands run in the output folder first ("" for none)
    OutwardLinks choice = OutwardLinks::Skip;
    bool keepExisting = false;
    std::string said = "";     // warnings and error ("A" is the archive; paths left out)
    std::string onDisk = "";   // listing of the output folder afterwards
    std::string skipped = "";  // ExtractResult::skipped, joined by spaces
};

TEST(OutwardLinks, SkippedWithAWarningKeptOrRefusedAsChosenAndJudgedWhereTheyLand) {
    REQUIRE_TOOLS("python3");
    const std::string home =
        "reg('a.txt', b'A'), folder('.config'), "
        "sym('.config/x', '/home/me/dotfiles/x'), sym('cfg', '/etc/hostname'), "
        "reg('z.txt', b'Z')";
    // up points at the output folder from a/b; h, its hard link at the top, would point two
    // levels above it.
    const std::string viaHardLink =
        "folder('a'), folder('a/b'), sym('a/b/up', '../..'), "
        "hard('h', 'a/b/up'), reg('z.txt', b'Z')";
    const std::string longName(300, 'n');
    const std::vector<LinkCase> cases = {
        {.name = "absolute links skipped, the rest extracted",
         .members = home,
         .said = "?outwardLinkSkipped(.config/x;/home/me/dotfiles/x) "
                 "?outwardLinkSkipped(cfg;/etc/hostname)",
         .onDisk = ".config/ a.txt=A z.txt=Z",
         .skipped = ".config/x cfg"},
        {.name = "absolute links kept as stored",
         .members = home,
         .choice = OutwardLinks::Keep,
         .onDisk = ".config/ .config/x->/home/me/dotfiles/x a.txt=A cfg->/etc/hostname z.txt=Z"},
        {.name = "absolute link refused: the call fails and takes back what it wrote",
         .members = home,
         .choice = OutwardLinks::Refuse,
         .said = "!linkOutsideFolder(.config/x;/home/me/dotfiles/x;A)"},
        {.name = "climbing link skipped, a link staying inside kept",
         .members = "sym('up', '..'), folder('d'), sym('d/top', '../z.txt'), reg('z.txt', b'Z')",
         .said = "?outwardLinkSkipped(up;..)",
         .onDisk = "d/ d/top->../z.txt z.txt=Z",
         .skipped = "up"},
        {.name = "hard link to a link climbing out from where the hard link lands, skipped",
         .members = viaHardLink,
         .said = "?outwardLinkSkipped(h;../..)",
         .onDisk = "a/ a/b/ a/b/up->../.. z.txt=Z",
         .skipped = "h"},
        {.name = "hard link to a link climbing out, kept",
         .members = viaHardLink,
         .choice = OutwardLinks::Keep,
         .onDisk = "a/ a/b/ a/b/up->../.. h->../.. z.txt=Z"},
        {.name = "hard link to a link climbing out, refused",
         .members = viaHardLink,
         .choice = OutwardLinks::Refuse,
         .said = "!linkOutsideFolder(h;../..;A)"},
        {.name = "hard link to a link still pointing inside from its own folder",
         .members = "sym('in', 'sub'), folder('d'), hard('d/h', 'in'), reg('z.txt', b'Z')",
         .onDisk = "d/ d/h->sub in->sub z.txt=Z"},
        {.name = "a link leading out through a link already in the output folder",
         .members = "sym('l', 'ext/keep.txt'), reg('z.txt', b'Z')",
         .setup = "ln -s ../elsewhere ext",
         .said = "?outwardLinkSkipped(l;ext/keep.txt)",
         .onDisk = "ext->../elsewhere z.txt=Z",
         .skipped = "l"},
        {.name = "a name the file system refuses is skipped too; a file kept by -k is not",
         .members = "reg('" + longName + "', b'L'), reg('a.txt', b'new'), reg('z.txt', b'Z')",
         .setup = "printf mine > a.txt",
         .keepExisting = true,
         .said =
             "?createArchive:openEntryError(~/out/" + longName + ") ?existingFileKept(~/out/a.txt)",
         .onDisk = "a.txt=mine z.txt=Z",
         .skipped = longName},
    };
    TempDir dir;
    std::string make;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        make += "tar('" + std::to_string(i) + ".tar', " + cases[i].members + ")\n";
    }
    python(dir.path(), make);
    writeFile(dir / "elsewhere/keep.txt", "mine");
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const LinkCase& c = cases[i];
        SCOPED_TRACE(c.name);
        const fs::path out = dir / "out";
        fs::remove_all(out);
        fs::create_directories(out);
        if (!c.setup.empty()) {
            sh(out, c.setup);
        }
        core::ExtractOptions options = core::ExtractOptions::safe();
        options.outwardLinks = c.choice;
        options.keepExisting = c.keepExisting;
        const std::string archive = std::to_string(i) + ".tar";
        core::ExtractResult result;
        std::string said = outcome(
            [&] {
                result =
                    core::extractArchiveWithOptions(u16(dir / archive), u16(out), u"tar", options);
                return result.written;
            },
            dir.path());
        said.erase(0, std::min(said.find_first_of("?!"), said.size()));  // paths: on disk
        said = shown(said, dir.path());
        const std::string prefix = "extractArchive:";
        for (std::size_t at = said.find(prefix); at != std::string::npos; at = said.find(prefix)) {
            said.erase(at, prefix.size());
        }
        if (const auto at = said.find("~/" + archive); at != std::string::npos) {
            said.replace(at, archive.size() + 2, "A");
        }
        std::vector<std::string> skipped;
        for (const std::u16string& name : result.skipped) {
            skipped.push_back(utf8(name));
        }
        EXPECT_EQ(said, c.said);
        EXPECT_EQ(listing(out), c.onDisk);
        EXPECT_EQ(join(skipped, " "), c.skipped);
        EXPECT_EQ(listing(dir / "elsewhere"), "keep.txt=mine") << "written outside";
    }
}

// A pax hard link may carry data; one naming a symbolic link gets a file of its own with
// that data, and the link it named stays as it was.
TEST(OutwardLinks, AHardLinkToASymbolicLinkThatCarriesDataGetsAFileOfItsOwn) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    python(dir.path(), R"(
import io
t = tarfile.open('data.tar', 'w', format=tarfile.PAX_FORMAT)
i = tarfile.TarInfo('l'); i.type = tarfile.SYMTYPE; i.linkname = 'x.txt'; t.addfile(i)
i = tarfile.TarInfo('h'); i.type = tarfile.LNKTYPE; i.linkname = 'l'; i.size = 4
i.pax_headers = {'size': '4'}; t.addfile(i, io.BytesIO(b'data'))
t.close()
)");
    const std::string said = outcome(
        [&] {
            return core::extractArchiveWithOptions(u16(dir / "data.tar"), u16(dir / "out"), u"tar",
                                                   core::ExtractOptions::safe())
                .written;
        },
        dir.path());
    EXPECT_EQ(said, "~/out/l ~/out/h");
    EXPECT_EQ(listing(dir / "out"), "h=data l->x.txt");
}

}  // namespace
}  // namespace tqtest
