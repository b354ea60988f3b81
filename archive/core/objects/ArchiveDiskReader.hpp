#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <archive.h>
#include <archive_entry.h>

#include <archive/core/objects/ArchiveFormat.hpp>
#include <archive/core/objects/DataBlock.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

// Reads an existing archive file (zip, tar, tar.gz or a single gzip stream) through one
// libarchive read handle: entry headers one at a time, entry data block by block.
// Constructed open; destruction closes and frees the handle.
class ArchiveDiskReader {
  public:
    ArchiveDiskReader(tessel::host::HostPath archivePath, ArchiveFormat format,
                      const std::u16string& password);
    ~ArchiveDiskReader();
    ArchiveDiskReader(const ArchiveDiskReader&) = delete;
    ArchiveDiskReader& operator=(const ArchiveDiskReader&) = delete;
    ArchiveDiskReader(ArchiveDiskReader&&) = delete;
    ArchiveDiskReader& operator=(ArchiveDiskReader&&) = delete;

    // 1: an entry was read into *entry; 2: end of the archive.
    std::int32_t readNextHeader(::archive_entry** entry);

    // libarchive's status: 0 a block, 1 end of the entry's data, negative a failure not
    // caused by the passphrase (those raise). entry is used only in error reports.
    std::int32_t readDataBlock(const void** buffer, std::size_t* size, la_int64_t* offset,
                               ::archive_entry* entry);

    // Reads one block and drops it: where a missing or wrong passphrase shows.
    void probeDataBlock(DataBlock& block, ::archive_entry* entry);

    const tessel::host::HostPath& archivePath() const noexcept { return archivePath_; }

  private:
    struct HandleCloser {
        void operator()(::archive* handle) const noexcept {
            archive_read_close(handle);
            archive_read_free(handle);
        }
    };

    void enableFormats(ArchiveFormat format);
    void openFile(ArchiveFormat format);

    std::unique_ptr<::archive, HandleCloser> handle_;
    tessel::host::HostPath archivePath_;
};

}  // namespace tessel::io::archive::core
