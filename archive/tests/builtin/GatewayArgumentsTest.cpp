// The builtin gateways' argument handling: counts, input types, the output slot, the
// password probe before extraction, and results equal to the entry points they call.

#include <gtest/gtest.h>

#include <iterator>

#include <archive/core/archivecore.hpp>

#include "../support/TestSupport.hpp"

namespace {

using namespace tessel::host;
using namespace tqtest;
namespace core = tessel::io::archive::core;
using Gateway = void (*)(int, hxOutput*, int, const hxArray**);
using Strings = std::vector<std::string>;

const auto text = [](const std::string& value) { return createHostString(u16(value)); };
const auto list = [](const Strings& values) { return createHostStringArray(u16list(values)); };

// Host inputs owned for one call; null slots stand for "nothing passed there".
struct Inputs {
    Inputs(std::initializer_list<hxArray*> arrays)
        : owned(arrays.begin(), arrays.end()), raw(arrays.begin(), arrays.end()) {}
    explicit Inputs(std::size_t nulls) : raw(nulls, nullptr) {}
    // nrhs defaults to the number of inputs held; the error raised, or nothing.
    std::optional<RaisedError> call(Gateway gateway, hxOutput& slot, int nlhs = 0, int nrhs = -1) {
        const int count = nrhs < 0 ? static_cast<int>(raw.size()) : nrhs;
        return raisedBy([&] { gateway(nlhs, &slot, count, raw.data()); });
    }
    std::vector<hxArrayPtr> owned;
    std::vector<const hxArray*> raw;
};

std::vector<std::u16string> cell(const hxOutput& slot) {
    return slot ? readHostCellStrings(slot.get()) : std::vector<std::u16string>{};
}

// A gateway and the fewest and most inputs it takes.
struct InputRange {
    std::string name;
    Gateway gateway;
    int fewest, most;
};

// Counts of outputs asked for and inputs passed, and the error they raise.
struct CountRun {
    int outputs, inputs;
    std::string mnemonic;
};

TEST(GatewayCounts, OutputsThenTooManyThenTooFewInputsAllBeforeAnyInputIsRead) {
    const InputRange gateways[] = {{"createArchive", createArchiveBuiltin, 4, 6},
                                   {"extractArchive", extractArchiveBuiltin, 3, 5},
                                   {"compressgz", compressgzBuiltin, 1, 2},
                                   {"uncompressgz", uncompressgzBuiltin, 3, 3}};
    for (const auto& [name, gateway, fewest, most] : gateways) {
        const CountRun runs[] = {{.outputs = 2, .inputs = most + 1, .mnemonic = "tooManyOutputs"},
                                 {.outputs = 1, .inputs = most + 1, .mnemonic = "tooManyInputs"},
                                 {.outputs = 0, .inputs = fewest - 1, .mnemonic = "tooFewInputs"}};
        for (const auto& [nlhs, nrhs, mnemonic] : runs) {
            // Every slot is null: reading one would raise a type error instead.
            Inputs nulls(static_cast<std::size_t>(nrhs) + 1);
            hxOutput slot(text("before"));
            const auto raised = nulls.call(gateway, slot, nlhs, nrhs);
            EXPECT_EQ(raised ? raised->identifier : "", "TESSEL:host:" + mnemonic)
                << name << " with " << nlhs << " outputs and " << nrhs << " inputs";
            EXPECT_EQ(readHostString(slot.get()), u"before") << name;
        }
    }
}

// Argument arrays a host failed to pass are refused before the count checks and before any
// work; with no output asked for, a missing output array is fine and nothing is stored.
TEST(GatewayArrays, MissingArraysAreRefusedFirstAndNoOutputArrayStoresNothing) {
    TempDir dir;
    writeFile(dir / "in.txt", "kept");
    const fs::path gz = dir / "in.txt.gz";
    struct {
        int nlhs;
        bool outputArray;
        int nrhs;
        bool inputArray;
        std::string error;  // with its one argument, the count it was about
    } runs[] = {
        {.nlhs = 1, .outputArray = false, .nrhs = 2, .inputArray = true, .error = "nullOutputs 1"},
        {.nlhs = 2, .outputArray = false, .nrhs = 9, .inputArray = false, .error = "nullOutputs 2"},
        {.nlhs = 0, .outputArray = true, .nrhs = 2, .inputArray = false, .error = "nullInputs 2"},
        {.nlhs = 2, .outputArray = true, .nrhs = 9, .inputArray = false, .error = "nullInputs 9"},
        // Nothing announced, nothing needed: the count checks speak.
        {.nlhs = 0, .outputArray = false, .nrhs = 0, .inputArray = false, .error = "tooFewInputs"},
    };
    for (const Gateway gateway :
         {createArchiveBuiltin, extractArchiveBuiltin, compressgzBuiltin, uncompressgzBuiltin}) {
        for (const auto& run : runs) {
            // Inputs that would make compressgzBuiltin write in.txt.gz, and the others fail
            // on a type (the third input is no text and no logical) were they read.
            Inputs inputs{list({(dir / "in.txt").string()}), text(""), createHostDouble(1)};
            hxOutput slot(text("before"));
            const auto raised = raisedBy([&] {
                gateway(run.nlhs, run.outputArray ? &slot : nullptr, run.nrhs,
                        run.inputArray ? inputs.raw.data() : nullptr);
            });
            const std::string seen = !raised ? ""
                                     : raised->arguments.empty()
                                         ? raised->identifier
                                         : raised->identifier + " " + raised->arguments.at(0);
            EXPECT_EQ(seen, "TESSEL:host:" + run.error) << run.nlhs << " " << run.nrhs;
            EXPECT_EQ(readHostString(slot.get()), u"before");
            EXPECT_FALSE(fs::exists(gz));
        }
    }
    Inputs inputs{list({(dir / "in.txt").string()}), text("")};
    EXPECT_FALSE(raisedBy([&] { compressgzBuiltin(0, nullptr, 2, inputs.raw.data()); }));
    EXPECT_EQ(runCommand("gzip -dc " + shellQuote(gz.string())).output, "kept");
}

TEST(GatewayInputs, WrongTypesAndFiveCreateInputsGiveIdentifiedErrorsAndNoOutput) {
    TempDir dir;
    writeFile(dir / "a.txt", "a");
    const std::string five = (dir / "five.zip").string(), a = (dir / "a.txt").string();
    const std::string h = "TESSEL:host:";
    struct {
        std::string identifier;
        Gateway gateway;
        Inputs inputs;
    } cases[] = {
        // Input 4 is read before the five-input refusal, so its type error wins.
        {h + "expectedString",
         createArchiveBuiltin,
         {text(five), list({}), list({}), createHostDouble(3), text("pw")}},
        {"TESSEL:io:archive:createArchive:invalidNumberOfArgs",
         createArchiveBuiltin,
         {text(five), list({a}), list({"a.txt"}), text("zip"), text("pw")}},
        {h + "expectedStringArray",
         createArchiveBuiltin,
         {text(five), createHostLogical(true), list({}), text("zip")}},
        {h + "expectedString",
         extractArchiveBuiltin,
         {text(five), text("out"), list({"zip", "tar"})}},
        {h + "expectedString", compressgzBuiltin, {list({"a"}), nullptr}},
        {h + "expectedLogical", uncompressgzBuiltin, {list({"a.gz"}), text(""), text("true")}},
    };
    for (auto& c : cases) {
        hxOutput slot;
        const auto raised = c.inputs.call(c.gateway, slot);
        EXPECT_EQ(raised ? raised->identifier : "", c.identifier);
        EXPECT_EQ(slot, nullptr);
    }
    EXPECT_FALSE(fs::exists(five));
}

// Each call fills the slot even with no output requested, with the entry point's own result.
TEST(GatewayResults, CellsHoldWhatTheEntryPointsReturn) {
    TempDir dir;
    writeFile(dir / "in/é.txt", "report");
    const Strings files{(dir / "in").string(), (dir / "in/é.txt").string()}, names{"in/", "in/é"};
    Inputs create{text((dir / "gateway.zip").string()), list(files), list(names), text("zip")};
    // The slot's previous array has a second holder: the gateway releases only its own.
    hxArray* previous = text("old");
    hxArrayPtr otherHolder(shareHostArray(previous));
    hxOutput slot(previous);
    ASSERT_FALSE(create.call(createArchiveBuiltin, slot, 0));
    EXPECT_EQ(hostReferenceCount(previous), 1u);
    EXPECT_EQ(cell(slot),
              core::createArchive(u16(dir / "direct.zip"), u16list(files), u16list(names), u"zip"));
    Inputs one{list({files[1]}), text("")};  // the host pads the second slot with an empty text
    ASSERT_FALSE(one.call(compressgzBuiltin, slot, 0, 1));
    EXPECT_EQ(cell(slot), std::vector{u16(files[1] + ".gz")});
    for (const bool exact : {false, true}) {
        const fs::path target = exact ? dir / "exact.bin" : dir / "out";
        Inputs gunzip{list({files[1] + ".gz"}), text(target.string()), createHostLogical(exact)};
        ASSERT_FALSE(gunzip.call(uncompressgzBuiltin, slot));
        EXPECT_EQ(readFile(exact ? target : target / "é.txt"), "report");
        EXPECT_EQ(cell(slot), core::uncompressgz({u16(files[1] + ".gz")}, u16(target), exact));
    }
}

// Five inputs: the probe, then everything (empty list) or the list, with the password.
TEST(ExtractArchiveBuiltin, ProbesThePasswordBeforeWritingThenExtractsAllOrTheList) {
    TempDir dir;
    writeFile(dir / "src/a.txt", "alpha");
    writeFile(dir / "src/b.txt", "beta");
    const std::string a = (dir / "src/a.txt").string(), b = (dir / "src/b.txt").string();
    hxOutput slot;
    const std::string zip = (dir / "enc.zip").string();
    Inputs six{text(zip),   list({a, b}),  list({"a.txt", "b.txt"}),
               text("zip"), text("right"), text("aes256")};
    ASSERT_FALSE(six.call(createArchiveBuiltin, slot));
    core::createArchive(u16(dir / "plain.zip"), {u16(a)}, {u"a.txt"}, u"zip");
    const std::string e = "TESSEL:io:archive:extractArchive:";
    // The entries asked for and the password given; the files written and the error raised.
    struct Case {
        std::string archive;
        Strings entries = {};
        std::string password = "";
        Strings written = {};
        std::string raised = "";
    };
    const Case cases[] = {
        {.archive = "enc.zip", .password = "right", .written = {"a.txt", "b.txt"}},
        {.archive = "enc.zip", .entries = {"b.txt"}, .password = "right", .written = {"b.txt"}},
        // Empty password: probe and extraction without one.
        {.archive = "plain.zip", .written = {"a.txt"}},
        {.archive = "enc.zip", .raised = e + "unableToWrite"},
        {.archive = "enc.zip", .password = "wrong", .raised = e + "incorrectPassword"},
        // Only the probe can tell: the list matches nothing, so extraction alone would pass.
        {.archive = "enc.zip",
         .entries = {"missing.txt"},
         .password = "wrong",
         .raised = e + "incorrectPassword"},
    };
    for (const auto& [archive, entries, password, written, identifier] : cases) {
        const fs::path out = dir / "out";
        fs::remove_all(out);
        fs::create_directories(out);
        slot.reset();
        Inputs five{text((dir / archive).string()), text(out.string()), text("zip"), list(entries),
                    text(password)};
        const auto raised = five.call(extractArchiveBuiltin, slot);
        EXPECT_EQ(raised ? raised->identifier : "", identifier)
            << archive << " with the password '" << password << "'";
        std::vector<std::u16string> expected;
        for (const auto& entry : written) {
            expected.push_back(u16(out / entry));
            EXPECT_EQ(readFile(out / entry), readFile(dir / "src" / entry));
        }
        EXPECT_EQ(cell(slot), expected);
        EXPECT_EQ(std::distance(fs::directory_iterator(out), {}), std::ssize(expected));
    }
}

}  // namespace
