#include <archive/core/error/StatusChecks.hpp>

#include <archive.h>
#include <archive_entry.h>

#include <boost/locale/encoding_utf.hpp>

#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/ErrorMessageFactory.hpp>
#include <archive/core/error/StaticTexts.hpp>
#include <archive/core/log/LogLevel.hpp>
#include <archive/core/log/LogRecord.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

// The two records every check with a handle writes before it raises or warns.
void logLibarchiveEvidence(const std::string& message, ::archive* handle) {
    ARCHIVE_LOG(LogFailure) << libarchiveMessagePrefix() << message;
    ARCHIVE_LOG(LogFailure) << kLibarchiveErrnoLabel << libarchiveErrnoString(handle);
}

void logRuleText(NullArchiveRule rule) {
    ARCHIVE_LOG(LogFailure) << tessel::host::toUtf8(ErrorMessageFactory::messageFor(rule));
}

// A path as the operating system sees it, in UTF-8, for a warning's subject.
std::string warningSubject(const tessel::host::HostPath& path) {
    return tessel::host::toUtf8(path.native());
}

}  // namespace

std::string libarchiveErrorString(::archive* handle, int fallback) {
    if (handle != nullptr) {
        if (const char* text = archive_error_string(handle); text != nullptr) {
            return text;
        }
    }
    const std::string& reason = fallback == 0   ? fallbackText0()
                                : fallback == 1 ? fallbackText1()
                                                : fallbackText2();
    return libarchiveMessagePrefix() + reason;
}

std::string libarchiveErrnoString(::archive* handle) {
    if (handle == nullptr) {
        return "NONE";
    }
    return std::to_string(archive_errno(handle));
}

void throwArchiveError(NullArchiveRule rule, ::archive* handle) {
    const std::string message = libarchiveErrorString(handle, 1);
    logLibarchiveEvidence(message, handle);
    throw ArchiveException(rule, std::u16string());
}

void throwArchiveErrorForPath(NullArchiveRule rule, ::archive* handle, ::archive_entry* entry) {
    const std::string message = libarchiveErrorString(handle, 1);
    logLibarchiveEvidence(message, handle);
    const char* pathname = entry != nullptr ? archive_entry_pathname(entry) : nullptr;
    const auto path =
        tessel::host::HostPath::fromFileSystem(pathname != nullptr ? pathname : "").nativeForm();
    throw ArchiveException(rule, tessel::host::fromFileSystemText(path.access()));
}

void throwInternalError(NullArchiveRule rule) {
    throwInternalError(rule, std::u16string());
}

void throwInternalError(NullArchiveRule rule, const std::u16string& message) {
    const ArchiveException probe(rule, std::u16string());
    ARCHIVE_LOG(LogFailure) << kInternalMessageLabel << probe.what();
    throw ArchiveException(rule, message);
}

void throwArchiveErrorWithMessage(NullArchiveRule rule, const std::u16string& message) {
    ARCHIVE_LOG(LogFailure) << kInternalErrorMessageLabel << ErrorMessageFactory::messageFor(rule);
    throw ArchiveException(rule, message);
}

void warnArchiveError(NullArchiveRule rule, ::archive* handle, const tessel::host::HostPath& path) {
    const std::string message = libarchiveErrorString(handle, 1);
    logLibarchiveEvidence(message, handle);
    issueArchiveWarning(rule, warningSubject(path), ArchiveFormat::All);
}

void logArchiveWarning(::archive* handle) {
    logLibarchiveEvidence(libarchiveErrorString(handle, 1), handle);
}

void warnForPath(NullArchiveRule rule, const tessel::host::HostPath& path, ArchiveFormat format) {
    logRuleText(rule);
    issueArchiveWarning(rule, warningSubject(path), format);
}

void warnForWideName(NullArchiveRule rule, const std::wstring& name) {
    logRuleText(rule);
    const std::u16string wide = boost::locale::conv::utf_to_utf<char16_t>(name);
    issueArchiveWarning(rule, tessel::host::toUtf8(wide), ArchiveFormat::All);
}

void warnForName(NullArchiveRule rule, const std::string& name) {
    logRuleText(rule);
    issueArchiveWarning(rule, name, ArchiveFormat::All);
}

}  // namespace tessel::io::archive::core
