#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <archive.h>
#include <archive_entry.h>

#include <archive/core/CompressedStreamCheck.hpp>
#include <archive/core/ExtractOptions.hpp>
#include <archive/core/objects/ArchiveFileSource.hpp>
#include <archive/core/objects/DataBlock.hpp>
#include <archive/core/objects/StoredTarNames.hpp>
#include <archive/core/objects/ZipDirectory.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

// What an operation reads an archive for, beyond what the caller's options say.
struct ReadPurpose {
    // Check a gzip-compressed archive against its trailers as it is read (the options'
    // gzipCheck, else makeGzipStreamCheck); judged when the end of the archive is reached.
    bool checkCompressedStream = false;
    // Ask the options' upstreamVerdict at the end of the archive, once the input is read
    // to its end.
    bool askUpstreamVerdict = false;
    // Keep the CRC-32 and length of each entry's data as read.
    bool trackDataCrc = false;
    // Read the options' inputDescriptor, when they name one, instead of the archive path.
    bool readInputDescriptor = true;
    // Offer the options' password to libarchive.
    bool offerPassword = true;
    // Refuse a zip file whose central directory and local headers disagree, before its
    // first entry is returned.
    bool checkZipAgreement = false;

    static constexpr ReadPurpose extraction() {
        return {.checkCompressedStream = true, .askUpstreamVerdict = true};
    }
    static constexpr ReadPurpose listing() { return {.checkZipAgreement = true}; }
    // A gzip file is checked whole against its trailer; an archive as it is extracted.
    static constexpr ReadPurpose testing(ArchiveFormat format) {
        return format == ArchiveFormat::Gz
                   ? ReadPurpose{.trackDataCrc = true}
                   : ReadPurpose{.checkCompressedStream = true, .checkZipAgreement = true};
    }
    // One input of a gunzip, checked whole against its trailer; only the first may come
    // from the descriptor, and a gzip file holds no encryption.
    static constexpr ReadPurpose gunzip(bool first) {
        return {.trackDataCrc = true, .readInputDescriptor = first, .offerPassword = false};
    }
};

// Reads an existing archive file (zip, tar, tar.gz or a single gzip stream) through one
// libarchive read handle: entry headers one at a time, entry data block by block.
// Constructed open; destruction closes and frees the handle.
class ArchiveDiskReader {
  public:
    // Reads with the options' password, from their descriptor or the archive path, and
    // with the checks they give as far as the purpose asks for them.
    ArchiveDiskReader(tessel::host::HostPath archivePath, ArchiveFormat format,
                      const ExtractOptions& options, ReadPurpose purpose);
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

    // For a single gzip file whose data was read whole (with trackDataCrc): compares the
    // data's CRC-32 and length with the last trailer, and when they differ (several
    // members, or damage) checks every member. Damage raises CorruptGzFile.
    void checkGzipTrailer();

    const tessel::host::HostPath& archivePath() const noexcept { return archivePath_; }
    ::archive* handle() const noexcept { return handle_.get(); }

    // Bytes of the archive read so far, and its size (0 when not a regular file).
    std::uint64_t bytesRead() const noexcept { return source_->bytesRead(); }
    std::uint64_t totalBytes() const noexcept { return source_->totalBytes(); }
    // CRC-32 and length of the current entry's data read so far (with trackDataCrc).
    std::uint32_t dataCrc() const noexcept { return dataCrc_; }
    std::uint64_t dataLength() const noexcept { return dataLength_; }

  private:
    struct HandleCloser {
        void operator()(::archive* handle) const noexcept {
            archive_read_close(handle);
            archive_read_free(handle);
        }
    };

    void enableFormats(ArchiveFormat format);
    void openFile(ArchiveFormat format, int inputDescriptor, const StreamCheckFactory& check);
    void readLegacyZipName(::archive_entry* entry);
    void restoreStoredZipName(::archive_entry* entry);
    void restoreStoredTarNames(::archive_entry* entry);
    void judgeCompressedStream();

    // The source outlives the handle, whose close still calls it.
    std::unique_ptr<ArchiveFileSource> source_;
    std::unique_ptr<::archive, HandleCloser> handle_;
    tessel::host::HostPath archivePath_;
    bool trackDataCrc_;
    std::function<std::optional<std::string>()> upstreamVerdict_;
    std::uint32_t dataCrc_ = 0;
    std::uint64_t dataLength_ = 0;
    bool checkZipAgreement_;
    // A seekable zip file's directory, read at its first entry; entries counted from there.
    std::optional<ZipDirectory> zipDirectory_;
    bool zipDirectoryRead_ = false;
    std::size_t zipEntryIndex_ = 0;
    // A compressed tar's stream decoded again, for its stored names.
    std::unique_ptr<DecodedStream> decodedTar_;
};

}  // namespace tessel::io::archive::core
