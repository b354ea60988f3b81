#include <archive/core/objects/copyEntryData.hpp>

#include <archive/core/error/StatusChecks.hpp>
#include <host/TextConversion.hpp>

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
        // Named after the file being written: a hard link whose data cannot go where it
        // points (a symbolic link, say) has no other name to show.
        const char* pathname = archive_entry_pathname(entry);
        throwInternalError(NullArchiveRule::CouldNotWriteFile,
                           tessel::host::fromFileSystemText(pathname != nullptr ? pathname : ""));
    }
}

}  // namespace tessel::io::archive::core
