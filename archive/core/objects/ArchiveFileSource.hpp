#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <archive.h>

#include <archive/core/CompressedStreamCheck.hpp>

namespace tessel::io::archive::core {

// Feeds libarchive the bytes of an archive file (or of a descriptor the caller owns), as
// libarchive's own file reader does, and shows every byte handed over to a check of the
// compressed stream: the check sees exactly what the reader decodes, in the same pass.
// It also counts the bytes read, for progress.
class ArchiveFileSource {
  public:
    // path: opened when libarchive opens the source; with descriptor >= 0 the descriptor
    // is read instead (and left open), and path only names it in messages.
    ArchiveFileSource(std::string path, int descriptor);
    ~ArchiveFileSource();
    ArchiveFileSource(const ArchiveFileSource&) = delete;
    ArchiveFileSource& operator=(const ArchiveFileSource&) = delete;

    // Installs the callbacks on an unopened read handle and opens it.
    int open(::archive* handle);

    void setCheck(std::unique_ptr<CompressedStreamCheck> check) { check_ = std::move(check); }
    bool hasCheck() const noexcept { return check_ != nullptr; }
    // Reads what libarchive left unread into the check and returns its verdict.
    std::optional<std::string> finishCheck();
    // Reads what libarchive left unread, so that tail() is the end of the input.
    void drain();
    // The last bytes read (at most 8: a gzip trailer).
    const std::string& tail() const noexcept { return tail_; }
    // Whether the input can be read again from its start (a regular file).
    bool rereadable() const noexcept { return seekable_; }
    // Feeds the whole input, from its start, to a check (a rereadable input only).
    void rereadInto(CompressedStreamCheck& check);
    // Reads exactly size bytes at offset without moving libarchive's position (a rereadable
    // input only); false when they are not all there.
    bool readAt(std::uint64_t offset, void* into, std::size_t size) const;
    // The same from the last blocks handed to libarchive, which a pipe cannot give again;
    // false when they are not all among them.
    bool readRecent(std::uint64_t offset, void* into, std::size_t size) const;

    std::uint64_t bytesRead() const noexcept { return bytesRead_; }
    // The file's size when it is a regular file, else 0.
    std::uint64_t totalBytes() const noexcept { return totalBytes_; }

  private:
    static int openCallback(::archive* handle, void* self);
    static la_ssize_t readCallback(::archive* handle, void* self, const void** buffer);
    static la_int64_t skipCallback(::archive* handle, void* self, la_int64_t request);
    static la_int64_t seekCallback(::archive* handle, void* self, la_int64_t offset, int whence);
    static int closeCallback(::archive* handle, void* self);

    la_ssize_t readBlock(::archive* handle);
    // The next block of the ring, its bytes read at the input's current position.
    struct Block {
        std::vector<unsigned char> bytes;
        std::uint64_t at = 0;
        std::size_t size = 0;
    };
    Block& nextBlock();
    void saw(const unsigned char* bytes, std::size_t size);

    std::string path_;
    int fd_ = -1;
    bool ownsFd_;
    bool seekable_ = false;
    // libarchive keeps only the last block it was given; the ones before stay readable.
    std::array<Block, 4> blocks_;
    std::size_t current_ = 0;
    std::uint64_t position_ = 0;
    std::unique_ptr<CompressedStreamCheck> check_;
    std::uint64_t bytesRead_ = 0;
    std::uint64_t totalBytes_ = 0;
    std::string tail_;
};

}  // namespace tessel::io::archive::core
