// The builtin gateways' argument handling: counts, input types, the output slot, and
// results equal to the entry points they call.

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
    Inputs& none(std::size_t count = 1) {
        for (std::size_t i = 0; i < count; ++i) {
            add(nullptr);
        }
        return *this;
    }
    const hxArray** data() { return raw_.data(); }
    int size() const { return static_cast<int>(raw_.size()); }

  private:
    Inputs& add(hxArray* array) {
        owned_.emplace_back(array);
        raw_.push_back(array);
        return *this;
    }
    std::vector<hxArrayPtr> owned_;
    std::vector<const hxArray*> raw_;
};

std::vector<std::string> cell(const hxOutput& slot) {
    std::vector<std::string> texts;
    for (const auto& text : readHostCellStrings(slot.get())) {
        texts.push_back(utf8(text));
    }
    return texts;
}

std::vector<std::string> utf8list(const std::vector<std::u16string>& texts) {
    std::vector<std::string> result;
    for (const auto& text : texts) {
        result.push_back(utf8(text));
    }
    return result;
}

struct CountCase {
    const char* name;
    Gateway gateway;
    int nlhs;
    int nrhs;
    const char* identifier;
};

class GatewayCounts : public testing::TestWithParam<CountCase> {};

// Count errors come before any input is read: every slot is null here, and the output
// slot keeps what it held.
TEST_P(GatewayCounts, RaisesTheHostCountErrorBeforeReadingInputs) {
    const CountCase& c = GetParam();
    Inputs inputs;
    inputs.none(static_cast<std::size_t>(std::max(c.nrhs, 1)));
    hxOutput slot(createHostString(u"before"));
    const auto raised = raisedBy([&] { c.gateway(c.nlhs, &slot, c.nrhs, inputs.data()); });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, c.identifier);
    EXPECT_EQ(readHostString(slot.get()), u"before");
}

INSTANTIATE_TEST_SUITE_P(
    AllGateways, GatewayCounts,
    testing::Values(
        CountCase{"createTwoOutputs", createArchiveBuiltin, 2, 4, "TESSEL:host:tooManyOutputs"},
        CountCase{"createTwoOutputsSevenInputs", createArchiveBuiltin, 2, 7,
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

TEST(CreateArchiveBuiltin, FiveInputsAreRefusedAfterTheFirstFourWereRead) {
    TempDir dir;
    writeFile(dir / "a.txt", "a");
    const std::string archive = (dir / "five.zip").string();
    Inputs five;
    five.text(archive).list({(dir / "a.txt").string()}).list({"a.txt"}).text("zip").text("pw");
    hxOutput slot;
    auto raised = raisedBy([&] { createArchiveBuiltin(1, &slot, 5, five.data()); });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, "TESSEL:io:archive:createArchive:invalidNumberOfArgs");
    EXPECT_FALSE(fs::exists(archive));
    EXPECT_EQ(slot, nullptr);

    // Input 4 is read before the refusal, so its wrong type is what the caller hears.
    Inputs badFourth;
    badFourth.text(archive).list({}).list({}).number(3).text("pw");
    raised = raisedBy([&] { createArchiveBuiltin(1, &slot, 5, badFourth.data()); });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, "TESSEL:host:expectedString");
}

struct TypeCase {
    const char* name;
    Gateway gateway;
    std::function<void(Inputs&)> fill;
    const char* identifier;
};

class GatewayInputTypes : public testing::TestWithParam<TypeCase> {};

TEST_P(GatewayInputTypes, WrongTypeGivesTheHostReadError) {
    Inputs inputs;
    GetParam().fill(inputs);
    hxOutput slot;
    const auto raised =
        raisedBy([&] { GetParam().gateway(1, &slot, inputs.size(), inputs.data()); });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, GetParam().identifier);
    EXPECT_EQ(slot, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    AllGateways, GatewayInputTypes,
    testing::Values(TypeCase{"createPathNumber", createArchiveBuiltin,
                             [](Inputs& i) { i.number(1).list({}).list({}).text("zip"); },
                             "TESSEL:host:expectedString"},
                    TypeCase{"createFilesLogical", createArchiveBuiltin,
                             [](Inputs& i) { i.text("x.zip").flag(true).list({}).text("zip"); },
                             "TESSEL:host:expectedStringArray"},
                    TypeCase{
                        "createPasswordMissing", createArchiveBuiltin,
                        [](Inputs& i) { i.text("x.zip").list({}).list({}).text("zip").none(2); },
                        "TESSEL:host:expectedString"},
                    TypeCase{"extractFormatList", extractArchiveBuiltin,
                             [](Inputs& i) {
                                 i.text("x.zip").text("out").list({"zip", "tar"});
                             },
                             "TESSEL:host:expectedString"},
                    TypeCase{"extractEntriesNumber", extractArchiveBuiltin,
                             [](Inputs& i) { i.text("x.zip").text("out").text("zip").number(2); },
                             "TESSEL:host:expectedStringArray"},
                    TypeCase{"compressFolderNull", compressgzBuiltin,
                             [](Inputs& i) { i.list({"a"}).none(); }, "TESSEL:host:expectedString"},
                    TypeCase{"uncompressFlagText", uncompressgzBuiltin,
                             [](Inputs& i) { i.list({"a.gz"}).text("").text("true"); },
                             "TESSEL:host:expectedLogical"}),
    [](const testing::TestParamInfo<TypeCase>& info) { return info.param.name; });

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
        createArchiveBuiltin(0, &slot, 4, inputs.data());
        EXPECT_EQ(hostReferenceCount(previous), 1u);

        const auto direct = core::createArchive(u16(dir / "direct"), u16list(files), u16list(names),
                                                u16(std::string(format)));
        EXPECT_EQ(cell(slot), utf8list(direct)) << format;
    }
}

