// uncompressgz: output naming, streams from gzip and pigz (multi-member too), the empty
// stream, and the failures of the gunzip table.
#include <archive/core/archivecore.hpp>

#include "ExtractTest.hpp"

using namespace tqtest;

TEST_F(ExtractTest, UncompressGzNamesContentsAndFailures) {
    REQUIRE_TOOLS("gzip", "pigz", "zip");
    const std::string a = "alpha " + randomBytes(100000, 1);
    writeFile(dir / "in/a.txt", a);
    writeFile(dir / "in/b.txt", "beta");
    writeFile(dir / "in/empty", "");
    sh("cd in && gzip -k a.txt && pigz -k b.txt && gzip -k empty && cp b.txt.gz b.tgz && "
       "cp b.txt.gz ../c.gz && cat a.txt.gz b.txt.gz > ab.txt.gz && echo text > text.gz && "
       "zip -q zip.gz b.txt && : > emptyfile.gz && head -c 20 a.txt.gz > cut.gz && "
       "head -c 90000 a.txt.gz > cutlate.gz");
    const auto here = enter(dir / "in");
    const std::u16string out = u16(dir / "out");
    const std::vector<std::tuple<std::vector<std::string>, std::u16string, bool, std::string>>
        cases = {
            // Inputs are relative to the current folder, or absolute with "~" for the temp folder.
            {{"a.txt.gz", "b.txt.gz", "b.tgz", "ab.txt.gz", "empty.gz"},
             out,
             false,
             "~/out/a.txt ~/out/b.txt ~/out/b ~/out/ab.txt ~/out/empty"},
            // Beside the input; the current folder's own inputs get bare names, by text.
            {{"~/in/b.txt.gz", "b.tgz", "../c.gz"}, u"", false, "b.txt b ../c"},
            {{"b.txt.gz"}, u16(dir / "out/result.bin"), true, "~/out/result.bin"},
            {{}, out, false, ""},
            // A stream cut short fails when opened, before its own output is named.
            {{"cut.gz"}, out, false, "!gunzip:javaCopyStreamError()"},
            {{"b.txt.gz", "cut.gz"}, out, false, "!gunzip:javaCopyStreamError(b.txt)"},
            // Cut late, the stream opens and fails while its data is copied.
            {{"cutlate.gz"}, out, false, "!extractArchive:internalError"},
            {{"text.gz"}, out, false, "!gunzip:notGzipFormat(text.gz)"},
            {{"zip.gz"}, out, false, "!gunzip:notGzipFormat(zip.gz)"},
            {{"emptyfile.gz"}, out, false, "!gunzip:notGzipFormat(emptyfile.gz)"},
            {{"missing.gz"}, out, false, "!gunzip:javaOpenError(missing.gz)"},
        };
    for (const auto& [names, folder, exact, expected] : cases) {
        std::vector<std::u16string> inputs;
        for (const std::string& name : names) {
            inputs.push_back(u16(name[0] == '~' ? dir.string() + name.substr(1) : name));
        }
        EXPECT_EQ(
            outcome([&] { return tessel::io::archive::core::uncompressgz(inputs, folder, exact); }),
            expected);
    }
    EXPECT_EQ(readFile(dir / "out/a.txt"), a);
    EXPECT_EQ(readFile(dir / "out/ab.txt"), a + "beta") << "every member";
    EXPECT_EQ(readFile(dir / "c"), "beta");
    // The partial output of the stream cut late stays.
    EXPECT_EQ(listing(dir / "out"),
              "a.txt=... ab.txt=... b.txt=beta b=beta cutlate=... empty= result.bin=beta");
    EXPECT_EQ(fileMode(dir / "out/empty"), 0644u);
}
