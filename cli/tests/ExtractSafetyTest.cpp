// What tqarchive untar does to files already in the output folder: a hard link carrying data
// that names one of them (a second name of it lies outside), and a folder entry where a file
// is; with and without -k. Each row says what is on disk afterwards, what was reported and
// the exit status.
#include <gtest/gtest.h>

#include "CliRun.hpp"
#include "archive/tests/support/Outcomes.hpp"

namespace clitest {
namespace {

struct SafetyRow {
    std::string name;
    std::string members;     // Python: the members of a.tar, for pax(...)
    std::string options;     // after "untar a.tar -d out"
    std::string out;         // the listing of out afterwards
    std::string identifier;  // reported on standard error ("": nothing)
    int status;
};

const std::string kVictim = "victim.txt=victim\n";
const std::string kOutside = "linked.txt=victim\n";

TEST(ExtractSafety, ExistingFilesAreNeverRewrittenInPlaceNorEmptied) {
    REQUIRE_TOOLS("python3");
    const std::string link = "linkWithData('h', 'victim.txt', b'EVIL DATA\\n')";
    const std::string folderOverFile =
        "(member('victim.txt', tarfile.DIRTYPE, 0o755), None), "
        "reg('victim.txt/inner.txt', b'inner\\n')";
    const std::vector<SafetyRow> rows = {
        {.name = "link with data",
         .members = link,
         .options = "",
         .out = "h=EVIL DATA\n " + kVictim,
         .identifier = "",
         .status = 0},
        {.name = "link with data, -k",
         .members = link,
         .options = "-k",
         .out = "h=EVIL DATA\n " + kVictim,
         .identifier = "",
         .status = 0},
        {.name = "link with data named as what it links to, -k",
         .members = "linkWithData('victim.txt', 'victim.txt', b'EVIL DATA\\n')",
         .options = "-k",
         .out = kVictim,
         .identifier = "TESSEL:io:archive:extractArchive:existingFileKept",
         .status = 0},
        {.name = "link with data to a file outside",
         .members = "linkWithData('h', '../outside/linked.txt', b'EVIL DATA\\n')",
         .options = "",
         .out = kVictim,
         .identifier = "TESSEL:io:archive:extractArchive:entryOutsideFolder",
         .status = 1},
        {.name = "folder over a file",
         .members = folderOverFile,
         .options = "",
         .out = "victim.txt/ victim.txt/inner.txt=inner\n",
         .identifier = "",
         .status = 0},
        {.name = "folder over a file, -k",
         .members = folderOverFile,
         .options = "-k",
         .out = kVictim,
         .identifier = "TESSEL:io:archive:extractArchive:existingFileKept",
         .status = 0},
    };
    for (const SafetyRow& row : rows) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        writeFile(dir / "out/victim.txt", "victim\n");
        fs::create_directories(dir / "outside");
        fs::create_hard_link(dir / "out/victim.txt", dir / "outside/linked.txt");
        python(dir.path(), "pax('a.tar', " + row.members + ")");

        const CliResult result = tqarchive(dir.path(), "untar a.tar -d out " + row.options);

        EXPECT_EQ(result.status, row.status) << result.err;
        EXPECT_EQ(listing(dir / "out"), row.out);
        EXPECT_EQ(listing(dir / "outside"), kOutside);
        if (row.identifier.empty()) {
            EXPECT_EQ(result.err, "");
        } else {
            EXPECT_TRUE(reports(result, row.identifier)) << result.err;
        }
    }
}

// The archive comes through a pipe that pauses in the middle of the link's data; SIGINT comes
// then. The file the link names (1 MB) stays as it was, and the link's data goes.
TEST(ExtractSafety, ASignalDuringTheDataOfALinkLeavesTheFileItNamesAsItWas) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    const std::string victim = randomBytes(1 << 20, 7);
    writeFile(dir / "out/victim.txt", victim);
    python(dir.path(), "pax('a.tar', linkWithData('h', 'victim.txt', os.urandom(2 << 20)))");
    const std::string run =
        "((head -c 1000000 a.tar; sleep 2; tail -c +1000001 a.tar) | env --default-signal=INT " +
        program() +
        " untar - -d out -k 2>err & pid=$!; for i in $(seq 3000); do test -e out/h && break; "
        "sleep 0.01; done; sleep 0.3; kill -INT $pid; wait $pid; echo status=$?)";
    EXPECT_EQ(sh(dir.path(), run), "status=130\n");
    EXPECT_TRUE(readFile(dir / "out/victim.txt") == victim) << "the kept file changed";
    // The link taken back, no temporary left.
    std::vector<std::string> names;
    for (const auto& item : fs::directory_iterator(dir / "out")) {
        names.push_back(item.path().filename().string());
    }
    EXPECT_EQ(names, std::vector<std::string>{"victim.txt"});
}

// While untar runs, another process swaps out/d, which it made, with a link to another
// folder; an entry that gets out comes last and makes the run take back what it made. The
// other folder keeps every file, whenever the swaps came.
TEST(ExtractSafety, ACleanupRacingAFolderSwapRemovesNothingOfTheFolderSwappedIn) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    python(dir.path(),
           "tar('race.tar', folder('d'), *[reg('d/f%05d' % n, b'ours') for n in range(8000)], "
           "reg('../x', b'out'))\n"
           "for attempt in range(2):\n"
           "    os.makedirs('other%d' % attempt)\n"
           "    for n in range(8000): open('other%d/f%05d' % (attempt, n), 'w').write('theirs')");
    writeFile(dir / "racer.py", kFolderSwapRacer);
    for (int attempt = 0; attempt < 2; ++attempt) {
        SCOPED_TRACE("attempt " + std::to_string(attempt));
        const std::string out = "out" + std::to_string(attempt);
        const std::string other = "other" + std::to_string(attempt);
        const std::string run =
            "{ python3 racer.py " + out + " " + other +
            " & racer=$!; for i in $(seq 1000); do test -e " + out +
            ".ready && break; sleep 0.01; done; " + program() + " untar race.tar -d " + out +
            " 2>err; echo status=$?; kill $racer; wait $racer; true; } 2>/dev/null";
        // The shell may report the racer killed: only the run's own status is looked at.
        const std::string printed = sh(dir.path(), run);
        EXPECT_NE(printed.find("status=1\n"), std::string::npos) << printed;
        const CliResult said{{}, readFile(dir / "err")};
        EXPECT_TRUE(reports(said, "TESSEL:io:archive:extractArchive:entryOutsideFolder") ||
                    reports(said, "TESSEL:io:archive:extractArchive:entryThroughSymlink"))
            << said.err;
        // Counted, not read: libarchive checks a path for links before it opens it, and a swap
        // in between may still let one entry's data through the link (no cleanup's doing).
        std::size_t files = 0;
        for (const auto& item : fs::directory_iterator(dir / other)) {
            files += item.is_regular_file() ? 1 : 0;
        }
        EXPECT_EQ(files, 8000U) << "the cleanup removed files of the other folder";
    }
}

}  // namespace
}  // namespace clitest
