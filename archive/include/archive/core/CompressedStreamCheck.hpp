#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <archive/core/api.hpp>

namespace tessel::io::archive::core {

// Checks what libarchive's gzip reader does not: each member's CRC-32 and length against
// its trailer. It is handed the archive's bytes in order, as they are read, and judges
// at the end. A stream that does not start like gzip passes unchecked.
class CompressedStreamCheck {
  public:
    virtual ~CompressedStreamCheck() = default;
    virtual void consume(const void* bytes, std::size_t size) = 0;
    // After the last byte: nothing when every member is sound, otherwise what is wrong
    // (zlib's words, such as "incorrect data check").
    virtual std::optional<std::string> finish() = 0;
};

// The library's check: inflates a second time, in the calling thread, with zlib.
TQARCHIVE_API std::unique_ptr<CompressedStreamCheck> makeGzipStreamCheck();

// Makes the check of one call; an embedder may run the library's check elsewhere (on
// another core) behind this interface.
using StreamCheckFactory = std::function<std::unique_ptr<CompressedStreamCheck>()>;

}  // namespace tessel::io::archive::core
