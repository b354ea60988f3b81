// The status checks against real libarchive handles: what they log, in which order,
// and what they throw or warn.
#include <gtest/gtest.h>

#include <archive.h>
#include <archive_entry.h>

#include <memory>

#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <host/HostPath.hpp>
#include <host/WarningCapture.hpp>

#include "../support/LogCapture.hpp"
#include "../support/TestSupport.hpp"

namespace core = tessel::io::archive::core;
using core::NullArchiveRule;

namespace {

struct ReadCloser {
    void operator()(archive* handle) const { archive_read_free(handle); }
};
using ReadHandle = std::unique_ptr<archive, ReadCloser>;

struct EntryFree {
    void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};

// A handle that really failed: opening a file that does not exist.
ReadHandle failedOpen(const std::string& path) {
    ReadHandle handle(archive_read_new());
    archive_read_support_format_all(handle.get());
    EXPECT_NE(archive_read_open_filename(handle.get(), path.c_str(), 10240), ARCHIVE_OK);
    return handle;
}

template <class Call>
core::ArchiveException thrownBy(Call call) {
    try {
        call();
    } catch (const core::ArchiveException& error) {
        return error;
    }
    ADD_FAILURE() << "no ArchiveException";
    return core::ArchiveException(static_cast<NullArchiveRule>(-1), u"");
}

}  // namespace

TEST(LibarchiveTexts, MessageErrnoAndFallbacks) {
    const auto handle = failedOpen("/nonexistent/x.zip");
    EXPECT_NE(core::libarchiveErrorString(handle.get(), 1).find("/nonexistent/x.zip"),
              std::string::npos);
    EXPECT_EQ(core::libarchiveErrnoString(handle.get()), "2");
    EXPECT_EQ(core::libarchiveErrnoString(nullptr), "NONE");

    ReadHandle fresh(archive_read_new());
    archive_set_error(fresh.get(), -28, "x");
    EXPECT_EQ(core::libarchiveErrnoString(fresh.get()), "-28");
    archive_clear_error(fresh.get());
    EXPECT_EQ(core::libarchiveErrorString(fresh.get(), 0), "[LIBARCHIVE_MESSAGE]: ");
    EXPECT_EQ(core::libarchiveErrorString(fresh.get(), 1),
              "[LIBARCHIVE_MESSAGE]: The libarchive archive_error_string function returned NULL.");
    EXPECT_EQ(core::libarchiveErrorString(nullptr, 7),
              "[LIBARCHIVE_MESSAGE]: An invalid NullArchiveRule value was supplied to the "
              "ErrorMessageFactory.");
}

TEST(StatusChecks, ThrowArchiveErrorLogsMessageThenErrno) {
    const auto handle = failedOpen("/nonexistent/y.tar");
    const std::string expectedMessage = archive_error_string(handle.get());
    tqtest::LogCapture log;
    const auto error =
        thrownBy([&] { core::throwArchiveError(NullArchiveRule::CouldNotOpenFile, handle.get()); });
    EXPECT_EQ(error.rule, NullArchiveRule::CouldNotOpenFile);
    EXPECT_TRUE(error.message.empty());
    const auto records = log.records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].message, "[LIBARCHIVE_MESSAGE]: " + expectedMessage);
    EXPECT_EQ(records[1].message, "[LIBARCHIVE_ERRNO]: 2");
    for (const auto& record : records) {
        EXPECT_EQ(record.severity, 512);
        EXPECT_EQ(record.channel, "tessel::io::archive::core");
    }
}

TEST(StatusChecks, NullHandleAndNullMessageNeverFail) {
    tqtest::LogCapture log;
    const auto error =
        thrownBy([] { core::throwArchiveError(NullArchiveRule::UnableToSetFormat, nullptr); });
    EXPECT_EQ(error.rule, NullArchiveRule::UnableToSetFormat);
    EXPECT_EQ(log.messages(), (std::vector<std::string>{
                                  "[LIBARCHIVE_MESSAGE]: [LIBARCHIVE_MESSAGE]: The libarchive "
                                  "archive_error_string function returned NULL.",
                                  "[LIBARCHIVE_ERRNO]: NONE"}));
}

