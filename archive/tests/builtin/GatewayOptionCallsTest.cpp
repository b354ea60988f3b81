// The gateways of the option-taking calls (listing, testing, confined extraction): argument
// counts before anything is read, and cells that hold what listArchive, testArchive and
// confined extraction give.
#include <gtest/gtest.h>

#include <host/WarningCapture.hpp>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

using namespace tessel::host;
using Gateway = void (*)(int, hxOutput*, int, const hxArray**);

struct Inputs {
    explicit Inputs(std::vector<hxArray*> arrays) : raw(arrays.begin(), arrays.end()) {
        for (hxArray* array : arrays) {
            owned.emplace_back(array);
        }
    }
    // The error raised, or nothing; the cell left in the slot.
    std::optional<RaisedError> call(Gateway gateway, hxOutput& slot, int nlhs = 1, int nrhs = -1) {
        return raisedBy([&] {
            gateway(nlhs, &slot, nrhs < 0 ? static_cast<int>(raw.size()) : nrhs, raw.data());
        });
    }
    std::vector<hxArrayPtr> owned;
    std::vector<const hxArray*> raw;
};

hxArray* text(const std::string& value) {
    return createHostString(u16(value));
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

TEST(GatewayOptionCalls, CountsAreCheckedBeforeAnyInputIsRead) {
    const InputRange gateways[] = {{"listArchive", listArchiveBuiltin, 2, 3},
                                   {"testArchive", testArchiveBuiltin, 2, 3},
                                   {"extractArchiveConfined", extractArchiveConfinedBuiltin, 3, 5}};
    for (const auto& [name, gateway, fewest, most] : gateways) {
        const CountRun runs[] = {{.outputs = 2, .inputs = most, .mnemonic = "tooManyOutputs"},
                                 {.outputs = 1, .inputs = most + 1, .mnemonic = "tooManyInputs"},
                                 {.outputs = 0, .inputs = fewest - 1, .mnemonic = "tooFewInputs"}};
        for (const auto& [nlhs, nrhs, mnemonic] : runs) {
            Inputs nulls(std::vector<hxArray*>(static_cast<std::size_t>(most) + 1, nullptr));
            hxOutput slot(text("before"));
            const auto raised = nulls.call(gateway, slot, nlhs, nrhs);
            EXPECT_EQ(raised ? raised->identifier : "", "TESSEL:host:" + mnemonic)
                << name << " with " << nlhs << " outputs and " << nrhs << " inputs";
            EXPECT_EQ(readHostString(slot.get()), u"before") << name;
        }
    }
}

// Each call as "cell texts | warnings | error | what the output folder holds".
TEST(GatewayOptionCalls, CellsHoldWhatTheOptionCallsGive) {
    REQUIRE_TOOLS("python3", "zip", "7z", "bsdtar");
    TempDir dir;
    writeFile(dir / "d/a.bin", randomBytes(30000, 51));
    writeFile(dir / "d/b.txt", "b");
    sh(dir.path(),
       "zip -q -0 -r z.zip d && cp z.zip bad.zip && printf X | dd of=bad.zip bs=1 "
       "seek=15000 conv=notrunc status=none && 7z a -tzip -bd -mem=AES256 -ppw p.zip "
       "d/b.txt >/dev/null");
    python(dir.path(), "tar('up.tar', reg('ok.txt', b'ok'), reg('../evil.txt', b'E'))");
    const auto at = [&](const std::string& name) { return text((dir / name).string()); };
    const std::string wrong = rejectedPassword(dir.path(), "p.zip"), e = "TESSEL:io:archive:";
    struct Case {
        Gateway gateway;
        std::vector<hxArray*> inputs;
        std::string expected;
    };
    std::vector<Case> cases;  // pushed one by one: the inputs are owned by the calls
    cases.push_back(
        {listArchiveBuiltin, {at("z.zip"), text("zip")}, "d/ d/a.bin d/b.txt |  |  | "});
    cases.push_back(
        {listArchiveBuiltin, {at("p.zip"), text("zip"), text("pw")}, "d/b.txt |  |  | "});
    cases.push_back({testArchiveBuiltin, {at("z.zip"), text("zip")}, " |  |  | "});
    cases.push_back({testArchiveBuiltin,
                     {at("bad.zip"), text("zip")},
                     "d/a.bin | " + e + "testArchive:damagedEntry |  | "});
    cases.push_back({testArchiveBuiltin,
                     {at("p.zip"), text("zip"), text(wrong)},
                     " |  | " + e + "extractArchive:incorrectPassword | "});
    cases.push_back(
        {extractArchiveConfinedBuiltin,
         {at("z.zip"), at("out"), text("zip")},
         "~/out/d/ ~/out/d/a.bin ~/out/d/b.txt |  |  | d/ d/a.bin=[30000:78613] d/b.txt=b"});
    cases.push_back({extractArchiveConfinedBuiltin,
                     {at("z.zip"), at("out"), text("zip"), createHostStringArray({u"d/b.txt"})},
                     "~/out/d/b.txt |  |  | d/ d/b.txt=b"});
    // The rest is extracted before the pattern that matched nothing is raised.
    cases.push_back(
        {extractArchiveConfinedBuiltin,
         {at("p.zip"), at("out"), text("zip"), createHostStringArray({u"no*", u"d"}), text("pw")},
         " |  | " + e + "extractArchive:entryNotFound | d/ d/b.txt=b"});
    cases.push_back({extractArchiveConfinedBuiltin,
                     {at("up.tar"), at("out"), text("tar")},
                     " |  | " + e + "extractArchive:entryOutsideFolder | "});
    for (Case& c : cases) {
        fs::remove_all(dir / "out");
        WarningCapture warnings;
        hxOutput slot;
        const auto raised = Inputs(c.inputs).call(c.gateway, slot);
        std::string cell, issued;
        for (const auto& item : slot ? readHostCellStrings(slot.get()) : Paths{}) {
            cell += (cell.empty() ? "" : " ") + utf8(item);
        }
        for (const auto& warning : warnings.warnings()) {
            issued += warning.identifier;
        }
        EXPECT_EQ(shown(cell, dir.path()) + " | " + issued + " | " +
                      (raised ? raised->identifier : "") + " | " + listing(dir / "out"),
                  c.expected);
    }
    EXPECT_FALSE(fs::exists(dir / "evil.txt"));
}

}  // namespace
}  // namespace tqtest
