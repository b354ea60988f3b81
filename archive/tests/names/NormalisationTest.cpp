// Two names that differ only in how their accents are composed are two files: creation
// stores both as given, and listing and extraction give both back as stored, whoever wrote
// the archive (this library, Python).
#include <gtest/gtest.h>

#include <clocale>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

const std::string kComposed = "caf\xc3\xa9";     // "café", e with an acute accent
const std::string kDecomposed = "cafe\xcc\x81";  // "café", e then a combining accent

// Both files, their content naming their form; the decomposed name sorts first.
const std::string kBoth = "cafe\xcc\x81=decomposed caf\xc3\xa9=composed";

// The host runs in its user's locale, UTF-8 here, in which libarchive takes names for
// UTF-8; the locale of the rest of the program is restored.
class Utf8Locale {
  public:
    Utf8Locale() : previous_(std::setlocale(LC_ALL, nullptr)) { std::setlocale(LC_ALL, "C.UTF-8"); }
    ~Utf8Locale() { std::setlocale(LC_ALL, previous_.c_str()); }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

  private:
    std::string previous_;
};

std::string hex(const std::string& bytes) {
    static const char* digits = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        text += digits[static_cast<unsigned char>(c) >> 4];
        text += digits[static_cast<unsigned char>(c) & 0xf];
    }
    return text;
}

// The names listArchive gives, as hex.
std::string listedNames(const fs::path& archive, const std::u16string& format) {
    std::vector<std::string> names;
    core::listArchive(u16(archive), format, {},
                      [&](const core::EntryInfo& info) { names.push_back(hex(utf8(info.name))); });
    return join(names, " ");
}

struct Written {
    std::string archive;
    std::u16string format;
};

TEST(Normalisation, ComposedAndDecomposedNamesStayTwoFilesThroughEveryFormat) {
    REQUIRE_TOOLS("python3");
    const Utf8Locale utf8;
    TempDir dir;
    writeFile(dir / "src" / kComposed, "composed");
    writeFile(dir / "src" / kDecomposed, "decomposed");
    const Written cases[] = {{.archive = "n.zip", .format = u"zip"},
                             {.archive = "n.tar", .format = u"tar"},
                             {.archive = "n.tgz", .format = u"tgz"}};
    for (const auto& [archive, format] : cases) {
        SCOPED_TRACE(archive);
        core::createArchive(u16(dir / archive),
                            {u16(dir / "src" / kComposed), u16(dir / "src" / kDecomposed)},
                            {u16(kComposed), u16(kDecomposed)}, format);
        // Stored as given, as Python reads them.
        EXPECT_EQ(sh(dir.path(),
                     "python3 -c \"import sys, tarfile, zipfile\n"
                     "a = '" +
                         archive +
                         "'\n"
                         "names = zipfile.ZipFile(a).namelist() if a.endswith('zip') "
                         "else tarfile.open(a).getnames()\n"
                         "print(' '.join(n.encode().hex() for n in names))\""),
                  hex(kComposed) + " " + hex(kDecomposed) + "\n");
        EXPECT_EQ(listedNames(dir / archive, format), hex(kComposed) + " " + hex(kDecomposed));
        const fs::path out = dir / ("out-" + archive);
        core::extractArchiveWithOptions(u16(dir / archive), u16(out), format, {});
        EXPECT_EQ(listing(out), kBoth);
        const fs::path plain = dir / ("plain-" + archive);
        core::extractArchive(u16(dir / archive), u16(plain), format, u"");
        EXPECT_EQ(listing(plain), kBoth);
    }
}

TEST(Normalisation, ArchivesWrittenByPythonKeepBothNamesAndLinkTargetsAsStored) {
    REQUIRE_TOOLS("python3");
    const Utf8Locale utf8;
    TempDir dir;
    // A pax tar (names in UTF-8 records) with a link to the decomposed name, and a zip with
    // the UTF-8 flag.
    sh(dir.path(),
       "python3 -c \"import io, tarfile, zipfile\n"
       "c, d = 'caf\\u00e9', 'cafe\\u0301'\n"
       "with tarfile.open('p.tar', 'w', format=tarfile.PAX_FORMAT) as t:\n"
       "    for n, data in ((c, b'composed'), (d, b'decomposed')):\n"
       "        i = tarfile.TarInfo(n); i.size = len(data); t.addfile(i, io.BytesIO(data))\n"
       "    i = tarfile.TarInfo('link'); i.type = tarfile.SYMTYPE; i.linkname = d\n"
       "    t.addfile(i)\n"
       "with zipfile.ZipFile('p.zip', 'w') as z:\n"
       "    z.writestr(c, b'composed'); z.writestr(d, b'decomposed')\"");
    core::extractArchiveWithOptions(u16(dir / "p.tar"), u16(dir / "tar"), u"tar", {});
    EXPECT_EQ(listing(dir / "tar"), kBoth + " link->" + kDecomposed);
    core::extractArchiveWithOptions(u16(dir / "p.zip"), u16(dir / "zip"), u"zip", {});
    EXPECT_EQ(listing(dir / "zip"), kBoth);
    EXPECT_EQ(listedNames(dir / "p.zip", u"zip"), hex(kComposed) + " " + hex(kDecomposed));
}

}  // namespace
}  // namespace tqtest
