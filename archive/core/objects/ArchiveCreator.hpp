#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <archive/core/objects/ArchiveFormat.hpp>
#include <host/HostPath.hpp>

struct archive;
struct archive_entry;

namespace tessel::io::archive::core {

// What a creator does beyond its format.
struct CreatorSetup {
    // A libarchive compression filter added to a tar format ("xz", "zstd", ...); empty: none.
    std::string filter;
    // The compression level of zip or of the filter; -1: libarchive's default.
    int level = -1;
    // Write to this descriptor (left open) instead of opening the archive path.
    int outputDescriptor = -1;
    // Write one entry's bytes as they are, under the filter alone (libarchive's raw
    // format), whatever the format says; the format still chooses the errors' family.
    bool rawStream = false;
};

// Owns one libarchive write handle opened on a new archive file: chooses format and
// filter, optionally a passphrase and the zip encryption method, writes entry headers
// and data, and keeps the names of the entries written. Destroying it finishes the
// archive (trailer or central directory) and closes the file.
class ArchiveCreator {
  public:
    // Failures throw ArchiveException: UnableToSetFormat, UnableToSetFilter, AccessDenied,
    // CouldNotOpenArchiveForWriting.
    ArchiveCreator(tessel::host::HostPath archivePath, ArchiveFormat format);
    ArchiveCreator(tessel::host::HostPath archivePath, ArchiveFormat format, CreatorSetup setup);
    // Also EmptyPassphrase, EncryptionNotSupported, CryptoUnsupported and
    // CouldNotSetWriteOptions (the zip option is refused by every other format).
    ArchiveCreator(tessel::host::HostPath archivePath, const std::u16string& password,
                   const std::u16string& encryptionMethod, ArchiveFormat format);
    ArchiveCreator(tessel::host::HostPath archivePath, const std::u16string& password,
                   const std::u16string& encryptionMethod, ArchiveFormat format,
                   CreatorSetup setup);
    ~ArchiveCreator();

    ArchiveCreator(const ArchiveCreator&) = delete;
    ArchiveCreator& operator=(const ArchiveCreator&) = delete;
    ArchiveCreator(ArchiveCreator&&) = delete;
    ArchiveCreator& operator=(ArchiveCreator&&) = delete;

    // A refused header is a warning (openEntryError), never an exception.
    bool writeHeader(::archive_entry* entry);
    // Which header warnings reach the caller's user.
    enum class HeaderWarnings {
        Issued,        // every status but OK: writeHeader
        RefusalsOnly,  // a header written with a warning is only logged
    };
    // libarchive's status: ARCHIVE_OK or ARCHIVE_WARN when the header was written.
    int writeEntryHeader(::archive_entry* entry, HeaderWarnings warnings);
    // Throws DiskSpaceFull (errno 28 with "Write error") or CouldNotWriteFile.
    void writeData(const void* bytes, std::size_t count);
    void addEntryName(::archive_entry* entry);
    const std::vector<std::u16string>& getEntryNames() const noexcept { return entryNames_; }
    // Closes the archive and removes its file; a failed close keeps the file. Afterwards
    // the creator must only be destroyed.
    void deleteArchiveFile();
    // Finishes the archive (trailer, central directory, last buffered block) and reports
    // a failure: DiskSpaceFull for a full disk, CouldNotWriteFile otherwise. Afterwards the
    // creator must only be destroyed.
    void finish();

    const tessel::host::HostPath& archivePath() const noexcept { return archivePath_; }

  private:
    struct WriteHandleCloser {
        void operator()(::archive* handle) const noexcept;
    };

    int writeHeaderAsStored(::archive_entry* entry, const char* pathname);
    void setFormat(ArchiveFormat format);
    void applySetup();
    void openArchiveFile();

    std::unique_ptr<::archive, WriteHandleCloser> handle_;
    tessel::host::HostPath archivePath_;
    std::vector<std::u16string> entryNames_;
    ArchiveFormat format_;
    CreatorSetup setup_;
};

}  // namespace tessel::io::archive::core
