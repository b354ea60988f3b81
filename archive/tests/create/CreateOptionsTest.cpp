// Creation: sizes at the edges of the copy chunk in every format, zip names at the edge of
// their field, the reported final close on a disk swept in small steps, compression filters
// and levels, and archive types from names.
#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <set>

#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/replace.hpp>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

// Written by the library, read back by the library and by bsdtar (gzip for .gz).
TEST(RoundTrip, SizesAtTheEdgesOfTheCopyChunkInEveryFormat) {
    REQUIRE_TOOLS("bsdtar", "gzip");
    TempDir dir;
    Paths files, names;
    for (const std::size_t size : {0, 1, 16383, 16384, 16385, 65535, 65536, 65537}) {
        const std::string name = "size-" + std::to_string(size);
        writeFile(dir / "src" / name, randomBytes(size, static_cast<unsigned>(size) + 1));
        files.push_back(u16(dir / "src" / name));
        names.push_back(u16(name));
    }
    // Names each file of $O that differs from its source or is missing.
    const std::string compare =
        " && for f in src/*; do cmp -s \"$f\" \"$O/${f#src/}\" || echo \"$O/${f#src/}\"; done";
    for (const std::string format : {"zip", "tar", "tgz"}) {
        const fs::path archive = dir / ("r." + format);
        EXPECT_EQ(core::createArchive(u16(archive), files, names, u16(format)), names);
        core::extractArchive(u16(archive), u16(dir / ("ours-" + format)), u16(format), u"");
        EXPECT_EQ(sh(dir.path(), "O=ours-" + format + compare + " && O=tool-" + format +
                                     " && mkdir $O && bsdtar -xf r." + format + " -C $O" + compare),
                  "");
    }
    fs::create_directories(dir / "gz");
    const Paths gz = core::compressgz(files, u16(dir / "gz"));
    core::uncompressgz(gz, u16(dir / "ours-gz"), false);
    EXPECT_EQ(sh(dir.path(), "O=ours-gz" + compare +
                                 " && for f in src/*; do gzip -dc \"gz/${f#src/}.gz\" | cmp -s - "
                                 "\"$f\" || echo \"$f\"; done"),
              "");
}

// The zip name field holds 65,535 bytes: that name is stored whole; a longer one is refused
// with the warning of an unwritable header, without touching libarchive's buffer, and left
// out when asked (s*.zip).
TEST(ZipNames, TheLongestNameIsStoredLongerOnesAreRefused) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    writeFile(dir / "f.txt", "x");
    writeFile(dir / "empty.txt", "");
    core::CreateOptions skip;
    skip.skipRefusedEntries = true;
    const std::string refused = "?createArchive:openEntryError(N)";
    // The outcomes of createArchive and of leaving refused entries out ("N": the name).
    struct NameLength {
        std::size_t length;
        std::string created, skippingRefused;
    };
    const std::vector<NameLength> cases = {
        {.length = 65535, .created = "N", .skippingRefused = "N after.txt"},
        {.length = 65536,
         .created = refused + " !extractArchive:internalError",
         .skippingRefused = "after.txt " + refused},
        {.length = 65537,
         .created = refused + " !extractArchive:internalError",
         .skippingRefused = "after.txt " + refused},
    };
    std::string zips;
    for (const auto& [length, plain, skipping] : cases) {
        const std::string name(length, 'n'), zip = std::to_string(length) + ".zip";
        const std::u16string f = u16(dir / "f.txt"), e = u16(dir / "empty.txt"), n = u16(name);
        std::string text =
            outcome([&] { return core::createArchive(u16(dir / zip), {f}, {n}, u"zip"); },
                    dir.path()) +
            " | " +
            outcome(
                [&] {
                    return core::createArchiveWithOptions(u16(dir / ("s" + zip)), {f, e},
                                                          {n, u"after.txt"}, u"zip", skip);
                },
                dir.path());
        boost::algorithm::replace_all(text, name, "N");
        EXPECT_EQ(text, plain + " | " + skipping) << length;
        zips += " " + zip + " s" + zip;
    }
    // Python's view: each archive's name lengths and its first damaged entry (None: sound).
    EXPECT_EQ(sh(dir.path(),
                 "python3 -c \"import sys, zipfile\nfor a in sys.argv[1:]: z = "
                 "zipfile.ZipFile(a); print(*[len(n) for n in z.namelist()], "
                 "z.testzip())\"" +
                     zips),
              "65535 None\n65535 9 None\nNone\n9 None\nNone\n9 None\n");
}

