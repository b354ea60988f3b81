#pragma once

#include <ios>
#include <vector>

namespace tessel::io::archive::core {

// The read area file content moves through: allocated once per call and reused for
// every input, so copying many files costs one allocation.
struct CopyBuffer {
    std::vector<char> bytes;
    // Bytes obtained by the last read (0 at end of file or when the source is unreadable).
    std::streamsize lastRead = 0;
};

}  // namespace tessel::io::archive::core
