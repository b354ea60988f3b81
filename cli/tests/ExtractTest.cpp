// unzip and untar as a user types them: selection, keep-existing, the safe defaults and
// what -p and --unsafe-paths turn off, and nothing new left behind after a failure.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

namespace {

// The files under a folder, "name:content" a line, sorted; folders are not listed, and a
// folder that does not exist holds nothing.
std::string filesUnder(const fs::path& folder) {
    if (!fs::is_directory(folder)) {
        return "";
    }
    return sh(folder,
              "find . -type f | sort | while read -r f; do echo \"${f#./}:$(cat \"$f\")\"; done");
}

struct Selection {
    std::string entries;
    std::string extracted;  // filesUnder the output folder
    std::string notFound;   // the entry reported missing, when one is
};

}  // namespace

TEST(Extract, NamedEntriesFoldersAndPatternsSelectMissingOnesAreReportedAfterTheRest) {
    const Selection selections[] = {
        {"top.txt", "top.txt:top\n", ""},
        {"docs", "docs/a.txt:a\ndocs/c.md:c\ndocs/sub/b.txt:b\n", ""},
        {"docs/ top.txt", "docs/a.txt:a\ndocs/c.md:c\ndocs/sub/b.txt:b\ntop.txt:top\n", ""},
        {"'docs/*.txt'", "docs/a.txt:a\ndocs/sub/b.txt:b\n", ""},
        {"'[ot]*/x.tx?'", "other/x.txt:x\n", ""},
        {"nothere.txt top.txt", "top.txt:top\n", "nothere.txt"},
        {"", "docs/a.txt:a\ndocs/c.md:c\ndocs/sub/b.txt:b\nother/x.txt:x\ntop.txt:top\n", ""},
    };
    TempDir dir;
    sh(dir.path(),
       "mkdir -p tree/docs/sub tree/other && echo top > tree/top.txt && echo a > "
       "tree/docs/a.txt && echo b > tree/docs/sub/b.txt && echo c > tree/docs/c.md "
       "&& echo x > tree/other/x.txt && cd tree && zip -qr ../s.zip . && "
       "tar -czf ../s.tar.gz *");
    for (const std::string archive : {"unzip s.zip", "untar s.tar.gz"}) {
        for (const Selection& selection : selections) {
            SCOPED_TRACE(archive + " " + selection.entries);
            sh(dir.path(), "rm -rf out");
            const auto run =
                tqarchive(dir.path(), archive + " " + selection.entries + " -d out -q");
            EXPECT_EQ(filesUnder(dir / "out"), selection.extracted);
            EXPECT_EQ(run.status, selection.notFound.empty() ? 0 : 1);
            EXPECT_EQ(run.err.find("'" + selection.notFound + "'") != std::string::npos &&
                          reports(run, "TESSEL:io:archive:extractArchive:entryNotFound"),
                      !selection.notFound.empty())
                << run.err;
        }
    }
}

TEST(Extract, ExistingFilesAreReplacedUnlessKeepExistingIsGiven) {
    TempDir dir;
    sh(dir.path(),
       "echo new > a.txt && echo new > b.txt && zip -q s.zip a.txt b.txt && "
       "mkdir out && echo mine > out/a.txt");
    const auto kept = tqarchive(dir.path(), "unzip s.zip -d out -k");
    EXPECT_TRUE(kept.status == 0 && kept.output == "out/b.txt\n" &&
                kept.err.starts_with("Warning: ") && kept.err.find("a.txt") != std::string::npos)
        << kept.output << kept.err;
    EXPECT_EQ(filesUnder(dir / "out"), "a.txt:mine\nb.txt:new\n");
    EXPECT_EQ(tqarchive(dir.path(), "unzip s.zip -d out --keep-existing -q").status, 0);
    EXPECT_EQ(filesUnder(dir / "out"), "a.txt:mine\nb.txt:new\n");
    EXPECT_EQ(tqarchive(dir.path(), "unzip s.zip -d out -q").err, "");
    EXPECT_EQ(filesUnder(dir / "out"), "a.txt:new\nb.txt:new\n");
}

