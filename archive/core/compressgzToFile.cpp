#include <archive_entry.h>

#include <memory>
#include <string>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/error/messages/createArchive.hpp>
#include <archive/core/error/messages/gzip.hpp>
#include <archive/core/objects/ArchiveCreator.hpp>
#include <archive/core/objects/ArchiveFormat.hpp>
#include <archive/core/objects/ArchiveObjectReader.hpp>
#include <archive/core/objects/CopyBuffer.hpp>
#include <archive/core/objects/copyFileContent.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

using tessel::host::HostPath;

namespace {

constexpr std::streamsize kChunkSize = 16384;

}  // namespace

// One file, as compressgz compresses each of its inputs, but to the path the caller
// chose, with the options' level, progress and final close; whatever fails, the output
// this call opened is removed.
std::u16string compressgzToFile(const std::u16string& file, const std::u16string& outputPath,
                                const CreateOptions& options) {
    namespace gzip = TESSEL::io::archive::gzip;
    const bool toDescriptor = options.outputDescriptor >= 0;
    tessel::host::requireFileSystemName(file, "file");
    if (!toDescriptor) {
        tessel::host::requireFileSystemName(outputPath, "outputPath");
    }
    const HostPath input = HostPath::fromText(file);
    std::unique_ptr<ArchiveCreator> creator;
    try {
        CopyBuffer buffer;
        // Gz makes the reader strict: an unreadable input is an error, not a warning.
        ArchiveObjectReader reader(input, ArchiveFormat::Gz);
        CreatorSetup setup;
        setup.level = options.level;
        setup.outputDescriptor = options.outputDescriptor;
        creator = std::make_unique<ArchiveCreator>(HostPath::fromText(outputPath),
                                                   ArchiveFormat::Gz, std::move(setup));
        std::uint64_t bytesDone = 0;
        if (options.progress &&
            !options.progress(Progress{bytesDone, options.expectedBytes, file, true})) {
            throwInternalError(NullArchiveRule::Cancelled);
        }
        ::archive_entry* entry = nullptr;
        if (reader.nextHeader(&entry)) {
            creator->writeHeader(entry);
            copyFileContent(buffer, *creator, entry, kChunkSize, [&](std::size_t count) {
                bytesDone += count;
                return !options.progress ||
                       options.progress(Progress{bytesDone, options.expectedBytes, file, false});
            });
        }
        if (options.reportFinalClose) {
            creator->finish();
        }
        creator.reset();
        return outputPath;
    } catch (const ArchiveException& failure) {
        if (creator && !toDescriptor) {
            creator->deleteArchiveFile();
        }
        switch (failure.rule) {
            case NullArchiveRule::CouldNotOpenFile:
            case NullArchiveRule::InvalidEntryHeader:
            case NullArchiveRule::OpenEntryError:
                gzip::javaOpenError(input.native()).raise();
            case NullArchiveRule::CouldNotWriteFile:
            case NullArchiveRule::CouldNotOpenArchiveForWriting:
            case NullArchiveRule::AccessDenied:
                gzip::javaOutputOpenError(outputPath).raise();
            case NullArchiveRule::DiskSpaceFull:
                gzip::outputDiskFull(outputPath).raise();
            case NullArchiveRule::InvalidCompressionLevel:
                TESSEL::io::archive::createArchive::invalidCompression(
                    std::u16string(u"gzip"), std::to_string(options.level))
                    .raise();
            case NullArchiveRule::Cancelled:
                TESSEL::io::archive::createArchive::cancelled().raise();
            default:
                rethrowAsHostError();
        }
    } catch (...) {
        if (creator && !toDescriptor) {
            creator->deleteArchiveFile();
        }
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
