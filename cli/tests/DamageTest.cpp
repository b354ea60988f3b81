// Damage and names end to end: a tar.gz cut inside its gzip trailer, a zip whose two
// directories disagree, names that differ only in composition, duplicate entries selected
// by name, and control characters in the JSON listing.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

namespace {

const std::string kComposed = "caf\xc3\xa9";
const std::string kDecomposed = "cafe\xcc\x81";

}  // namespace

TEST(Damage, TarGzCutInsideItsTrailerFailsExtractionListingAndTesting) {
    REQUIRE_TOOLS("tar", "gzip");
    TempDir dir;
    sh(dir.path(), "printf alpha > a.txt && printf bravo > b.txt && tar czf t.tgz a.txt b.txt");
    for (const int cut : {1, 4, 8}) {
        SCOPED_TRACE(cut);
        const std::string archive = "cut" + std::to_string(cut) + ".tgz";
        sh(dir.path(), "head -c -" + std::to_string(cut) + " t.tgz > " + archive);
        for (const std::string& command :
             {"untar " + archive + " -d out-" + archive, "list " + archive, "test " + archive}) {
            const auto result = tqarchive(dir.path(), command);
            EXPECT_EQ(result.status, 1) << command << "\n" << result.output << result.err;
        }
    }
    // The whole archive passes all three.
    for (const std::string command : {"untar t.tgz -d whole", "list t.tgz", "test t.tgz"}) {
        EXPECT_EQ(tqarchive(dir.path(), command).status, 0) << command;
    }
}

TEST(Damage, ZipWhoseDirectoriesDisagreeIsRefusedBeforeAnythingIsWritten) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    sh(dir.path(),
       "python3 -c \"import zipfile\n"
       "with zipfile.ZipFile('z.zip', 'w') as z:\n"
       "    z.writestr('a.txt', b'alpha'); z.writestr('b.txt', b'bravo')\n"
       "data = bytearray(open('z.zip', 'rb').read())\n"
       "data[30:35] = b'z.txt'\n"
       "open('bad.zip', 'wb').write(data)\"");
    const auto unzipped = tqarchive(dir.path(), "unzip bad.zip -d out");
    EXPECT_EQ(unzipped.status, 1);
    EXPECT_TRUE(reports(unzipped, "TESSEL:io:archive:unzip:invalidZipFile")) << unzipped.err;
    EXPECT_FALSE(fs::exists(dir / "out"));
    EXPECT_EQ(tqarchive(dir.path(), "list bad.zip").status, 1);
    EXPECT_EQ(tqarchive(dir.path(), "test bad.zip").status, 1);
}

TEST(Damage, ComposedAndDecomposedNamesRoundTripAsTwoFiles) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    writeFile(dir / "src" / kComposed, "composed");
    writeFile(dir / "src" / kDecomposed, "decomposed");
    for (const std::string archive : {"n.zip", "n.tar", "n.tgz"}) {
        SCOPED_TRACE(archive);
        const std::string pack = archive.ends_with(".zip") ? "zip" : "tar";
        ASSERT_EQ(tqarchive(dir.path(), pack + " " + archive + " . -C src").status, 0);
        const auto unpacked =
            tqarchive(dir.path(), "un" + pack + " " + archive + " -d out-" + archive);
        ASSERT_EQ(unpacked.status, 0) << unpacked.err;
        EXPECT_EQ(snapshot(dir / ("out-" + archive)), snapshot(dir / "src"));
        EXPECT_EQ(tqarchive(dir.path(), "list " + archive).output,
                  kDecomposed + "\n" + kComposed + "\n");
        EXPECT_EQ(sh(dir.path(), program() + " list " + archive +
                                     " --json | python3 -c \"import json, sys\n"
                                     "print(' '.join(json.loads(l)['name'].encode().hex() "
                                     "for l in sys.stdin))\""),
                  "63616665cc81 636166c3a9\n");
    }
}

TEST(Damage, DuplicateNamesSelectedByNameLeaveTheLastCopy) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    sh(dir.path(),
       "python3 -c \"import io, tarfile\n"
       "with tarfile.open('dup.tar', 'w') as t:\n"
       "    for n, data in (('a', b'first'), ('a', b'second copy'), ('b', b'bee')):\n"
       "        i = tarfile.TarInfo(n); i.size = len(data); t.addfile(i, io.BytesIO(data))\"");
    const auto result = tqarchive(dir.path(), "untar dup.tar a b -d out");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(readFile(dir / "out/a"), "second copy");
    EXPECT_EQ(readFile(dir / "out/b"), "bee");
}

TEST(Damage, JsonListingOfEveryControlCharacterParsesStrictly) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    // One name per C0 control character but NUL (no name can hold it), and DEL.
    const std::string names = "[('c%02x' % c) + chr(c) + 'x' for c in list(range(1, 32)) + [127]]";
    sh(dir.path(),
       "python3 -c \"import io, tarfile\n"
       "with tarfile.open('c.tar', 'w', format=tarfile.PAX_FORMAT) as t:\n"
       "    for n in " +
           names +
           ":\n"
           "        i = tarfile.TarInfo(n); t.addfile(i, io.BytesIO(b''))\"");
    EXPECT_EQ(sh(dir.path(), program() +
                                 " list c.tar --json | python3 -c \"import json, sys\n"
                                 "got = [json.loads(l, strict=True)['name'] for l in sys.stdin]\n"
                                 "print(got == " +
                                 names + ", len(got))\""),
              "True 32\n");
}
