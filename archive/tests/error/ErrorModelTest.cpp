// Rule texts, the internal exception, the warning table and the catch-all translation.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include <boost/exception/exception.hpp>

#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/ErrorMessageFactory.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/error/messages/Messages.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <host/HostError.hpp>
#include <host/WarningCapture.hpp>

#include "../support/TestSupport.hpp"

namespace core = tessel::io::archive::core;
using core::ArchiveFormat;
using core::NullArchiveRule;

namespace {

const std::u16string kUnknown = u"[archive_err]: Unknown error. This should not be hit. Zorp it!";

NullArchiveRule rule(int value) {
    return static_cast<NullArchiveRule>(value);
}

}  // namespace

TEST(ErrorMessageFactory, EveryRuleHasItsText) {
    const std::vector<std::pair<int, std::u16string>> table = {
        {0, u"[archive_err]: Could not open file."},
        {1, u"[archive_err]: Could not create file."},
        {2, u"[archive_err]: Could not write to file."},
        {3, u"[archive_err]: Could not overwrite file."},
        {4, u"[archive_err]: Could not close file."},
        {5, u"[archive_err]: Invalid entry in archive header."},
        {6, u"[archive_err]: Unable to set archive format."},
        {7, u"[archive_err]: Unable to set archive filter."},
        {8, u"[archive_err]: Entry is invalid. Permission was denied."},
        {9, u"[archive_err]: Entry is invalid. It is password protected."},
        {11, u"[archive_err]: Unable to open GZ file. It is corrupt."},
        {14, u"[archive_err]: Could not open archive for writing."},
        {17, u"[archive_err]: Could not set the required write options for the archive."},
        {20, u"[archive_err]: Entry is invalid. It's filename is empty."},
    };
    for (const auto& [value, text] : table) {
        EXPECT_EQ(core::ErrorMessageFactory::messageFor(rule(value)), text) << "rule " << value;
    }
    for (int value : {10, 12, 13, 15, 16, 18, 19, 21, 22, 23, 24, 25, 26, 1000, -1}) {
        EXPECT_EQ(core::ErrorMessageFactory::messageFor(rule(value)), kUnknown) << value;
    }
}

TEST(ArchiveException, TextIsTheRuleTextAndCopiesKeepRuleAndMessage) {
    const core::ArchiveException error(NullArchiveRule::CouldNotOpenFile, u"/some/päth.zip");
    EXPECT_STREQ(error.what(), "[archive_err]: Could not open file.");
    EXPECT_NE(dynamic_cast<const boost::exception*>(&error), nullptr);
    std::unique_ptr<core::ArchiveException> copy(error.clone());
    try {
        copy->rethrow();
    } catch (const core::ArchiveException& thrown) {
        EXPECT_EQ(thrown.rule, NullArchiveRule::CouldNotOpenFile);
        EXPECT_EQ(thrown.message, u"/some/päth.zip");
        return;
    }
    FAIL() << "rethrow returned";
}

// issueArchiveWarning: rule x format -> exactly one warning with its identifier.
TEST(IssueArchiveWarning, TableOfRulesAndFormats) {
    const std::string openNeutral = "TESSEL:io:archive:createArchive:openEntryError";
    for (int value = 0; value <= 26; ++value) {
        for (int format = 0; format <= 5; ++format) {
            std::string expected = "TESSEL:io:archive:extractArchive:internalError";
            bool withSubject = true;
            switch (value) {
                case 1:
                case 8:
                    expected = "TESSEL:io:archive:extractArchive:unableToCreate";
                    break;
                case 10:
                    expected = "TESSEL:io:archive:extractArchive:unableToOverwrite";
                    break;
                case 12:
                    expected = "TESSEL:io:archive:extractArchive:removeControlM";
                    break;
                case 19:
                    expected = "TESSEL:io:archive:extractArchive:OverwriteOpenFile";
                    break;
                case 5:
                case 15:
                    expected = format == 2                  ? "TESSEL:zip:openEntryError"
                               : format == 3 || format == 5 ? "TESSEL:tar:openEntryError"
                                                            : openNeutral;
                    break;
                default:
                    withSubject = false;
            }
            tessel::host::WarningCapture capture;
            core::issueArchiveWarning(rule(value), "dir/ä.txt", static_cast<ArchiveFormat>(format));
            ASSERT_EQ(capture.warnings().size(), 1u) << value << "/" << format;
            EXPECT_EQ(capture.warnings()[0].identifier, expected) << value << "/" << format;
            const std::vector<std::string> arguments =
                withSubject ? std::vector<std::string>{"dir/ä.txt"} : std::vector<std::string>{};
            EXPECT_EQ(capture.warnings()[0].arguments, arguments) << value << "/" << format;
        }
    }
}

