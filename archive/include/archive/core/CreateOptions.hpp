#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <archive/core/Progress.hpp>

namespace tessel::io::archive::core {

// How createArchiveWithOptions and compressgzToFile behave. Every field defaults to what
// createArchive and compressgz do.
struct CreateOptions {
    // Set: encrypt with this password and method, as the six-argument createArchive.
    std::optional<std::u16string> password;
    std::u16string encryption = u"aes256";

    // The compression of a "tar" archive: a libarchive filter name ("gzip", "bzip2", "xz",
    // "zstd", "lz4", "lzma", "lzip", "compress"); empty: none. archiveTypeFromName gives
    // it for an archive's name.
    std::u16string filter;
    // The compression level of zip (0 stores) or of the filter; -1: the default.
    int level = -1;

    // Report a failure of the final close (trailer, central directory, last buffered
    // block) as the format's disk-full or write error instead of ignoring it.
    bool reportFinalClose = false;
    // After the writer refuses an entry's header (warning issued), leave its content out
    // instead of writing it, which fails the call for a non-empty file.
    bool skipRefusedEntries = false;

    // Write the archive to this open descriptor (1: standard output) instead of the
    // archive path, which then only names it in messages. The descriptor stays open.
    int outputDescriptor = -1;

    ProgressCallback progress;
    std::uint64_t expectedBytes = 0;  // the total Progress reports, when the caller knows it
};

}  // namespace tessel::io::archive::core
