#include <archive/core/objects/ArchiveObjectReader.hpp>

#include <archive.h>
#include <archive_entry.h>

#include <new>
#include <stdexcept>

#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/log/LogLevel.hpp>
#include <archive/core/log/LogRecord.hpp>
#include <archive/core/objects/ReadDiskHandlePool.hpp>
#include <archive/core/objects/checkReadable.hpp>
#include <host/FileSystemError.hpp>

namespace tessel::io::archive::core {

using tessel::host::HostPath;

namespace {

::archive* newReadDiskHandle() {
    ::archive* handle = archive_read_disk_new();
    if (handle == nullptr) {
        throw std::bad_alloc();
    }
    return handle;
}

}  // namespace

bool ArchiveObjectReader::exists() const {
    try {
        return path_.exists();
    } catch (const tessel::host::FileSystemError&) {
        return true;  // there, but its status cannot be read: nextHeader tells that apart
    }
}

void ArchiveObjectReader::ReadHandleCloser::operator()(::archive* handle) const noexcept {
    archive_read_close(handle);
    if (pool != nullptr) {
        pool->give(handle);
    } else {
        archive_read_free(handle);
    }
}

ArchiveObjectReader::ArchiveObjectReader(HostPath path, const ArchiveFormat& format)
    : handle_(newReadDiskHandle(), ReadHandleCloser{}), path_(std::move(path)), format_(format) {
    open();
}

ArchiveObjectReader::ArchiveObjectReader(HostPath path, const ArchiveFormat& format,
                                         ReadDiskHandlePool& pool)
    : handle_(pool.take(), ReadHandleCloser{&pool}), path_(std::move(path)), format_(format) {
    open();
}

void ArchiveObjectReader::open() {
    // Follow links so that the entry describes the file the user meant, not the link.
    if (archive_read_disk_set_symlink_logical(handle_.get()) != ARCHIVE_OK) {
        freeHandleInsteadOfReuse();
        throwArchiveError(NullArchiveRule::CouldNotSetSymlinkMode, handle_.get());
    }
    if (archive_read_disk_open(handle_.get(), path_.access().c_str()) != ARCHIVE_OK) {
        freeHandleInsteadOfReuse();
        throwArchiveError(NullArchiveRule::CouldNotOpenFile, handle_.get());
    }
    ARCHIVE_LOG(LogOpen) << "Opened file on disk for reading-->" << path_;
}

ArchiveObjectReader::~ArchiveObjectReader() = default;

void ArchiveObjectReader::freeHandleInsteadOfReuse() noexcept {
    // A handle that failed may stay in libarchive's fatal state, in which it cannot be
    // opened again: it is freed rather than kept for the next input.
    handle_.get_deleter().pool = nullptr;
}

bool ArchiveObjectReader::nextHeader(::archive_entry** entry) {
    // Checked on every call: the file may have changed since the reader was opened.
    if (const auto rule = checkReadable(path_)) {
        if (format_ == ArchiveFormat::Gz || *rule != NullArchiveRule::OpenEntryError) {
            throwArchiveErrorWithMessage(*rule, path_.native());
        }
        warnForPath(NullArchiveRule::OpenEntryError, path_, format_);
        return false;
    }
    const int status = archive_read_next_header(handle_.get(), entry);
    if (status == ARCHIVE_OK) {
        ARCHIVE_LOG(LogStep) << "Read entry from file on disk-->" << entryPathname(*entry);
        return true;
    }
    if (status == ARCHIVE_EOF) {
        ARCHIVE_LOG(LogStep) << "Reached end of file on disk-->" << path_;
        return false;
    }
    freeHandleInsteadOfReuse();
    if (format_ == ArchiveFormat::Gz) {
        throwArchiveError(NullArchiveRule::InvalidEntryHeader, handle_.get());
    }
    warnForPath(NullArchiveRule::InvalidEntryHeader, path_, format_);
    return false;
}

HostPath ArchiveObjectReader::entryPathname(::archive_entry* entry) {
    const char* pathname = archive_entry_pathname(entry);
    if (pathname == nullptr) {
        throw std::logic_error("archive entry without a pathname");
    }
    if (*pathname == '\0') {
        return HostPath();
    }
    return HostPath::fromFileSystem(pathname).nativeForm();
}

}  // namespace tessel::io::archive::core
