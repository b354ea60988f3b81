#include <memory>
#include <string>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/objects/ArchiveDiskWriter.hpp>
#include <archive/core/objects/ArchiveFormat.hpp>
#include <archive/core/objects/DataBlock.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <archive/core/translateExtractFailure.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

void sampleReadWithPassword(const std::u16string& archivePath, const std::u16string& outputFolder,
                            const std::u16string& format, const std::u16string& password) {
    const ArchiveFormat archiveFormat = archiveFormatFromText(format);
    try {
        auto reader = std::make_unique<ArchiveDiskReader>(
            tessel::host::HostPath::fromText(archivePath), archiveFormat, password);
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
        // Nothing was written, so there is no writer whose file would need removing.
        translateExtractFailure(failure, archivePath, nullptr, archiveFormat);
        rethrowAsHostError();
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
