// Names as bytes: a Latin-1 name on disk survives creation and extraction, a legacy CP437
// zip extracts as its author meant, warnings show such names readably; and path texts that
// cannot name a file as written are refused before anything is touched.
#include <gtest/gtest.h>

#include <cstdio>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

using namespace std::string_literals;

const std::string kLatin1 = "\xe9t\xe9.txt";  // "été.txt" in Latin-1

TEST(Names, Latin1NameOnDiskComesBackAsTheSameBytes) {
    REQUIRE_TOOLS("python3", "bsdtar");
    TempDir dir;
    writeFile(dir / "src" / kLatin1, "latin");
    const std::u16string file = u16(dir / "src" / kLatin1), name = u16(kLatin1);
    // Packed whole. libarchive's tar writer warns that it stored the name as bytes: the plain
    // entry point passes every header warning on; the options pass on refusals only.
    core::CreateOptions skip;
    skip.skipRefusedEntries = true;
    const std::vector<std::function<Paths()>> creations = {
        [&] { return core::createArchive(u16(dir / "n.tar"), {file}, {name}, u"tar"); },
        [&] { return core::createArchive(u16(dir / "n.zip"), {file}, {name}, u"zip"); },
        [&] {
            return core::createArchiveWithOptions(u16(dir / "s.tar"), {file}, {name}, u"tar", skip);
        },
        [&] {
            return core::createArchiveWithOptions(u16(dir / "s.zip"), {file}, {name}, u"zip", skip);
        }};
    for (std::size_t i = 0; i < creations.size(); ++i) {
        EXPECT_EQ(outcome(creations[i], dir.path()),
                  i == 0 ? "\\351t\\351.txt ?createArchive:openEntryError(\\351t\\351.txt)"
                         : "\\351t\\351.txt")
            << "creation " << i;
    }
    // The stored bytes and content, as Python reads them (a zip name without the UTF-8 flag
    // is CP437 to Python), and bsdtar's listing of the tar.
    EXPECT_EQ(sh(dir.path(),
                 "python3 -c \"import tarfile, zipfile\n"
                 "for a in ('n.tar', 's.tar'):\n"
                 " t = tarfile.open(a, encoding='utf-8', errors='surrogateescape')\n"
                 " print([(m.name.encode('utf-8', 'surrogateescape').hex(), "
                 "t.extractfile(m).read()) for m in t])\n"
                 "for a in ('n.zip', 's.zip'):\n"
                 " z = zipfile.ZipFile(a)\n"
                 " print([(i.orig_filename.encode('cp437').hex(), i.flag_bits & 0x800, "
                 "z.read(i)) for i in z.infolist()])\" 2>&1 && bsdtar -tf n.tar"),
              "[('e974e92e747874', b'latin')]\n[('e974e92e747874', b'latin')]\n"
              "[('e974e92e747874', 0, b'latin')]\n"
              "[('e974e92e747874', 0, b'latin')]\n\\351t\\351.txt\n");
    // The tar gives the bytes back; the zip, like any zip name without the flag, is read as
    // CP437, exactly as Python extracts it.
    EXPECT_EQ(
        outcome(
            [&] { return core::extractArchive(u16(dir / "n.tar"), u16(dir / "t"), u"tar", u""); },
            dir.path()),
        "~/t/\\351t\\351.txt");
    EXPECT_EQ(readFile(dir / "t" / kLatin1), "latin");
    core::extractArchive(u16(dir / "n.zip"), u16(dir / "z"), u"zip", u"");
    sh(dir.path(), "python3 -c \"import zipfile; zipfile.ZipFile('n.zip').extractall('py')\"");
    EXPECT_EQ(listing(dir / "z"), listing(dir / "py"));
    EXPECT_EQ(listing(dir / "z"), "ΘtΘ.txt=latin");
}

TEST(Names, LegacyZipFromInfoZipExtractsAsCp437) {
    REQUIRE_TOOLS("zip");
    TempDir dir;
    writeFile(dir / "src/caf\x82.txt", "first");
    writeFile(dir / "src/caf\x81.txt", "second");
    sh(dir.path(),
       "cd src && LC_ALL=C zip -q ../legacy.zip \"$(printf 'caf\\202.txt')\" "
       "\"$(printf 'caf\\201.txt')\"");
    EXPECT_EQ(outcome(
                  [&] {
                      return core::extractArchive(u16(dir / "legacy.zip"), u16(dir / "out"), u"zip",
                                                  u"");
                  },
                  dir.path()),
              "~/out/café.txt ~/out/cafü.txt");
    EXPECT_EQ(listing(dir / "out"), "café.txt=first cafü.txt=second");
}

