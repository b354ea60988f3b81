#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace tessel::io::archive::core {

// Where a long call stands. Bytes are those of the archive read (extraction, listing,
// testing, gunzip) or of the input files read (creation, gzip).
struct Progress {
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0;  // 0 when unknown (standard input, no total given)
    // The entry being processed: its name as stored (extraction) or the entry name given
    // (creation); the input path for gzip and gunzip.
    std::u16string_view entry;
    bool entryStarted = false;  // true on the first call for an entry
};

// Called when an entry starts and after every block of data. Returning false asks the
// call to stop at the next block: it then ends with its direction's "cancelled" error,
// and the cleanup its options ask for is done. It runs on the calling thread.
using ProgressCallback = std::function<bool(const Progress&)>;

}  // namespace tessel::io::archive::core
