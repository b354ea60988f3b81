// uncompressgz: output naming, streams from gzip and pigz (multi-member too), the empty
// stream, and the failures of the gunzip table.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "../support/Outcomes.hpp"
#include "../support/TestSupport.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

TEST(UncompressGz, NamesContentsAndFailures) {
    REQUIRE_TOOLS("gzip", "pigz", "zip");
    TempDir dir;
    const std::string a = "alpha " + randomBytes(100000, 1);
    writeFile(dir / "in/a.txt", a);
    sh(dir.path(),
       "cd in && printf beta > b.txt && : > empty && gzip -k a.txt empty && pigz -k b.txt && "
       "cp b.txt.gz b.tgz && cp b.txt.gz ../c.gz && cat a.txt.gz b.txt.gz > ab.txt.gz && "
       "echo text > text.gz && zip -q zip.gz b.txt && : > emptyfile.gz && "
       "head -c 20 a.txt.gz > cut.gz && head -c 90000 a.txt.gz > cutlate.gz");
    const auto here = enter(dir / "in");
    const std::u16string out = u16(dir / "out");
    // The inputs, the output folder (or, with exactName, the output file), and the outcome.
    struct Decompression {
        Paths inputs;
        std::u16string output;
        bool exactName = false;
        std::string result = "";
    };
    const std::vector<Decompression> cases = {
        {.inputs = {u"a.txt.gz", u"b.txt.gz", u"b.tgz"},
         .output = out,
         .result = "~/out/a.txt ~/out/b.txt ~/out/b"},
        {.inputs = {u"ab.txt.gz", u"empty.gz"},
         .output = out,
         .result = "~/out/ab.txt ~/out/empty"},
        // Beside the input; the current folder's own inputs get bare names, by text.
        {.inputs = {u16(dir / "in/b.txt.gz"), u"b.tgz", u"../c.gz"},
         .output = u"",
         .result = "b.txt b ../c"},
        {.inputs = {u"b.txt.gz"},
         .output = u16(dir / "out/result.bin"),
         .exactName = true,
         .result = "~/out/result.bin"},
        {.inputs = {}, .output = out, .result = ""},
        // A stream cut short fails when opened, before its own output is named.
        {.inputs = {u"cut.gz"}, .output = out, .result = "!gunzip:javaCopyStreamError()"},
        {.inputs = {u"b.txt.gz", u"cut.gz"},
         .output = out,
         .result = "!gunzip:javaCopyStreamError(b.txt)"},
        // Cut late, the stream opens and fails while its data is copied.
        {.inputs = {u"cutlate.gz"}, .output = out, .result = "!extractArchive:internalError"},
        {.inputs = {u"text.gz"}, .output = out, .result = "!gunzip:notGzipFormat(text.gz)"},
        {.inputs = {u"zip.gz"}, .output = out, .result = "!gunzip:notGzipFormat(zip.gz)"},
        {.inputs = {u"emptyfile.gz"},
         .output = out,
         .result = "!gunzip:notGzipFormat(emptyfile.gz)"},
        {.inputs = {u"missing.gz"}, .output = out, .result = "!gunzip:javaOpenError(missing.gz)"},
    };
    for (const auto& [inputs, output, exactName, expected] : cases) {
        std::vector<std::string> named;
        std::ranges::transform(inputs, std::back_inserter(named), utf8);
        EXPECT_EQ(outcome(
                      [&inputs = inputs, &output = output, &exactName = exactName] {
                          return core::uncompressgz(inputs, output, exactName);
                      },
                      dir.path()),
                  expected)
            << join(named, " ") << " into " << utf8(output);
    }
    // Every member of a multi-member stream.
    EXPECT_EQ(readFile(dir / "out/a.txt") + readFile(dir / "out/ab.txt") + readFile(dir / "c"),
              a + a + "beta" + "beta");
    // The partial output of the stream cut late stays.
    EXPECT_EQ(shortListing(dir / "out"),
              "a.txt=... ab.txt=... b.txt=beta b=beta cutlate=... empty= result.bin=beta");
    EXPECT_EQ(fileMode(dir / "out/empty"), 0644u);
}

}  // namespace
}  // namespace tqtest
