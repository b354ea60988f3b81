// Real disk conditions: a full disk (a tiny tmpfs), a read-only file in the way, and a
// folder the user may not look into (privileges dropped).
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <archive/core/archivecore.hpp>
#include <host/WarningCapture.hpp>

#include "ExtractTestHelpers.hpp"

namespace core = tessel::io::archive::core;
using namespace tqtest;

namespace {

// "identifier|file:size|file:size..." of what the call left in the folder.
std::string outcome(const std::function<void()>& call, const fs::path& folder) {
    const auto raised = raisedBy(call);
    std::string text = raised ? raised->identifier : "returned";
    if (fs::exists(folder)) {
        for (const auto& item : fs::recursive_directory_iterator(folder)) {
            if (item.is_regular_file()) {
                text +=
                    "|" + item.path().filename().string() + ":" + std::to_string(item.file_size());
            }
        }
    }
    return text;
}

}  // namespace

TEST(DiskConditions, FullDiskStopsWithOutputDiskFull) {
    REQUIRE_TOOLS("zip", "tar", "gzip");
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    TempDir dir;
    writeFile(dir / "src/small.txt", "fits\n");
    writeFile(dir / "src/big.bin", randomBytes(1 << 20, 5));  // does not compress
    const std::string cd = "cd " + shellQuote((dir / "src").string()) + " && ";
    sh(cd +
       "zip -q ../a.zip small.txt big.bin && tar czf ../a.tgz small.txt big.bin && "
       "gzip -c big.bin > ../big.bin.gz");

    const fs::path tiny = dir / "tiny";
    const struct {
        const char* label;
        std::function<void()> call;
        std::string expected;
    } cases[] = {
        // The entry that filled the disk is removed; the one completed before stays.
        {"zip", [&] { core::extractArchive(u16(dir / "a.zip"), u16(tiny), u"zip", u""); },
         "TESSEL:io:archive:extractArchive:outputDiskFull|small.txt:5"},
        {"tgz", [&] { core::extractArchive(u16(dir / "a.tgz"), u16(tiny), u"tgz", u""); },
         "TESSEL:io:archive:extractArchive:outputDiskFull|small.txt:5"},
        // Decompression removes nothing itself: the partial output stays.
        {"gunzip", [&] { core::uncompressgz({u16(dir / "big.bin.gz")}, u16(tiny), false); },
         "TESSEL:io:archive:extractArchive:outputDiskFull|big.bin:"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        const std::string result =
            runInChild([&] { return outcome(c.call, tiny); }, mountTinyTmpfs(tiny, 256 * 1024));
        EXPECT_EQ(result.substr(0, c.expected.size()), c.expected) << result;
        if (std::string(c.label) != "gunzip") {
            EXPECT_EQ(result, c.expected);
        }
    }
}

TEST(DiskConditions, ReadOnlyTargetIsKeptWithAWarningOthersAreWritten) {
    REQUIRE_TOOLS("zip", "gzip");
    TempDir dir;
    for (const char* name : {"a.txt", "ro.txt", "c.txt"}) {
        writeFile(dir / "src" / name, std::string("new ") + name);
    }
    sh("cd " + shellQuote((dir / "src").string()) +
       " && zip -q ../a.zip a.txt ro.txt c.txt && gzip -k ro.txt");
    const fs::path out = dir / "out";
    writeFile(out / "ro.txt", "keep");
    fs::permissions(out / "ro.txt", fs::perms::owner_read | fs::perms::group_read);

    tessel::host::WarningCapture warnings;
    EXPECT_EQ(core::extractArchive(u16(dir / "a.zip"), u16(out), u"zip", u""),
              under(out, {"a.txt", "c.txt"}));
    EXPECT_EQ(readFile(out / "ro.txt"), "keep");
    EXPECT_EQ(readFile(out / "c.txt"), "new c.txt");
    ASSERT_EQ(warnings.warnings().size(), 1u);
    EXPECT_EQ(warnings.warnings()[0].identifier,
              "TESSEL:io:archive:extractArchive:unableToOverwrite");
    EXPECT_EQ(warnings.warnings()[0].arguments,
              std::vector<std::string>{(out / "ro.txt").string()});

    // Decompression refuses instead of skipping.
    const auto raised =
        raisedBy([&] { core::uncompressgz({u16(dir / "src/ro.txt.gz")}, u16(out), false); });
    ASSERT_TRUE(raised.has_value());
    EXPECT_EQ(raised->identifier, "TESSEL:io:archive:gunzip:javaOutputOpenError");
    EXPECT_EQ(raised->arguments, std::vector<std::string>{(out / "ro.txt").string()});
    EXPECT_EQ(readFile(out / "ro.txt"), "keep");
}

TEST(DiskConditions, UnsearchableFolderWarnsAndSkipsForAnUnprivilegedUser) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    fs::permissions(dir.path(), fs::perms::all);
    const fs::path archive = dir / "a.tar";
    sh("python3 -c " +
       shellQuote("import tarfile,io\n"
                  "with tarfile.open('" +
                  archive.string() +
                  "','w') as t:\n"
                  " for n in ['locked/x.txt','free.txt']:\n"
                  "  i=tarfile.TarInfo(n); i.size=2; t.addfile(i,io.BytesIO(b'hi'))\n"));
    const fs::path out = dir / "out";
    fs::create_directories(out / "locked");
    fs::permissions(out, fs::perms::all);
    fs::permissions(out / "locked", fs::perms::none);

    const std::string result = runInChild(
        [&] {
            tessel::host::WarningCapture warnings;
            std::string text;
            for (const auto& path : core::extractArchive(u16(archive), u16(out), u"tar", u"")) {
                text += utf8(path) + ";";
            }
            for (const auto& warning : warnings.warnings()) {
                text += warning.identifier + "(" + warning.arguments.at(0) + ");";
            }
            return text;
        },
        dropPrivileges);
    EXPECT_EQ(result, (out / "free.txt").string() +
                          ";TESSEL:io:archive:extractArchive:unableToCreate(" +
                          (out / "locked/x.txt").string() + ");")
        << "got " << result;
}
