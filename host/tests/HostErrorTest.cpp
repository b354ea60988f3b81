#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include <host/HostError.hpp>
#include <host/HostInternalException.hpp>
#include <host/WarningCapture.hpp>

#include "HostTestSupport.hpp"

using namespace tessel::host;

namespace {

const MessageIdError kNotGzip("TESSEL:io:archive:gunzip", "notGzipFormat",
                              {std::u16string(u"/tmp/été.txt")});
const std::string kNotGzipText = lookupMessageUtf8(kNotGzip.identifier(), kNotGzip.arguments());

TEST(HostError, CarriesIdentifierArgumentsAndText) {
    const auto raised = hosttest::raisedBy([] { kNotGzip.raise(); });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, "TESSEL:io:archive:gunzip:notGzipFormat");
    EXPECT_EQ(raised->arguments, std::vector<std::string>{"/tmp/été.txt"});
    EXPECT_EQ(raised->text, kNotGzipText);
    EXPECT_NE(kNotGzipText.find("/tmp/été.txt"), std::string::npos);

    // The generic form: empty arguments that the caller fills in order.
    MessageIdError generic("TESSEL:io:archive:extractArchive", "unableToWrite", 2);
    ASSERT_EQ(generic.arguments().size(), 2u);
    EXPECT_EQ(std::get<std::u16string>(generic.arguments()[1]), u"");
    generic.arguments()[0] = std::u16string(u"/a.zip");
    generic.arguments()[1] = lookupMessage("TESSEL:io:archive:extractArchive:protectedEntry");
    const auto filled = hosttest::raisedBy([&] { raiseHostError(generic); });
    ASSERT_TRUE(filled);
    EXPECT_EQ(filled->arguments[0], "/a.zip");
    EXPECT_NE(filled->text.find("password"), std::string::npos);
}

TEST(HostError, OverridingIdentifierReplacesOnlyTheId) {
    const MessageIdError diskFull("TESSEL:io:archive:createArchive", "DiskSpaceFull",
                                  {std::u16string(u"/full/a.zip")});
    try {
        diskFull.raise("TESSEL:io:archive:zip:DiskSpaceFull");
    } catch (const HostError& error) {
        EXPECT_EQ(error.GetID(), "TESSEL:io:archive:zip:DiskSpaceFull");
        EXPECT_EQ(error.GetBaseMsgIDObj().identifier(),
                  "TESSEL:io:archive:createArchive:DiskSpaceFull");
        EXPECT_EQ(error.arguments(), std::vector<std::string>{"/full/a.zip"});
        const std::unique_ptr<HostError> copy(error.clone());
        const auto again = hosttest::raisedBy([&] { copy->rethrow(); });
        ASSERT_TRUE(again);
        EXPECT_EQ(again->identifier, error.GetID());
        EXPECT_EQ(again->text, error.what());
    }
    // An override the catalogue lacks keeps the text of the error it stands for.
    const auto raised = hosttest::raisedBy([] { kNotGzip.raise("TESSEL:custom:notGzip"); });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, "TESSEL:custom:notGzip");
    EXPECT_EQ(raised->text, kNotGzipText);
}

TEST(Warnings, PrintedOnStandardErrorWithoutCapture) {
    testing::internal::CaptureStderr();
    kNotGzip.warn();
    kNotGzip.warn("TESSEL:other:id");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Warning: " + kNotGzipText + " [TESSEL:io:archive:gunzip:notGzipFormat]\n" +
                  "Warning: " + kNotGzipText + " [TESSEL:other:id]\n");
}

TEST(Warnings, InnermostCaptureOfTheThreadRecords) {
    testing::internal::CaptureStderr();
    WarningCapture outer;
    kNotGzip.warn();
    {
        WarningCapture inner;
        issueHostWarning(kNotGzip, "TESSEL:inner:id");
        ASSERT_EQ(inner.warnings().size(), 1u);
        EXPECT_EQ(inner.warnings()[0].identifier, "TESSEL:inner:id");
        EXPECT_EQ(inner.warnings()[0].arguments, std::vector<std::string>{"/tmp/été.txt"});
    }
    issueHostWarning(MessageIdError("TESSEL:io:archive:extractArchive", "internalError"));
    std::vector<IssuedWarning> theirs;
    std::thread([&] {
        kNotGzip.warn("TESSEL:uncaptured:thread");  // no capture on this thread: printed
        WarningCapture own;
        kNotGzip.warn("TESSEL:captured:thread");
        theirs = own.warnings();
    }).join();
    const std::string printed = testing::internal::GetCapturedStderr();
    ASSERT_EQ(outer.warnings().size(), 2u);
    EXPECT_EQ(outer.warnings()[0].identifier, "TESSEL:io:archive:gunzip:notGzipFormat");
    EXPECT_EQ(outer.warnings()[1].identifier, "TESSEL:io:archive:extractArchive:internalError");
    EXPECT_TRUE(outer.warnings()[1].arguments.empty());
    ASSERT_EQ(theirs.size(), 1u);
    EXPECT_EQ(theirs[0].identifier, "TESSEL:captured:thread");
    EXPECT_EQ(printed, "Warning: " + kNotGzipText + " [TESSEL:uncaptured:thread]\n");
}

class TextException : public HostInternalException {
  public:
    HostExceptionInterface* clone() const override { return new TextException(*this); }
    [[noreturn]] void rethrow() const override { throw *this; }
    std::u16string messageText() const override { return u"Échec: 書類 😀"; }
};

TEST(HostInternalException, WhatIsTheUtf8OfTheMessage) {
    const TextException error;
    EXPECT_STREQ(error.what(), "Échec: 書類 😀");
    EXPECT_EQ(error.convert_str(std::string("\xFF raw")), "\xFF raw");
    EXPECT_EQ(error.convert_str(std::u16string(u"ü")), "ü");
}

}  // namespace
