// uncompressgz: output naming, streams from gzip and pigz (multi-member too), the empty
// stream, and the failures of the gunzip table.
#include <archive/core/archivecore.hpp>

#include "ExtractTest.hpp"

namespace core = tessel::io::archive::core;
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
    const std::vector<std::tuple<std::vector<std::u16string>, std::u16string, bool, std::string>>
        cases = {
            {{u"a.txt.gz", u"b.txt.gz", u"b.tgz", u"ab.txt.gz", u"empty.gz"},
             out,
             false,
             "~/out/a.txt ~/out/b.txt ~/out/b ~/out/ab.txt ~/out/empty"},
            // Beside the input; the current folder's own inputs get bare names, by text.
            {{u16(dir / "in/b.txt.gz"), u"b.tgz", u"../c.gz"}, u"", false, "b.txt b ../c"},
            {{u"b.txt.gz"}, u16(dir / "out/result.bin"), true, "~/out/result.bin"},
            {{}, out, false, ""},
            // A stream cut short fails when opened, before its own output is named.
            {{u"cut.gz"}, out, false, "!gunzip:javaCopyStreamError()"},
            {{u"b.txt.gz", u"cut.gz"}, out, false, "!gunzip:javaCopyStreamError(b.txt)"},
            // Cut late, the stream opens and fails while its data is copied.
            {{u"cutlate.gz"}, out, false, "!extractArchive:internalError"},
            {{u"text.gz"}, out, false, "!gunzip:notGzipFormat(text.gz)"},
            {{u"zip.gz"}, out, false, "!gunzip:notGzipFormat(zip.gz)"},
            {{u"emptyfile.gz"}, out, false, "!gunzip:notGzipFormat(emptyfile.gz)"},
            {{u"missing.gz"}, out, false, "!gunzip:javaOpenError(missing.gz)"},
        };
    for (const auto& [inputs, folder, exact, expected] : cases) {
        EXPECT_EQ(outcome([&] { return core::uncompressgz(inputs, folder, exact); }), expected);
    }
    EXPECT_EQ(readFile(dir / "out/a.txt"), a);
    EXPECT_EQ(readFile(dir / "out/ab.txt"), a + "beta") << "every member";
    EXPECT_EQ(readFile(dir / "c"), "beta");
    // The partial output of the stream cut late stays.
    EXPECT_EQ(listing(dir / "out"),
              "a.txt=... ab.txt=... b.txt=beta b=beta cutlate=... empty= result.bin=beta");
    EXPECT_EQ(fileMode(dir / "out/empty"), 0644u);
}
