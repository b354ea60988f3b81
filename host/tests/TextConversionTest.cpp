#include <random>

#include <gtest/gtest.h>
#include <boost/locale/encoding_utf.hpp>

#include <host/TextConversion.hpp>

using namespace tessel::host;

namespace {

TEST(TextConversion, ValidTextConvertsBothWaysLosslessly) {
    const std::pair<std::string, std::u16string> texts[] = {
        {"", u""},
        {"plain.txt", u"plain.txt"},
        {"café résumé naïve", u"café résumé naïve"},
        {"日本語のファイル", u"日本語のファイル"},
        {"😀 party 🎉", u"\xD83D\xDE00 party \xD83C\xDF89"},  // surrogate pairs
    };
    for (const auto& [utf8, utf16] : texts) {
        EXPECT_EQ(fromUtf8(utf8), utf16) << utf8;
        EXPECT_EQ(fromFileSystemText(utf8), utf16) << utf8;
        EXPECT_EQ(toUtf8(utf16), utf8);
        EXPECT_EQ(toNarrow(utf16), utf8);
    }
}

TEST(TextConversion, InvalidInputIsSkipped) {
    const std::pair<std::u16string, std::string> wide[] = {
        {u"a\xDC00"
         u"b",
         "ab"},                                       // lone low surrogate
        {u"ab\xD800", "ab"},                          // high surrogate cut off at the end
        {u"\xDC00\xD83D\xDE00", "\xF0\x9F\x98\x80"},  // the valid pair after it survives
    };
    for (const auto& [input, expected] : wide) {
        EXPECT_EQ(toUtf8(input), expected);
        EXPECT_EQ(toNarrow(input), expected);
    }
    const std::pair<std::string, std::u16string> narrow[] = {
        {"a\xFF"
         "b",
         u"ab"},  // a byte that never occurs in UTF-8
        {"a\xC0\xAF"
         "b",
         u"ab"},  // overlong '/'
        {"x\xED\xA0\x80"
         "y",
         u"xy"},                // encoded surrogate
        {"ab\xE6\x97", u"ab"},  // truncated sequence
        {"\x80"
         "c",
         u"c"},                     // stray continuation byte
        {"\xF4\x90\x80\x80", u""},  // beyond U+10FFFF
    };
    for (const auto& [input, expected] : narrow) {
        EXPECT_EQ(fromUtf8(input), expected) << input;
        EXPECT_EQ(fromFileSystemText(input), expected) << input;
    }
}

// Whatever arrives, the result is well-formed text in the other encoding.
TEST(TextConversion, ArbitraryCodeUnitsGiveWellFormedOutput) {
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        std::u16string wide(random() % 12, u'\0');
        for (char16_t& unit : wide) {  // every other round: dense in surrogates
            unit = static_cast<char16_t>(round % 2 ? 0xD7F0 + random() % 0x30 : random());
        }
        std::string narrow(random() % 12, '\0');
        for (char& byte : narrow) {
            byte = static_cast<char>(random());
        }
        using boost::locale::conv::stop;
        EXPECT_NO_THROW(boost::locale::conv::utf_to_utf<char16_t>(toUtf8(wide), stop));
        EXPECT_NO_THROW(boost::locale::conv::utf_to_utf<char>(fromUtf8(narrow), stop));
    }
}

}  // namespace
