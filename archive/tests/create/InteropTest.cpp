// Archives made by createArchive, listed and extracted by other tools: names, bytes,
// folder entries and (where the tool restores them) permission modes come back.
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include <archive/core/archivecore.hpp>

#include "../support/TestSupport.hpp"
#include "CreateTestSupport.hpp"

namespace tqtest {
namespace {

enum Family : unsigned { Zip = 1, Tar = 2, CompressedTar = 4 };

struct ArchiveKind {
    const char* label;
    const char* file;
    const char* format;
    Family family;
    const char* method;  // non-empty: the six-argument overload with kPassword
};
constexpr const char* kPassword = "pässwörd 1";

const ArchiveKind kKinds[] = {
    {"zip", "a.zip", "zip", Zip, ""},
    {"tar", "a.tar", "tar", Tar, ""},
    {"tgz", "a.tgz", "tgz", CompressedTar, ""},
    {"byExtZip", "a.zip", "all", Zip, ""},
    {"byExtTar", "a.tar", "all", Tar, ""},
    {"byExtTarGz", "a.tar.gz", "all", CompressedTar, ""},
    {"byExtTgz", "a.tgz", "all", CompressedTar, ""},
    {"byExtTarXz", "a.tar.xz", "all", CompressedTar, ""},
    {"byExtTarBz2", "a.tar.bz2", "all", CompressedTar, ""},
    {"capitalZipIsByExt", "a.zip", "Zip", Zip, ""},
    {"zipcrypt", "a.zip", "zip", Zip, "zipcrypt"},
    {"traditional", "a.zip", "zip", Zip, "traditional"},
    {"aes128", "a.zip", "zip", Zip, "aes128"},
    {"aes256", "a.zip", "zip", Zip, "aes256"},
};

// Python lists the names, then extracts unless the output folder is "-".
const char* kPython = R"PY(
import sys, tarfile, zipfile
kind, path, out, password = (sys.argv[1:] + [""])[:4]
if kind == "zip":
    with zipfile.ZipFile(path) as z:
        print("\n".join(z.namelist()))
        if out != "-": z.extractall(out, pwd=password.encode() or None)
else:
    with tarfile.open(path) as t:
        print("\n".join(t.getnames()))
        if out != "-": t.extractall(out, **({"filter": "tar"} if hasattr(tarfile, "tar_filter") else {}))
)PY";

// Command templates: {a} archive, {o} output folder, {p} password option, {py} script.
struct Reader {
    const char* label;
    const char* tool;
    unsigned families;
    bool traditional, aes, restoresModes;
    const char* list;
    const char* extract;
    const char* passwordFlag;
};
const Reader kReaders[] = {
    {"unzip", "unzip", Zip, true, false, true, "unzip -Z1 {a}", "unzip -q -o {p}{a} -d {o}", "-P "},
    {"sevenZip", "7z", Zip | Tar, true, true, false, "7z l -ba -slt {a} | sed -n 's/^Path = //p'",
     "7z x -y -bd {p}-o{o} {a}", "-p"},
    {"bsdtar", "bsdtar", Zip | Tar | CompressedTar, true, true, true, "bsdtar {p}-tf {a}",
     "bsdtar {p}-xf {a} -C {o}", "--passphrase "},
    {"gnuTar", "tar", Tar | CompressedTar, false, false, true, "tar -tf {a}", "tar -xf {a} -C {o}",
     ""},
    {"pythonZipfile", "python3", Zip, true, false, false, "python3 -c {py} zip {a} -",
     "python3 -c {py} zip {a} {o} {p}", ""},
    {"pythonTarfile", "python3", Tar | CompressedTar, false, false, true,
     "python3 -c {py} tar {a} -", "python3 -c {py} tar {a} {o}", ""},
};

std::string expand(std::string text, const std::map<std::string, std::string>& values) {
    for (const auto& [key, value] : values) {
        for (std::size_t at; (at = text.find(key)) != std::string::npos;) {
            text.replace(at, key.size(), value);
        }
    }
    return text;
}

struct Combination {
    const ArchiveKind* kind;
    const Reader* reader;
};

std::vector<Combination> combinations() {
    std::vector<Combination> result;
    for (const auto& kind : kKinds) {
        const std::string method = kind.method;
        for (const auto& reader : kReaders) {
            const bool aes = method.rfind("aes", 0) == 0;
            if ((reader.families & kind.family) != 0 &&
                (method.empty() || (aes ? reader.aes : reader.traditional))) {
                result.push_back({&kind, &reader});
            }
        }
    }
    return result;
}

void PrintTo(const Combination& combination, std::ostream* out) {
    *out << combination.kind->label << " read by " << combination.reader->label;
}

class CreatedArchiveReadBack : public ::testing::TestWithParam<Combination> {};

TEST_P(CreatedArchiveReadBack, ListsAndExtractsIdentically) {
    const ArchiveKind& kind = *GetParam().kind;
    const Reader& reader = *GetParam().reader;
    if (!toolAvailable(reader.tool)) {
        GTEST_SKIP() << reader.tool << " is not installed";
    }
    TempDir dir;
    const SampleInputs inputs = makeSampleTree(dir / "src");
    const fs::path archive = dir / kind.file;
    const std::string method = kind.method;
    const auto written =
        method.empty()
            ? tessel::io::archive::core::createArchive(u16(archive), inputs.files, inputs.names,
                                                       u16(std::string(kind.format)))
            : tessel::io::archive::core::createArchive(u16(archive), inputs.files, inputs.names,
                                                       u16(std::string(kind.format)),
                                                       u16(kPassword), u16(method));
    // Tar formats return folder names without their slash.
    auto expectedNames = inputs.names;
    for (auto& name : expectedNames) {
        if (kind.format == std::string("tar") || kind.format == std::string("tgz")) {
            name = name.back() == u'/' ? name.substr(0, name.size() - 1) : name;
        }
    }
    EXPECT_EQ(written, expectedNames);
    if (!method.empty()) {
        EXPECT_EQ(readFile(archive).find("accents\n"), std::string::npos) << "stored in clear";
    }

    const std::map<std::string, std::string> values = {
        {"{a}", shellQuote(archive.string())},
        {"{o}", shellQuote((dir / "out").string())},
        {"{p}", method.empty() ? "" : reader.passwordFlag + shellQuote(kPassword) + " "},
        {"{py}", shellQuote(kPython)}};
    const TreeSnapshot expected = snapshotTree(dir / "src", reader.restoresModes);
    const auto listed = runCommand(expand(reader.list, values));
    ASSERT_EQ(listed.status, 0) << listed.output;
    std::set<std::string> names;
    std::istringstream lines(listed.output);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty()) {
            names.insert(line.back() == '/' ? line.substr(0, line.size() - 1) : line);
        }
    }
    std::set<std::string> expectedListing;
    for (const auto& entry : expected) {
        expectedListing.insert(entry.first);
    }
    EXPECT_EQ(names, expectedListing) << listed.output;

    fs::create_directories(dir / "out");
    const auto extracted = runCommand(expand(reader.extract, values));
    ASSERT_EQ(extracted.status, 0) << extracted.output;
    EXPECT_EQ(snapshotTree(dir / "out", reader.restoresModes), expected);
}

INSTANTIATE_TEST_SUITE_P(Tools, CreatedArchiveReadBack, ::testing::ValuesIn(combinations()),
                         [](const ::testing::TestParamInfo<Combination>& info) {
                             return std::string(info.param.kind->label) + "_" +
                                    info.param.reader->label;
                         });

}  // namespace
}  // namespace tqtest