TEST(CreateArchiveBuiltin, SixInputsMakeAnEncryptedZipThatNeedsThePassword) {
    TempDir dir;
    writeFile(dir / "s.txt", "secret");
    Inputs inputs;
    inputs.text((dir / "s.zip").string())
        .list({(dir / "s.txt").string()})
        .list({"s.txt"})
        .text("zip")
        .text("pw")
        .text("aes256");
    hxOutput slot;
    createArchiveBuiltin(1, &slot, 6, inputs.data());
    EXPECT_EQ(cell(slot), std::vector<std::string>{"s.txt"});
    const auto raised = raisedBy([&] {
        core::sampleReadWithPassword(u16(dir / "s.zip"), u16(dir / "o"), u"zip", u"wrong");
    });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, "TESSEL:io:archive:extractArchive:incorrectPassword");
}

TEST(CompressgzBuiltin, SecondSlotIsReadEvenWithOneInput) {
    TempDir dir;
    writeFile(dir / "r.txt", "report");
    writeFile(dir / "out/.keep", "");
    // One input counted, the host's padding slot holding an empty text: beside the input.
    Inputs one;
    one.list({(dir / "r.txt").string()}).text("");
    hxOutput slot;
    compressgzBuiltin(0, &slot, 1, one.data());
    EXPECT_EQ(cell(slot), std::vector<std::string>{(dir / "r.txt.gz").string()});

    // A padding slot that holds a folder is used although nrhs says one input.
    Inputs padded;
    padded.list({(dir / "r.txt").string()}).text((dir / "out").string());
    compressgzBuiltin(1, &slot, 1, padded.data());
    EXPECT_EQ(cell(slot), utf8list(core::compressgz({u16(dir / "r.txt")}, u16(dir / "out"))));
    EXPECT_TRUE(fs::exists(dir / "out/r.txt.gz"));
}

TEST(UncompressgzBuiltin, FlagChoosesBetweenDerivedAndExactOutputPath) {
    TempDir dir;
    writeFile(dir / "d.txt", "data");
    core::compressgz({u16(dir / "d.txt")}, u"");
    fs::remove(dir / "d.txt");
    for (const bool exact : {false, true}) {
        const std::string target = exact ? (dir / "exact.bin").string() : dir.path().string();
        Inputs inputs;
        inputs.list({(dir / "d.txt.gz").string()}).text(target).flag(exact);
        hxOutput slot;
        uncompressgzBuiltin(0, &slot, 3, inputs.data());
        const fs::path written = exact ? dir / "exact.bin" : dir / "d.txt";
        EXPECT_EQ(readFile(written), "data");
        EXPECT_EQ(cell(slot),
                  utf8list(core::uncompressgz({u16(dir / "d.txt.gz")}, u16(target), exact)));
    }
}

}  // namespace
