// The gateways of the additions: argument counts before anything is read, and cells that
// hold what listArchive, testArchive and confined extraction give.
#include <gtest/gtest.h>

#include <host/WarningCapture.hpp>

#include "AdditionsSupport.hpp"

namespace tqtest::additions {
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

TEST(GatewayAdditions, CountsAreCheckedBeforeAnyInputIsRead) {
    const std::tuple<Gateway, int, int> gateways[] = {{listArchiveBuiltin, 2, 3},
                                                      {testArchiveBuiltin, 2, 3},
                                                      {extractArchiveConfinedBuiltin, 3, 5}};
    for (const auto& [gateway, fewest, most] : gateways) {
        const std::tuple<int, int, std::string> runs[] = {{2, most, "tooManyOutputs"},
                                                          {1, most + 1, "tooManyInputs"},
                                                          {0, fewest - 1, "tooFewInputs"}};
        for (const auto& [nlhs, nrhs, mnemonic] : runs) {
            Inputs nulls(std::vector<hxArray*>(static_cast<std::size_t>(most) + 1, nullptr));
            hxOutput slot(text("before"));
            const auto raised = nulls.call(gateway, slot, nlhs, nrhs);
            EXPECT_EQ(raised ? raised->identifier : "", "TESSEL:host:" + mnemonic) << nrhs;
            EXPECT_EQ(readHostString(slot.get()), u"before");
        }
    }
}

TEST(GatewayAdditions, CellsHoldWhatTheAdditionsGive) {
    REQUIRE_TOOLS("python3", "zip");
    TempDir dir;
    writeFile(dir / "d/a.bin", randomBytes(30000, 51));
    writeFile(dir / "d/b.txt", "b");
    sh(dir.path(),
       "zip -q -0 -r z.zip d && cp z.zip bad.zip && printf X | dd of=bad.zip bs=1 "
       "seek=15000 conv=notrunc status=none && zip -q -P pw p.zip d/b.txt");
    python(dir.path(), "tar('up.tar', reg('ok.txt', b'ok'), reg('../evil.txt', b'E'))");
    const std::string z = (dir / "z.zip").string(), out = (dir / "out").string();
    const auto cells = [](const hxOutput& slot) {
        std::string joined;
        for (const auto& item : readHostCellStrings(slot.get())) {
            joined += (joined.empty() ? "" : " ") + utf8(item);
        }
        return joined;
    };
    struct Case {
        Gateway gateway;
        std::vector<hxArray*> inputs;
        std::string cell, warnings, raised;  // the cell's texts joined by spaces
    };
    const std::string base = dir.path().string();
    std::vector<Case> cases;
    cases.push_back({listArchiveBuiltin, {text(z), text("zip")}, "d/ d/a.bin d/b.txt", "", ""});
    cases.push_back(
        {listArchiveBuiltin, {text(base + "/p.zip"), text("zip"), text("pw")}, "d/b.txt", "", ""});
    cases.push_back({testArchiveBuiltin, {text(z), text("zip")}, "", "", ""});
    cases.push_back({testArchiveBuiltin,
                     {text(base + "/bad.zip"), text("zip")},
                     "d/a.bin",
                     "TESSEL:io:archive:testArchive:damagedEntry",
                     ""});
    cases.push_back({testArchiveBuiltin,
                     {text(base + "/p.zip"), text("zip"), text("no")},
                     "",
                     "",
                     "TESSEL:io:archive:extractArchive:incorrectPassword"});
    cases.push_back({extractArchiveConfinedBuiltin,
                     {text(z), text(out), text("zip")},
                     "~/out/d/ ~/out/d/a.bin ~/out/d/b.txt",
                     "",
                     ""});
    cases.push_back({extractArchiveConfinedBuiltin,
                     {text(z), text(out), text("zip"), createHostStringArray({u"d/b.txt"})},
                     "~/out/d/b.txt",
                     "",
                     ""});
    // The rest is extracted before the pattern that matched nothing is raised.
    cases.push_back({extractArchiveConfinedBuiltin,
                     {text(base + "/p.zip"), text(out), text("zip"),
                      createHostStringArray({u"nothing*", u"d"}), text("pw")},
                     "",
                     "",
                     "TESSEL:io:archive:extractArchive:entryNotFound"});
    cases.push_back({extractArchiveConfinedBuiltin,
                     {text(base + "/up.tar"), text(out), text("tar")},
                     "",
                     "",
                     "TESSEL:io:archive:extractArchive:entryOutsideFolder"});
    std::vector<std::string> left;
    for (Case& c : cases) {
        fs::remove_all(out);
        WarningCapture warnings;
        hxOutput slot;
        Inputs inputs(c.inputs);
        const auto raised = inputs.call(c.gateway, slot);
        EXPECT_EQ(raised ? raised->identifier : "", c.raised);
        EXPECT_EQ(slot ? shown(cells(slot), dir.path()) : "", c.cell);
        std::string issued;
        for (const auto& warning : warnings.warnings()) {
            issued += warning.identifier;
        }
        EXPECT_EQ(issued, c.warnings);
        left.push_back(listing(out));
    }
    EXPECT_EQ(left[7], "d/ d/b.txt=b");
    EXPECT_EQ(left[8], "");
    EXPECT_FALSE(fs::exists(dir / "evil.txt"));
}

}  // namespace
}  // namespace tqtest::additions
