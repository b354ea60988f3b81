// compressgz: output names and places, gzip interoperability, and what a failure leaves
// on disk.
#include <gtest/gtest.h>

#include <unistd.h>

#include <archive/core/archivecore.hpp>

#include "../support/TestSupport.hpp"
#include "CreateTestSupport.hpp"

namespace tqtest {
namespace {

using tessel::io::archive::core::compressgz;
using Names = std::vector<std::u16string>;

std::string gunzipped(const fs::path& file, const std::string& tool = "gzip") {
    const auto result = runCommand(tool + " -dc " + shellQuote(file.string()));
    return result.status == 0 ? result.output : "failed: " + result.output;
}

TEST(CompressGz, OutputNamesPlacesAndContent) {
    TempDir dir;
    // Input, its output beside it (nothing is ever removed from the name), content.
    const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {"a/b/report.txt", "a/b/report.txt.gz", "report\n"},
        {"data.tar", "data.tar.gz", randomBytes(100000, 5)},
        {"notes", "notes.gz", ""},
        {"x.gz", "x.gz.gz", "already\n"},
        {".profile", ".profile.gz", "dot\n"},
        {"ünï 日本 😀.txt", "ünï 日本 😀.txt.gz", std::string(40000, 'z')},
        {"exact", "exact.gz", randomBytes(16384, 9)},
    };
    Names inputs, outputs;
    for (const auto& [input, output, bytes] : cases) {
        writeFile(dir / input, bytes);
        inputs.push_back(u16(dir / input));
        outputs.push_back(u16(dir / output));
    }
    EXPECT_EQ(compressgz(inputs, u""), outputs);
    for (const auto& [input, output, bytes] : cases) {
        EXPECT_EQ(gunzipped(dir / output), bytes) << input;
        if (toolAvailable("pigz")) {
            EXPECT_EQ(gunzipped(dir / output, "pigz"), bytes) << input;
        }
    }
    // Into an output folder; the same input twice is written and listed twice.
    fs::create_directories(dir / "out");
    EXPECT_EQ(compressgz({inputs[0], inputs[2], inputs[2]}, u16(dir / "out")),
              (Names{u16(dir / "out/report.txt.gz"), u16(dir / "out/notes.gz"),
                     u16(dir / "out/notes.gz")}));
    EXPECT_EQ(gunzipped(dir / "out/report.txt.gz"), "report\n");
    EXPECT_TRUE(compressgz({}, u16(dir / "nowhere")).empty());

    // A bare name and no output folder: the bare output name, in the current folder.
    EXPECT_EQ(runInChild([&] {
                  return chdir(dir.path().c_str()) == 0 ? utf8(compressgz({u"notes"}, u"").at(0))
                                                        : "";
              }),
              "notes.gz");
}

TEST(CompressGzFailure, IdentifiersAndWhatStaysOnDisk) {
    TempDir dir;
    writeFile(dir / "one.txt", "one");
    writeFile(dir / "locked.txt", "locked");
    fs::permissions(dir / "locked.txt", fs::perms(0044));
    fs::create_directories(dir / "o/one.txt.gz");
    const auto at = [&](const char* name) { return u16(dir / name); };
    const std::string open = "TESSEL:io:archive:gzip:javaOpenError(";
    const std::string output = "TESSEL:io:archive:gzip:javaOutputOpenError(";
    // Inputs, output folder, error, the output that must not be left behind.
    const std::vector<std::tuple<Names, std::u16string, std::string, const char*>> cases = {
        {{at("one.txt"), at("gone.txt")},
         u"",
         open + (dir / "gone.txt").string() + ")",
         "gone.txt.gz"},
        {{at("locked.txt")}, u"", open + (dir / "locked.txt").string() + ")", "locked.txt.gz"},
        {{u""}, at(""), open + ")", ".gz"},
        {{at("one.txt")}, at("missing"), output + (dir / "missing/one.txt.gz").string() + ")", ""},
        {{at("one.txt")}, at("o"), output + (dir / "o/one.txt.gz").string() + ")", ""},
    };
    for (const auto& [inputs, folder, expected, removed] : cases) {
        EXPECT_EQ(outcome([&] { compressgz(inputs, folder); }), expected);
        EXPECT_FALSE(*removed != '\0' && fs::exists(dir / removed)) << removed;
    }
    // The output completed before the failing input stays.
    EXPECT_EQ(gunzipped(dir / "one.txt.gz"), "one");
}

}  // namespace
}  // namespace tqtest
