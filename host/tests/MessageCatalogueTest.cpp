#include <algorithm>
#include <set>

#include <gtest/gtest.h>

#include <host/HostError.hpp>
#include <host/TextConversion.hpp>

using namespace tessel::host;

namespace {

// Every identifier the host must be able to show, by its number of arguments.
const std::vector<std::string> kIdentifiers[] = {
    {
        "TESSEL:io:archive:createArchive:emptyPassword",
        "TESSEL:io:archive:createArchive:invalidArchiveFormat",
        "TESSEL:io:archive:createArchive:invalidEncryptionInLinux",
        "TESSEL:io:archive:createArchive:unsupportedEncryptionInLinux",
        "TESSEL:io:archive:createArchive:invalidNumberOfArgs",
        "TESSEL:io:archive:extractArchive:incorrectPassword",
        "TESSEL:io:archive:extractArchive:protectedEntry",
        "TESSEL:io:archive:extractArchive:outputDiskFull",
        "TESSEL:io:archive:extractArchive:unsupportedEncryptionInLinux",
        "TESSEL:io:archive:extractArchive:internalError",
        "TESSEL:host:tooManyOutputs",
        "TESSEL:host:tooManyInputs",
        "TESSEL:host:tooFewInputs",
    },
    {
        "TESSEL:io:archive:gzip:javaOpenError",
        "TESSEL:io:archive:gzip:javaOutputOpenError",
        "TESSEL:io:archive:gunzip:javaOpenError",
        "TESSEL:io:archive:gunzip:javaOutputOpenError",
        "TESSEL:io:archive:gunzip:javaCopyStreamError",
        "TESSEL:io:archive:gunzip:notGzipFormat",
        "TESSEL:io:archive:zip:openError",
        "TESSEL:io:archive:tar:openError",
        "TESSEL:io:archive:unzip:invalidZipFile",
        "TESSEL:io:archive:untar:invalidTarFile",
        "TESSEL:io:archive:createArchive:DiskSpaceFull",
        "TESSEL:io:archive:zip:DiskSpaceFull",
        "TESSEL:io:archive:tar:DiskSpaceFull",
        "TESSEL:io:archive:createArchive:openEntryError",
        "TESSEL:zip:openEntryError",
        "TESSEL:tar:openEntryError",
        "TESSEL:io:archive:extractArchive:OverwriteOpenFile",
        "TESSEL:io:archive:extractArchive:unableToCreate",
        "TESSEL:io:archive:extractArchive:unableToOverwrite",
        "TESSEL:io:archive:extractArchive:removeControlM",
        "TESSEL:host:expectedString",
        "TESSEL:host:expectedStringArray",
        "TESSEL:host:expectedLogical",
        "TESSEL:host:expectedCell",
    },
    {
        "TESSEL:io:archive:createArchive:entryNameCountMismatch",
        "TESSEL:io:archive:extractArchive:unableToWrite",
        "TESSEL:io:archive:extractArchive:emptyEntryFilename",
    },
};

// How many "{n}" placeholders the text holds.
std::size_t placeholders(const std::string& text) {
    std::size_t count = 0;
    for (std::size_t open = text.find('{'); open != std::string::npos;
         open = text.find('{', open + 1)) {
        const std::size_t close = text.find('}', open);
        count += close != std::string::npos && close > open + 1 &&
                 std::all_of(text.begin() + open + 1, text.begin() + close,
                             [](char c) { return c >= '0' && c <= '9'; });
    }
    return count;
}

TEST(MessageCatalogue, HoldsExactlyTheKnownIdentifiersWithTheirPlaceholders) {
    std::set<std::string> expected;
    for (std::size_t count = 0; count < std::size(kIdentifiers); ++count) {
        for (const std::string& identifier : kIdentifiers[count]) {
            expected.insert(identifier);
            EXPECT_TRUE(catalogueHas(identifier)) << identifier;
            std::vector<MessageArgument> arguments;
            for (std::size_t i = 1; i <= count; ++i) {
                arguments.emplace_back("<arg" + std::to_string(i) + ">");
            }
            const std::string text = lookupMessageUtf8(identifier, arguments);
            EXPECT_EQ(placeholders(text), 0u) << identifier << ": " << text;
            for (std::size_t i = 1; i <= count; ++i) {
                EXPECT_NE(text.find("<arg" + std::to_string(i) + ">"), std::string::npos)
                    << identifier << ": " << text;
            }
            // Without arguments the placeholders stay visible, one per argument.
            EXPECT_EQ(placeholders(lookupMessageUtf8(identifier)), count) << identifier;
        }
    }
    // The library's and the host's own identifiers; other components (the command-line
    // host) keep theirs under their own prefix.
    std::vector<std::string> listed = catalogueIdentifiers();
    EXPECT_EQ(std::set<std::string>(listed.begin(), listed.end()).size(), listed.size())
        << "an identifier is listed twice";
    std::erase_if(listed, [](const std::string& id) { return !id.starts_with("TESSEL:"); });
    EXPECT_EQ(std::set<std::string>(listed.begin(), listed.end()), expected);
}

TEST(MessageCatalogue, ArgumentsFillInOrderAndSharedTextsMatch) {
    const std::string mismatch = "TESSEL:io:archive:createArchive:entryNameCountMismatch";
    const std::string both = lookupMessageUtf8(mismatch, {std::string("3"), std::u16string(u"2")});
    EXPECT_LT(both.find('3'), both.find('2'));
    EXPECT_NE(lookupMessageUtf8(mismatch, {std::string("3")}).find("{2}"), std::string::npos);
    EXPECT_EQ(lookupMessageUtf8(mismatch, {std::string("3"), std::string("2"), std::string("x")}),
              both);

    const std::vector<MessageArgument> path{std::u16string(u"/tmp/été/😀.zip")};
    const auto text = [&](const std::string& id) { return lookupMessageUtf8(id, path); };
    EXPECT_NE(text("TESSEL:zip:openEntryError").find("/tmp/été/😀.zip"), std::string::npos);
    EXPECT_EQ(lookupMessage("TESSEL:zip:openEntryError", path),
              fromUtf8(text("TESSEL:zip:openEntryError")));
    for (const char* group : {"zip", "tar"}) {
        EXPECT_EQ(text(std::string("TESSEL:io:archive:") + group + ":DiskSpaceFull"),
                  text("TESSEL:io:archive:createArchive:DiskSpaceFull"));
        EXPECT_EQ(text(std::string("TESSEL:") + group + ":openEntryError"),
                  text("TESSEL:io:archive:createArchive:openEntryError"));
    }
}

TEST(MessageCatalogue, UnknownIdentifierGivesFallbackNamingIt) {
    EXPECT_FALSE(catalogueHas("TESSEL:nowhere:missing"));
    EXPECT_EQ(lookupMessageUtf8("TESSEL:nowhere:missing", {std::string("a"), std::u16string(u"b")}),
              "Unknown message identifier 'TESSEL:nowhere:missing' (arguments: a, b)");
    EXPECT_EQ(lookupMessageUtf8(""), "Unknown message identifier '' (no arguments)");
}

}  // namespace
