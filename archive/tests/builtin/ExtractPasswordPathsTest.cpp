// extractArchiveBuiltin's three ways after the password probe, on encrypted zips made by
// the library and by Info-ZIP zip.

#include <gtest/gtest.h>

#include <archive/core/archivecore.hpp>
#include <host/hxArray.hpp>

#include "../support/TestSupport.hpp"

namespace {

using namespace tessel::host;
using namespace tqtest;
namespace core = tessel::io::archive::core;

struct ExtractCall {
    std::vector<std::string> entries;
    std::string password;
};

// Five inputs: archive, output folder, "zip", the entry list, the password.
std::optional<RaisedError> extractFive(const fs::path& archive, const fs::path& out,
                                       const ExtractCall& call, std::vector<std::string>& names) {
    std::vector<hxArrayPtr> owned;
    owned.emplace_back(createHostString(u16(archive)));
    owned.emplace_back(createHostString(u16(out)));
    owned.emplace_back(createHostString(u"zip"));
    owned.emplace_back(createHostStringArray(u16list(call.entries)));
    owned.emplace_back(createHostString(u16(call.password)));
    std::vector<const hxArray*> raw;
    for (const auto& array : owned) {
        raw.push_back(array.get());
    }
    hxOutput slot;
    auto raised = raisedBy([&] { extractArchiveBuiltin(0, &slot, 5, raw.data()); });
    if (!raised) {
        for (const auto& name : readHostCellStrings(slot.get())) {
            names.push_back(utf8(name));
        }
    }
    return raised;
}

class ExtractWithPassword : public testing::Test {
  protected:
    void SetUp() override {
        writeFile(dir_ / "src/a.txt", "alpha");
        writeFile(dir_ / "src/b.txt", "beta");
        core::createArchive(u16(dir_ / "enc.zip"),
                            {u16(dir_ / "src/a.txt"), u16(dir_ / "src/b.txt")},
                            {u"a.txt", u"b.txt"}, u"zip", u"right", u"aes256");
        core::createArchive(u16(dir_ / "plain.zip"), {u16(dir_ / "src/a.txt")}, {u"a.txt"}, u"zip");
    }
    TempDir dir_;
};

TEST_F(ExtractWithPassword, ProbeThenTheMatchingExtraction) {
    struct Case {
        const char* archive;
        ExtractCall call;
        std::vector<std::string> expected;  // entries written
    };
    const std::vector<Case> cases{
        {"enc.zip", {{}, "right"}, {"a.txt", "b.txt"}},  // empty list: everything
        {"enc.zip", {{"b.txt"}, "right"}, {"b.txt"}},    // the list only
        {"plain.zip", {{}, ""}, {"a.txt"}},              // empty password, not encrypted
        {"plain.zip", {{"missing.txt"}, "any"}, {}},     // unmatched names ignored
    };
    int n = 0;
    for (const Case& c : cases) {
        const fs::path out = dir_ / ("out" + std::to_string(n++));
        std::vector<std::string> names;
        const auto raised = extractFive(dir_ / c.archive, out, c.call, names);
        ASSERT_FALSE(raised) << raised->identifier;
        std::vector<std::string> expectedPaths;
        for (const auto& entry : c.expected) {
            expectedPaths.push_back((out / entry).string());
            EXPECT_EQ(readFile(out / entry), readFile(dir_ / "src" / entry));
        }
        EXPECT_EQ(names, expectedPaths);
    }
}

TEST_F(ExtractWithPassword, MissingOrWrongPasswordIsRefusedBeforeAnythingIsWritten) {
    struct Case {
        ExtractCall call;
        const char* identifier;
    };
    const std::vector<Case> cases{
        {{{}, ""}, "TESSEL:io:archive:extractArchive:unableToWrite"},
        {{{}, "wrong"}, "TESSEL:io:archive:extractArchive:incorrectPassword"},
        {{{"b.txt"}, "wrong"}, "TESSEL:io:archive:extractArchive:incorrectPassword"},
        // Only the probe can tell: the list matches nothing, so extraction alone would pass.
        {{{"missing.txt"}, "wrong"}, "TESSEL:io:archive:extractArchive:incorrectPassword"},
    };
    for (const Case& c : cases) {
        const fs::path out = dir_ / "refused";
        fs::create_directories(out);
        std::vector<std::string> names;
        const auto raised = extractFive(dir_ / "enc.zip", out, c.call, names);
        ASSERT_TRUE(raised);
        EXPECT_EQ(raised->identifier, c.identifier);
        EXPECT_TRUE(fs::is_empty(out));
    }
}

TEST_F(ExtractWithPassword, OpensAZipEncryptedByInfoZip) {
    if (!toolAvailable("zip")) {
        GTEST_SKIP() << "Info-ZIP zip is not installed";
    }
    const auto made = runCommand("cd " + shellQuote((dir_ / "src").string()) +
                                 " && zip -q -P 'z1p pw' ../iz.zip a.txt b.txt");
    ASSERT_EQ(made.status, 0) << made.output;
    std::vector<std::string> names;
    const auto raised = extractFive(dir_ / "iz.zip", dir_ / "iz", {{}, "z1p pw"}, names);
    ASSERT_FALSE(raised) << raised->identifier;
    EXPECT_EQ(names.size(), 2u);
    EXPECT_EQ(readFile(dir_ / "iz/b.txt"), "beta");
}

}  // namespace
