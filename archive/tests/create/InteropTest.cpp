// Archives made by createArchive, listed and extracted by other tools: names, bytes,
// folder entries and (where the tool restores them) permission modes must come back.
#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <sstream>

#include <archive/core/archivecore.hpp>

#include "../support/TestSupport.hpp"
#include "CreateTestSupport.hpp"

namespace core = tessel::io::archive::core;

namespace tqtest {
namespace {

enum class Family { Zip, Tar, CompressedTar };

struct ArchiveKind {
    const char* label;
    const char* fileName;
    const char* format;
    Family family;
    const char* password = "";  // non-empty: the six-argument overload
    const char* method = "";
    bool namesKeepSlash = true;  // false where the format text is "tar" or "tgz"
};

const ArchiveKind kKinds[] = {
    {"zip", "a.zip", "zip", Family::Zip},
    {"tar", "a.tar", "tar", Family::Tar, "", "", false},
    {"tgz", "a.tgz", "tgz", Family::CompressedTar, "", "", false},
    {"byExtZip", "a.zip", "all", Family::Zip},
    {"byExtTar", "a.tar", "all", Family::Tar},
    {"byExtTarGz", "a.tar.gz", "all", Family::CompressedTar},
    {"byExtTgz", "a.tgz", "all", Family::CompressedTar},
    {"byExtTarXz", "a.tar.xz", "all", Family::CompressedTar},
    {"byExtTarBz2", "a.tar.bz2", "all", Family::CompressedTar},
    {"capitalZipIsByExt", "a.zip", "Zip", Family::Zip},
    {"zipcrypt", "a.zip", "zip", Family::Zip, "pässwörd 1", "zipcrypt"},
    {"traditional", "a.zip", "zip", Family::Zip, "pässwörd 1", "traditional"},
    {"aes128", "a.zip", "zip", Family::Zip, "pässwörd 1", "aes128"},
    {"aes256", "a.zip", "zip", Family::Zip, "pässwörd 1", "aes256"},
};

// A reader: how it lists an archive (one name a line) and extracts it into a folder.
struct Reader {
    const char* label;
    const char* tool;
    bool restoresModes;
    std::function<bool(const ArchiveKind&)> reads;
    std::function<std::string(const std::string& archive, const std::string& password)> list;
    std::function<std::string(const std::string& archive, const std::string& out,
                              const std::string& password)>
        extract;
};

bool isZip(const ArchiveKind& kind) {
    return kind.family == Family::Zip;
}
bool isTar(const ArchiveKind& kind) {
    return kind.family != Family::Zip;
}
bool plain(const ArchiveKind& kind) {
    return *kind.password == '\0';
}
bool traditional(const ArchiveKind& kind) {
    return std::string(kind.method) == "zipcrypt" || std::string(kind.method) == "traditional";
}

// Python prints "name<TAB>mode" per entry (the mode as stored) and extracts.
const char* kPythonReader = R"PY(
import sys, tarfile, zipfile
kind, path, out, password = sys.argv[1:5]
if kind == "zip":
    with zipfile.ZipFile(path) as z:
        for info in z.infolist():
            print("%s\t%o" % (info.filename, (info.external_attr >> 16) & 0o7777))
        if out:
            z.extractall(out, pwd=password.encode() if password else None)
else:
    with tarfile.open(path) as t:
        for info in t.getmembers():
            print("%s\t%o" % (info.name, info.mode))
        if out:
            if hasattr(tarfile, "tar_filter"):
                t.extractall(out, filter="tar")
            else:
                t.extractall(out)
)PY";

std::string python(const std::string& kind, const std::string& archive, const std::string& out,
                   const std::string& password) {
    return "python3 -c " + shellQuote(kPythonReader) + " " + kind + " " + shellQuote(archive) +
           " " + shellQuote(out) + " " + shellQuote(password);
}

std::string passwordOption(const std::string& flag, const std::string& password) {
    return password.empty() ? std::string() : flag + shellQuote(password) + " ";
}

const std::vector<Reader>& readers() {
    static const std::vector<Reader> all = {
        {"unzip", "unzip", true,
         [](const ArchiveKind& k) { return isZip(k) && (plain(k) || traditional(k)); },
         [](const std::string& a, const std::string&) { return "unzip -Z1 " + shellQuote(a); },
         [](const std::string& a, const std::string& o, const std::string& p) {
             return "unzip -q -o " + passwordOption("-P ", p) + shellQuote(a) + " -d " +
                    shellQuote(o);
         }},
        {"sevenZip", "7z", false,
         [](const ArchiveKind& k) { return k.family != Family::CompressedTar; },
         [](const std::string& a, const std::string&) {
             return "7z l -ba -slt " + shellQuote(a) + " | sed -n 's/^Path = //p'";
         },
         [](const std::string& a, const std::string& o, const std::string& p) {
             return "7z x -y -bd " + passwordOption("-p", p) + "-o" + shellQuote(o) + " " +
                    shellQuote(a);
         }},
        {"bsdtar", "bsdtar", true, [](const ArchiveKind&) { return true; },
         [](const std::string& a, const std::string& p) {
             return "bsdtar " + passwordOption("--passphrase ", p) + "-tf " + shellQuote(a);
         },
         [](const std::string& a, const std::string& o, const std::string& p) {
             return "bsdtar " + passwordOption("--passphrase ", p) + "-xf " + shellQuote(a) +
                    " -C " + shellQuote(o);
         }},
        {"gnuTar", "tar", true, isTar,
         [](const std::string& a, const std::string&) { return "tar -tf " + shellQuote(a); },
         [](const std::string& a, const std::string& o, const std::string&) {
             return "tar -xf " + shellQuote(a) + " -C " + shellQuote(o);
         }},
        {"pythonZipfile", "python3", false,
         [](const ArchiveKind& k) { return isZip(k) && (plain(k) || traditional(k)); },
         [](const std::string& a, const std::string&) {
             return python("zip", a, "", "") + " | cut -f1";
         },
         [](const std::string& a, const std::string& o, const std::string& p) {
             return python("zip", a, o, p);
         }},
        {"pythonTarfile", "python3", true, isTar,
         [](const std::string& a, const std::string&) {
             return python("tar", a, "", "") + " | cut -f1";
         },
         [](const std::string& a, const std::string& o, const std::string&) {
             return python("tar", a, o, "");
         }},
    };
    return all;
}

struct Combination {
    ArchiveKind kind;
    const Reader* reader;
};

std::vector<Combination> combinations() {
    std::vector<Combination> result;
    for (const auto& kind : kKinds) {
        for (const auto& reader : readers()) {
            if (reader.reads(kind)) {
                result.push_back({kind, &reader});
            }
        }
    }
    return result;
}

std::set<std::string> listedNames(const std::string& output) {
    std::set<std::string> names;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '/') {
            line.pop_back();
        }
        if (!line.empty()) {
            names.insert(line);
        }
    }
    return names;
}