// A tmpfs of 32 pages, filled in steps of one page before each call. With the final close
// reported, a call either succeeds with a sound file or raises its format's disk-full
// error; without, the same sweep shows successes that left a broken file (the window).
TEST(ReportFinalClose, NoSuccessWithAnIncompleteFileOnADiskSweptInSmallSteps) {
    REQUIRE_TOOLS("unzip", "gzip", "cmp");
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    TempDir dir;
    writeFile(dir / "in.bin", randomBytes(40000, 21));
    core::createArchive(u16(dir / "ref.tar"), {u16(dir / "in.bin")}, {u"in.bin"}, u"tar");
    struct Format {
        std::string format, check, full;
    };
    const std::vector<Format> formats = {
        {"zip", "unzip -tq $A", "TESSEL:io:archive:zip:DiskSpaceFull"},
        {"tar", "cmp -s $A ref.tar", "TESSEL:io:archive:tar:DiskSpaceFull"},
        {"tgz", "(gzip -t $A && gzip -dc $A | cmp -s - ref.tar) 2>/dev/null",
         "TESSEL:io:archive:tar:DiskSpaceFull"},
        {"gz", "(gzip -t $A && gzip -dc $A | cmp -s - in.bin) 2>/dev/null",
         "TESSEL:io:archive:gzip:outputDiskFull"},
        // ref.tar compressed by a StreamCompressor, which always reports the close.
        {"stream", "(gzip -t $A && gzip -dc $A | cmp -s - ref.tar) 2>/dev/null",
         "TESSEL:io:archive:tar:DiskSpaceFull"},
    };
    const fs::path disk = dir / "disk";
    const auto sweep = [&] {
        std::string text;
        for (const Format& f : formats) {
            std::set<std::string> reported, unreported;
            for (int pages = 16; pages <= 28; ++pages) {
                for (const bool report : {true, false}) {
                    if (f.format == "stream" && !report) {
                        continue;
                    }
                    writeFile(disk / "filler", std::string(pages * 4096, 'f'));
                    const fs::path archive = disk / (report ? "a.out" : "in.bin.gz");
                    core::CreateOptions options;
                    options.reportFinalClose = report;
                    const auto raised = raisedBy([&] {
                        const std::u16string in = u16(dir / "in.bin");
                        if (f.format == "stream") {
                            const int tar = ::open((dir / "ref.tar").c_str(), O_RDONLY);
                            core::StreamCompressor(u16(archive), options).compress(tar);
                            ::close(tar);
                        } else if (f.format == "gz") {
                            report ? (void)core::compressgzToFile(in, u16(archive), options)
                                   : (void)core::compressgz({in}, u16(disk));
                        } else if (report) {
                            core::createArchiveWithOptions(u16(archive), {in}, {u"in.bin"},
                                                           u16(f.format), options);
                        } else {
                            core::createArchive(u16(archive), {in}, {u"in.bin"}, u16(f.format));
                        }
                    });
                    const bool sound =
                        runCommand("cd " + shellQuote(dir.path().string()) +
                                   " && A=" + shellQuote(archive.string()) + " && " + f.check)
                            .status == 0;
                    (report ? reported : unreported)
                        .insert(raised
                                    ? (raised->identifier == f.full ? "full" : raised->identifier)
                                : sound ? "ok"
                                        : "broken");
                    fs::remove(archive);
                    fs::remove(disk / "filler");
                }
            }
            text += f.format + ": " + boost::algorithm::join(reported, " ") +
                    (unreported.contains("broken") ? " | window" : " | no window") + "\n";
        }
        return text;
    };
    EXPECT_EQ(runInChild(sweep, mountTinyTmpfs(disk, 32 * 4096)),
              "zip: full ok | window\ntar: full ok | window\ntgz: full ok | window\n"
              "gz: full ok | window\nstream: full ok | no window\n");
}

