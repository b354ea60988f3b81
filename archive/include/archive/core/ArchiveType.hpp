#pragma once

#include <string>

namespace tessel::io::archive::core {

// What an archive's name says it is: the format text of the entry points ("zip", "tar",
// "tgz", "gz") and, for tar, the compression filter of CreateOptions ("" when none or
// when the format text says it, as "tgz" does).
struct ArchiveType {
    std::u16string format;
    std::u16string filter;
};

// archiveTypeFromName (archivecore.hpp) reads it from the name's extension, compared without regard
// to ASCII case: .zip; .tar; .tgz and .tar.gz; .tbz, .tbz2 and .tar.bz2; .txz and .tar.xz; .tzst
// and .tar.zst; .tar.lz4; .tar.lzma; .tlz and .tar.lz (lzip); .taz and .tar.Z; .gz (a single gzip
// file). Nothing for any other name.

}  // namespace tessel::io::archive::core