class CreatedArchiveReadBack : public ::testing::TestWithParam<Combination> {};

TEST_P(CreatedArchiveReadBack, ListsAndExtractsIdentically) {
    const ArchiveKind& kind = GetParam().kind;
    const Reader& reader = *GetParam().reader;
    if (!toolAvailable(reader.tool)) {
        GTEST_SKIP() << reader.tool << " is not installed";
    }
    TempDir dir;
    const SampleInputs inputs = makeSampleTree(dir / "src");
    const fs::path archive = dir / kind.fileName;

    const auto written = plain(kind) ? core::createArchive(u16(archive), inputs.files, inputs.names,
                                                           u16(std::string(kind.format)))
                                     : core::createArchive(u16(archive), inputs.files, inputs.names,
                                                           u16(std::string(kind.format)),
                                                           u16(std::string(kind.password)),
                                                           u16(std::string(kind.method)));
    EXPECT_EQ(written, kind.namesKeepSlash ? inputs.names : withoutTrailingSlash(inputs.names));

    const TreeSnapshot expected = snapshotTree(dir / "src", reader.restoresModes);
    std::set<std::string> expectedNames;
    for (const auto& [name, node] : expected) {
        expectedNames.insert(name);
    }
    const auto listing = runCommand(reader.list(archive.string(), kind.password));
    ASSERT_EQ(listing.status, 0) << listing.output;
    EXPECT_EQ(listedNames(listing.output), expectedNames) << listing.output;

    const fs::path out = dir / "out";
    fs::create_directories(out);
    const auto extraction =
        runCommand(reader.extract(archive.string(), out.string(), kind.password));
    ASSERT_EQ(extraction.status, 0) << extraction.output;
    EXPECT_EQ(snapshotTree(out, reader.restoresModes), expected);
}

// Python's zipfile does not restore modes on extraction; the stored modes are checked
// from its listing instead.
TEST(CreatedZip, StoresUnixModes) {
    TempDir dir;
    const SampleInputs inputs = makeSampleTree(dir / "src");
    core::createArchive(u16(dir / "a.zip"), inputs.files, inputs.names, u"zip");
    const auto listing = runCommand(python("zip", (dir / "a.zip").string(), "", ""));
    ASSERT_EQ(listing.status, 0) << listing.output;
    EXPECT_NE(listing.output.find("run.sh\t750"), std::string::npos) << listing.output;
    EXPECT_NE(listing.output.find("private.txt\t600"), std::string::npos) << listing.output;
    EXPECT_NE(listing.output.find("docs/\t755"), std::string::npos) << listing.output;
}

// Encrypted entries really are encrypted: a wrong password gets nothing out.
TEST(CreatedZip, WrongPasswordIsRefusedByReaders) {
    if (!toolAvailable("7z")) {
        GTEST_SKIP() << "7z is not installed";
    }
    TempDir dir;
    writeFile(dir / "secret.txt", "the content\n");
    for (const char* method : {"zipcrypt", "aes128", "aes256"}) {
        const fs::path archive = dir / (std::string(method) + ".zip");
        core::createArchive(u16(archive), {u16(dir / "secret.txt")}, {u"secret.txt"}, u"zip",
                            u"right", u16(std::string(method)));
        EXPECT_EQ(readFile(archive).find("the content"), std::string::npos) << method;
        const auto refused =
            runCommand("7z x -y -bd -pwrong -o" + shellQuote((dir / method).string()) + " " +
                       shellQuote(archive.string()));
        EXPECT_NE(refused.status, 0) << method << refused.output;
    }
}

std::string combinationName(const ::testing::TestParamInfo<Combination>& info) {
    return std::string(info.param.kind.label) + "_" + info.param.reader->label;
}

INSTANTIATE_TEST_SUITE_P(Tools, CreatedArchiveReadBack, ::testing::ValuesIn(combinations()),
                         combinationName);

}  // namespace
}  // namespace tqtest