TEST(StatusChecks, ForPathCarriesTheEntryName) {
    ReadHandle handle(archive_read_new());
    archive_set_error(handle.get(), 0, "Incorrect passphrase");
    std::unique_ptr<archive_entry, EntryFree> entry(archive_entry_new());
    archive_entry_set_pathname(entry.get(), "dir/年報 ü.txt");
    tqtest::LogCapture log;
    const auto error = thrownBy([&] {
        core::throwArchiveErrorForPath(NullArchiveRule::IncorrectPassphrase, handle.get(),
                                       entry.get());
    });
    EXPECT_EQ(error.rule, NullArchiveRule::IncorrectPassphrase);
    EXPECT_EQ(error.message, u"dir/年報 ü.txt");
    EXPECT_EQ(log.messages(),
              (std::vector<std::string>{"[LIBARCHIVE_MESSAGE]: Incorrect passphrase",
                                        "[LIBARCHIVE_ERRNO]: 0"}));
}

TEST(StatusChecks, InternalChecksLogTheRuleText) {
    tqtest::LogCapture log;
    auto internal = thrownBy([] { core::throwInternalError(NullArchiveRule::NotGzipFormat); });
    EXPECT_EQ(internal.rule, NullArchiveRule::NotGzipFormat);
    EXPECT_TRUE(internal.message.empty());
    auto withMessage = thrownBy(
        [] { core::throwArchiveErrorWithMessage(NullArchiveRule::PermissionDenied, u"/x/ä"); });
    EXPECT_EQ(withMessage.rule, NullArchiveRule::PermissionDenied);
    EXPECT_EQ(withMessage.message, u"/x/ä");
    EXPECT_EQ(
        log.messages(),
        (std::vector<std::string>{
            "[INTERNAL_MESSAGE]: [archive_err]: Unknown error. This should not be hit. Zorp it!",
            "[INTERNAL ERROR MESSAGE]: [archive_err]: Entry is invalid. Permission was denied."}));
}

TEST(StatusChecks, WarningChecksLogThenWarnAndReturn) {
    ReadHandle handle(archive_read_new());
    archive_set_error(handle.get(), 13, "Can't unlink already-existing object");
    tqtest::LogCapture log;
    tessel::host::WarningCapture warnings;

    core::warnArchiveError(NullArchiveRule::OverwriteOpenFile, handle.get(),
                           tessel::host::HostPath(u"out/ä.txt"));
    core::warnForPath(NullArchiveRule::OpenEntryError, tessel::host::HostPath(u"in/b"),
                      core::ArchiveFormat::Zip);
    core::warnForWideName(NullArchiveRule::UnableToOverwrite, L"naïve 日本");
    core::warnForName(NullArchiveRule::RemoveControlM, "c.txt");

    EXPECT_EQ(
        log.messages(),
        (std::vector<std::string>{
            "[LIBARCHIVE_MESSAGE]: Can't unlink already-existing object", "[LIBARCHIVE_ERRNO]: 13",
            "[archive_err]: Unknown error. This should not be hit. Zorp it!",
            "[archive_err]: Unknown error. This should not be hit. Zorp it!",
            "[archive_err]: Unknown error. This should not be hit. Zorp it!"}));
    const auto& issued = warnings.warnings();
    ASSERT_EQ(issued.size(), 4u);
    EXPECT_EQ(issued[0].identifier, "TESSEL:io:archive:extractArchive:OverwriteOpenFile");
    EXPECT_EQ(issued[0].arguments, std::vector<std::string>{"out/ä.txt"});
    EXPECT_EQ(issued[1].identifier, "TESSEL:zip:openEntryError");
    EXPECT_EQ(issued[1].arguments, std::vector<std::string>{"in/b"});
    EXPECT_EQ(issued[2].identifier, "TESSEL:io:archive:extractArchive:unableToOverwrite");
    EXPECT_EQ(issued[2].arguments, std::vector<std::string>{"naïve 日本"});
    EXPECT_EQ(issued[3].identifier, "TESSEL:io:archive:extractArchive:removeControlM");
    EXPECT_EQ(issued[3].arguments, std::vector<std::string>{"c.txt"});
}
