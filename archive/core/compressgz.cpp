#include <archive_entry.h>

#include <memory>
#include <string>
#include <vector>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
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

HostPath outputPathFor(const HostPath& input, const std::u16string& outputFolder) {
    const HostPath folder =
        HostPath::fromText(outputFolder.empty() ? input.parent().native() : outputFolder);
    const HostPath name(gzipOutputName(input.native()));
    // A bare input name and no folder: the bare output name, resolved against the
    // current folder like the input was.
    return folder.empty() ? name : folder / name;
}

// Raises the gzip error for a failure; a failure while reading or writing one input
// removes that input's half-written output first. A full disk keeps it.
[[noreturn]] void translateFailure(const ArchiveException& failure, const HostPath& inputPath,
                                   const HostPath& outputPath, ArchiveCreator* current) {
    namespace gzip = TESSEL::io::archive::gzip;
    switch (failure.rule) {
        case NullArchiveRule::CouldNotOpenFile:
            gzip::javaOpenError(inputPath.native()).raise();
        case NullArchiveRule::InvalidEntryHeader:
        case NullArchiveRule::OpenEntryError:
            if (current != nullptr) {
                current->deleteArchiveFile();
            }
            gzip::javaOpenError(inputPath.native()).raise();
        case NullArchiveRule::CouldNotWriteFile:
            if (current != nullptr) {
                current->deleteArchiveFile();
            }
            gzip::javaOutputOpenError(outputPath.native()).raise();
        case NullArchiveRule::CouldNotOpenArchiveForWriting:
        case NullArchiveRule::AccessDenied:
            gzip::javaOutputOpenError(outputPath.native()).raise();
        default:
            rethrowAsHostError();
    }
}

}  // namespace

std::vector<std::u16string> compressgz(const std::vector<std::u16string>& files,
                                       const std::u16string& outputFolder) {
    std::vector<std::u16string> written;
    written.reserve(files.size());
    if (files.empty()) {
        return written;
    }
    // Refused before anything is written, rather than cut or altered on the way.
    for (std::size_t i = 0; i < files.size(); ++i) {
        tessel::host::requireFileSystemName(files[i], "files[" + std::to_string(i) + "]");
    }
    tessel::host::requireFileSystemName(outputFolder, "outputFolder");

    std::unique_ptr<CopyBuffer> buffer;
    std::unique_ptr<ArchiveObjectReader> reader;
    std::unique_ptr<ArchiveCreator> creator;
    HostPath inputPath;
    HostPath outputPath;
    try {
        buffer = std::make_unique<CopyBuffer>();
        for (const std::u16string& file : files) {
            inputPath = HostPath::fromText(file);
            // Gz makes the reader strict: an unreadable input is an error, not a warning.
            reader = std::make_unique<ArchiveObjectReader>(inputPath, ArchiveFormat::Gz);
            outputPath = outputPathFor(inputPath, outputFolder);
            // The next output is opened before the previous one is closed (by its
            // creator's destruction).
            creator = std::make_unique<ArchiveCreator>(outputPath, ArchiveFormat::Gz);
            ::archive_entry* entry = nullptr;
            if (!reader->nextHeader(&entry)) {
                continue;  // nothing to compress; the empty output is closed like the others
            }
            creator->writeHeader(entry);
            copyFileContent(*buffer, *creator, entry, kChunkSize);
            written.push_back(outputPath.native());
        }
        creator.reset();
        return written;
    } catch (const ArchiveException& failure) {
        translateFailure(failure, inputPath, outputPath, creator.get());
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
