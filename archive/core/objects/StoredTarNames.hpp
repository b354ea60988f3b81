#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <archive.h>

#include <archive/core/objects/ReadAt.hpp>

namespace tessel::io::archive::core {

// The path and link path of a tar entry's pax header, as stored. libarchive's own reading
// brings every UTF-8 pax name to Unicode composed form, so two names that differ only in
// their composition would read, and extract, as one.
struct PaxNames {
    std::optional<std::string> path;
    std::optional<std::string> linkPath;
};

// The pax names of the entry whose headers start at position of the tar stream; nothing
// when they cannot be read there.
std::optional<PaxNames> readPaxNames(const ReadAt& readAt, std::uint64_t position);

// The decompressed bytes of a compressed file, decoded a second time by libarchive from
// the file's bytes, forward only: what lies before the last bytes given is gone.
class DecodedStream {
  public:
    explicit DecodedStream(ReadAt file);
    ~DecodedStream();
    DecodedStream(const DecodedStream&) = delete;
    DecodedStream& operator=(const DecodedStream&) = delete;

    bool readAt(std::uint64_t offset, void* into, std::size_t size);

  private:
    static la_ssize_t readCallback(::archive* handle, void* self, const void** buffer);
    bool open();

    struct HandleCloser {
        void operator()(::archive* handle) const noexcept { archive_read_free(handle); }
    };

    ReadAt file_;
    std::string block_;
    std::uint64_t fileAt_ = 0;
    std::unique_ptr<::archive, HandleCloser> handle_;
    std::uint64_t position_ = 0;
    bool failed_ = false;
};

}  // namespace tessel::io::archive::core