TEST(CreateOptions, EachTarFilterRoundTripsThroughBsdtar) {
    REQUIRE_TOOLS("bsdtar", "od");
    TempDir dir;
    writeFile(dir / "a.txt", std::string(20000, 'x'));
    // Each filter's leading bytes, in hex.
    const std::vector<std::pair<std::string, std::string>> filters = {
        {"gzip", "1f8b"},    {"bzip2", "425a68"}, {"xz", "fd377a585a00"}, {"zstd", "28b52ffd"},
        {"lz4", "04224d18"}, {"lzma", "5d0000"},  {"lzip", "4c5a4950"},   {"compress", "1f9d"},
    };
    for (const auto& [filter, magic] : filters) {
        core::CreateOptions options;
        options.filter = u16(filter);
        const std::string archive = "a.tar." + filter;
        ASSERT_FALSE(raisedBy([&] {
            core::createArchiveWithOptions(u16(dir / archive), {u16(dir / "a.txt")}, {u"a.txt"},
                                           u"tar", options);
        })) << filter;
        EXPECT_EQ(sh(dir.path(), "od -An -tx1 -N" + std::to_string(magic.size() / 2) + " " +
                                     archive + " | tr -d ' \\n' && bsdtar -xOf " + archive +
                                     " | cmp - a.txt && bsdtar -tf " + archive),
                  magic + "a.txt\n")
            << filter;
    }
}

// The compression of a tar written elsewhere (a pipe, in tqarchive): the same stream, in
// every filter, as the library writes itself, and the same refusals.
TEST(StreamCompressor, CompressesAsTheLibraryWouldAndRefusesWhatItWould) {
    REQUIRE_TOOLS("bsdtar", "gzip", "cmp");
    TempDir dir;
    writeFile(dir / "a.txt", randomBytes(70000, 5));
    writeFile(dir / "b.txt", std::string(30000, 'b'));
    const Paths files = {u16(dir / "a.txt"), u16(dir / "b.txt")}, names = {u"a.txt", u"b.txt"};
    core::createArchive(u16(dir / "plain.tar"), files, names, u"tar");
    core::createArchive(u16(dir / "library.tgz"), files, names, u"tgz");
    const auto compressed = [&](const std::string& archive, const core::CreateOptions& options) {
        return outcome(
            [&] {
                const int tar = ::open((dir / "plain.tar").c_str(), O_RDONLY);
                core::StreamCompressor compressor(u16(dir / archive), options);
                compressor.compress(tar);
                ::close(tar);
                return Paths{};
            },
            dir.path());
    };
    EXPECT_EQ(compressed("stream.tgz", {}), "");
    // A second call finds the output finished.
    const int empty = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(outcome(
                  [&] {
                      core::StreamCompressor compressor(u16(dir / "twice.tgz"), {});
                      compressor.compress(empty);
                      compressor.compress(empty);
                      return Paths{};
                  },
                  dir.path()),
              "!extractArchive:internalError");
    ::close(empty);
    EXPECT_EQ(sh(dir.path(),
                 "gzip -dc stream.tgz | cmp - plain.tar && gzip -dc library.tgz | "
                 "cmp - plain.tar && bsdtar -tf stream.tgz"),
              "a.txt\nb.txt\n");
    for (const std::string filter : {"xz", "zstd", "bzip2"}) {
        core::CreateOptions options;
        options.filter = u16(filter);
        options.level = 1;
        EXPECT_EQ(compressed("s." + filter, options), "") << filter;
        EXPECT_EQ(sh(dir.path(),
                     "bsdtar -xOf s." + filter + " a.txt | cmp - a.txt && bsdtar -tf s." + filter),
                  "a.txt\nb.txt\n")
            << filter;
    }
    // What is refused, and what is left of the output (nothing).
    struct Refusal {
        std::string archive, filter;
        int level;
        std::string raised;
    };
    const std::vector<Refusal> refusals = {
        {"l.tgz", "", 12, "!createArchive:invalidCompression(gzip;12)"},
        {"l.tar.lz4", "lz4", 0, "!createArchive:invalidCompression(lz4;0)"},
        {"u.tar.what", "what", -1, "!createArchive:unknownArchiveType(~/u.tar.what)"},
        {"missing/m.tgz", "", -1, "!tar:openError(~/missing/m.tgz)"},
    };
    for (const Refusal& r : refusals) {
        core::CreateOptions options;
        options.filter = u16(r.filter);
        options.level = r.level;
        EXPECT_EQ(compressed(r.archive, options), r.raised) << r.archive;
        EXPECT_FALSE(fs::exists(dir / r.archive)) << r.archive;
    }
}

