// The builtin gateways' argument handling: counts, input types, the output slot, the
// password probe before extraction, and results equal to the entry points they call.

#include <gtest/gtest.h>

#include <archive/core/archivecore.hpp>
#include <host/hxArray.hpp>

#include "../support/TestSupport.hpp"

namespace {

using namespace tessel::host;
using namespace tqtest;
namespace core = tessel::io::archive::core;
using Gateway = void (*)(int, hxOutput*, int, const hxArray**);

// Host inputs owned for one call; null slots stand for "nothing passed there".
class Inputs {
  public:
    Inputs& text(const std::string& value) { return add(createHostString(u16(value))); }
    Inputs& list(const std::vector<std::string>& values) {
        return add(createHostStringArray(u16list(values)));
    }
    Inputs& flag(bool value) { return add(createHostLogical(value)); }
    Inputs& number(double value) { return add(createHostDouble(value)); }
    Inputs& none(int count = 1) {
        for (int i = 0; i < count; ++i) {
            add(nullptr);
        }
        return *this;
    }
    // Calls the gateway with every input held; the cell it returned, or the error raised.
    std::optional<RaisedError> call(Gateway gateway, hxOutput& slot, int nlhs = 0, int nrhs = -1) {
        return raisedBy([&] {
            gateway(nlhs, &slot, nrhs < 0 ? static_cast<int>(raw_.size()) : nrhs, raw_.data());
        });
    }

  private:
    Inputs& add(hxArray* array) {
        owned_.emplace_back(array);
        raw_.push_back(array);
        return *this;
    }
    std::vector<hxArrayPtr> owned_;
    std::vector<const hxArray*> raw_;
};

std::vector<std::string> utf8list(const std::vector<std::u16string>& texts) {
    std::vector<std::string> result;
    for (const auto& text : texts) {
        result.push_back(utf8(text));
    }
    return result;
}

std::vector<std::string> cell(const hxOutput& slot) {
    return utf8list(readHostCellStrings(slot.get()));
}

struct CountCase {
    const char* name;
    Gateway gateway;
    int nlhs;
    int nrhs;
    const char* identifier;
};

class GatewayCounts : public testing::TestWithParam<CountCase> {};

// Count errors come before any input is read (every slot is null here), and the output
// slot keeps what it held.
TEST_P(GatewayCounts, RaisesTheHostCountErrorBeforeReadingInputs) {
    const CountCase& c = GetParam();
    Inputs inputs;
    inputs.none(std::max(c.nrhs, 1));
    hxOutput slot(createHostString(u"before"));
    const auto raised = inputs.call(c.gateway, slot, c.nlhs, c.nrhs);
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, c.identifier);
    EXPECT_EQ(readHostString(slot.get()), u"before");
}

INSTANTIATE_TEST_SUITE_P(
    AllGateways, GatewayCounts,
    testing::Values(
        CountCase{"createTwoOutputsSeven", createArchiveBuiltin, 2, 7,
                  "TESSEL:host:tooManyOutputs"},
        CountCase{"createSeven", createArchiveBuiltin, 1, 7, "TESSEL:host:tooManyInputs"},
        CountCase{"createThree", createArchiveBuiltin, 1, 3, "TESSEL:host:tooFewInputs"},
        CountCase{"extractTwoOutputs", extractArchiveBuiltin, 2, 3, "TESSEL:host:tooManyOutputs"},
        CountCase{"extractSix", extractArchiveBuiltin, 0, 6, "TESSEL:host:tooManyInputs"},
        CountCase{"extractTwo", extractArchiveBuiltin, 0, 2, "TESSEL:host:tooFewInputs"},
        CountCase{"compressTwoOutputs", compressgzBuiltin, 2, 1, "TESSEL:host:tooManyOutputs"},
        CountCase{"compressThree", compressgzBuiltin, 1, 3, "TESSEL:host:tooManyInputs"},
        CountCase{"compressNone", compressgzBuiltin, 1, 0, "TESSEL:host:tooFewInputs"},
        CountCase{"uncompressTwoOutputs", uncompressgzBuiltin, 2, 3, "TESSEL:host:tooManyOutputs"},
        CountCase{"uncompressFour", uncompressgzBuiltin, 1, 4, "TESSEL:host:tooManyInputs"},
        CountCase{"uncompressTwo", uncompressgzBuiltin, 1, 2, "TESSEL:host:tooFewInputs"}),
    [](const testing::TestParamInfo<CountCase>& info) { return info.param.name; });

