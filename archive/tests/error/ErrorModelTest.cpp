// Rule texts, the internal exception, the warning table and the catch-all translation.
#include <gtest/gtest.h>

#include <map>
#include <new>
#include <set>
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
    const std::string x = "TESSEL:io:archive:extractArchive:";
    const std::string neutral = "TESSEL:io:archive:createArchive:openEntryError";
    const std::map<int, std::string> withSubject = {{1, x + "unableToCreate"},
                                                    {8, x + "unableToCreate"},
                                                    {10, x + "unableToOverwrite"},
                                                    {12, x + "removeControlM"},
                                                    {19, x + "OverwriteOpenFile"}};
    // Formats 0 to 5: all, invalid, zip, tar, gz, tgz.
    const std::vector<std::string> openEntry = {neutral,
                                                neutral,
                                                "TESSEL:zip:openEntryError",
                                                "TESSEL:tar:openEntryError",
                                                neutral,
                                                "TESSEL:tar:openEntryError"};
    for (int value = 0; value <= 26; ++value) {
        for (int format = 0; format <= 5; ++format) {
            std::string expected = x + "internalError()";
            if (value == 5 || value == 15) {
                expected = openEntry[format] + "(dir/ä.txt)";
            } else if (withSubject.count(value) != 0) {
                expected = withSubject.at(value) + "(dir/ä.txt)";
            }
            tessel::host::WarningCapture capture;
            core::issueArchiveWarning(rule(value), "dir/ä.txt", static_cast<ArchiveFormat>(format));
            std::string seen;
            for (const auto& warning : capture.warnings()) {
                seen += warning.identifier + "(" +
                        (warning.arguments.empty() ? "" : warning.arguments[0]) + ")";
            }
            EXPECT_EQ(seen, expected) << "rule " << value << ", format " << format;
        }
    }
}

// One class per catalogue identifier of the library, and nothing in the catalogue that
// the library cannot raise or warn.
TEST(MessageClasses, MatchTheCatalogueOneToOne) {
    namespace msg = TESSEL::io::archive;
    const std::u16string p = u"/tmp/ü.zip";
    const std::string s = "a";
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
        msg::createArchive::entryNameCountMismatch(p, p),
        msg::createArchive::openEntryError(s),
        msg::extractArchive::unableToWrite(p, p),
        msg::extractArchive::emptyEntryFilename(p, p),
        msg::extractArchive::incorrectPassword(),
        msg::extractArchive::protectedEntry(),
        msg::extractArchive::outputDiskFull(),
        msg::extractArchive::unsupportedEncryptionInLinux(),
        msg::extractArchive::OverwriteOpenFile(p),
        msg::extractArchive::internalError(),
        msg::extractArchive::unableToCreate(s),
        msg::extractArchive::unableToOverwrite(s),
        msg::extractArchive::removeControlM(s),
        // The option-taking calls'.
        msg::extractArchive::entryOutsideFolder(p, p),
        msg::extractArchive::entryThroughSymlink(p, p),
        msg::extractArchive::linkOutsideFolder(p, p, p),
        msg::extractArchive::entryNotFound(p, p),
        msg::extractArchive::cancelled(),
        msg::extractArchive::writeError(p),
        msg::extractArchive::specialFileSkipped(p),
        msg::extractArchive::existingFileKept(p),
        msg::extractArchive::outwardLinkSkipped(p, p),
        msg::createArchive::cancelled(),
        msg::createArchive::unknownArchiveType(p),
        msg::createArchive::invalidCompression(p, p),
        msg::createArchive::writeError(p),
        msg::createArchive::entryNameTooLong(p, s, s),
        msg::gzip::outputDiskFull(p),
        msg::gunzip::outputIsInput(p),
        msg::testArchive::damagedEntry(p, p, s),
        msg::testArchive::damagedStream(p, s),
    };
    // Raised or warned under another identifier than their class's.
    std::set<std::string> fromClasses = {"TESSEL:io:archive:zip:DiskSpaceFull",
                                         "TESSEL:io:archive:tar:DiskSpaceFull",
                                         "TESSEL:zip:openEntryError", "TESSEL:tar:openEntryError"};
    for (const auto& error : errors) {
        EXPECT_TRUE(fromClasses.insert(error.identifier()).second) << error.identifier();
    }
    std::set<std::string> catalogued;
    for (const auto& identifier : tessel::host::catalogueIdentifiers()) {
        if (identifier.rfind("TESSEL:io:archive:", 0) == 0 ||
            identifier.rfind("TESSEL:zip:", 0) == 0 || identifier.rfind("TESSEL:tar:", 0) == 0) {
            catalogued.insert(identifier);
        }
    }
    EXPECT_EQ(fromClasses, catalogued);
    // UTF-16 and UTF-8 arguments keep their alternative; the override replaces the identifier.
    EXPECT_EQ(msg::createArchive::openEntryError(s).arguments()[0].index(), 1u);
    EXPECT_EQ(msg::zip::openError(p).arguments()[0].index(), 0u);
    const auto raised = tqtest::raisedBy(
        [&] { msg::createArchive::DiskSpaceFull(p).raise("TESSEL:io:archive:tar:DiskSpaceFull"); });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->identifier, "TESSEL:io:archive:tar:DiskSpaceFull");
    EXPECT_EQ(raised->arguments, std::vector<std::string>{"/tmp/ü.zip"});
    EXPECT_NE(raised->text.find("/tmp/ü.zip"), std::string::npos);
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
        const auto raised = tqtest::raisedBy([&, &thrower = thrower] {
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
