#pragma once

#include <archive_entry.h>

#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/objects/ArchiveDiskWriter.hpp>
#include <archive/core/objects/DataBlock.hpp>

namespace tessel::io::archive::core {

// Moves the current entry's data from reader to writer block by block. Any transfer
// that does not end with the reader's end of data raises CouldNotWriteFile: a read
// failure the reader did not classify counts as a failed write of that entry.
void copyEntryData(DataBlock& block, ArchiveDiskReader& reader, ArchiveDiskWriter& writer,
                   ::archive_entry* entry);

}  // namespace tessel::io::archive::core
