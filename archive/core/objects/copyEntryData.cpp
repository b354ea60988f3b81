#include <archive/core/objects/copyEntryData.hpp>

#include <archive/core/error/StatusChecks.hpp>

namespace tessel::io::archive::core {

void copyEntryData(DataBlock& block, ArchiveDiskReader& reader, ArchiveDiskWriter& writer,
                   ::archive_entry* entry) {
    int status = ARCHIVE_OK;
    while (true) {
        status = reader.readDataBlock(&block.buffer, &block.size, &block.offset, entry);
        if (status != ARCHIVE_OK) {
            break;
        }
        status = writer.writeDataBlock(block.buffer, block.size, block.offset);
        if (status != ARCHIVE_OK) {
            break;
        }
    }
    if (status != ARCHIVE_EOF) {
        throwInternalError(NullArchiveRule::CouldNotWriteFile);
    }
}

}  // namespace tessel::io::archive::core
