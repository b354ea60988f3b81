// Archives written by other tools come back byte for byte, with folders, symlinks,
// modes and times, and the returned list follows archive order.
#include <sstream>

#include "ExtractTest.hpp"

using namespace tqtest;

namespace {

struct ToolCase {
    const char* label;
    const char* tool;
    const char* command;  // packs the folder top into the archive named last but one
    const char* format;
    bool keepsLinks;
};

const ToolCase kToolCases[] = {
    {"zip_store", "zip", "zip -q -r -y -0", "zip", true},
    {"zip_deflate", "zip", "zip -q -r -y", "zip", true},
    {"zip_zip64", "zip", "zip -q -r -y -fz", "zip", true},
    {"p7zip_zip", "7z", "7z a -tzip -bd", "zip", false},
    {"gnutar_gnu", "tar", "tar --format=gnu -cf", "tar", true},
    {"gnutar_ustar", "tar", "tar --format=ustar -cf", "tar", true},
    {"gnutar_pax", "tar", "tar --format=pax -cf", "tar", true},
    {"gnutar_v7", "tar", "tar --format=v7 -cf", "tar", true},
    {"gnutar_gzip", "tar", "tar czf", "tgz", true},
    {"bsdtar_tar", "bsdtar", "bsdtar -cf", "tar", true},
    {"bsdtar_tgz_as_all", "bsdtar", "bsdtar -czf", "all", true},
    {"bsdtar_zip", "bsdtar", "bsdtar --format zip -cf", "zip", true},
    {"python_zipfile", "python3",
     "python3 -c 'import zipfile,os,sys\n"
     "with zipfile.ZipFile(sys.argv[1],\"w\",zipfile.ZIP_DEFLATED) as z:\n"
     " for d,ds,fs in os.walk(\"top\"):\n"
     "  z.write(d)\n"
     "  for f in sorted(fs): z.write(os.path.join(d,f))'",
     "zip", false},
    {"python_tarfile", "python3",
     "python3 -c 'import tarfile,sys\nwith tarfile.open(sys.argv[1],\"w:gz\") as t: "
     "t.add(\"top\")'",
     "tgz", true},
};

class Interoperability : public ExtractTest, public ::testing::WithParamInterface<ToolCase> {};

}  // namespace

TEST_P(Interoperability, ExtractsWhatTheToolPacked) {
    const ToolCase& c = GetParam();
    REQUIRE_TOOLS(c.tool, "bsdtar");
    writeFile(dir / "src/top/a.txt", "alpha\nbeta\n");
    writeFile(dir / "src/top/sub/b.bin", randomBytes(70000, 7));
    sh("cd src && mkdir top/sub/empty && : > top/zero.dat && ln -s sub/b.bin top/link && " +
       std::string(c.keepsLinks ? "" : "rm top/link && ") +
       "chmod 750 top && chmod 640 top/a.txt && chmod 755 top/sub top/sub/b.bin && "
       "chmod 700 top/sub/empty && chmod 600 top/zero.dat && touch -h -d @981173106 $(find top) "
       "&& " +
       c.command + " ../archive.bin top");

    // Archive order as bsdtar lists it; folders carry one trailing separator.
    std::string expected;
    std::istringstream names(
        runCommand("bsdtar -tf " + shellQuote((dir / "archive.bin").string())).output);
    for (std::string name; std::getline(names, name);) {
        const bool folder =
            name.back() != '/' && fs::is_directory(fs::symlink_status(dir / "src" / name));
        expected += " ~/out/" + name + (folder ? "/" : "");
    }
    EXPECT_EQ(extract("archive.bin", "out", u16(c.format)),
              expected.substr(1) + " | " + listing(dir / "src"));
    // Links, then permission bits, times and bytes of everything else, as find and md5sum see them.
    const std::string describe =
        "(find top -type l -printf '%p -> %l\\n' -o -printf '%p %m %Ts\\n'; "
        "find top -type f -exec md5sum {} +) | sort";
    EXPECT_EQ(runCommand("cd " + shellQuote((dir / "out").string()) + " && " + describe).output,
              runCommand("cd " + shellQuote((dir / "src").string()) + " && " + describe).output);
}

INSTANTIATE_TEST_SUITE_P(Tools, Interoperability, ::testing::ValuesIn(kToolCases),
                         [](const auto& info) { return std::string(info.param.label); });
