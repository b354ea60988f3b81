#include <archive/core/translateCreateArchiveFailure.hpp>

#include <archive/core/error/messages/createArchive.hpp>
#include <archive/core/error/messages/tar.hpp>
#include <archive/core/error/messages/zip.hpp>

namespace tessel::io::archive::core {

namespace messages = TESSEL::io::archive;

namespace {

bool isTarFamily(ArchiveFormat format) {
    return format == ArchiveFormat::Tar || format == ArchiveFormat::Tgz;
}

}  // namespace

void translateCreateArchiveFailure(const ArchiveException& failure,
                                   const std::u16string& archivePath, ArchiveFormat format) {
    switch (failure.rule) {
        case NullArchiveRule::CouldNotOpenArchiveForWriting:
        case NullArchiveRule::AccessDenied:
            if (format == ArchiveFormat::Zip) {
                messages::zip::openError(archivePath).raise();
            }
            if (isTarFamily(format)) {
                messages::tar::openError(archivePath).raise();
            }
            return;
        case NullArchiveRule::DiskSpaceFull:
            // One message, reported under the identifier of the archive's family.
            if (format == ArchiveFormat::Zip) {
                messages::createArchive::DiskSpaceFull(archivePath)
                    .raise("TESSEL:io:archive:zip:DiskSpaceFull");
            }
            if (isTarFamily(format)) {
                messages::createArchive::DiskSpaceFull(archivePath)
                    .raise("TESSEL:io:archive:tar:DiskSpaceFull");
            }
            return;
        case NullArchiveRule::EmptyPassphrase:
            if (format == ArchiveFormat::Zip) {
                messages::createArchive::emptyPassword().raise();
            }
            if (format == ArchiveFormat::Invalid) {
                messages::createArchive::invalidArchiveFormat().raise();
            }
            return;
        case NullArchiveRule::EncryptionNotSupported:
            if (format == ArchiveFormat::Zip) {
                messages::createArchive::invalidEncryptionInLinux().raise();
            }
            if (format == ArchiveFormat::Invalid) {
                messages::createArchive::invalidArchiveFormat().raise();
            }
            return;
        case NullArchiveRule::CryptoUnsupported:
            if (format == ArchiveFormat::Zip) {
                messages::createArchive::unsupportedEncryptionInLinux().raise();
            }
            return;
        default:
            return;
    }
}

}  // namespace tessel::io::archive::core
