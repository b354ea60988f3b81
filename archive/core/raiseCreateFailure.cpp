#include <archive/core/raiseCreateFailure.hpp>

#include <archive/core/error/messages/createArchive.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <archive/core/translateCreateArchiveFailure.hpp>

namespace tessel::io::archive::core {

void raiseCreateFailure(const ArchiveException& failure, const std::u16string& archivePath,
                        ArchiveFormat format, const CreateOptions& options) {
    namespace messages = TESSEL::io::archive::createArchive;
    translateCreateArchiveFailure(failure, archivePath, format);
    switch (failure.rule) {
        case NullArchiveRule::DiskSpaceFull:
            messages::DiskSpaceFull(archivePath)
                .raise(format == ArchiveFormat::Zip ? "TESSEL:io:archive:zip:DiskSpaceFull"
                                                    : "TESSEL:io:archive:tar:DiskSpaceFull");
        case NullArchiveRule::UnableToSetFormat:
        case NullArchiveRule::UnableToSetFilter:
            messages::unknownArchiveType(archivePath).raise();
        case NullArchiveRule::InvalidCompressionLevel:
            messages::invalidCompression(
                options.filter.empty()
                    ? std::u16string(format == ArchiveFormat::Zip ? u"zip" : u"gzip")
                    : options.filter,
                std::to_string(options.level))
                .raise();
        case NullArchiveRule::CouldNotWriteFile:
            messages::writeError(archivePath).raise();
        case NullArchiveRule::Cancelled:
            messages::cancelled().raise();
        default:
            rethrowAsHostError(failure);
    }
}

}  // namespace tessel::io::archive::core