TEST(CreateOptions, LevelsStoreDeflateOrAreRefused) {
    REQUIRE_TOOLS("unzip");
    TempDir dir;
    writeFile(dir / "a.txt", std::string(50000, 'a'));
    struct Level {
        std::string archive, format, filter;
        int level;
        std::string expected;  // the method unzip -v shows, or the outcome
    };
    const std::vector<Level> levels = {
        {"l0.zip", "zip", "", 0, "Stored"},
        {"l9.zip", "zip", "", 9, "Defl:N"},
        {"l10.zip", "zip", "", 10, "!createArchive:invalidCompression(zip;10)"},
        {"g12.tgz", "tar", "gzip", 12, "!createArchive:invalidCompression(gzip;12)"},
        {"g10.gz", "gz", "", 10, "!createArchive:invalidCompression(gzip;10)"},
    };
    for (const Level& l : levels) {
        core::CreateOptions options;
        options.filter = u16(l.filter);
        options.level = l.level;
        const std::string result = outcome(
            [&] {
                return core::createArchiveWithOptions(u16(dir / l.archive), {u16(dir / "a.txt")},
                                                      {u"a.txt"}, u16(l.format), options);
            },
            dir.path());
        EXPECT_EQ(result == "a.txt"
                      ? sh(dir.path(), "unzip -v " + l.archive + " | awk 'NR==4{printf $2}'")
                      : result,
                  l.expected)
            << l.archive;
    }
}

TEST(ArchiveTypeFromName, ExtensionsWithoutRegardToCase) {
    const std::vector<std::pair<std::string, std::vector<std::u16string>>> types = {
        {"zip", {u"a.zip", u"A.ZIP"}},
        {"tar", {u"a.tar"}},
        {"tgz", {u"a.tgz", u"a.tar.gz", u"a.TAR.GZ"}},
        {"tar+bzip2", {u"a.tbz", u"a.tbz2", u"a.tar.bz2"}},
        {"tar+xz", {u"a.txz", u"a.tar.xz"}},
        {"tar+zstd", {u"a.tzst", u"a.tar.zst"}},
        {"tar+lz4", {u"a.tar.lz4"}},
        {"tar+lzma", {u"a.tar.lzma"}},
        {"tar+lzip", {u"a.tlz", u"a.tar.lz"}},
        {"tar+compress", {u"a.taz", u"a.tar.Z"}},
        {"gz", {u"a.gz", u"a.txt.gz"}},
        {"none", {u"a.rar", u".zip", u"zip", u"a.tar.gz.part", u"", u"dir.zip/a"}},
    };
    for (const auto& [expected, names] : types) {
        for (const std::u16string& name : names) {
            const auto type = core::archiveTypeFromName(name);
            EXPECT_EQ(
                !type ? "none"
                      : utf8(type->format) + (type->filter.empty() ? "" : "+" + utf8(type->filter)),
                expected)
                << utf8(name);
        }
    }
}

}  // namespace
}  // namespace tqtest