TEST(Extract, StripComponentsDropsLeadingFoldersAndTakesOnlyAWholeNumber) {
    TempDir dir;
    sh(dir.path(),
       "mkdir -p project-1.2/src && echo c > project-1.2/src/a.c && tar czf p.tgz project-1.2 "
       "&& zip -q -r p.zip project-1.2");
    for (const std::string archive : {"untar p.tgz", "unzip p.zip"}) {
        SCOPED_TRACE(archive);
        const auto result = tqarchive(dir.path(), archive + " -q -d out --strip-components 1");
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(filesUnder(dir / "out"), "src/a.c:c\n");
        fs::remove_all(dir / "out");
    }
    for (const std::string value : {"x", "-1", "1.5", ""}) {
        SCOPED_TRACE(value);
        const auto refused =
            tqarchive(dir.path(), "untar p.tgz --strip-components='" + value + "'");
        EXPECT_EQ(refused.status, 2) << refused.err;
        EXPECT_TRUE(reports(refused, "tqarchive:usage:invalidNumber") ||
                    (value.empty() && reports(refused, "tqarchive:usage:missingValue")))
            << refused.err;
    }
}

namespace {

struct Mode {
    std::string option;
    std::string onDisk;  // stat of each path that exists afterwards
    bool fifoSkipped;    // with a warning
};

}  // namespace

// The safe defaults clear set-ID, sticky and group/other write bits and skip FIFOs; -p keeps
// the bits; --unsafe-paths keeps everything.
TEST(Extract, SafeModesByDefaultPreservePermissionsKeepsBitsUnsafePathsKeepsAll) {
    if (!toolAvailable("python3")) {
        GTEST_SKIP() << "python3 is not installed";
    }
    const Mode modes[] = {
        {"", "suid.sh 755\nww.txt 755\n", true},
        {"-p", "suid.sh 4755\nww.txt 777\n", true},
        {"--unsafe-paths", "fifo 644\nsuid.sh 4755\nww.txt 777\n", false},
    };
    TempDir dir;
    sh(dir.path(),
       "python3 -c \"import tarfile, io\n"
       "t = tarfile.open('m.tar', 'w')\n"
       "for name, mode, kind in (('suid.sh', 0o4755, tarfile.REGTYPE), "
       "('ww.txt', 0o777, tarfile.REGTYPE), ('fifo', 0o644, tarfile.FIFOTYPE)):\n"
       "    i = tarfile.TarInfo(name); i.mode = mode; i.type = kind\n"
       "    t.addfile(i, io.BytesIO(b''))\n"
       "t.close()\"");
    for (const Mode& mode : modes) {
        SCOPED_TRACE(mode.option);
        const auto run = tqarchive(dir.path(), "untar m.tar -q -d out " + mode.option);
        // A skipped FIFO is an entry not extracted.
        EXPECT_EQ(run.status, mode.fifoSkipped ? 1 : 0) << run.err;
        EXPECT_EQ(sh(dir / "out", "stat -c '%n %a' * && cd .. && rm -r out"), mode.onDisk);
        EXPECT_EQ(run.err.find("fifo") != std::string::npos, mode.fifoSkipped) << run.err;
    }
}

namespace {

struct Hostile {
    std::string make;       // writes ./h.tar or ./h.zip
    std::string escapedTo;  // where the entry lands when nothing stops it
};

}  // namespace

