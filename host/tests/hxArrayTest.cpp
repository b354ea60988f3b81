#include <gtest/gtest.h>

#include <host/hxArray.hpp>

#include "archive/tests/support/TestSupport.hpp"

using namespace tessel::host;
using Texts = std::vector<std::u16string>;

TEST(hxArray, SharedHoldersKeepItAliveReadersAcceptTheirClassesAndRefuseOthersByIdentifier) {
    const hxArrayPtr two(createHostStringArray({u"a.txt", u"ü.txt"})),
        text(createHostString(u"été")), one(createHostStringArray({u"only"})),
        cell(createHostCell({u"x", u"", u"z"})), flags(createHostLogicals({true, false})),
        number(createHostDouble(3.5));
    // A second holder lives to the end of the statement; the last one frees the array (the
    // sanitizer build checks this).
    EXPECT_EQ(hostReferenceCount(hxArrayPtr(shareHostArray(two.get())).get()), 2u);
    EXPECT_EQ(hostReferenceCount(two.get()), 1u);
    destroyHostArray(nullptr);
    EXPECT_EQ(readHostStringArray(two.get()), (Texts{u"a.txt", u"ü.txt"}));
    // A list of one reads as a text, a text as a list of one.
    EXPECT_EQ(readHostString(one.get()) + readHostStringArray(text.get()).at(0), u"onlyété");
    EXPECT_EQ(readHostCellStrings(cell.get()), (Texts{u"x", u"", u"z"}));
    EXPECT_EQ(readHostLogicals(flags.get()), (std::vector<unsigned char>{1, 0}));

    // mnemonic and what was received (the argument-count errors take none); all catalogued
    const std::tuple<std::function<void()>, std::string, std::vector<std::string>> cases[] = {
        {[&] { readHostString(number.get()); }, "expectedString", {"a number"}},
        {[&] { readHostString(two.get()); }, "expectedString", {"a list of texts"}},
        {[&] { readHostString(cell.get()); }, "expectedString", {"a cell array"}},
        {[&] { readHostString(nullptr); }, "expectedString", {"no value"}},
        {[&] { readHostStringArray(flags.get()); }, "expectedStringArray", {"a logical array"}},
        {[&] { readHostLogicals(text.get()); }, "expectedLogical", {"a text"}},
        {[&] { readHostCellStrings(one.get()); }, "expectedCell", {"a list of texts"}},
        {&errorTooManyOutputs, "tooManyOutputs", {}},
        {&errorTooManyInputs, "tooManyInputs", {}},
        {&errorTooFewInputs, "tooFewInputs", {}},
    };
    for (const auto& [call, mnemonic, arguments] : cases) {
        const auto raised = tqtest::raisedBy(call).value_or(tqtest::RaisedError{});
        EXPECT_EQ(
            std::make_tuple(raised.identifier, raised.arguments, catalogueHas(raised.identifier)),
            std::make_tuple("TESSEL:host:" + mnemonic, arguments, true));
    }
}
