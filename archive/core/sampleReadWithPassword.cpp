#include <memory>
#include <string>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/ExtractFailures.hpp>
#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/objects/ArchiveDiskWriter.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <archive/core/objects/DataBlock.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

void sampleReadWithPassword(const std::u16string& archivePath, const std::u16string& outputFolder,
                            const std::u16string& format, const std::u16string& password) {
    const ArchiveFormat archiveFormat = archiveFormatFromText(format);
    try {
        ExtractOptions options;
        options.password = password;
        // A gzip-compressed archive is checked as extraction checks it; a single gzip file
        // is not, as only its first block is read.
        ReadPurpose purpose;
        purpose.checkCompressedStream = archiveFormat != ArchiveFormat::Gz;
        auto reader = std::make_unique<ArchiveDiskReader>(
            tessel::host::HostPath::fromText(archivePath), archiveFormat, options, purpose);
        auto writer =
            std::make_unique<ArchiveDiskWriter>(tessel::host::HostPath::fromText(outputFolder));
        DataBlock block;
        ::archive_entry* entry = nullptr;
        // Decryption starts with the first data block: that is where a missing or wrong
        // password shows. Only the first entry is tried.
        if (reader->readNextHeader(&entry) == 1) {
            reader->probeDataBlock(block, entry);
        }
    } catch (const ArchiveException& failure) {
        // Nothing was written, so there is no file to remove.
        raiseExtractFailure(failure, ExtractFailureTable::ExtractArchive,
                            {archivePath, archiveFormat, std::u16string()});
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
