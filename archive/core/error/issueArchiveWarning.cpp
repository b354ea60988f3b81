#include <archive/core/error/StatusChecks.hpp>

#include <archive/core/error/messages/createArchive.hpp>
#include <host/MessageIdError.hpp>

namespace tessel::io::archive::core {

namespace {

constexpr const char* kExtractComponent = "TESSEL:io:archive:extractArchive";

// A warning without a class of its own, carrying the subject as its one UTF-8 argument.
void warnWithSubject(const char* mnemonic, const std::string& subject) {
    tessel::host::MessageIdError warning(kExtractComponent, mnemonic, 1);
    warning.arguments()[0] = subject;
    warning.warn();
}

}  // namespace

void issueArchiveWarning(NullArchiveRule rule, const std::string& subject, ArchiveFormat format) {
    switch (rule) {
        case NullArchiveRule::CouldNotCreateFile:
        case NullArchiveRule::PermissionDenied:
            warnWithSubject("unableToCreate", subject);
            return;
        case NullArchiveRule::UnableToOverwrite:
            warnWithSubject("unableToOverwrite", subject);
            return;
        case NullArchiveRule::RemoveControlM:
            warnWithSubject("removeControlM", subject);
            return;
        case NullArchiveRule::OverwriteOpenFile:
            warnWithSubject("OverwriteOpenFile", subject);
            return;
        case NullArchiveRule::InvalidEntryHeader:
        case NullArchiveRule::OpenEntryError: {
            const TESSEL::io::archive::createArchive::openEntryError warning(subject);
            if (format == ArchiveFormat::Zip) {
                warning.warn("TESSEL:zip:openEntryError");
            } else if (format == ArchiveFormat::Tar || format == ArchiveFormat::Tgz) {
                warning.warn("TESSEL:tar:openEntryError");
            } else {
                warning.warn();
            }
            return;
        }
        default:
            tessel::host::MessageIdError(kExtractComponent, "internalError", 0).warn();
            return;
    }
}

}  // namespace tessel::io::archive::core
