// Archives written by other tools come back byte for byte, with folders, symlinks,
// modes and times, and the returned list follows archive order.
#include <archive/core/archivecore.hpp>

#include "ExtractTest.hpp"

using namespace tqtest;

namespace {

struct ToolCase {
    const char* label;
    const char* command;  // packs the folder top into the archive named last but one
    const char* format;
};

const ToolCase kToolCases[] = {
    {"zip_store", "zip -q -r -y -0", "zip"},
    {"zip_deflate", "zip -q -r -y", "zip"},
    {"zip_zip64", "zip -q -r -y -fz", "zip"},
    {"gnutar_gnu", "tar --format=gnu -cf", "tar"},
    {"gnutar_ustar", "tar --format=ustar -cf", "tar"},
    {"gnutar_pax", "tar --format=pax -cf", "tar"},
    {"gnutar_v7", "tar --format=v7 -cf", "tar"},
    {"gnutar_gzip", "tar czf", "tgz"},
    {"bsdtar_tar", "bsdtar -cf", "tar"},
    {"bsdtar_tgz_as_all", "bsdtar -czf", "all"},
    {"bsdtar_zip", "bsdtar --format zip -cf", "zip"},
};

class Interoperability : public ExtractTest, public ::testing::WithParamInterface<ToolCase> {};

}  // namespace

TEST_P(Interoperability, ExtractsWhatTheToolPacked) {
    const std::string command = GetParam().command;
    const std::string tool = command.substr(0, command.find(" "));
    REQUIRE_TOOLS(tool.c_str(), "bsdtar");
    writeFile(dir / "src/top/a.txt", "alpha\nbeta\n");
    writeFile(dir / "src/top/sub/b.bin", randomBytes(70000, 7));
    sh("cd src && mkdir top/sub/empty && : > top/zero.dat && ln -s sub/b.bin top/link && "
       "chmod 750 top && chmod 640 top/a.txt && chmod 755 top/sub top/sub/b.bin && "
       "chmod 700 top/sub/empty && chmod 600 top/zero.dat && touch -h -d @981173106 $(find top) "
       "&& " +
       command + " ../archive.bin top");
    // Archive order as bsdtar lists it; folders carry one trailing separator.
    const std::string names = runCommand("cd " + shellQuote(dir.string()) +
                                         " && bsdtar -tf archive.bin | while read -r n; do [ -d "
                                         "\"src/$n\" ] && [ ! -L \"src/$n\" ] "
                                         "&& n=\"${n%/}/\"; printf ' ~/out/%s' \"$n\"; done")
                                  .output;
    EXPECT_EQ(extract("archive.bin", "out", u16(GetParam().format)),
              names.substr(1) + " | " + listing(dir / "src"));
    // Links, then permission bits, times and bytes of everything else, as find and md5sum
    // see them.
    const std::string describe =
        " && (find top -type l -printf '%p -> %l\\n' -o -printf '%p %m %Ts\\n'; "
        "find top -type f -exec md5sum {} +) | sort";
    EXPECT_EQ(runCommand("cd " + shellQuote((dir / "out").string()) + describe).output,
              runCommand("cd " + shellQuote((dir / "src").string()) + describe).output);
}

INSTANTIATE_TEST_SUITE_P(Tools, Interoperability, ::testing::ValuesIn(kToolCases),
                         [](const auto& info) { return std::string(info.param.label); });
