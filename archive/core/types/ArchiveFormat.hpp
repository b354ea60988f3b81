#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tessel::io::archive::core {

// Selects the write format (creation), the read formats (extraction) and the identifier
// group failures are reported under.
enum class ArchiveFormat : std::int32_t {
    All = 0,
    Invalid = 1,
    Zip = 2,
    Tar = 3,
    Gz = 4,
    Tgz = 5,
};

// The zip format's name field holds this many bytes; libarchive does not check it.
inline constexpr std::size_t kZipEntryNameLimit = 65535;

// "zip", "tar", "gz", "tgz", "all" compared exactly; anything else is Invalid.
ArchiveFormat archiveFormatFromText(const std::u16string& text);

}  // namespace tessel::io::archive::core
