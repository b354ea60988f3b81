// Archives written by other tools come back byte for byte, with folders, symlinks,
// modes and times, and the returned list follows archive order.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <archive/core/archivecore.hpp>

#include "ExtractTestHelpers.hpp"

namespace core = tessel::io::archive::core;
using namespace tqtest;

namespace {

struct ToolCase {
    const char* label;
    const char* tool;
    const char* command;  // run inside the source folder; {A} is the archive
    const char* format;
    bool withLink;
    bool keepsModes;
};

const ToolCase kToolCases[] = {
    {"zip_store", "zip", "zip -q -r -y -0 {A} top", "zip", true, true},
    {"zip_deflate", "zip", "zip -q -r -y {A} top", "zip", true, true},
    {"zip_zip64", "zip", "zip -q -r -y -fz {A} top", "zip", true, true},
    {"p7zip_zip", "7z", "7z a -tzip -bd {A} top", "zip", false, true},
    {"gnutar_gnu", "tar", "tar --format=gnu -cf {A} top", "tar", true, true},
    {"gnutar_ustar", "tar", "tar --format=ustar -cf {A} top", "tar", true, true},
    {"gnutar_pax", "tar", "tar --format=pax -cf {A} top", "tar", true, true},
    {"gnutar_v7", "tar", "tar --format=v7 -cf {A} top", "tar", true, true},
    {"gnutar_gzip", "tar", "tar czf {A} top", "tgz", true, true},
    {"bsdtar_tar", "bsdtar", "bsdtar -cf {A} top", "tar", true, true},
    {"bsdtar_tgz_as_all", "bsdtar", "bsdtar -czf {A} top", "all", true, true},
    {"bsdtar_zip", "bsdtar", "bsdtar --format zip -cf {A} top", "zip", true, true},
    {"python_zipfile", "python3",
     "python3 -c 'import zipfile,os\n"
     "with zipfile.ZipFile(\"{A}\",\"w\",zipfile.ZIP_DEFLATED) as z:\n"
     " for d,ds,fs in os.walk(\"top\"):\n"
     "  z.write(d)\n"
     "  for f in sorted(fs): z.write(os.path.join(d,f))'",
     "zip", false, true},
    {"python_tarfile", "python3",
     "python3 -c 'import tarfile\nwith tarfile.open(\"{A}\",\"w:gz\") as t: t.add(\"top\")'", "tgz",
     true, true},
};

void PrintTo(const ToolCase& c, std::ostream* os) {
    *os << c.label;
}

class Interoperability : public ::testing::TestWithParam<ToolCase> {};

std::string withArchive(std::string command, const fs::path& archive) {
    const std::string token = "{A}";
    command.replace(command.find(token), token.size(), archive.string());
    return command;
}

}  // namespace

TEST_P(Interoperability, ExtractsWhatTheToolPacked) {
    const ToolCase& c = GetParam();
    REQUIRE_TOOLS(c.tool, "bsdtar");
    TempDir dir;
    const auto tree = sampleTree(c.withLink);
    writeTree(dir / "src", tree);
    const fs::path archive = dir / "archive.bin";
    sh("cd " + shellQuote((dir / "src").string()) + " && " + withArchive(c.command, archive));

    const fs::path out = dir / "out";
    const auto written =
        core::extractArchive(u16(archive), u16(out), u16(std::string(c.format)), u"");

    // Archive order, folders with exactly one trailing separator.
    std::vector<std::string> names = listEntries(archive);
    for (std::string& name : names) {
        if (name.back() != '/' && fs::is_directory(dir / "src" / name) &&
            !fs::is_symlink(dir / "src" / name)) {
            name += '/';
        }
    }
    EXPECT_EQ(written, under(out, names));

    for (const SampleFile& file : tree) {
        const fs::path path = out / file.name;
        SCOPED_TRACE(file.name);
        if (!file.target.empty()) {
            ASSERT_TRUE(fs::is_symlink(path));
            EXPECT_EQ(fs::read_symlink(path), file.target);
            continue;
        }
        if (file.name.back() == '/') {
            ASSERT_TRUE(fs::is_directory(path));
        } else {
            ASSERT_TRUE(fs::is_regular_file(path));
            EXPECT_EQ(readFile(path), file.content);
        }
        if (c.keepsModes) {
            EXPECT_EQ(fileMode(path), file.mode);
        }
        struct stat info {};
        ASSERT_EQ(::lstat(path.c_str(), &info), 0);
        EXPECT_EQ(info.st_mtime, kSampleTime);
    }
}

INSTANTIATE_TEST_SUITE_P(Tools, Interoperability, ::testing::ValuesIn(kToolCases),
                         [](const auto& info) { return std::string(info.param.label); });
