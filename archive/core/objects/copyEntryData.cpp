#include <archive/core/objects/copyEntryData.hpp>

#include <archive/core/error/StatusChecks.hpp>

namespace tessel::io::archive::core {

void copyEntryData(DataBlock& block, ArchiveDiskReader& reader, ArchiveDiskWriter& writer,
                   ::archive_entry* entry) {
    CopyHooks none;
    copyEntryData(block, reader, writer, entry, none);
}

void copyEntryData(DataBlock& block, ArchiveDiskReader& reader, ArchiveDiskWriter& writer,
                   ::archive_entry* entry, CopyHooks& hooks) {
    int status = ARCHIVE_OK;
    while (true) {
        status = reader.readDataBlock(&block.buffer, &block.size, &block.offset, entry);
        if (status != ARCHIVE_OK) {
            hooks.readFailed = status != ARCHIVE_EOF;
            break;
        }
        status = writer.writeDataBlock(block.buffer, block.size, block.offset);
        if (status != ARCHIVE_OK) {
            break;
        }
        if (hooks.afterBlock && !hooks.afterBlock()) {
            throwInternalError(NullArchiveRule::Cancelled);
        }
    }
    if (status != ARCHIVE_EOF) {
        throwInternalError(NullArchiveRule::CouldNotWriteFile);
    }
}

}  // namespace tessel::io::archive::core
