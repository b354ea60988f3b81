// Hostile archives extracted with safe(), with confine alone and unconfined (extractArchive),
// what a failed safe extraction leaves, and hard links placed under the output folder.
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include <boost/algorithm/string/replace.hpp>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

// A scratch root: archives in arc/, the output folder a/out beside a/elsewhere/ and
// a/victim.txt, so that "../" and "../../" from the output folder both land in the root.
struct Scratch {
    TempDir dir;
    fs::path root = dir / "root", out = root / "a/out";

    static std::set<std::string> items(const std::string& listed) {
        std::istringstream words(listed);
        return {std::istream_iterator<std::string>(words), {}};
    }
    // What was said | what the output folder holds | what changed outside it (" +item",
    // " -item"). The archive's path reads "A".
    std::string run(const std::string& archive, const std::string& setup,
                    const std::optional<core::ExtractOptions>& options) {
        fs::remove_all(root / "a");
        writeFile(root / "a/elsewhere/keep.txt", "mine");
        writeFile(root / "a/victim.txt", "V");
        fs::create_directories(out);
        sh(root, setup.empty() ? "true" : setup);
        const auto before = items(listing(root, out));
        const std::u16string from = u16(root / "arc" / archive), to = u16(out),
                             format = archive.ends_with(".zip") ? u"zip" : u"tar";
        std::string said = outcome(
            [&] {
                return options ? core::extractArchiveWithOptions(from, to, format, *options).written
                               : core::extractArchive(from, to, format, u"");
            },
            root);
        said.erase(0, std::min(said.find_first_of("?!"), said.size()));  // paths: see listing
        const auto after = items(listing(root, out));
        std::string changes;
        std::ranges::for_each(after,
                              [&](auto& i) { changes += before.contains(i) ? "" : " +" + i; });
        std::ranges::for_each(before,
                              [&](auto& i) { changes += after.contains(i) ? "" : " -" + i; });
        std::string text = shown(said + " | " + listing(out) + " |" + changes, root);
        boost::algorithm::replace_all(text, "~/arc/" + archive, "A");
        boost::algorithm::replace_all(text, "extractArchive:", "");
        return text;
    }
};

// One archive and what happens to it with safe() | confine alone | extractArchive: what was
// said ("A" is the archive) | what the output folder holds | what changed outside it.
struct Hostile {
    std::string archive, make, setup;  // Python's tar members; shell commands before each call
    std::string safe, confined, plain;
};

