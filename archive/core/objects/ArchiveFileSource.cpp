#include <archive/core/objects/ArchiveFileSource.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace tessel::io::archive::core {

namespace {

// What libarchive's own file reader uses for regular files; larger blocks gain nothing.
constexpr std::size_t kBlockSize = 64 * 1024;

}  // namespace

ArchiveFileSource::ArchiveFileSource(std::string path, int descriptor)
    : path_(std::move(path)), fd_(descriptor), ownsFd_(descriptor < 0) {}

ArchiveFileSource::~ArchiveFileSource() {
    if (ownsFd_ && fd_ >= 0) {
        ::close(fd_);
    }
}

int ArchiveFileSource::open(::archive* handle) {
    archive_read_set_open_callback(handle, &ArchiveFileSource::openCallback);
    archive_read_set_read_callback(handle, &ArchiveFileSource::readCallback);
    archive_read_set_skip_callback(handle, &ArchiveFileSource::skipCallback);
    archive_read_set_seek_callback(handle, &ArchiveFileSource::seekCallback);
    archive_read_set_close_callback(handle, &ArchiveFileSource::closeCallback);
    archive_read_set_callback_data(handle, this);
    return archive_read_open1(handle);
}

int ArchiveFileSource::openCallback(::archive* handle, void* self) {
    auto& source = *static_cast<ArchiveFileSource*>(self);
    if (source.ownsFd_) {
        source.fd_ = ::open(source.path_.c_str(), O_RDONLY | O_CLOEXEC);
        if (source.fd_ < 0) {
            archive_set_error(handle, errno, "Failed to open '%s'", source.path_.c_str());
            return ARCHIVE_FATAL;
        }
    }
    struct stat status {};
    if (::fstat(source.fd_, &status) != 0) {
        archive_set_error(handle, errno, "Can't stat '%s'", source.path_.c_str());
        return ARCHIVE_FATAL;
    }
    source.seekable_ = S_ISREG(status.st_mode);
    source.totalBytes_ = source.seekable_ ? static_cast<std::uint64_t>(status.st_size) : 0;
    for (Block& block : source.blocks_) {
        block.bytes.resize(kBlockSize);
    }
    return ARCHIVE_OK;
}

ArchiveFileSource::Block& ArchiveFileSource::nextBlock() {
    current_ = (current_ + 1) % blocks_.size();
    Block& block = blocks_[current_];
    block.at = position_;
    block.size = 0;
    return block;
}

la_ssize_t ArchiveFileSource::readBlock(::archive* handle) {
    Block& block = nextBlock();
    for (;;) {
        const ssize_t got = ::read(fd_, block.bytes.data(), block.bytes.size());
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            archive_set_error(handle, errno, "Error reading '%s'", path_.c_str());
            return ARCHIVE_FATAL;
        }
        block.size = static_cast<std::size_t>(got);
        position_ += block.size;
        saw(block.bytes.data(), block.size);
        return got;
    }
}

bool ArchiveFileSource::readRecent(std::uint64_t offset, void* into, std::size_t size) const {
    auto* bytes = static_cast<unsigned char*>(into);
    while (size > 0) {
        const Block* holding = nullptr;
        for (const Block& block : blocks_) {
            if (block.size > 0 && block.at <= offset && offset - block.at < block.size) {
                holding = &block;
            }
        }
        if (holding == nullptr) {
            return false;
        }
        const std::size_t from = static_cast<std::size_t>(offset - holding->at);
        const std::size_t count = std::min(size, holding->size - from);
        std::memcpy(bytes, holding->bytes.data() + from, count);
        bytes += count;
        size -= count;
        offset += count;
    }
    return true;
}

la_ssize_t ArchiveFileSource::readCallback(::archive* handle, void* self, const void** buffer) {
    auto& source = *static_cast<ArchiveFileSource*>(self);
    const la_ssize_t got = source.readBlock(handle);
    *buffer = source.blocks_[source.current_].bytes.data();
    return got;
}

