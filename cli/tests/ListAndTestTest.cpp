// list and test: names in archive order, the long and JSON forms, and damage found in zip
// entries, tgz streams and .gz files.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

namespace {

// A tar with a folder, a file, a symbolic link and a name that is not UTF-8, all from 2001.
const std::string kMakeTar =
    "python3 -c \"import tarfile, io\n"
    "t = tarfile.open('t.tar', 'w', format=tarfile.GNU_FORMAT, errors='surrogateescape')\n"
    "for name, kind, data, link, mode in (('dir', tarfile.DIRTYPE, b'', '', 0o755), "
    "('dir/file.txt', tarfile.REGTYPE, b'hello', '', 0o644), "
    "('link', tarfile.SYMTYPE, b'', 'dir/file.txt', 0o777), "
    "('\\udce9t\\udce9.txt', tarfile.REGTYPE, b'x', '', 0o4750)):\n"
    "    i = tarfile.TarInfo(name); i.type = kind; i.size = len(data); i.linkname = link\n"
    "    i.mode = mode; i.mtime = 1000000000\n"
    "    t.addfile(i, io.BytesIO(data))\n"
    "t.close()\"";

}  // namespace

TEST(List, NamesInArchiveOrderLongFormAndJsonForScripts) {
    if (!toolAvailable("python3")) {
        GTEST_SKIP() << "python3 is not installed";
    }
    TempDir dir;
    sh(dir.path(), kMakeTar + " && printf secret > s.txt && zip -q -P pw s.zip s.txt");
    EXPECT_EQ(tqarchive(dir.path(), "list t.tar").output,
              "dir/\ndir/file.txt\nlink\n\\351t\\351.txt\n");
    const auto long_ = tqarchive(dir.path(), "list t.tar -v", "TZ=UTC");
    EXPECT_EQ(long_.output,
              "drwxr-xr-x            0            - 2001-09-09 01:46 -         dir/\n"
              "-rw-r--r--            5            - 2001-09-09 01:46 -         dir/file.txt\n"
              "lrwxrwxrwx            0            - 2001-09-09 01:46 -         link -> "
              "dir/file.txt\n"
              "-rwsr-x---            1            - 2001-09-09 01:46 -         \\351t\\351.txt\n")
        << long_.err;
    EXPECT_EQ(
        sh(dir.path(), program() + " list t.tar --json | python3 -c \"import json, sys\n"
                                   "for line in sys.stdin:\n"
                                   "    e = json.loads(line)\n"
                                   "    print(e['name'].encode('utf-8', 'surrogateescape'), "
                                   "e['type'], e['modified'], e['mode'], e.get('linkTarget'))\""),
        "b'dir/' folder 1000000000 0755 None\n"
        "b'dir/file.txt' file 1000000000 0644 None\n"
        "b'link' symlink 1000000000 0777 dir/file.txt\n"
        "b'\\xe9t\\xe9.txt' file 1000000000 4750 None\n");
    // Quotes, backslashes and control characters are escaped the JSON way.
    const std::string make = R"x(touch "$(printf 'q"\\\n.txt')" && tar -cf q.tar q* && )x";
    const std::string read = R"x( list q.tar --json | python3 -c "import json, sys
print(repr(json.loads(sys.stdin.readline())['name']))")x";
    EXPECT_EQ(sh(dir.path(), make + program() + read), R"x('q"\\\n.txt')x"
                                                       "\n");
    // The compressed size of a zip entry, as Info-ZIP reports it.
    sh(dir.path(), "seq 1 1000 > n.txt && zip -q n.zip n.txt");
    const std::string compressed = sh(dir.path(), "unzip -v n.zip | awk 'NR == 4 { print $3 }'");
    EXPECT_NE(tqarchive(dir.path(), "list n.zip -v")
                  .output.find("         3893 " + std::string(13 - compressed.size(), ' ') +
                               compressed.substr(0, compressed.size() - 1) + " "),
              std::string::npos);
    const auto encrypted = tqarchive(dir.path(), "list s.zip -v");
    EXPECT_TRUE(encrypted.output.find(" 6 ") != std::string::npos &&
                encrypted.output.ends_with(" encrypted s.txt\n"))
        << encrypted.output << encrypted.err;
}

namespace {

struct Damage {
    std::string make;  // writes the file to test
    std::string archive;
    std::string damaged;  // what the error names; empty for a sound file
};

// Flips the bits of one byte of FILE at OFFSET (a shell function for the rows below).
const std::string kFlip =
    "flip() { python3 -c \"import sys; f=open(sys.argv[1],'r+b'); f.seek(int(sys.argv[2])); "
    "b=f.read(1); f.seek(-1,1); f.write(bytes([b[0]^0xff]))\" \"$1\" \"$2\"; } && "
    "head -c 100000 /dev/urandom > r.bin && echo text > a.txt && ";

}  // namespace

TEST(Test, DamagedZipEntriesTgzStreamsAndGzFilesAreNamedWithExitStatus1) {
    if (!toolAvailable("python3")) {
        GTEST_SKIP() << "python3 is not installed";
    }
    const Damage cases[] = {
        {"zip -q0 s.zip a.txt r.bin", "s.zip", ""},
        // r.bin is stored: 50,000 bytes past its name in the local header lie in its data.
        {"zip -q0 s.zip a.txt r.bin && flip s.zip $(($(grep -obUa 'r.bin' s.zip | head -1 | "
         "cut -d: -f1) + 5 + 50000))",
         "s.zip", "r.bin"},
        {"tar -czf s.tgz a.txt r.bin", "s.tgz", ""},
        {"tar -czf s.tgz a.txt r.bin && flip s.tgz 60000", "s.tgz", "s.tgz"},
        {"gzip -c r.bin > r.bin.gz", "r.bin.gz", ""},
        {"gzip -c r.bin > r.bin.gz && flip r.bin.gz 50000", "r.bin.gz", "r.bin.gz"},
    };
    for (const Damage& damage : cases) {
        SCOPED_TRACE(damage.make);
        TempDir dir;
        sh(dir.path(), kFlip + damage.make);
        const auto run = tqarchive(dir.path(), "test " + damage.archive);
        if (damage.damaged.empty()) {
            EXPECT_TRUE(run.status == 0 && run.err.empty() &&
                        run.output.starts_with(damage.archive + ": ") &&
                        run.output.ends_with(" checked, no damage found\n"))
                << run.output << run.err;
        } else {
            EXPECT_TRUE(run.status == 1 && run.output.empty() && run.err.starts_with("Error: ") &&
                        run.err.find("'" + damage.damaged + "'") != std::string::npos &&
                        run.err.find(" [TESSEL:io:archive:testArchive:damaged") !=
                            std::string::npos)
                << run.output << run.err;
        }
    }
}
