#include <gtest/gtest.h>

#include <host/hxArray.hpp>

#include "archive/tests/support/TestSupport.hpp"

using namespace tessel::host;
using Texts = std::vector<std::u16string>;

TEST(hxArray, SharedHoldersKeepItAliveReadersAcceptTheirClassesAndRefuseOthersByIdentifier) {
    hxArray* array = createHostStringArray({u"a.txt", u"ü.txt"});
    hxArrayPtr slot(shareHostArray(array));
    EXPECT_EQ(hostReferenceCount(array), 2u);
    slot.reset();
    EXPECT_EQ(hostReferenceCount(array), 1u);
    EXPECT_EQ(readHostStringArray(array), (Texts{u"a.txt", u"ü.txt"}));
    destroyHostArray(array);  // the last holder frees it (the sanitizer build checks this)
    destroyHostArray(nullptr);

    const hxArrayPtr text(createHostString(u"été")), one(createHostStringArray({u"only"})),
        cell(createHostCell({u"x", u"", u"z"})), flags(createHostLogicals({true, false})),
        number(createHostDouble(3.5)), two(createHostStringArray({u"a", u"b"}));
    // A list of one reads as a text, a text as a list of one.
    EXPECT_EQ(readHostString(one.get()) + readHostStringArray(text.get()).at(0), u"onlyété");
    EXPECT_EQ(readHostCellStrings(cell.get()), (Texts{u"x", u"", u"z"}));
    EXPECT_EQ(readHostLogicals(flags.get()), (std::vector<unsigned char>{1, 0}));

    // mnemonic and what was received; the argument-count errors take no argument
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
        const auto raised = tqtest::raisedBy(call);
        ASSERT_TRUE(raised) << mnemonic;
        EXPECT_EQ(std::tie(raised->identifier, raised->arguments),
                  std::make_tuple("TESSEL:host:" + mnemonic, arguments));
    }
}
