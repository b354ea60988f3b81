#pragma once

#include <memory>

#include <archive/core/types/ArchiveFormat.hpp>
#include <host/HostPath.hpp>

struct archive;
struct archive_entry;

namespace tessel::io::archive::core {

class ReadDiskHandlePool;

// Owns one libarchive read-disk handle opened on one file or folder and yields the entry
// that describes it (metadata and source path). Symbolic links are followed. With
// ArchiveFormat::Gz an unreadable input is an error; otherwise it is a warning and the
// input is skipped.
class ArchiveObjectReader {
  public:
    // Throws CouldNotSetSymlinkMode or CouldNotOpenFile.
    ArchiveObjectReader(tessel::host::HostPath path, const ArchiveFormat& format);
    // The same, on a handle from pool, to which it goes back when the reader goes; the
    // pool outlives the reader.
    ArchiveObjectReader(tessel::host::HostPath path, const ArchiveFormat& format,
                        ReadDiskHandlePool& pool);
    ~ArchiveObjectReader();

    ArchiveObjectReader(const ArchiveObjectReader&) = delete;
    ArchiveObjectReader& operator=(const ArchiveObjectReader&) = delete;
    ArchiveObjectReader(ArchiveObjectReader&&) = delete;
    ArchiveObjectReader& operator=(ArchiveObjectReader&&) = delete;

    // The entry of the path itself; false when the input was skipped with a warning or
    // the end was reached. The entry belongs to this reader.
    bool nextHeader(::archive_entry** entry);

    // Whether the path is there at all. libarchive looks only when the first header is
    // read, so an input that is never read (one without an entry name) is asked this.
    bool exists() const;

    // The entry's pathname as a native path (empty for an empty pathname).
    static tessel::host::HostPath entryPathname(::archive_entry* entry);

  private:
    struct ReadHandleCloser {
        ReadDiskHandlePool* pool = nullptr;
        void operator()(::archive* handle) const noexcept;
    };

    void open();
    void freeHandleInsteadOfReuse() noexcept;

    std::unique_ptr<::archive, ReadHandleCloser> handle_;
    tessel::host::HostPath path_;
    ArchiveFormat format_;
};

}  // namespace tessel::io::archive::core
