// compressgz and createArchive's raw gz format: output names and places, and what gzip and
// pigz read back.
#include <gtest/gtest.h>

#include <unistd.h>

#include "CreateTestSupport.hpp"

namespace tqtest {
namespace {

using tessel::io::archive::core::compressgz;
using tessel::io::archive::core::createArchive;

std::string gunzipped(const fs::path& file, const std::string& tool = "gzip") {
    const auto result = runCommand(tool + " -dc " + shellQuote(file.string()));
    return result.status == 0 ? result.output : "failed: " + result.output;
}

TEST(CompressGz, OutputNamesPlacesAndContent) {
    TempDir dir;
    // Input, its output beside it (nothing is ever removed from the name), content.
    std::vector<std::tuple<std::string, std::string, std::string>> cases = {
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
    // createArchive's raw format holds one file's bytes.
    EXPECT_EQ(createArchive(u16(dir / "raw.gz"), {inputs[1]}, {u"x"}, u"gz"), Names{u"x"});
    cases.emplace_back("", "raw.gz", std::get<2>(cases[1]));
    for (const auto& [input, output, bytes] : cases) {
        for (const char* tool : {"gzip", "pigz"}) {
            EXPECT_EQ(toolAvailable(tool) ? gunzipped(dir / output, tool) : bytes, bytes) << output;
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

}  // namespace
}  // namespace tqtest