TEST(ConfinedExtraction, HostileArchivesAreRefusedAsTheyAreReachedAndNothingGetsOut) {
    REQUIRE_TOOLS("python3", "bsdtar");
    Scratch s;
    // A stored zip entry with a data descriptor holds a fake descriptor, then a local header
    // whose size swallows the rest: a skip stops at the fake one and sees harmless.txt, a
    // read goes on to the real descriptor (its CRC matches) and finds ../../smuggled.txt.
    std::string make = R"(
def local(name, data, flags=0, crc=0, size=0):
    n = name.encode()
    return struct.pack('<IHHHHHIIIHH', 0x04034b50, 20, flags, 0, 0, 0, crc, size, size, len(n), 0) + n + data
smug = local('../../smuggled.txt', b'S', crc=zlib.crc32(b'S'), size=1)
data = b'A' * 10 + struct.pack('<IIII', 0x08074b50, 0, 5, 5) + local('harmless.txt', b'hello', size=5 + 16 + len(smug))
real = struct.pack('<IIII', 0x08074b50, zlib.crc32(data), len(data), len(data))
open('smuggle.zip', 'wb').write(local('a.txt', data, flags=8) + real + smug + b'PK\x01\x02' + bytes(42))
)";
    const std::string dots = " | .\\377./ .\\377./.\\377./ .\\377./.\\377./escaped.txt=E |",
                      elsewhere = (s.root / "a/elsewhere").string();
    const std::vector<Hostile> cases = {
        {"link.tar", "reg('dir/x.txt', b'X')", "ln -s ../elsewhere a/out/dir",
         "!entryThroughSymlink(dir/x.txt;A) | dir->../elsewhere |",
         "!entryThroughSymlink(dir/x.txt;A) | dir->../elsewhere |",
         " | dir->../elsewhere | +a/elsewhere/x.txt=X"},
        {"earlier.tar", "folder('sub'), sym('s', 'sub'), reg('s/x.txt', b'X')", "",
         "!entryThroughSymlink(s/x.txt;A) |  |", "!entryThroughSymlink(s/x.txt;A) | s->sub sub/ |",
         " | s->sub sub/ sub/x.txt=X |"},
        {"cr.tar", "sym(b'l\\r', '..'), reg('l/evil.txt', b'E')", "",
         "?removeControlM(l) ?outwardLinkSkipped(l\\r;..) | l/ l/evil.txt=E |",
         "?removeControlM(l) !entryThroughSymlink(l/evil.txt;A) | l->.. |",
         "?removeControlM(l) | l->.. | +a/evil.txt=E"},
        {"up.tar", "reg('ok.txt', b'ok'), reg('../evil.txt', b'E')", "",
         "!entryOutsideFolder(../evil.txt;A) |  |",
         "!entryOutsideFolder(../evil.txt;A) | ok.txt=ok |", " | ok.txt=ok | +a/evil.txt=E"},
        // Re-rooted, allowed.
        {"abs.tar", "reg('/abs/x.txt', b'A')", "", " | abs/ abs/x.txt=A |", " | abs/ abs/x.txt=A |",
         " | abs/ abs/x.txt=A |"},
        {"hard.tar", "hard('h', '../victim.txt')", "", "!entryOutsideFolder(h;A) |  |",
         "!entryOutsideFolder(h;A) |  |", " | h=V |"},
        // Names keep their bytes: ".\377." is no "..", and "lnk\377" no "lnk".
        {"dots.tar", "reg(b'.\\xff./.\\xff./escaped.txt', b'E')", "", dots, dots, dots},
        {"lnk.tar", "sym(b'lnk\\xff', '" + elsewhere + "'), reg('lnk/evil.txt', b'E')", "",
         "?outwardLinkSkipped(lnk\\377;~/a/elsewhere) | lnk/ lnk/evil.txt=E |",
         " | lnk/ lnk/evil.txt=E lnk\\377->~/a/elsewhere |",
         " | lnk/ lnk/evil.txt=E lnk\\377->~/a/elsewhere |"},
        {"smuggle.zip", "", "", "!entryOutsideFolder(../../smuggled.txt;A) |  |",
         "!entryOutsideFolder(../../smuggled.txt;A) | a.txt=[73:86338] |",
         " | a.txt=[73:86338] | +smuggled.txt=S"},
    };
    for (const Hostile& c : cases) {
        make += c.make.empty() ? "" : "tar('" + c.archive + "', " + c.make + ")\n";
    }
    fs::create_directories(s.root / "arc");
    python(s.root / "arc", make);
    EXPECT_EQ(sh(s.root / "arc", "bsdtar -tf smuggle.zip"), "a.txt\nharmless.txt\n");
    core::ExtractOptions confined;
    confined.confine = true;
    for (const Hostile& c : cases) {
        EXPECT_EQ(s.run(c.archive, c.setup, core::ExtractOptions::safe()), c.safe) << c.archive;
        EXPECT_EQ(s.run(c.archive, c.setup, confined), c.confined) << c.archive;
        EXPECT_EQ(s.run(c.archive, c.setup, std::nullopt), c.plain) << c.archive;
    }
}

// Whatever ends a safe extraction, the output folder is as it was: nothing is new, and the
// files there keep their bytes, victim.bin too, which was being replaced when it failed.
struct FailureCause {
    std::string cause, archive, raised, password = "";
    bool tinyDisk = false, cancelInVictim = false;
};

TEST(ConfinedExtraction, AFailureLeavesTheOutputFolderAsItWas) {
    REQUIRE_TOOLS("python3", "zip", "bsdtar");
    TempDir dir;
    writeFile(dir / "src/victim.bin", randomBytes(1 << 20, 2));
    sh(dir.path(),
       "cd src && printf new > new.txt && mkdir sub f && printf n > sub/n.txt && printf "
       "a > f/a.txt && tar cf ../good.tar new.txt sub victim.bin && zip -q -0 ../corrupt.zip "
       "new.txt victim.bin && zip -q -r -P right ../locked.zip f && cd .. && printf X | dd "
       "of=corrupt.zip bs=1 seek=500000 conv=notrunc status=none");
    python(dir.path(), "tar('unsafe.tar', reg('new.txt'), reg('sub/n.txt'), reg('../evil.txt'))");
    const std::string wrong = rejectedPassword(dir.path(), "locked.zip");
    const std::vector<FailureCause> causes = {
        {"unsafe entry", "unsafe.tar",
         "extractArchive:entryOutsideFolder(../evil.txt;~/unsafe.tar)"},
        // Its first entry, the folder f/, is not encrypted.
        {"wrong password", "locked.zip", "extractArchive:incorrectPassword", wrong},
        {"corrupt data", "corrupt.zip", "unzip:invalidZipFile(~/corrupt.zip)"},
        {.cause = "full disk",
         .archive = "good.tar",
         .raised = "extractArchive:outputDiskFull",
         .tinyDisk = true},
        {.cause = "cancelled",
         .archive = "good.tar",
         .raised = "extractArchive:cancelled",
         .cancelInVictim = true},
    };
    for (const FailureCause& c : causes) {
        if (c.tinyDisk && !canMountTmpfs()) {
            continue;  // reported as a skip below
        }
        const fs::path out = dir / "out";
        const auto body = [&] {
            writeFile(out / "keep.txt", "mine");
            writeFile(out / "victim.bin", randomBytes(20000, 3));
            const std::string before = listing(dir.path());
            core::ExtractOptions options = core::ExtractOptions::safe();
            options.password = u16(c.password);
            if (c.cancelInVictim) {
                options.progress = [](const core::Progress& p) {
                    return p.entryStarted || p.entry != u"victim.bin";
                };
            }
            const std::u16string format = c.archive.ends_with(".zip") ? u"zip" : u"tar";
            const std::string result = outcome(
                [&] {
                    return core::extractArchiveWithOptions(u16(dir / c.archive), u16(out), format,
                                                           options)
                        .written;
                },
                dir.path());
            return result + (listing(dir.path()) == before ? "" : " | left: " + listing(out));
        };
        EXPECT_EQ(runInChild(body, c.tinyDisk ? mountTinyTmpfs(out, 256 * 1024) : nullptr),
                  "!" + c.raised)
            << c.cause;
        fs::remove_all(out);
    }
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace: full disk not run";
    }
}

