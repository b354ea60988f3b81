// uncompressgz: output naming, streams from gzip and pigz (multi-member too), the empty
// stream, and the failures of the gunzip table.
#include <gtest/gtest.h>

#include <archive/core/archivecore.hpp>

#include "ExtractTestHelpers.hpp"

namespace core = tessel::io::archive::core;
using namespace tqtest;

namespace {

class UncompressGz : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* tool : {"gzip", "pigz", "zip"}) {
            if (!toolAvailable(tool)) {
                GTEST_SKIP() << tool << " is not installed";
            }
        }
        writeFile(dir_ / "in/a.txt", "alpha " + randomBytes(100000, 1));
        writeFile(dir_ / "in/b.txt", "beta\n");
        writeFile(dir_ / "in/empty", "");
        sh("cd " + shellQuote((dir_ / "in").string()) +
           " && gzip -k a.txt && pigz -k b.txt && gzip -k empty && cp b.txt.gz b.tgz && "
           "cat a.txt.gz b.txt.gz > ab.txt.gz && echo plain text > text.gz && zip -q zip.gz b.txt "
           "&& "
           ": > emptyfile.gz && head -c 20 a.txt.gz > cut.gz && head -c 90000 a.txt.gz > "
           "cutlate.gz");
    }
    fs::path in(const std::string& name) const { return dir_ / "in" / name; }
    TempDir dir_;
};

}  // namespace

TEST_F(UncompressGz, OutputNamesAndContents) {
    const fs::path out = dir_ / "out";
    const auto written = core::uncompressgz(
        {u16(in("a.txt.gz")), u16(in("b.txt.gz")), u16(in("b.tgz")), u16(in("ab.txt.gz"))},
        u16(out), false);
    EXPECT_EQ(written, under(out, {"a.txt", "b.txt", "b", "ab.txt"}));
    EXPECT_EQ(readFile(out / "a.txt"), readFile(in("a.txt")));
    EXPECT_EQ(readFile(out / "b"), "beta\n");
    EXPECT_EQ(readFile(out / "ab.txt"), readFile(in("a.txt")) + "beta\n") << "every member";

    // No output folder: beside the input, or a bare name for an input in the current folder.
    EXPECT_EQ(core::uncompressgz({u16(in("b.txt.gz"))}, u"", false), under(dir_ / "in", {"b.txt"}));
    const fs::path saved = fs::current_path();
    fs::current_path(dir_ / "in");
    const auto bare = core::uncompressgz({u"b.tgz", u16(in("b.txt.gz"))}, u"", false);
    fs::current_path(saved);
    EXPECT_EQ(bare, u16list({"b", "b.txt"}));

    // An exact output path names the file itself.
    EXPECT_EQ(core::uncompressgz({u16(in("b.txt.gz"))}, u16(out / "result.bin"), true),
              u16list({(out / "result.bin").string()}));
    EXPECT_EQ(readFile(out / "result.bin"), "beta\n");

    EXPECT_TRUE(core::uncompressgz({}, u16(out), false).empty());
}

TEST_F(UncompressGz, EmptyStreamGivesAnEmptyReadableFile) {
    const fs::path out = dir_ / "out";
    EXPECT_EQ(core::uncompressgz({u16(in("empty.gz"))}, u16(out), false), under(out, {"empty"}));
    EXPECT_EQ(fs::file_size(out / "empty"), 0u);
    EXPECT_EQ(fileMode(out / "empty"), 0644u);
}

TEST_F(UncompressGz, FailuresCarryTheirIdentifiers) {
    const fs::path out = dir_ / "out";
    const struct {
        std::vector<fs::path> inputs;
        std::string identifier;
        std::vector<std::string> arguments;
    } cases[] = {
        // A stream cut short is found when it is opened, before its own output is named.
        {{in("cut.gz")}, "TESSEL:io:archive:gunzip:javaCopyStreamError", {""}},
        {{in("b.txt.gz"), in("cut.gz")}, "TESSEL:io:archive:gunzip:javaCopyStreamError", {"b.txt"}},
        // Cut late, the stream opens and fails while its data is copied.
        {{in("cutlate.gz")}, "TESSEL:io:archive:extractArchive:internalError", {}},
        {{in("text.gz")}, "TESSEL:io:archive:gunzip:notGzipFormat", {in("text.gz").string()}},
        {{in("zip.gz")}, "TESSEL:io:archive:gunzip:notGzipFormat", {in("zip.gz").string()}},
        {{in("emptyfile.gz")},
         "TESSEL:io:archive:gunzip:notGzipFormat",
         {in("emptyfile.gz").string()}},
        {{in("missing.gz")}, "TESSEL:io:archive:gunzip:javaOpenError", {in("missing.gz").string()}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.inputs.back().string());
        std::vector<std::u16string> inputs;
        for (const auto& input : c.inputs) {
            inputs.push_back(u16(input));
        }
        const auto raised = raisedBy([&] { core::uncompressgz(inputs, u16(out), false); });
        ASSERT_TRUE(raised.has_value());
        EXPECT_EQ(raised->identifier, c.identifier);
        EXPECT_EQ(raised->arguments, c.arguments);
    }
}
