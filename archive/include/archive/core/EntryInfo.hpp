#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tessel::io::archive::core {

enum class EntryType {
    File,
    Folder,
    SymbolicLink,
    HardLink,
    CharacterDevice,
    BlockDevice,
    Fifo,
    Socket,
    Unknown
};

// One entry of an archive as listing and testing see it.
struct EntryInfo {
    // The name as stored; a zip name without the UTF-8 flag that is not UTF-8 is read as
    // CP437; other bytes that are not UTF-8 are escaped (U+DC80-U+DCFF). Folders end in "/".
    std::u16string name;
    EntryType type = EntryType::Unknown;
    std::optional<std::uint64_t> size;
    // Recorded by zip only.
    std::optional<std::uint64_t> compressedSize;
    // Seconds since 1970-01-01 UTC.
    std::optional<std::int64_t> modified;
    bool encrypted = false;
    // A symbolic link's target, or a hard link's.
    std::u16string linkTarget;
    std::uint32_t permissions = 0;  // mode & 07777
};

}  // namespace tessel::io::archive::core