// Refused in the same pass, and the run takes back everything it created, the output folder
// too; --unsafe-paths extracts as told. (Links pointing out are skipped, not refused:
// ExitStatusTest.)
TEST(Extract, EntriesLandingOutsideAreRefusedAndNothingNewIsLeftUnlessUnsafePaths) {
    if (!toolAvailable("python3")) {
        GTEST_SKIP() << "python3 is not installed";
    }
    const Hostile samples[] = {
        {"python3 -c \"import zipfile; z=zipfile.ZipFile('h.zip','w'); "
         "z.writestr('ok.txt','fine'); z.writestr('../evil.txt','x'); z.close()\"",
         "work/new/evil.txt"},
        {"echo x > evil.txt && tar -cPf h.tar --transform 's,^,a/../../,' evil.txt",
         "work/new/evil.txt"},
        // gzip-compressed, refused at its first entry while the second thread still has
        // megabytes to inflate into the pipe the refusal closed.
        {"python3 -c \"import io, os, tarfile; t = tarfile.open('h.tar', 'w:gz'); "
         "i = tarfile.TarInfo('../evil.txt'); i.size = 1; t.addfile(i, io.BytesIO(b'x')); "
         "b = os.urandom(4 << 20); i = tarfile.TarInfo('big.bin'); i.size = len(b); "
         "t.addfile(i, io.BytesIO(b)); t.close()\"",
         "work/new/evil.txt"},
    };
    for (const Hostile& sample : samples) {
        SCOPED_TRACE(sample.make);
        TempDir dir;
        sh(dir.path(), sample.make + " && rm -rf src l cfg evil.txt && mkdir work");
        const std::string unpack = fs::exists(dir / "h.zip") ? "unzip ../h.zip" : "untar ../h.tar";
        for (const std::string option : {"", "-p"}) {
            const auto refused = tqarchive(dir / "work", unpack + " -d new/deep " + option);
            EXPECT_EQ(refused.status, 1) << refused.err;
            EXPECT_EQ(sh(dir.path(), "ls -A work"), "");
        }
        EXPECT_EQ(tqarchive(dir / "work", unpack + " -d new/deep --unsafe-paths").status, 0);
        EXPECT_TRUE(fs::exists(fs::symlink_status(dir / sample.escapedTo)));
    }
}

// Hard links land beside their target in the output folder; a symbolic link already in the
// output folder is not followed.
TEST(Extract, HardLinksLandInsideAndExistingSymlinksAreNotFollowed) {
    TempDir dir;
    sh(dir.path(),
       "mkdir src elsewhere out && echo data > src/a.txt && ln src/a.txt src/b.txt "
       "&& tar -cf h.tar -C src a.txt b.txt && mkdir -p s/dir && echo x > s/dir/x.txt "
       "&& tar -cf s.tar -C s dir/x.txt && ln -s ../elsewhere out/dir");
    const auto linked = tqarchive(dir.path(), "untar h.tar -d links");
    ASSERT_EQ(linked.output + linked.err, "links/a.txt\nlinks/b.txt\n");
    EXPECT_TRUE(fs::equivalent(dir / "links/a.txt", dir / "links/b.txt"));
    const auto refused = tqarchive(dir.path(), "untar s.tar -d out");
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(fs::is_empty(dir / "elsewhere"));
}

// A .tar.gz must be a gzip-compressed tar: a zip under that name is not unpacked as a zip.
TEST(Extract, TheArchiveNameChoosesWhatUntarAccepts) {
    TempDir dir;
    sh(dir.path(),
       "echo a > a.txt && zip -q fake.tar.gz a.txt && cp fake.tar.gz fake.tgz && "
       "tar -cJf real.tar.xz a.txt");
    for (const std::string name : {"fake.tar.gz", "fake.tgz"}) {
        const auto run = tqarchive(dir.path(), "untar " + name + " -d out");
        EXPECT_TRUE(run.status == 1 && reports(run, "TESSEL:io:archive:untar:invalidTarFile"))
            << name << run.err;
        EXPECT_FALSE(fs::exists(dir / "out"));
    }
    EXPECT_EQ(tqarchive(dir.path(), "untar real.tar.xz -d out").output, "out/a.txt\n");
}
