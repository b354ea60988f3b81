// The permissions and times of what gzip and gunzip write: the calls with options keep the
// input's, as gzip does; uncompressgz gives 0644 whatever the input.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <functional>
#include <string>
#include <vector>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

struct ModeRow {
    std::string name;
    std::string input;   // made in the folder with the input's mode and an old time
    std::string output;  // what the call writes
    std::function<void(const fs::path& dir)> call;
    unsigned mode;        // the output's permission bits afterwards
    bool keepsInputTime;  // the output's modification time is the input's
};

TEST(OutputMode, GzipAndGunzipOutputsNeverWidenTheInputsMode) {
    REQUIRE_TOOLS("gzip");
    const std::vector<ModeRow> rows = {
        {.name = "compressgzToFile",
         .input = "s.txt",
         .output = "s.txt.gz",
         .call =
             [](const fs::path& dir) {
                 core::compressgzToFile(u16(dir / "s.txt"), u16(dir / "s.txt.gz"),
                                        core::CreateOptions());
             },
         .mode = 0600,
         .keepsInputTime = true},
        {.name = "uncompressgzWithOptions",
         .input = "s.txt.gz",
         .output = "s.txt",
         .call =
             [](const fs::path& dir) {
                 core::uncompressgzWithOptions({u16(dir / "s.txt.gz")}, u16(dir), false,
                                               core::ExtractOptions());
             },
         .mode = 0600,
         .keepsInputTime = true},
        {.name = "uncompressgz keeps its 0644",
         .input = "s.txt.gz",
         .output = "s.txt",
         .call =
             [](const fs::path& dir) {
                 core::uncompressgz({u16(dir / "s.txt.gz")}, u16(dir), false);
             },
         .mode = 0644,
         .keepsInputTime = false},
    };
    for (const ModeRow& row : rows) {
        SCOPED_TRACE(row.name);
        TempDir dir;
        writeFile(dir / "s.txt", "private\n");
        if (row.input.ends_with(".gz")) {
            sh(dir.path(), "gzip s.txt");
        }
        sh(dir.path(),
           "chmod 600 " + row.input + " && touch -d '2001-02-03 04:05:06' " + row.input);
        row.call(dir.path());
        EXPECT_EQ(fileMode(dir / row.output) & 0777, row.mode);
        EXPECT_EQ(fs::last_write_time(dir / row.output) == fs::last_write_time(dir / row.input),
                  row.keepsInputTime);
        EXPECT_EQ(sh(dir.path(), row.output.ends_with(".gz") ? "gzip -dc s.txt.gz" : "cat s.txt"),
                  "private\n");
    }
}

TEST(OutputMode, AFailedCompressgzToFileLeavesNoOutputBehind) {
    TempDir dir;
    writeFile(dir / "s.txt", "private\n");
    core::CreateOptions badLevel;
    badLevel.level = 42;
    const auto raised = raisedBy(
        [&] { core::compressgzToFile(u16(dir / "s.txt"), u16(dir / "s.txt.gz"), badLevel); });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, "TESSEL:io:archive:createArchive:invalidCompression");
    EXPECT_EQ(listing(dir.path()), "s.txt=private\n");
}

}  // namespace
}  // namespace tqtest