// Printed warnings escape the bytes that are not UTF-8 rather than writing them raw.
TEST(Names, WarningsShowSuchNamesReadably) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    python(dir.path(), "tar('k.tar', reg(b'\\xe9t\\xe9.txt', b'new'))");
    writeFile(dir / "out" / kLatin1, "mine");
    const std::string printed = runInChild([&] {
        const fs::path log = dir / "stderr.txt";
        if (std::freopen(log.c_str(), "w", stderr) == nullptr) {
            return std::string("cannot redirect");
        }
        core::ExtractOptions options;
        options.keepExisting = true;
        core::extractArchiveWithOptions(u16(dir / "k.tar"), u16(dir / "out"), u"tar", options);
        std::fflush(stderr);
        return readFile(log);
    });
    EXPECT_EQ(shown(printed, dir.path()),
              "Warning: '~/out/\\351t\\351.txt' already exists and was kept; the entry of that "
              "name was not extracted. [extractArchive:existingFileKept]\n");
    EXPECT_EQ(readFile(dir / "out" / kLatin1), "mine");
}

// A NUL would cut the name, a lone surrogate would be dropped: either way another file
// would be written. Refused, naming the argument, and the files such a cut text names stay.
TEST(Names, PathTextsWithNulOrLoneSurrogatesAreRefused) {
    TempDir dir;
    const fs::path d = dir / "d";
    writeFile(d / "in.txt", "in");
    writeFile(d / "keep.txt", "keep");
    writeFile(d / "keep.zip", "old zip");
    writeFile(d / "keepX.zip", "old zip");
    core::createArchive(u16(dir / "a.zip"), {u16(d / "in.txt")}, {u"in.txt"}, u"zip");
    core::compressgz({u16(d / "in.txt")}, u16(dir.path()));
    const std::string before = listing(d);
    const std::u16string nul = u"\0"s, high = u"\xD800", highLast = u"\xDBFF", low = u"\xDC00";
    const std::u16string in = u16(d / "in.txt"), zip = u16(dir / "a.zip"),
                         gz = u16(dir / "in.txt.gz");
    const std::string nulRefused = "!TESSEL:host:pathHasNulCharacter(",
                      surrogateRefused = "!TESSEL:host:pathHasLoneSurrogate(";
    const auto create = [](std::u16string archive, std::u16string file, std::u16string name) {
        return [=] { return core::createArchive(archive, {file}, {name}, u"zip"); };
    };
    const auto extract = [](std::u16string archive, std::u16string folder) {
        return [=] { return core::extractArchive(archive, folder, u"zip", u""); };
    };
    const auto gzip = [](Paths files, std::u16string folder) {
        return [=] { return core::compressgz(files, folder); };
    };
    const auto gunzip = [](Paths files, std::u16string folder, bool exact) {
        return [=] { return core::uncompressgz(files, folder, exact); };
    };
    const std::vector<std::pair<std::function<Paths()>, std::string>> cases = {
        {create(u16(d / "keep.txt") + nul + u".zip", in, u"in.txt"),
         nulRefused + "archivePath;~/d/keep.txt\\000.zip)"},
        {create(u16(d / "keep") + high + u"X.zip", in, u"in.txt"),
         surrogateRefused + "archivePath;~/d/keep\\uD800X.zip)"},
        {create(u16(d / "new.zip"), in + nul + u"x", u"in.txt"),
         nulRefused + "files[0];~/d/in.txt\\000x)"},
        {create(u16(d / "new.zip"), in, u"in" + low + u".txt"),
         surrogateRefused + "entryNames[0];in\\uDC00.txt)"},
        {extract(zip + nul + u"x", u16(d)), nulRefused + "archivePath;~/a.zip\\000x)"},
        {extract(zip, u16(d / "o") + highLast + u"ut"),
         surrogateRefused + "outputFolder;~/d/o\\uDBFFut)"},
        {gzip({in + nul + u"x"}, u""), nulRefused + "files[0];~/d/in.txt\\000x)"},
        // Before anything is written: not even the first of a list.
        {gzip({u16(d / "keep.txt"), in + nul}, u""), nulRefused + "files[1];~/d/in.txt\\000)"},
        {gzip({in}, u16(d) + high), surrogateRefused + "outputFolder;~/d\\uD800)"},
        {gunzip({u16(d / "keep.txt") + nul + u".gz"}, u"", false),
         nulRefused + "files[0];~/d/keep.txt\\000.gz)"},
        {gunzip({gz}, u16(d / "in.txt") + nul + u"x", true),
         nulRefused + "outputFolder;~/d/in.txt\\000x)"},
    };
    for (const auto& [call, expected] : cases) {
        EXPECT_EQ(outcome(call, dir.path()), expected);
    }
    EXPECT_EQ(listing(d), before);
}

}  // namespace
}  // namespace tqtest