la_int64_t ArchiveFileSource::skipCallback(::archive* handle, void* self, la_int64_t request) {
    auto& source = *static_cast<ArchiveFileSource*>(self);
    // While a check watches, every byte passes through it; libarchive then skips by
    // reading. Otherwise a regular file is skipped by seeking.
    if (source.check_ || !source.seekable_) {
        return 0;
    }
    const off_t from = ::lseek(source.fd_, 0, SEEK_CUR);
    const off_t to = from < 0 ? from : ::lseek(source.fd_, request, SEEK_CUR);
    if (to < 0) {
        archive_set_error(handle, errno, "Error seeking in '%s'", source.path_.c_str());
        return ARCHIVE_FATAL;
    }
    source.bytesRead_ += static_cast<std::uint64_t>(to - from);
    source.position_ += static_cast<std::uint64_t>(to - from);
    return to - from;
}

la_int64_t ArchiveFileSource::seekCallback(::archive* handle, void* self, la_int64_t offset,
                                           int whence) {
    auto& source = *static_cast<ArchiveFileSource*>(self);
    // Only the formats that read a file out of order seek (zip's central directory), and
    // no compressed stream is read that way, so nothing would be left for a check to see.
    source.check_.reset();
    const off_t at = source.seekable_ ? ::lseek(source.fd_, offset, whence) : -1;
    if (at < 0) {
        archive_set_error(handle, source.seekable_ ? errno : ESPIPE, "Error seeking in '%s'",
                          source.path_.c_str());
        return ARCHIVE_FATAL;
    }
    source.bytesRead_ = static_cast<std::uint64_t>(at);
    source.position_ = static_cast<std::uint64_t>(at);
    return at;
}

bool ArchiveFileSource::readAt(std::uint64_t offset, void* into, std::size_t size) const {
    if (!seekable_ || fd_ < 0) {
        return false;
    }
    auto* bytes = static_cast<unsigned char*>(into);
    while (size > 0) {
        const ssize_t got = ::pread(fd_, bytes, size, static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return false;
        }
        bytes += got;
        size -= static_cast<std::size_t>(got);
        offset += static_cast<std::uint64_t>(got);
    }
    return true;
}

int ArchiveFileSource::closeCallback(::archive*, void* self) {
    auto& source = *static_cast<ArchiveFileSource*>(self);
    if (source.ownsFd_ && source.fd_ >= 0) {
        ::close(source.fd_);
        source.fd_ = -1;
    }
    return ARCHIVE_OK;
}

void ArchiveFileSource::saw(const unsigned char* bytes, std::size_t size) {
    bytesRead_ += size;
    if (check_ && size > 0) {
        check_->consume(bytes, size);
    }
    constexpr std::size_t kTail = 8;
    if (size >= kTail) {
        tail_.assign(reinterpret_cast<const char*>(bytes + size - kTail), kTail);
    } else {
        tail_.append(reinterpret_cast<const char*>(bytes), size);
        if (tail_.size() > kTail) {
            tail_.erase(0, tail_.size() - kTail);
        }
    }
}

void ArchiveFileSource::drain() {
    if (fd_ < 0) {
        return;
    }
    for (;;) {
        Block& block = nextBlock();
        const ssize_t got = ::read(fd_, block.bytes.data(), block.bytes.size());
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return;
        }
        block.size = static_cast<std::size_t>(got);
        position_ += block.size;
        saw(block.bytes.data(), block.size);
    }
}

std::optional<std::string> ArchiveFileSource::finishCheck() {
    if (!check_) {
        return std::nullopt;
    }
    // The reader stops at the archive's end marker; the rest of the stream (padding, the
    // last trailer) is still the compressed stream and must be checked too.
    drain();
    std::optional<std::string> verdict = check_->finish();
    check_.reset();
    return verdict;
}

}  // namespace tessel::io::archive::core

namespace tessel::io::archive::core {

void ArchiveFileSource::rereadInto(CompressedStreamCheck& check) {
    std::vector<unsigned char> buffer(kBlockSize);
    off_t at = 0;
    for (;;) {
        const ssize_t got = ::pread(fd_, buffer.data(), buffer.size(), at);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return;
        }
        check.consume(buffer.data(), static_cast<std::size_t>(got));
        at += got;
    }
}

}  // namespace tessel::io::archive::core
