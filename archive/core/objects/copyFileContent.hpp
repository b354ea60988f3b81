#pragma once

#include <cstddef>
#include <functional>
#include <ios>

#include <archive/core/objects/ArchiveCreator.hpp>
#include <archive/core/objects/CopyBuffer.hpp>

struct archive_entry;

namespace tessel::io::archive::core {

// Streams the entry's source file into the archive, chunkSize bytes at a time. A source
// that cannot be opened or read (a folder, a file that vanished) gives no data and no
// report; write failures propagate from ArchiveCreator::writeData.
void copyFileContent(CopyBuffer& buffer, ArchiveCreator& creator, ::archive_entry* entry,
                     std::streamsize chunkSize);
// The same, calling afterChunk with each chunk's size once it is written; false from it
// stops the copy with Cancelled.
void copyFileContent(CopyBuffer& buffer, ArchiveCreator& creator, ::archive_entry* entry,
                     std::streamsize chunkSize, const std::function<bool(std::size_t)>& afterChunk);

}  // namespace tessel::io::archive::core
