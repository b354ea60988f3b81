#pragma once

#include <functional>

#include <archive_entry.h>

#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/objects/ArchiveDiskWriter.hpp>
#include <archive/core/objects/DataBlock.hpp>

namespace tessel::io::archive::core {

// What a caller of the copy may add: a look after every block (false stops the copy with
// Cancelled), and, afterwards, whether a failed transfer failed on the reading side.
struct CopyHooks {
    std::function<bool()> afterBlock;
    bool readFailed = false;
};

// Moves the current entry's data from reader to writer block by block. Any transfer
// that does not end with the reader's end of data raises CouldNotWriteFile: a read
// failure the reader did not classify counts as a failed write of that entry.
void copyEntryData(DataBlock& block, ArchiveDiskReader& reader, ArchiveDiskWriter& writer,
                   ::archive_entry* entry);
void copyEntryData(DataBlock& block, ArchiveDiskReader& reader, ArchiveDiskWriter& writer,
                   ::archive_entry* entry, CopyHooks& hooks);

}  // namespace tessel::io::archive::core
