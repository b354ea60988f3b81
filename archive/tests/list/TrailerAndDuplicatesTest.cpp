// A tar.gz cut inside the gzip trailer that follows the tar's end marker is damage for
// extraction, listing and testing alike; and of two entries of one name selected by name,
// the last copy is what extraction leaves, as tar leaves it.
#include <gtest/gtest.h>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

Paths listed(const fs::path& archive, const std::u16string& format) {
    Paths names;
    core::listArchive(u16(archive), format, {},
                      [&](const core::EntryInfo& info) { names.push_back(info.name); });
    return names;
}

TEST(TrailerAndDuplicates, TarGzCutInsideItsTrailerIsDamageForEveryReading) {
    REQUIRE_TOOLS("tar", "gzip");
    TempDir dir;
    // Long enough that the cut is met at the end of reading, not when the archive is opened.
    writeFile(dir / "a.txt", randomBytes(300000, 3));
    sh(dir.path(), "printf bravo > b.txt && tar czf t.tgz a.txt b.txt");
    for (const int cut : {1, 4, 8}) {
        SCOPED_TRACE(cut);
        const std::string name = "cut" + std::to_string(cut) + ".tgz";
        sh(dir.path(), "head -c -" + std::to_string(cut) + " t.tgz > " + name);
        const fs::path archive = dir / name;
        for (const std::u16string format : {u"tgz", u"tar"}) {
            EXPECT_EQ(outcome(
                          [&] {
                              return core::extractArchiveWithOptions(u16(archive), u16(dir / "out"),
                                                                     format, {})
                                  .written;
                          },
                          dir.path()),
                      "!untar:invalidTarFile(~/" + name + ")");
            EXPECT_EQ(outcome([&] { return listed(archive, format); }, dir.path()),
                      "!untar:invalidTarFile(~/" + name + ")");
            const std::string report = tested(archive, format, dir.path());
            // Where the cut shows depends on how far libarchive reads ahead: in the stream
            // or already in the last entry's data.
            EXPECT_TRUE(report.starts_with("read ") &&
                        report.find(" testArchive:damaged") != std::string::npos)
                << report;
        }
    }
    EXPECT_EQ(outcome([&] { return listed(dir / "t.tgz", u"tgz"); }, dir.path()), "a.txt b.txt");
    EXPECT_EQ(tested(dir / "t.tgz", u"tgz", dir.path()), "read 2");
}

TEST(TrailerAndDuplicates, DuplicateNamesSelectedByNameLeaveTheLastCopy) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    sh(dir.path(),
       "python3 -c \"import io, tarfile\n"
       "with tarfile.open('dup.tar', 'w') as t:\n"
       "    for n, data in (('a', b'first'), ('a', b'second copy'), ('b', b'bee'),\n"
       "                    ('c', b'not selected')):\n"
       "        i = tarfile.TarInfo(n); i.size = len(data); t.addfile(i, io.BytesIO(data))\"");
    core::ExtractOptions options;
    options.select = {u"a", u"b"};
    EXPECT_EQ(outcome(
                  [&] {
                      return core::extractArchiveWithOptions(u16(dir / "dup.tar"), u16(dir / "out"),
                                                             u"tar", options)
                          .written;
                  },
                  dir.path()),
              "~/out/a ~/out/a ~/out/b");
    EXPECT_EQ(listing(dir / "out"), "a=second copy b=bee");
}

}  // namespace
}  // namespace tqtest