// Without confinement the cleanup still removes only what the call made: a folder it made
// and then replaced by a link leads elsewhere, and what is found there is no longer its own.
TEST(ConfinedExtraction, UnconfinedCleanupNeverRemovesWhatItFoundThroughALinkItMade) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    python(dir.path(),
           "tar('relink.tar', folder('d'), sym('d', '../elsewhere'), reg('d/x.txt', b'new'), "
           "reg('stop.txt', b's'))");
    writeFile(dir / "elsewhere/x.txt", "old");
    core::ExtractOptions options = core::ExtractOptions::safe();
    options.confine = false;  // as tqarchive --unsafe-paths
    options.outwardLinks = core::OutwardLinks::Keep;
    options.progress = [](const core::Progress& p) { return p.entry != u"stop.txt"; };
    const std::string said = outcome(
        [&] {
            return core::extractArchiveWithOptions(u16(dir / "relink.tar"), u16(dir / "out"),
                                                   u"tar", options)
                .written;
        },
        dir.path());
    EXPECT_EQ(
        said + " | " + listing(dir.path()),
        "!extractArchive:cancelled | elsewhere/ elsewhere/x.txt=new relink.tar=[10240:10433]");
}

// A tar's second name for a file is a hard-link entry; its target is placed under the
// output folder too, whichever tool wrote it and whatever the current folder holds.
TEST(HardLinks, ExtractWholeIntoAnyFolder) {
    REQUIRE_TOOLS("python3", "tar", "bsdtar");
    TempDir dir;
    writeFile(dir / "src/f.txt", "shared");
    writeFile(dir / "cwd/f.txt", "unrelated");
    sh(dir.path(),
       "cd src && ln f.txt g.txt && tar cf ../gnu.tar f.txt g.txt && bsdtar cf ../bsd.tar "
       "f.txt g.txt && python3 -m tarfile -c ../py.tar f.txt g.txt");
    const auto here = enter(dir / "cwd");
    using Form = std::function<Paths(const std::u16string&, const std::u16string&)>;
    const Form forms[] = {
        [](auto& a, auto& o) { return core::extractArchive(a, o, u"tar", u""); },
        [](auto& a, auto& o) {
            return core::extractArchive(a, o, u"tar", {u"f.txt", u"g.txt"}, u"");
        },
        [](auto& a, auto& o) { return core::extractArchiveWithOptions(a, o, u"tar", {}).written; },
        [](auto& a, auto& o) {
            return core::extractArchiveWithOptions(a, o, u"tar", core::ExtractOptions::safe())
                .written;
        }};
    for (const std::string archive : {"gnu.tar", "bsd.tar", "py.tar"}) {
        for (std::size_t form = 0; form < std::size(forms); ++form) {
            const fs::path out = dir / "out" / (archive + std::to_string(form));
            const std::string said =
                outcome([&] { return forms[form](u16(dir / archive), u16(out)); }, out);
            EXPECT_EQ(said + " | " + listing(out), "~/f.txt ~/g.txt | f.txt=shared g.txt=shared")
                << archive << " form " << form;
            EXPECT_TRUE(fs::equivalent(out / "f.txt", out / "g.txt"))
                << archive << " form " << form;
        }
    }
    EXPECT_EQ(fs::hard_link_count(dir / "cwd/f.txt"), 1u);
}

}  // namespace
}  // namespace tqtest
