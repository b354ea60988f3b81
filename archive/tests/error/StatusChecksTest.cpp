// The status checks against real libarchive handles: what they log, in which order,
// and what they throw or warn.
#include <gtest/gtest.h>

#include <archive.h>
#include <archive_entry.h>

#include <functional>
#include <memory>

#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>
#include <host/WarningCapture.hpp>

#include "../support/LogCapture.hpp"

namespace core = tessel::io::archive::core;
using core::NullArchiveRule;
using tessel::host::HostPath;

namespace {

struct ReadFree {
    void operator()(archive* handle) const { archive_read_free(handle); }
};
using ReadHandle = std::unique_ptr<archive, ReadFree>;

// A handle put into a failing state with the given errno and message (null: none).
ReadHandle failing(int error, const char* message) {
    ReadHandle handle(archive_read_new());
    if (message != nullptr) {
        archive_set_error(handle.get(), error, "%s", message);
    }
    return handle;
}

// Everything a check did, as one line: its log records, then what it threw or warned.
std::string evidence(const std::function<void()>& check) {
    tqtest::LogCapture log;
    tessel::host::WarningCapture warnings;
    std::string result;
    try {
        check();
    } catch (const core::ArchiveException& error) {
        result = "threw " + std::to_string(static_cast<int>(error.rule)) + " '" +
                 tessel::host::toUtf8(error.message) + "'";
    }
    for (const auto& warning : warnings.warnings()) {
        result += "warned " + warning.identifier + "(" +
                  (warning.arguments.empty() ? "" : warning.arguments[0]) + ")";
    }
    std::string lines;
    for (const auto& record : log.records()) {
        lines += std::to_string(record.severity) + " " + record.message + " | ";
    }
    return lines + result;
}

}  // namespace

TEST(LibarchiveTexts, MessageErrnoAndFallbacks) {
    ReadHandle opened(archive_read_new());
    archive_read_support_format_all(opened.get());
    ASSERT_NE(archive_read_open_filename(opened.get(), "/nonexistent/x.zip", 10240), ARCHIVE_OK);
    EXPECT_NE(core::libarchiveErrorString(opened.get(), 1).find("/nonexistent/x.zip"),
              std::string::npos);
    EXPECT_EQ(core::libarchiveErrnoString(opened.get()), "2");
    EXPECT_EQ(core::libarchiveErrnoString(nullptr), "NONE");
    EXPECT_EQ(core::libarchiveErrnoString(failing(-28, "x").get()), "-28");
    const std::string prefix = "[LIBARCHIVE_MESSAGE]: ";
    EXPECT_EQ(core::libarchiveErrorString(failing(0, nullptr).get(), 0), prefix);
    EXPECT_EQ(core::libarchiveErrorString(failing(0, nullptr).get(), 1),
              prefix + "The libarchive archive_error_string function returned NULL.");
    EXPECT_EQ(core::libarchiveErrorString(nullptr, 7),
              prefix + "An invalid NullArchiveRule value was supplied to the ErrorMessageFactory.");
}

TEST(StatusChecks, LogTheirEvidenceThenThrowOrWarn) {
    const ReadHandle full = failing(28, "Write error");
    const ReadHandle busy = failing(13, "Can't unlink already-existing object");
    const ReadHandle silent = failing(0, nullptr);
    std::unique_ptr<archive_entry, void (*)(archive_entry*)> entry(archive_entry_new(),
                                                                   archive_entry_free);
    archive_entry_set_pathname(entry.get(), "dir/年報 ü.txt");
    const std::string unknown =
        "512 [archive_err]: Unknown error. This should not be hit. Zorp it! | ";
    const std::vector<std::pair<std::function<void()>, std::string>> cases = {
        {[&] { core::throwArchiveError(NullArchiveRule::DiskSpaceFull, full.get()); },
         "512 [LIBARCHIVE_MESSAGE]: Write error | 512 [LIBARCHIVE_ERRNO]: 28 | threw 21 ''"},
        {[&] { core::throwArchiveError(NullArchiveRule::UnableToSetFormat, nullptr); },
         "512 [LIBARCHIVE_MESSAGE]: [LIBARCHIVE_MESSAGE]: The libarchive archive_error_string "
         "function returned NULL. | 512 [LIBARCHIVE_ERRNO]: NONE | threw 6 ''"},
        {[&] {
             core::throwArchiveErrorForPath(NullArchiveRule::IncorrectPassphrase, silent.get(),
                                            entry.get());
         },
         "512 [LIBARCHIVE_MESSAGE]: [LIBARCHIVE_MESSAGE]: The libarchive archive_error_string "
         "function returned NULL. | 512 [LIBARCHIVE_ERRNO]: 0 | threw 22 'dir/年報 ü.txt'"},
        {[] { core::throwInternalError(NullArchiveRule::CouldNotWriteFile); },
         "512 [INTERNAL_MESSAGE]: [archive_err]: Could not write to file. | threw 2 ''"},
        {[] { core::throwArchiveErrorWithMessage(NullArchiveRule::PermissionDenied, u"/x/ä"); },
         "512 [INTERNAL ERROR MESSAGE]: [archive_err]: Entry is invalid. Permission was denied. "
         "| threw 8 '/x/ä'"},
        {[&] {
             core::warnArchiveError(NullArchiveRule::OverwriteOpenFile, busy.get(),
                                    HostPath(u"out/ä.txt"));
         },
         "512 [LIBARCHIVE_MESSAGE]: Can't unlink already-existing object | 512 "
         "[LIBARCHIVE_ERRNO]: 13 | warned TESSEL:io:archive:extractArchive:OverwriteOpenFile(out/"
         "ä.txt)"},
        {[] {
             core::warnForPath(NullArchiveRule::OpenEntryError, HostPath(u"in/b"),
                               core::ArchiveFormat::Zip);
         },
         unknown + "warned TESSEL:zip:openEntryError(in/b)"},
        {[] { core::warnForWideName(NullArchiveRule::UnableToOverwrite, L"naïve 日本"); },
         unknown + "warned TESSEL:io:archive:extractArchive:unableToOverwrite(naïve 日本)"},
        {[] { core::warnForName(NullArchiveRule::RemoveControlM, "c.txt"); },
         unknown + "warned TESSEL:io:archive:extractArchive:removeControlM(c.txt)"},
    };
    for (const auto& [check, expected] : cases) {
        EXPECT_EQ(evidence(check), expected);
    }
}
