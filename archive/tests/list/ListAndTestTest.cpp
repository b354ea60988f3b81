// listArchive against what Python's zipfile and tarfile and bsdtar see in archives that
// Info-ZIP and GNU tar made; testArchive on sound, damaged, truncated and encrypted ones.
#include <gtest/gtest.h>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

std::string typeName(core::EntryType type) {
    switch (type) {
        case core::EntryType::File:
            return "file";
        case core::EntryType::Folder:
            return "folder";
        case core::EntryType::SymbolicLink:
            return "link";
        case core::EntryType::HardLink:
            return "hardlink";
        default:
            return "other";
    }
}

// One line per entry: name, type, size, compressed size ("-" when unknown), encryption.
std::string listed(const fs::path& archive, const std::u16string& format,
                   const std::string& password) {
    core::ExtractOptions options;
    options.password = u16(password);
    options.measureCompressedSizes = true;
    std::string text;
    core::listArchive(u16(archive), format, options, [&](const core::EntryInfo& e) {
        text += utf8(e.name) + " " + typeName(e.type) + " " +
                (e.size ? std::to_string(*e.size) : "-") + " " +
                (e.compressedSize ? std::to_string(*e.compressedSize) : "-") + " " +
                (e.encrypted ? "enc" : "plain") + "\n";
    });
    return text;
}

// The same lines from Python, for each archive named, after "== archive".
const char* kPythonListing = R"(python3 -c "
import sys, stat, tarfile, zipfile
for a in sys.argv[1:]:
    print('==', a)
    if a.endswith('.zip'):
        for i in zipfile.ZipFile(a).infolist():
            kind = 'folder' if i.is_dir() else 'link' if stat.S_ISLNK(i.external_attr >> 16) else 'file'
            size = 0 if kind == 'link' else i.file_size  # a link has no size, as in bsdtar and tar
            print(i.filename, kind, size, i.compress_size if kind == 'file' else '-', 'enc' if i.flag_bits & 1 else 'plain')
    else:
        for m in tarfile.open(a):
            kind = {tarfile.DIRTYPE: 'folder', tarfile.SYMTYPE: 'link', tarfile.LNKTYPE: 'hardlink'}.get(m.type, 'file')
            print(m.name + ('/' if m.isdir() else ''), kind, m.size, '-', 'plain')
")";

struct ToolArchive {
    std::string archive, format, password;
};

TEST(ListArchive, AgreesWithPythonAndBsdtar) {
    REQUIRE_TOOLS("python3", "bsdtar", "zip", "tar");
    TempDir dir;
    writeFile(dir / "top/a.txt", std::string(9000, 'a'));
    writeFile(dir / "top/r.bin", randomBytes(5000, 31));
    sh(dir.path(),
       ": > top/empty.txt && mkdir top/sub && ln -s a.txt top/link && ln top/a.txt "
       "top/h.txt && zip -q -r -y z.zip top && zip -q -r -y -P pw e.zip top && tar cf g.tar "
       "top && tar czf g.tgz top");
    const std::vector<ToolArchive> archives = {{"z.zip", "zip", ""},
                                               {"e.zip", "zip", "pw"},
                                               {"g.tar", "tar", ""},
                                               {"g.tgz", "tgz", ""},
                                               {"g.tgz", "all", ""}};
    std::string ours, names, named;
    for (const ToolArchive& a : archives) {
        ours += "== " + a.archive + "\n" + listed(dir / a.archive, u16(a.format), a.password);
        named += " " + a.archive;
        // Names in archive order, folders with their "/", as bsdtar prints them.
        names.clear();
        core::listArchive(u16(dir / a.archive), u16(a.format), {},
                          [&](const core::EntryInfo& e) { names += utf8(e.name) + "\n"; });
        EXPECT_EQ(names, sh(dir.path(), "bsdtar -tf " + a.archive)) << a.archive;
    }
    EXPECT_EQ(ours, sh(dir.path(), kPythonListing + named));
}

struct Tested {
    std::string archive, format, password, expected;
};

TEST(TestArchive, ReportsDamagePerEntryAndRaisesWhatCannotBeRead) {
    REQUIRE_TOOLS("zip", "7z", "tar");
    TempDir dir;
    writeFile(dir / "d1.bin", randomBytes(30000, 41));
    writeFile(dir / "big.bin", randomBytes(200000, 42));
    sh(dir.path(),
       "printf two > d2.txt && printf three > d3.txt && zip -q -0 sound.zip d1.bin "
       "d2.txt d3.txt && cp sound.zip damaged.zip && printf X | dd of=damaged.zip bs=1 "
       "seek=15000 conv=notrunc status=none && 7z a -tzip -bd -mem=AES256 -ppw aes.zip "
       "d2.txt d3.txt >/dev/null && tar czf full.tgz big.bin d2.txt && head -c 120000 "
       "full.tgz > cut.tgz");
    const std::vector<Tested> cases = {
        {"sound.zip", "zip", "", "read 3"},
        {"damaged.zip", "zip", "",
         "read 2 testArchive:damagedEntry(d1.bin;~/damaged.zip;ZIP bad CRC: 0xef3cc204 should be "
         "0x15b4fccf)"},
        {"full.tgz", "tgz", "", "read 2"},
        {"cut.tgz", "tgz", "",
         "read 0 testArchive:damagedEntry(big.bin;~/cut.tgz;truncated gzip input)"},
        {"aes.zip", "zip", "pw", "read 2"},
        {"aes.zip", "zip", rejectedPassword(dir.path(), "aes.zip"),
         "!extractArchive:incorrectPassword"},
        {"aes.zip", "zip", "", "!extractArchive:unableToWrite"},
    };
    for (const Tested& c : cases) {
        EXPECT_EQ(tested(dir / c.archive, u16(c.format), dir.path(), c.password), c.expected)
            << c.archive << " " << c.password;
    }
}

}  // namespace
}  // namespace tqtest
