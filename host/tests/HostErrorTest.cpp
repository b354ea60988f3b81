#include <future>
#include <set>
#include <sstream>

#include <gtest/gtest.h>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/replace.hpp>

#include <host/HostError.hpp>
#include <host/WarningCapture.hpp>

#include "archive/tests/support/TestSupport.hpp"

using namespace tessel::host;
using Texts = std::vector<std::string>;

// Every identifier the library and the host raise or warn, by the number of arguments its
// text takes; "group: a b" stands for "TESSEL:group:a TESSEL:group:b".
const char* const kIdentifiers[] = {
    "io:archive:createArchive: emptyPassword invalidArchiveFormat invalidEncryptionInLinux "
    "unsupportedEncryptionInLinux invalidNumberOfArgs io:archive:extractArchive: "
    "incorrectPassword protectedEntry outputDiskFull unsupportedEncryptionInLinux internalError "
    "host: tooManyOutputs tooManyInputs tooFewInputs",
    "io:archive:gzip: javaOpenError javaOutputOpenError io:archive:gunzip: javaOpenError "
    "javaOutputOpenError javaCopyStreamError notGzipFormat io:archive:zip: openError "
    "DiskSpaceFull io:archive:tar: openError DiskSpaceFull io:archive:unzip: invalidZipFile "
    "io:archive:untar: invalidTarFile io:archive:createArchive: DiskSpaceFull openEntryError "
    "zip: openEntryError tar: openEntryError io:archive:extractArchive: OverwriteOpenFile "
    "unableToCreate unableToOverwrite removeControlM host: expectedString expectedStringArray "
    "expectedLogical expectedCell",
    "io:archive:createArchive: entryNameCountMismatch io:archive:extractArchive: unableToWrite "
    "emptyEntryFilename",
};

// Without arguments a text shows its placeholders {1}..{n}; with them, each placeholder holds
// its own argument, nothing else changes and no placeholder is left.
TEST(MessageCatalogue, HoldsExactlyTheKnownIdentifiersFillsEveryPlaceholderElseFallsBack) {
    std::set<std::string> expected;
    for (std::size_t count = 0; count < std::size(kIdentifiers); ++count) {
        std::istringstream words(kIdentifiers[count]);
        for (std::string word, group; words >> word;) {
            if (word.ends_with(':')) {
                group = "TESSEL:" + word;
                continue;
            }
            const std::string identifier = group + word;
            EXPECT_TRUE(expected.insert(identifier).second && catalogueHas(identifier)) << word;
            std::string text = lookupMessageUtf8(identifier);
            std::vector<MessageArgument> arguments;
            for (std::size_t i = 1; i <= count; ++i) {
                const std::string n = std::to_string(i);
                EXPECT_NE(text.find("{" + n + "}"), std::string::npos) << identifier;
                arguments.emplace_back("<" + n + "é>");
                boost::algorithm::replace_all(text, "{" + n + "}", "<" + n + "é>");
            }
            EXPECT_EQ(text.find('{'), std::string::npos) << text;  // no texts hold literal braces
            EXPECT_EQ(lookupMessageUtf8(identifier, arguments), text);
        }
    }
    // Other components (the command-line host) keep theirs under their own prefix.
    Texts listed = catalogueIdentifiers();
    std::erase_if(listed, [](const std::string& id) { return !id.starts_with("TESSEL:"); });
    EXPECT_EQ(std::set<std::string>(listed.begin(), listed.end()), expected);
    EXPECT_EQ(lookupMessageUtf8("TESSEL:no:where", {std::string("a"), std::u16string(u"b")}),
              "Unknown message identifier 'TESSEL:no:where' (arguments: a, b)");
    EXPECT_EQ(lookupMessageUtf8(""), "Unknown message identifier '' (no arguments)");
}

const MessageIdError kNotGzip("TESSEL:io:archive:gunzip", "notGzipFormat",
                              {std::u16string(u"/tmp/été.txt")});
const std::string kNotGzipText = lookupMessageUtf8(kNotGzip.identifier(), kNotGzip.arguments());

// A raised error shows the identifier it was raised under and that identifier's text; an
// override the catalogue lacks keeps the text of the error itself.
TEST(HostError, ShowsIdentifierArgumentsAndTextUnderAnyOverride) {
    const std::string zipOpen = "TESSEL:io:archive:zip:openError", custom = "TESSEL:custom:x";
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"", "TESSEL:io:archive:gunzip:notGzipFormat", kNotGzipText},
        {zipOpen, zipOpen, lookupMessageUtf8(zipOpen, kNotGzip.arguments())},
        {custom, custom, kNotGzipText},
    };
    for (const auto& [overriding, identifier, text] : cases) {
        const auto raised = tqtest::raisedBy(
            [&] { overriding.empty() ? kNotGzip.raise() : kNotGzip.raise(overriding); });
        ASSERT_TRUE(raised);
        EXPECT_EQ(std::tie(raised->identifier, raised->text, raised->arguments),
                  std::make_tuple(identifier, text, Texts{"/tmp/été.txt"}));
    }
}

// "identifier=arguments" of every warning the capture recorded.
static Texts recorded(const WarningCapture& capture) {
    Texts ids;
    for (const IssuedWarning& warning : capture.warnings()) {
        ids.push_back(warning.identifier + "=" + boost::algorithm::join(warning.arguments, ","));
    }
    return ids;
}

TEST(Warnings, InnermostCaptureOfTheCallingThreadRecords) {
    testing::internal::CaptureStderr();
    WarningCapture outer;
    kNotGzip.warn();
    {
        WarningCapture inner;
        kNotGzip.warn("TESSEL:inner:id");
        EXPECT_EQ(recorded(inner), Texts{"TESSEL:inner:id=/tmp/été.txt"});
    }
    issueHostWarning(MessageIdError("TESSEL:io:archive:extractArchive", "internalError"));
    auto theirs = std::async(std::launch::async, [] {
        kNotGzip.warn("TESSEL:uncaptured:thread");  // no capture on this thread: printed
        WarningCapture own;
        kNotGzip.warn("TESSEL:captured:thread");
        return recorded(own);
    });
    EXPECT_EQ(theirs.get(), Texts{"TESSEL:captured:thread=/tmp/été.txt"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Warning: " + kNotGzipText + " [TESSEL:uncaptured:thread]\n");
    EXPECT_EQ(recorded(outer), (Texts{"TESSEL:io:archive:gunzip:notGzipFormat=/tmp/été.txt",
                                      "TESSEL:io:archive:extractArchive:internalError="}));
}