struct TypeCase {
    const char* name;
    Gateway gateway;
    std::function<void(Inputs&)> fill;
    const char* identifier;
};

class GatewayInputTypes : public testing::TestWithParam<TypeCase> {};

TEST_P(GatewayInputTypes, WrongTypeGivesTheHostReadErrorAndNoOutput) {
    Inputs inputs;
    GetParam().fill(inputs);
    hxOutput slot;
    const auto raised = inputs.call(GetParam().gateway, slot);
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, GetParam().identifier);
    EXPECT_EQ(slot, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    AllGateways, GatewayInputTypes,
    testing::Values(
        // Input 4 is read before the five-input refusal, so its type error wins.
        TypeCase{"createFiveBadFourth", createArchiveBuiltin,
                 [](Inputs& i) { i.text("x.zip").list({}).list({}).number(3).text("pw"); },
                 "TESSEL:host:expectedString"},
        TypeCase{"createFilesLogical", createArchiveBuiltin,
                 [](Inputs& i) { i.text("x.zip").flag(true).list({}).text("zip"); },
                 "TESSEL:host:expectedStringArray"},
        TypeCase{"extractFormatList", extractArchiveBuiltin,
                 [](Inputs& i) {
                     i.text("x.zip").text("out").list({"zip", "tar"});
                 },
                 "TESSEL:host:expectedString"},
        TypeCase{"compressFolderNull", compressgzBuiltin, [](Inputs& i) { i.list({"a"}).none(); },
                 "TESSEL:host:expectedString"},
        TypeCase{"uncompressFlagText", uncompressgzBuiltin,
                 [](Inputs& i) { i.list({"a.gz"}).text("").text("true"); },
                 "TESSEL:host:expectedLogical"}),
    [](const testing::TestParamInfo<TypeCase>& info) { return info.param.name; });

TEST(CreateArchiveBuiltin, FiveInputsAreRefusedAndNothingIsCreated) {
    TempDir dir;
    writeFile(dir / "a.txt", "a");
    Inputs five;
    five.text((dir / "five.zip").string()).list({(dir / "a.txt").string()}).list({"a.txt"});
    five.text("zip").text("pw");
    hxOutput slot;
    const auto raised = five.call(createArchiveBuiltin, slot, 1);
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, "TESSEL:io:archive:createArchive:invalidNumberOfArgs");
    EXPECT_FALSE(fs::exists(dir / "five.zip"));
}

TEST(CreateArchiveBuiltin, CellHoldsWhatTheEntryPointReturnsEvenWithNoOutputRequested) {
    TempDir dir;
    writeFile(dir / "in/a.txt", "alpha");
    writeFile(dir / "in/é.txt", "beta");
    const std::vector<std::string> files{(dir / "in").string(), (dir / "in/a.txt").string(),
                                         (dir / "in/é.txt").string()};
    const std::vector<std::string> names{"in/", "in/a.txt", "in/é.txt"};
    for (const char* format : {"zip", "tar"}) {
        Inputs inputs;
        inputs.text((dir / "gateway").string()).list(files).list(names).text(format);
        // The slot's previous array has a second holder: the gateway releases only its own.
        hxArray* previous = createHostString(u"old");
        hxArrayPtr otherHolder(shareHostArray(previous));
        hxOutput slot(previous);
        ASSERT_FALSE(inputs.call(createArchiveBuiltin, slot, 0));
        EXPECT_EQ(hostReferenceCount(previous), 1u);
        const auto direct = core::createArchive(u16(dir / "direct"), u16list(files), u16list(names),
                                                u16(std::string(format)));
        EXPECT_EQ(cell(slot), utf8list(direct)) << format;
    }
}

TEST(CompressAndUncompressBuiltins, SecondSlotReadWithOneInputAndTheExactPathFlag) {
    TempDir dir;
    writeFile(dir / "r.txt", "report");
    Inputs one;  // one input counted; the host's padding slot holds an empty text
    one.list({(dir / "r.txt").string()}).text("");
    hxOutput slot;
    ASSERT_FALSE(one.call(compressgzBuiltin, slot, 0, 1));
    EXPECT_EQ(cell(slot), std::vector<std::string>{(dir / "r.txt.gz").string()});

    for (const bool exact : {false, true}) {
        const fs::path target = exact ? dir / "exact.bin" : dir / "out";
        Inputs inputs;
        inputs.list({(dir / "r.txt.gz").string()}).text(target.string()).flag(exact);
        ASSERT_FALSE(inputs.call(uncompressgzBuiltin, slot));
        EXPECT_EQ(readFile(exact ? target : target / "r.txt"), "report");
        EXPECT_EQ(cell(slot),
                  utf8list(core::uncompressgz({u16(dir / "r.txt.gz")}, u16(target), exact)));
    }
}

