// A zip whose central directory and local headers disagree holds two different archives,
// one for each kind of reader: the calls with options refuse it as damaged before writing
// anything, and testing reports it. The plain extractArchive reads it as libarchive does:
// under the local header's name, and refused when the sizes or the method disagree.
#include <gtest/gtest.h>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

// Python writes a.txt (stored) and b.txt (deflated), sizes in the local headers; then
// patch(name, offset, bytes) overwrites bytes of the named member's local header, or of
// its central directory record with central=True.
const std::string kMakeZip =
    "python3 -c \"import struct, sys, zipfile\n"
    "with zipfile.ZipFile('z.zip', 'w') as z:\n"
    "    z.writestr('a.txt', b'alpha' * 20)\n"
    "    z.writestr(zipfile.ZipInfo('b.txt'), b'bravo' * 20, zipfile.ZIP_DEFLATED)\n"
    "data = bytearray(open('z.zip', 'rb').read())\n"
    "def patch(name, offset, value, central=False):\n"
    "    at = zipfile.ZipFile('z.zip').getinfo(name).header_offset\n"
    "    if central:\n"
    "        at = data.index(b'PK\\x01\\x02')\n"
    "        while data[at + 46:at + 46 + len(name)] != name.encode():\n"
    "            at = data.index(b'PK\\x01\\x02', at + 4)\n"
    "    data[at + offset:at + offset + len(value)] = value\n";

struct Disagreement {
    std::string label;
    std::string patch;           // Python lines that patch data
    std::string plain;           // what extractArchive makes of it
    bool pythonRefuses = false;  // Python compares names only
};

TEST(ZipAgreement, DirectoryAndLocalHeadersThatDisagreeAreDamageBeforeAnythingIsWritten) {
    REQUIRE_TOOLS("python3");
    const Disagreement cases[] = {
        {.label = "local name",
         .patch = "patch('a.txt', 30, b'z.txt')",
         .plain = "~/plain/z.txt ~/plain/b.txt",
         .pythonRefuses = true},
        {.label = "directory name",
         .patch = "patch('b.txt', 46, b'y.txt', central=True)",
         .plain = "~/plain/a.txt ~/plain/b.txt",
         .pythonRefuses = true},
        {.label = "method",
         .patch = "patch('a.txt', 8, struct.pack('<H', 8))",
         .plain = "!unzip:invalidZipFile(~/bad.zip)"},
        {.label = "uncompressed size",
         .patch = "patch('b.txt', 22, struct.pack('<I', 99))",
         .plain = "!unzip:invalidZipFile(~/bad.zip)"},
        {.label = "compressed size in the directory",
         .patch = "patch('a.txt', 20, struct.pack('<I', 90), central=True)",
         .plain = "!unzip:invalidZipFile(~/bad.zip)"},
    };
    for (const auto& [label, patch, plain, pythonRefuses] : cases) {
        SCOPED_TRACE(label);
        TempDir dir;
        sh(dir.path(), kMakeZip + patch + "\nopen('bad.zip', 'wb').write(data)\"");
        if (pythonRefuses) {
            EXPECT_EQ(runIn(dir.path(),
                            "python3 -c \"import zipfile\n"
                            "z = zipfile.ZipFile('bad.zip')\n"
                            "try:\n"
                            "    [z.read(n) for n in z.namelist()]\n"
                            "except zipfile.BadZipFile:\n"
                            "    print('refused')\"")
                          .output,
                      "refused\n");
        }
        const fs::path archive = dir / "bad.zip";
        EXPECT_EQ(outcome(
                      [&] {
                          return core::extractArchiveWithOptions(u16(archive), u16(dir / "out"),
                                                                 u"zip", {})
                              .written;
                      },
                      dir.path()),
                  "!unzip:invalidZipFile(~/bad.zip)");
        EXPECT_FALSE(fs::exists(dir / "out")) << listing(dir / "out");
        EXPECT_EQ(outcome(
                      [&] {
                          Paths names;
                          core::listArchive(
                              u16(archive), u"zip", {},
                              [&](const core::EntryInfo& info) { names.push_back(info.name); });
                          return names;
                      },
                      dir.path()),
                  "!unzip:invalidZipFile(~/bad.zip)");
        const std::string report = tested(archive, u"zip", dir.path());
        // libarchive finds the sizes itself; names and methods only this check.
        EXPECT_TRUE(report.starts_with("read 0 testArchive:damagedStream(~/bad.zip;")) << report;
        EXPECT_EQ(
            outcome(
                [&] { return core::extractArchive(u16(archive), u16(dir / "plain"), u"zip", u""); },
                dir.path()),
            plain);
    }
}

TEST(ZipAgreement, SoundZipsWithDataDescriptorsCommentsAndAPrefixPass) {
    REQUIRE_TOOLS("python3", "zip");
    TempDir dir;
    // Info-ZIP writing to a pipe uses data descriptors; a comment and a stub in front shift
    // the end record and every offset.
    sh(dir.path(),
       "printf alpha > a.txt && printf bravo > b.txt && zip -q - a.txt b.txt > "
       "piped.zip && (printf 'stub before the archive'; cat piped.zip) > stub.zip && " +
           kMakeZip + "z = zipfile.ZipFile('z.zip', 'a'); z.comment = b'a comment'; z.close()\"");
    for (const std::string archive : {"piped.zip", "stub.zip", "z.zip"}) {
        SCOPED_TRACE(archive);
        EXPECT_EQ(tested(dir / archive, u"zip", dir.path()), "read 2");
        const fs::path out = dir / ("out-" + archive);
        EXPECT_EQ(core::extractArchiveWithOptions(u16(dir / archive), u16(out), u"zip", {})
                      .written.size(),
                  2U);
    }
}

}  // namespace
}  // namespace tqtest
