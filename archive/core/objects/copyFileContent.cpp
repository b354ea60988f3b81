#include <archive/core/objects/copyFileContent.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <archive_entry.h>

#include <cerrno>
#include <cstddef>

#include <archive/core/error/StatusChecks.hpp>

namespace tessel::io::archive::core {

namespace {

// The source file, read straight from its descriptor: a stream object per file is
// measurable when thousands of small files are packed.
class SourceFile {
  public:
    explicit SourceFile(const char* path)
        : fd_(path == nullptr ? -1 : ::open(path, O_RDONLY | O_CLOEXEC)) {}
    ~SourceFile() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;

    // Up to size bytes, as one read gives them; 0 at the end, and for a source that
    // cannot be opened or read.
    std::streamsize read(char* into, std::size_t size) {
        if (fd_ < 0) {
            return 0;
        }
        for (;;) {
            const ssize_t n = ::read(fd_, into, size);
            if (n < 0 && errno == EINTR) {
                continue;
            }
            return n < 0 ? 0 : static_cast<std::streamsize>(n);
        }
    }

  private:
    int fd_;
};

}  // namespace

void copyFileContent(CopyBuffer& buffer, ArchiveCreator& creator, ::archive_entry* entry,
                     std::streamsize chunkSize) {
    copyFileContent(buffer, creator, entry, chunkSize, {});
}

void copyFileContent(CopyBuffer& buffer, ArchiveCreator& creator, ::archive_entry* entry,
                     std::streamsize chunkSize,
                     const std::function<bool(std::size_t)>& afterChunk) {
    SourceFile input(archive_entry_sourcepath(entry));
    // A negative size fails here as std::length_error; the storage is kept for the next file.
    buffer.bytes.reserve(static_cast<std::size_t>(chunkSize));
    if (buffer.bytes.size() < static_cast<std::size_t>(chunkSize)) {
        buffer.bytes.resize(static_cast<std::size_t>(chunkSize));
    }
    // An unopened or unreadable source (a folder) reads 0 bytes at once: no data.
    for (;;) {
        buffer.lastRead = input.read(buffer.bytes.data(), static_cast<std::size_t>(chunkSize));
        if (buffer.lastRead < 1) {
            break;
        }
        const auto count = static_cast<std::size_t>(buffer.lastRead);
        creator.writeData(buffer.bytes.data(), count);
        if (afterChunk && !afterChunk(count)) {
            throwInternalError(NullArchiveRule::Cancelled);
        }
    }
}

}  // namespace tessel::io::archive::core
