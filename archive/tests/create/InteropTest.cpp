// Archives made by createArchive, listed and extracted by other tools: names, bytes,
// folder entries and (where the tool restores them) permission modes come back.
#include <gtest/gtest.h>

#include <clocale>

#include <archive/core/archivecore.hpp>

#include "../support/TestSupport.hpp"

namespace tqtest {
namespace {

using tessel::io::archive::core::createArchive;
using Names = std::vector<std::u16string>;

// Like an embedding host, take the locale from the environment (C.UTF-8), so that
// libarchive converts names as UTF-8.
[[maybe_unused]] const bool kLocaleFromEnvironment = std::setlocale(LC_ALL, "") != nullptr;

enum Family : unsigned { Zip = 1, Tar = 2, CompressedTar = 4 };
constexpr const char* kPassword = "pässwörd 1";

// Archive, format, family, encryption method (empty: the overload without a password).
const std::tuple<const char*, const char*, Family, const char*> kKinds[] = {
    {"a.zip", "zip", Zip, ""},
    {"a.tar", "tar", Tar, ""},
    {"a.tgz", "tgz", CompressedTar, ""},
    {"b.zip", "all", Zip, ""},
    {"b.tar", "all", Tar, ""},
    {"b.tar.gz", "all", CompressedTar, ""},
    {"b.tgz", "all", CompressedTar, ""},
    {"b.tar.xz", "all", CompressedTar, ""},
    {"b.tar.bz2", "all", CompressedTar, ""},
    {"zipcrypt.zip", "zip", Zip, "zipcrypt"},
    {"traditional.zip", "zip", Zip, "traditional"},
    {"aes128.zip", "zip", Zip, "aes128"},
    {"aes256.zip", "zip", Zip, "aes256"},
};

// Accented, CJK and emoji names, nested folders, an empty file, a file of exactly one copy
// chunk, incompressible data and several modes.
const std::tuple<const char*, std::string, unsigned> kTree[] = {
    {"docs/", "", 0755},
    {"docs/héllo wörld.txt", "accents\n", 0644},
    {"docs/日本語.txt", "CJK\n", 0644},
    {"docs/emoji😀.bin", randomBytes(70000, 7), 0644},
    {"docs/sub/", "", 0755},
    {"docs/sub/exact.bin", randomBytes(16384, 3), 0644},
    {"empty.txt", "", 0644},
    {"run.sh", "#!/bin/sh\necho hi\n", 0750},
    {"private.txt", "secret\n", 0600}};

// Shell commands over $A archive, $O output folder, $W password (empty without one), $Z the
// zipfile script. Every zip reader takes traditional encryption; aes: AES too.
struct Reader {
    const char *label, *tool, *list, *extract;
    unsigned families;
    bool aes, restoresModes;
};
const Reader kReaders[] = {
    {"unzip", "unzip", "unzip -Z1 \"$A\"", "unzip -q ${W:+-P \"$W\"} \"$A\" -d \"$O\"", Zip, false,
     true},
    {"sevenZip", "7z", "7z l -ba -slt \"$A\" | sed -n 's/^Path = //p'",
     "7z x -bd ${W:+-p\"$W\"} -o\"$O\" \"$A\"", Zip | Tar, true, false},
    {"bsdtar", "bsdtar", "bsdtar ${W:+--passphrase \"$W\"} -tf \"$A\"",
     "bsdtar ${W:+--passphrase \"$W\"} -xf \"$A\" -C \"$O\"", Zip | Tar | CompressedTar, true,
     true},
    {"gnuTar", "tar", "tar -tf \"$A\"", "tar -xf \"$A\" -C \"$O\"", Tar | CompressedTar, false,
     true},
    {"pythonZipfile", "python3", "python3 -c \"$Z\" \"$A\"",
     "python3 -c \"$Z\" \"$A\" \"$O\" \"$W\"", Zip, false, false},
    {"pythonTarfile", "python3", "python3 -m tarfile -l \"$A\"",
     "python3 -m tarfile -e \"$A\" \"$O\"", Tar | CompressedTar, false, true},
};
const char* kZipfile =
    "import sys, zipfile\nz = zipfile.ZipFile(sys.argv[1]); print(*z.namelist(), sep='\\n')\n"
    "if sys.argv[2:]: z.extractall(sys.argv[2], pwd=sys.argv[3].encode() or None)\n";

class CreatedArchiveReadBack : public ::testing::TestWithParam<Reader> {};

TEST_P(CreatedArchiveReadBack, ListsAndExtractsIdentically) {
    const Reader& reader = GetParam();
    if (!toolAvailable(reader.tool)) {
        GTEST_SKIP() << reader.tool << " is not installed";
    }
    TempDir dir;
    Names files, names;
    for (const auto& [name, bytes, mode] : kTree) {
        const fs::path path = dir / "src" / name;
        std::string(name).back() == '/' ? (void)fs::create_directories(path)
                                        : writeFile(path, bytes);
        fs::permissions(path, fs::perms(mode));
        files.push_back(u16(path));
        names.push_back(u16(name));
    }
    // Names without a folder's slash; after extraction no difference, and each file's mode
    // where the tool restores it.
    const std::string sorted = " | sed 's,[ /]*$,,;/^$/d' | LC_ALL=C sort",
                      modes = reader.restoresModes ? "find . -type f -printf '%P %m\\n' | sort"
                                                   : "true",
                      src = "S=" + shellQuote((dir / "src").string()) + "; cd \"$S\" && ";
    const std::string listing =
                          runCommand(src + "find . -mindepth 1 -printf '%P\\n'" + sorted).output,
                      tree = runCommand(src + modes).output;
    for (const auto& [file, format, family, methodText] : kKinds) {
        const std::string method = methodText;
        if ((reader.families & family) == 0 || (method.rfind("aes", 0) == 0 && !reader.aes)) {
            continue;
        }
        SCOPED_TRACE(file);
        const fs::path archive = dir / file;
        // What createArchive returns is checked with the calls of CreateOutcomeTest.
        method.empty()
            ? createArchive(u16(archive), files, names, u16(format))
            : createArchive(u16(archive), files, names, u16(format), u16(kPassword), u16(method));
        if (!method.empty()) {
            EXPECT_EQ(readFile(archive).find("accents\n"), std::string::npos) << "in clear";
        }
        const std::string shell = src + "A=" + shellQuote(archive.string()) +
                                  " O=\"$A.out\" Z=" + shellQuote(kZipfile) +
                                  " W=" + shellQuote(method.empty() ? "" : kPassword) + "; ";
        EXPECT_EQ(runCommand(shell + reader.list + sorted).output, listing);
        EXPECT_EQ(runCommand(shell + "mkdir \"$O\" && (" + reader.extract +
                             ") >/dev/null 2>&1; diff -r . \"$O\" && cd \"$O\" && " + modes)
                      .output,
                  tree);
    }
}

INSTANTIATE_TEST_SUITE_P(Tools, CreatedArchiveReadBack, ::testing::ValuesIn(kReaders),
                         [](const auto& info) { return std::string(info.param.label); });

}  // namespace
}  // namespace tqtest
