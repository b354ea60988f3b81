#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <archive/core/objects/ReadAt.hpp>

namespace tessel::io::archive::core {

// One file of a zip as its central directory records it, checked against its local header.
struct ZipDirectoryEntry {
    std::string name;   // the stored bytes (or those of an Info-ZIP Unicode path field)
    bool utf8 = false;  // flagged (or given) as UTF-8
    std::uint64_t localOffset = 0;
};

struct ZipDirectory {
    // In the order of their local headers, the order libarchive's seeking reader yields them.
    std::vector<ZipDirectoryEntry> entries;
    // Set when the directory cannot be read or a local header tells another story.
    std::optional<std::string> damage;
};

// Reads a zip file's central directory and compares every record with the local header it
// points at (name, method and, where the local header holds them, CRC and sizes): two
// readers, one by each, must see the same files. Every length is checked against the file.
// A file without an end of central directory record has no entries and no damage.
ZipDirectory readZipDirectory(const ReadAt& readAt, std::uint64_t fileSize);

}  // namespace tessel::io::archive::core
