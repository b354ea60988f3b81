#include <gtest/gtest.h>

#include <host/HostError.hpp>
#include <host/hxArray.hpp>

#include "HostTestSupport.hpp"

using namespace tessel::host;

namespace {

using Texts = std::vector<std::u16string>;

TEST(hxArray, SharedHoldersKeepTheArrayAlive) {
    hxArray* array = createHostStringArray({u"a.txt", u"ü.txt"});
    {
        const hxArrayPtr slot(shareHostArray(array));
        EXPECT_EQ(slot.get(), array);
        EXPECT_EQ(hostReferenceCount(array), 2u);
    }
    EXPECT_EQ(hostReferenceCount(array), 1u);
    EXPECT_EQ(readHostStringArray(array), (Texts{u"a.txt", u"ü.txt"}));
    destroyHostArray(array);  // the last holder frees it (the sanitizer build checks this)
    destroyHostArray(nullptr);
}

TEST(hxArray, ReadersAcceptTheirClasses) {
    const hxArrayPtr text(createHostString(u"été")), one(createHostStringArray({u"only"})),
        cell(createHostCell({u"x", u"", u"z"})), flags(createHostLogicals({true, false}));
    EXPECT_EQ(readHostString(text.get()), u"été");
    EXPECT_EQ(readHostString(one.get()), u"only");
    EXPECT_EQ(readHostStringArray(text.get()), Texts{u"été"});
    EXPECT_EQ(readHostStringArray(cell.get()), (Texts{u"x", u"", u"z"}));
    EXPECT_EQ(readHostCellStrings(cell.get()), (Texts{u"x", u"", u"z"}));
    EXPECT_EQ(readHostLogicals(flags.get()), (std::vector<unsigned char>{1, 0}));
    EXPECT_EQ(hostClassOf(cell.get()), hxClass::Cell);
}

TEST(hxArray, WrongClassAndCountErrorsAreIdentified) {
    const hxArrayPtr number(createHostDouble(3.5)), list(createHostStringArray({u"a", u"b"})),
        flag(createHostLogical(true)), text(createHostString(u"t"));
    const std::tuple<std::function<void()>, std::string, std::string> cases[] = {
        {[&] { readHostString(number.get()); }, "expectedString", "a number"},
        {[&] { readHostString(list.get()); }, "expectedString", "a list of texts"},
        {[&] { readHostString(nullptr); }, "expectedString", "no value"},
        {[&] { readHostStringArray(flag.get()); }, "expectedStringArray", "a logical array"},
        {[&] { readHostLogicals(text.get()); }, "expectedLogical", "a text"},
        {[&] { readHostCellStrings(list.get()); }, "expectedCell", "a list of texts"},
        {&errorTooManyOutputs, "tooManyOutputs", ""},
        {&errorTooManyInputs, "tooManyInputs", ""},
        {&errorTooFewInputs, "tooFewInputs", ""},
    };
    for (const auto& [call, mnemonic, received] : cases) {
        const auto raised = hosttest::raisedBy(call);
        ASSERT_TRUE(raised) << mnemonic;
        EXPECT_EQ(raised->identifier, "TESSEL:host:" + mnemonic);
        EXPECT_EQ(raised->arguments.empty(), received.empty()) << mnemonic;
        EXPECT_EQ(raised->text, lookupMessageUtf8(raised->identifier, {received}));
        EXPECT_NE(raised->text.find(received), std::string::npos) << raised->text;
    }
}

}  // namespace
