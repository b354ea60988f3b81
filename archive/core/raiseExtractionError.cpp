#include <archive/core/raiseExtractionError.hpp>

#include <archive/core/error/messages/extractArchive.hpp>
#include <archive/core/error/messages/untar.hpp>
#include <archive/core/error/messages/unzip.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <archive/core/translateExtractFailure.hpp>
#include <host/HostError.hpp>

namespace tessel::io::archive::core {

namespace {

[[noreturn]] void raiseDamaged(const std::u16string& archivePath, ArchiveFormat format) {
    if (format == ArchiveFormat::Zip) {
        TESSEL::io::archive::unzip::invalidZipFile(archivePath).raise();
    }
    TESSEL::io::archive::untar::invalidTarFile(archivePath).raise();
}

}  // namespace

void raiseExtractionError(const ArchiveException& failure, const std::u16string& archivePath,
                          ArchiveFormat format, const ExtractionFailureContext& context) {
    namespace messages = TESSEL::io::archive;
    switch (failure.rule) {
        case NullArchiveRule::CouldNotOpenFile:
        case NullArchiveRule::InvalidEntryHeader:
            raiseDamaged(archivePath, format);
        case NullArchiveRule::CouldNotWriteFile:
            if (context.readFailed) {
                raiseDamaged(archivePath, format);
            }
            messages::extractArchive::writeError(failure.message).raise();
        case NullArchiveRule::EntryOutsideFolder:
            messages::extractArchive::entryOutsideFolder(context.entry, archivePath).raise();
        case NullArchiveRule::EntryThroughSymlink:
            messages::extractArchive::entryThroughSymlink(context.entry, archivePath).raise();
        case NullArchiveRule::LinkOutsideFolder:
            messages::extractArchive::linkOutsideFolder(context.entry, failure.message, archivePath)
                .raise();
        case NullArchiveRule::Cancelled:
            messages::extractArchive::cancelled().raise();
        default:
            raiseSharedExtractionError(failure.rule, archivePath, format);
            rethrowAsHostError(failure);
    }
}

}  // namespace tessel::io::archive::core