TEST(MessageClasses, IdentifiersArgumentsAndCatalogue) {
    namespace msg = TESSEL::io::archive;
    const std::u16string p = u"/tmp/ü.zip";
    const std::vector<tessel::host::MessageIdError> errors = {
        msg::gzip::javaOpenError(p),
        msg::gzip::javaOutputOpenError(p),
        msg::gunzip::javaOpenError(p),
        msg::gunzip::javaOutputOpenError(p),
        msg::gunzip::javaCopyStreamError(p),
        msg::gunzip::notGzipFormat(p),
        msg::zip::openError(p),
        msg::tar::openError(p),
        msg::unzip::invalidZipFile(p),
        msg::untar::invalidTarFile(p),
        msg::createArchive::DiskSpaceFull(p),
        msg::createArchive::emptyPassword(),
        msg::createArchive::invalidArchiveFormat(),
        msg::createArchive::invalidEncryptionInLinux(),
        msg::createArchive::unsupportedEncryptionInLinux(),
        msg::createArchive::invalidNumberOfArgs(),
        msg::createArchive::entryNameCountMismatch(u"3", u"2"),
        msg::createArchive::openEntryError(std::string("a")),
        msg::extractArchive::unableToWrite(p, std::u16string(u"reason")),
        msg::extractArchive::emptyEntryFilename(std::u16string(u"zip"), p),
        msg::extractArchive::incorrectPassword(),
        msg::extractArchive::protectedEntry(),
        msg::extractArchive::outputDiskFull(),
        msg::extractArchive::unsupportedEncryptionInLinux(),
        msg::extractArchive::OverwriteOpenFile(p),
        msg::extractArchive::internalError(),
        msg::extractArchive::unableToCreate(std::string("a")),
        msg::extractArchive::unableToOverwrite(std::string("a")),
        msg::extractArchive::removeControlM(std::string("a")),
    };
    std::vector<std::string> identifiers;
    for (const auto& error : errors) {
        identifiers.push_back(error.identifier());
        EXPECT_EQ(error.identifier().rfind("TESSEL:io:archive:", 0), 0u) << error.identifier();
    }
    // Identifiers that are raised or warned under another name than their class's.
    for (const char* extra :
         {"TESSEL:io:archive:zip:DiskSpaceFull", "TESSEL:io:archive:tar:DiskSpaceFull",
          "TESSEL:zip:openEntryError", "TESSEL:tar:openEntryError"}) {
        identifiers.push_back(extra);
    }
    for (const auto& identifier : identifiers) {
        EXPECT_TRUE(tessel::host::catalogueHas(identifier)) << identifier;
    }
    // The argument lands in the text, and UTF-16 and UTF-8 alternatives are kept apart.
    const auto raised = tqtest::raisedBy([&] { msg::zip::openError(p).raise(); });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, "TESSEL:io:archive:zip:openError");
    EXPECT_EQ(raised->arguments, std::vector<std::string>{"/tmp/ü.zip"});
    EXPECT_NE(raised->text.find("/tmp/ü.zip"), std::string::npos);
    EXPECT_EQ(msg::createArchive::openEntryError(std::string("a")).arguments()[0].index(), 1u);
    EXPECT_EQ(msg::zip::openError(p).arguments()[0].index(), 0u);
    const auto overridden = tqtest::raisedBy(
        [&] { msg::createArchive::DiskSpaceFull(p).raise("TESSEL:io:archive:tar:DiskSpaceFull"); });
    ASSERT_TRUE(overridden);
    EXPECT_EQ(overridden->identifier, "TESSEL:io:archive:tar:DiskSpaceFull");
}

TEST(RethrowAsHostError, TranslatesEverythingButHostErrors) {
    const std::string internal = "TESSEL:io:archive:extractArchive:internalError()";
    const std::vector<std::pair<std::function<void()>, std::string>> cases = {
        {[] { throw core::ArchiveException(NullArchiveRule::CouldNotWriteFile, u"x"); }, internal},
        {[] { throw std::bad_alloc(); }, internal},
        {[] { throw 42; }, internal},
        {[] { TESSEL::io::archive::zip::openError(u"a.zip").raise(); },
         "TESSEL:io:archive:zip:openError(a.zip)"},
    };
    for (const auto& [thrower, expected] : cases) {
        const auto raised = tqtest::raisedBy([&] {
            try {
                thrower();
            } catch (...) {
                core::rethrowAsHostError();
            }
        });
        ASSERT_TRUE(raised);
        std::string seen = raised->identifier + "(";
        for (const auto& argument : raised->arguments) {
            seen += argument;
        }
        EXPECT_EQ(seen + ")", expected);
    }
}