// Five inputs: the probe, then everything (empty list) or the list, with the password.
class ExtractWithPassword : public testing::Test {
  protected:
    void SetUp() override {
        writeFile(dir_ / "src/a.txt", "alpha");
        writeFile(dir_ / "src/b.txt", "beta");
        Inputs six;
        six.text((dir_ / "enc.zip").string())
            .list({(dir_ / "src/a.txt").string(), (dir_ / "src/b.txt").string()})
            .list({"a.txt", "b.txt"})
            .text("zip")
            .text("right")
            .text("aes256");
        hxOutput slot;
        ASSERT_FALSE(six.call(createArchiveBuiltin, slot));
        core::createArchive(u16(dir_ / "plain.zip"), {u16(dir_ / "src/a.txt")}, {u"a.txt"}, u"zip");
    }
    std::optional<RaisedError> extract(const std::string& archive, const fs::path& out,
                                       const std::vector<std::string>& entries,
                                       const std::string& password, hxOutput& slot) {
        Inputs five;
        five.text((dir_ / archive).string()).text(out.string()).text("zip");
        return five.list(entries).text(password).call(extractArchiveBuiltin, slot);
    }
    TempDir dir_;
};

TEST_F(ExtractWithPassword, ExtractsEverythingOrTheListAfterTheProbe) {
    const struct {
        const char* archive;
        std::vector<std::string> entries;
        const char* password;
        std::vector<std::string> written;
    } cases[] = {
        {"enc.zip", {}, "right", {"a.txt", "b.txt"}},
        {"enc.zip", {"b.txt"}, "right", {"b.txt"}},
        {"plain.zip", {}, "", {"a.txt"}},  // empty password: probe and extraction without one
    };
    int n = 0;
    for (const auto& c : cases) {
        const fs::path out = dir_ / ("out" + std::to_string(n++));
        hxOutput slot;
        const auto raised = extract(c.archive, out, c.entries, c.password, slot);
        ASSERT_FALSE(raised) << raised->identifier;
        std::vector<std::string> expected;
        for (const auto& entry : c.written) {
            expected.push_back((out / entry).string());
            EXPECT_EQ(readFile(out / entry), readFile(dir_ / "src" / entry));
        }
        EXPECT_EQ(cell(slot), expected);
    }
}

TEST_F(ExtractWithPassword, MissingOrWrongPasswordIsRefusedBeforeAnythingIsWritten) {
    const struct {
        std::vector<std::string> entries;
        const char* password;
        const char* identifier;
    } cases[] = {
        {{}, "", "TESSEL:io:archive:extractArchive:unableToWrite"},
        {{}, "wrong", "TESSEL:io:archive:extractArchive:incorrectPassword"},
        // Only the probe can tell: the list matches nothing, so extraction alone would pass.
        {{"missing.txt"}, "wrong", "TESSEL:io:archive:extractArchive:incorrectPassword"},
    };
    for (const auto& c : cases) {
        fs::create_directories(dir_ / "refused");
        hxOutput slot;
        const auto raised = extract("enc.zip", dir_ / "refused", c.entries, c.password, slot);
        ASSERT_TRUE(raised);
        EXPECT_EQ(raised->identifier, c.identifier);
        EXPECT_TRUE(fs::is_empty(dir_ / "refused"));
    }
}

TEST_F(ExtractWithPassword, OpensAZipEncryptedByInfoZip) {
    if (!toolAvailable("zip")) {
        GTEST_SKIP() << "Info-ZIP zip is not installed";
    }
    const auto made = runCommand("cd " + shellQuote((dir_ / "src").string()) +
                                 " && zip -q -P 'z1p pw' ../iz.zip a.txt b.txt");
    ASSERT_EQ(made.status, 0) << made.output;
    hxOutput slot;
    ASSERT_FALSE(extract("iz.zip", dir_ / "iz", {}, "z1p pw", slot));
    EXPECT_EQ(cell(slot).size(), 2u);
    EXPECT_EQ(readFile(dir_ / "iz/b.txt"), "beta");
}

}  // namespace
