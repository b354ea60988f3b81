#include <archive/core/translateExtractFailure.hpp>

#include <archive/core/error/messages/extractArchive.hpp>
#include <archive/core/error/messages/untar.hpp>
#include <archive/core/error/messages/unzip.hpp>
#include <host/HostError.hpp>

namespace tessel::io::archive::core {

void translateExtractFailure(const ArchiveException& failure, const std::u16string& archivePath,
                             const std::unique_ptr<ArchiveDiskWriter>& writer,
                             ArchiveFormat format) {
    namespace messages = TESSEL::io::archive;
    const NullArchiveRule rule = failure.rule;

    // A half-written entry must not look like a good file. When the failure came after
    // an entry completed, that entry is still the current one and goes too.
    if (writer && rule != NullArchiveRule::CouldNotCloseFile &&
        rule != NullArchiveRule::EmptyEntryFilename) {
        writer->deleteCurrentEntryFile();
    }

    switch (rule) {
        case NullArchiveRule::CouldNotOpenFile:
            if (format == ArchiveFormat::Tgz) {
                messages::untar::invalidTarFile(archivePath).raise();
            }
            if (format == ArchiveFormat::Zip) {
                messages::unzip::invalidZipFile(archivePath).raise();
            }
            return;
        case NullArchiveRule::CouldNotWriteFile:
        case NullArchiveRule::InvalidEntryHeader:
            if (format == ArchiveFormat::Zip) {
                messages::unzip::invalidZipFile(archivePath).raise();
            }
            return;
        default:
            raiseSharedExtractionError(rule, archivePath, format);
            return;
    }
}

void raiseSharedExtractionError(NullArchiveRule rule, const std::u16string& archivePath,
                                ArchiveFormat format) {
    namespace messages = TESSEL::io::archive;
    switch (rule) {
        case NullArchiveRule::PasswordProtected:
            messages::extractArchive::unableToWrite(
                archivePath,
                tessel::host::lookupMessage("TESSEL:io:archive:extractArchive:protectedEntry"))
                .raise();
        case NullArchiveRule::IncorrectPassphrase:
            messages::extractArchive::incorrectPassword().raise();
        case NullArchiveRule::EmptyEntryFilename: {
            const std::u16string formatName = format == ArchiveFormat::Zip ? u"zip" : u"tar";
            messages::extractArchive::emptyEntryFilename(formatName, archivePath).raise();
        }
        case NullArchiveRule::DiskSpaceFull:
            messages::extractArchive::outputDiskFull().raise();
        case NullArchiveRule::CryptoUnsupported:
            messages::extractArchive::unsupportedEncryptionInLinux().raise();
        default:
            return;
    }
}

}  // namespace tessel::io::archive::core
