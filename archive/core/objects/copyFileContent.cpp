#include <archive/core/objects/copyFileContent.hpp>

#include <archive_entry.h>

#include <cstddef>
#include <fstream>

namespace tessel::io::archive::core {

void copyFileContent(CopyBuffer& buffer, ArchiveCreator& creator, ::archive_entry* entry,
                     std::streamsize chunkSize) {
    std::ifstream input;
    if (const char* source = archive_entry_sourcepath(entry); source != nullptr) {
        input.open(source, std::ios::binary);
    }
    // A negative size fails here as std::length_error; the storage is kept for the next file.
    buffer.bytes.reserve(static_cast<std::size_t>(chunkSize));
    if (buffer.bytes.size() < static_cast<std::size_t>(chunkSize)) {
        buffer.bytes.resize(static_cast<std::size_t>(chunkSize));
    }
    // An unopened or unreadable source (a folder) reads 0 bytes at once: no data.
    for (;;) {
        input.read(buffer.bytes.data(), chunkSize);
        buffer.lastRead = input.gcount();
        if (buffer.lastRead < 1) {
            break;
        }
        creator.writeData(buffer.bytes.data(), static_cast<std::size_t>(buffer.lastRead));
    }
    input.close();
}

}  // namespace tessel::io::archive::core
